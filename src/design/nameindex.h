// A hash index over one of a design's name maps (nets, instances). The maps
// are std::map, and W1-sized designs hold millions of nets: a lookup by name
// walked some 22 tree levels, most of them cache misses. The index points at
// the map's own nodes, so a hit is the map's answer; every change the library
// makes to the map goes through here. A map whose size was changed from
// outside is re-indexed before the next lookup.
#ifndef KALDATA_SRC_DESIGN_NAMEINDEX_H
#define KALDATA_SRC_DESIGN_NAMEINDEX_H

#include <functional>
#include <map>
#include <string>
#include <vector>

class kalnet;
class kalcomponent;

template <class T>
struct kalnameindex {
    using map_t = std::map<std::string, T*>;

    explicit kalnameindex(map_t& entries) : entries(entries) {}

    typename map_t::iterator find(const std::string& name);
    T* lookup(const std::string* name);  // null when missing
    bool contains(const std::string& name) { return find(name) != entries.end(); }
    // The map's own operations, with the index kept in step.
    bool emplace(const std::string& name, T* value);
    void erase(typename map_t::iterator at);
    void erase(const std::string& name);
    void clear() {
        entries.clear();
        slots.clear();
        count = 0;
    }

private:
    std::size_t home(const std::string& name) const;
    void insertSlot(typename map_t::iterator at);
    void resize(std::size_t slots);
    void rebuildIfStale();

    map_t& entries;
    std::vector<typename map_t::iterator> slots;  // open addressing, linear probing; end() marks a free slot
    std::size_t count = 0;
};

struct kalnetindex : kalnameindex<kalnet> {
    using kalnameindex::kalnameindex;
};
struct kalinstanceindex : kalnameindex<kalcomponent> {
    using kalnameindex::kalnameindex;
};

template <class T>
std::size_t kalnameindex<T>::home(const std::string& name) const {
    return std::hash<std::string>()(name) & (slots.size() - 1);
}

template <class T>
void kalnameindex<T>::rebuildIfStale() {
    if (count == entries.size() && (!slots.empty() || entries.empty())) return;
    std::size_t size = 16;
    while (size < entries.size() * 2)
        size *= 2;
    slots.assign(size, entries.end());
    count = 0;
    for (auto it = entries.begin(); it != entries.end(); ++it)
        insertSlot(it);
}

template <class T>
void kalnameindex<T>::insertSlot(typename map_t::iterator at) {
    const std::size_t mask = slots.size() - 1;
    std::size_t i = home(at->first);
    while (slots[i] != entries.end())
        i = (i + 1) & mask;
    slots[i] = at;
    ++count;
}

template <class T>
void kalnameindex<T>::resize(std::size_t size) {
    std::vector<typename map_t::iterator> old(size, entries.end());
    old.swap(slots);
    count = 0;
    for (auto it : old)
        if (it != entries.end()) insertSlot(it);
}

template <class T>
typename kalnameindex<T>::map_t::iterator kalnameindex<T>::find(const std::string& name) {
    rebuildIfStale();
    if (slots.empty()) return entries.end();
    const std::size_t mask = slots.size() - 1;
    for (std::size_t i = home(name); slots[i] != entries.end(); i = (i + 1) & mask)
        if (slots[i]->first == name) return slots[i];
    return entries.end();
}

template <class T>
T* kalnameindex<T>::lookup(const std::string* name) {
    if (!name) return nullptr;
    auto it = find(*name);
    return it == entries.end() ? nullptr : it->second;
}

template <class T>
bool kalnameindex<T>::emplace(const std::string& name, T* value) {
    rebuildIfStale();
    auto inserted = entries.emplace(name, value);
    if (!inserted.second) return false;
    if ((count + 1) * 2 > slots.size()) resize(slots.empty() ? 16 : slots.size() * 2);
    insertSlot(inserted.first);
    return true;
}

template <class T>
void kalnameindex<T>::erase(typename map_t::iterator at) {
    rebuildIfStale();
    const std::size_t mask = slots.size() - 1;
    std::size_t i = home(at->first);
    while (slots[i] != at) {
        if (slots[i] == entries.end()) {  // not indexed: the map was changed from outside
            entries.erase(at);
            count = entries.size() + 1;  // forces a rebuild before the next use
            return;
        }
        i = (i + 1) & mask;
    }
    // Backward-shift deletion: entries after the gap move up unless they are at home already.
    std::size_t gap = i;
    for (std::size_t j = (i + 1) & mask; slots[j] != entries.end(); j = (j + 1) & mask) {
        const std::size_t want = home(slots[j]->first);
        const bool movable = gap <= j ? (want <= gap || want > j) : (want <= gap && want > j);
        if (movable) {
            slots[gap] = slots[j];
            gap = j;
        }
    }
    slots[gap] = entries.end();
    --count;
    entries.erase(at);
}

template <class T>
void kalnameindex<T>::erase(const std::string& name) {
    auto it = find(name);
    if (it != entries.end()) erase(it);
}

#endif
