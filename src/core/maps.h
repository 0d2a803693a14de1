// SPDX-License-Identifier: Apache-2.0
// Lookups and teardown of the owning name maps.
#ifndef KALDATA_SRC_CORE_MAPS_H
#define KALDATA_SRC_CORE_MAPS_H

#include <string>

namespace kalmaps {

template <class Map>
typename Map::mapped_type find(const Map& m, const std::string* name) {
    if (!name) return nullptr;
    auto it = m.find(*name);
    return it == m.end() ? nullptr : it->second;
}

// Destroys every entry in name order and empties the map. In a large map each
// node goes right after its entry, while it is at hand: clearing the map
// afterwards walked millions of nodes a second time, from memory. A small map
// stays in the cache, and clearing it is cheaper than erasing node by node.
template <class Map>
void destroyAll(Map& m) {
    if (m.size() < 4096) {
        for (auto& entry : m)
            delete entry.second;
        m.clear();
        return;
    }
    for (auto it = m.begin(); it != m.end();) {
        delete it->second;
        it = m.erase(it);
    }
}

}  // namespace kalmaps

#endif
