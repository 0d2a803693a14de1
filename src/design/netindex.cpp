#include "design/netindex.h"

#include <functional>

std::size_t kalnetindex::home(const std::string& name) const {
    return std::hash<std::string>()(name) & (slots.size() - 1);
}

void kalnetindex::rebuildIfStale() {
    if (count == nets.size() && (!slots.empty() || nets.empty())) return;
    std::size_t size = 16;
    while (size < nets.size() * 2)
        size *= 2;
    slots.assign(size, nets.end());
    count = 0;
    for (auto it = nets.begin(); it != nets.end(); ++it)
        insertSlot(it);
}

void kalnetindex::insertSlot(netmap::iterator at) {
    const std::size_t mask = slots.size() - 1;
    std::size_t i = home(at->first);
    while (slots[i] != nets.end())
        i = (i + 1) & mask;
    slots[i] = at;
    ++count;
}

void kalnetindex::resize(std::size_t size) {
    std::vector<netmap::iterator> old(size, nets.end());
    old.swap(slots);
    count = 0;
    for (auto it : old)
        if (it != nets.end()) insertSlot(it);
}

kalnetindex::netmap::iterator kalnetindex::find(const std::string& name) {
    rebuildIfStale();
    if (slots.empty()) return nets.end();
    const std::size_t mask = slots.size() - 1;
    for (std::size_t i = home(name); slots[i] != nets.end(); i = (i + 1) & mask)
        if (slots[i]->first == name) return slots[i];
    return nets.end();
}

kalnet* kalnetindex::lookup(const std::string* name) {
    if (!name) return nullptr;
    auto it = find(*name);
    return it == nets.end() ? nullptr : it->second;
}

bool kalnetindex::emplace(const std::string& name, kalnet* net) {
    rebuildIfStale();
    auto inserted = nets.emplace(name, net);
    if (!inserted.second) return false;
    if ((count + 1) * 2 > slots.size()) resize(slots.empty() ? 16 : slots.size() * 2);
    insertSlot(inserted.first);
    return true;
}

void kalnetindex::erase(netmap::iterator at) {
    rebuildIfStale();
    const std::size_t mask = slots.size() - 1;
    std::size_t i = home(at->first);
    while (slots[i] != at) {
        if (slots[i] == nets.end()) {  // not indexed: the map was changed from outside
            nets.erase(at);
            count = nets.size() + 1;  // forces a rebuild before the next use
            return;
        }
        i = (i + 1) & mask;
    }
    // Backward-shift deletion: entries after the gap move up unless they are at home already.
    std::size_t gap = i;
    for (std::size_t j = (i + 1) & mask; slots[j] != nets.end(); j = (j + 1) & mask) {
        const std::size_t want = home(slots[j]->first);
        const bool movable = gap <= j ? (want <= gap || want > j) : (want <= gap && want > j);
        if (movable) {
            slots[gap] = slots[j];
            gap = j;
        }
    }
    slots[gap] = nets.end();
    --count;
    nets.erase(at);
}

void kalnetindex::erase(const std::string& name) {
    auto it = find(name);
    if (it != nets.end()) erase(it);
}
