// SPDX-License-Identifier: Apache-2.0
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
#include <string_view>
#include <vector>

#include "core/hash.h"

class kalnet;
class kalcomponent;

template <class T>
struct kalnameindex {
    using map_t = std::map<std::string, T*>;

    explicit kalnameindex(map_t& entries) : entries(entries) {}

    typename map_t::iterator find(const std::string& name) { return find(name, hashOf(name)); }
    // The probe every lookup shares, for a name whose hash is known.
    typename map_t::iterator find(const std::string& name, std::size_t hash);
    T* lookup(const std::string* name);  // null when missing
    // lookup() for names that repeat: the latest hit is tried before hashing.
    T* lookupAgain(const std::string& name) {
        rebuildIfStale();
        if (recent == entries.end() || recent->first != name) {
            recent = find(name);
            if (recent == entries.end()) return nullptr;
        }
        return recent->second;
    }
    // Starts reading the name's home slot, for a lookup that follows other
    // work: the slot's cache miss then overlaps with it. The hash is returned
    // for lookup(name, hash).
    std::size_t expect(const std::string& name) {
        const std::size_t hash = hashOf(name);
        if (count == entries.size() && !slots.empty()) __builtin_prefetch(&slots[hash & (slots.size() - 1)]);
        return hash;
    }
    T* lookup(const std::string& name, std::size_t hash) {
        auto it = find(name, hash);
        return it == entries.end() ? nullptr : it->second;
    }
    bool contains(const std::string& name) { return find(name) != entries.end(); }
    // The map's own operations, with the index kept in step.
    bool emplace(const std::string& name, T* value);
    // The value under `name`; when there is none, make()'s, entered under it
    // (added tells which). One hash and one probe serve both.
    template <class Make>
    T* place(const std::string& name, Make make, bool& added);
    void erase(typename map_t::iterator at);
    void erase(const std::string& name);
    // What is wrong with the index, or null (for kalverify). A stale index
    // (the map's size changed from outside) is rebuilt before use: not wrong.
    const char* problem();
    // Frees the slots and leaves the index stale (the map stays): the next use rebuilds it.
    void shed() {
        std::vector<slot>().swap(slots);
        count = 0;
        last = recent = entries.end();
    }
    void clear() {
        entries.clear();
        slots.clear();
        count = 0;
        last = recent = entries.end();
    }

private:
    struct slot {
        typename map_t::iterator at;
        std::size_t hash;  // compared before the node is touched, and kept for resizing
    };
    static std::size_t hashOf(const std::string& name);
    void insertSlot(typename map_t::iterator at, std::size_t hash);
    void resize(std::size_t slots);
    // The check is inline (it runs before every lookup); the rebuild is not.
    void rebuildIfStale() {
        if (count != entries.size() || (slots.empty() && !entries.empty())) rebuild();
    }
    void rebuild();

    map_t& entries;
    std::vector<slot> slots;  // open addressing, linear probing; end() marks a free slot
    std::size_t count = 0;
    // The latest insertion: names usually arrive in runs that sit side by side
    // in the map (a bus's bits, n1_0, n1_1, ...), and a hint next to the right
    // place turns the tree's descent into a constant-time insertion.
    typename map_t::iterator last = entries.end();
    // The latest hit of lookupAgain(): an instance is wired port after port.
    typename map_t::iterator recent = entries.end();
};

struct kalnetindex : kalnameindex<kalnet> {
    using kalnameindex::kalnameindex;

    // Names of nets whose port list grew large through the design. Their
    // lists go first when the design is destroyed: freed after millions of
    // small blocks, each large one made malloc consolidate them all. Names,
    // not nets: a stale name (renamed, removed) finds another net or none,
    // never a freed one.
    static constexpr std::size_t crowd = 4096;
    void noteCrowded(const std::string& name) {
        for (const std::string& known : crowded)
            if (known == name) return;
        crowded.push_back(name);
    }
    std::vector<std::string> crowded;
};
struct kalinstanceindex : kalnameindex<kalcomponent> {
    using kalnameindex::kalnameindex;
};

// Names come in numbered runs (n12_0 ... n12_7, b12[31] ... b12[0], u0, u1, ...)
// and are made and looked up run by run. A name ending in a number (before an
// optional "]") hashes its stem and the number's block of sixteen; the number's
// low four bits become the hash's, so a block's names sit in neighbouring slots
// and a run touches a cache line or two of the table instead of one per name.
// Any other name hashes whole. The hash only places names: every hit is still
// confirmed against the map's key.

template <class T>
std::size_t kalnameindex<T>::hashOf(const std::string& name) {
    const char* text = name.data();
    std::size_t end = name.size();
    const bool bracket = end && text[end - 1] == ']';
    if (bracket) --end;
    std::size_t first = end, number = 0, scale = 1;
    while (first > 0 && end - first < 9) {
        const unsigned digit = static_cast<unsigned char>(text[first - 1]) - unsigned('0');
        if (digit > 9) break;
        --first;
        number += digit * scale;
        scale *= 10;
    }
    if (first == end) return kalhash::bytes(text, name.size(), 0);
    const std::size_t h = kalhash::bytes(text, first, (number >> 4) << 1 | (bracket ? 1u : 0u));
    return h << 4 | (number & 15);
}

template <class T>
void kalnameindex<T>::rebuild() {
    last = recent = entries.end();
    std::size_t size = 16;
    while (size < entries.size() * 2)
        size *= 2;
    slots.assign(size, slot{entries.end(), 0});
    count = 0;
    for (auto it = entries.begin(); it != entries.end(); ++it)
        insertSlot(it, hashOf(it->first));
}

template <class T>
void kalnameindex<T>::insertSlot(typename map_t::iterator at, std::size_t hash) {
    const std::size_t mask = slots.size() - 1;
    std::size_t i = hash & mask;
    while (slots[i].at != entries.end())
        i = (i + 1) & mask;
    slots[i] = slot{at, hash};
    ++count;
}

template <class T>
void kalnameindex<T>::resize(std::size_t size) {
    std::vector<slot> old(size, slot{entries.end(), 0});
    old.swap(slots);
    count = 0;
    for (const slot& s : old)
        if (s.at != entries.end()) insertSlot(s.at, s.hash);
}

template <class T>
typename kalnameindex<T>::map_t::iterator kalnameindex<T>::find(const std::string& name, std::size_t hash) {
    rebuildIfStale();
    if (slots.empty()) return entries.end();
    const std::size_t mask = slots.size() - 1;
    for (std::size_t i = hash & mask; slots[i].at != entries.end(); i = (i + 1) & mask)
        if (slots[i].hash == hash && slots[i].at->first == name) return slots[i].at;
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
    const std::size_t before = entries.size();
    auto at = entries.emplace_hint(last, name, value);
    if (entries.size() == before) return false;  // the name was taken; its entry stays
    last = at;
    if ((count + 1) * 2 > slots.size()) resize(slots.empty() ? 16 : slots.size() * 2);
    insertSlot(at, hashOf(name));
    return true;
}

template <class T>
template <class Make>
T* kalnameindex<T>::place(const std::string& name, Make make, bool& added) {
    const std::size_t hash = hashOf(name);
    auto found = find(name, hash);
    if (found != entries.end()) {
        added = false;
        return found->second;
    }
    const std::size_t before = entries.size();
    auto at = entries.emplace_hint(last, name, nullptr);
    added = entries.size() != before;
    if (!added) {  // the map was changed from outside: its entry answers, and the index is rebuilt
        count = entries.size() + 1;
        return at->second;
    }
    try {
        at->second = make();
    } catch (...) {
        entries.erase(at);
        throw;
    }
    last = at;
    if ((count + 1) * 2 > slots.size()) resize(slots.empty() ? 16 : slots.size() * 2);
    insertSlot(at, hash);
    return at->second;
}

template <class T>
void kalnameindex<T>::erase(typename map_t::iterator at) {
    rebuildIfStale();
    const std::size_t mask = slots.size() - 1;
    std::size_t i = hashOf(at->first) & mask;
    while (slots[i].at != at) {
        if (slots[i].at == entries.end()) {  // not indexed: the map was changed from outside
            if (at == last) last = entries.end();
            if (at == recent) recent = entries.end();
            entries.erase(at);
            count = entries.size() + 1;  // forces a rebuild before the next use
            return;
        }
        i = (i + 1) & mask;
    }
    // Backward-shift deletion: entries after the gap move up unless they are at home already.
    std::size_t gap = i;
    for (std::size_t j = (i + 1) & mask; slots[j].at != entries.end(); j = (j + 1) & mask) {
        const std::size_t want = slots[j].hash & mask;
        const bool movable = gap <= j ? (want <= gap || want > j) : (want <= gap && want > j);
        if (movable) {
            slots[gap] = slots[j];
            gap = j;
        }
    }
    slots[gap].at = entries.end();
    --count;
    if (at == last) last = entries.end();
    if (at == recent) recent = entries.end();
    entries.erase(at);
}

template <class T>
void kalnameindex<T>::erase(const std::string& name) {
    auto it = find(name);
    if (it != entries.end()) erase(it);
}

template <class T>
const char* kalnameindex<T>::problem() {
    if (count != entries.size() || (slots.empty() && !entries.empty())) return nullptr;
    std::size_t used = 0;
    for (const slot& s : slots) {
        if (s.at == entries.end()) continue;
        ++used;
        if (s.hash != hashOf(s.at->first)) return "a slot's hash is not its name's";
    }
    if (used != count) return "its slot count is not its entry count";
    bool lastFound = last == entries.end();
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        if (find(it->first) != it) return "a name of the map is not found at its entry";
        lastFound = lastFound || it == last;
    }
    return lastFound ? nullptr : "its insertion hint is not an entry of the map";
}

#endif
