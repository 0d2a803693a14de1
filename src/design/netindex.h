// A hash index over a design's net map. The map is a std::map, and W1-sized
// designs hold millions of nets: a lookup by name walked some 22 tree levels,
// most of them cache misses. The index points at the map's own nodes, so a
// hit is the map's answer; every change the library makes to the map goes
// through here. A map whose size was changed from outside is re-indexed before
// the next lookup.
#ifndef KALDATA_SRC_DESIGN_NETINDEX_H
#define KALDATA_SRC_DESIGN_NETINDEX_H

#include <map>
#include <string>
#include <vector>

class kalnet;

struct kalnetindex {
    using netmap = std::map<std::string, kalnet*>;

    explicit kalnetindex(netmap& nets) : nets(nets) {}

    netmap::iterator find(const std::string& name);
    kalnet* lookup(const std::string* name);  // null when missing
    bool contains(const std::string& name) { return find(name) != nets.end(); }
    // The map's own operations, with the index kept in step.
    bool emplace(const std::string& name, kalnet* net);
    void erase(netmap::iterator at);
    void erase(const std::string& name);

private:
    std::size_t home(const std::string& name) const;
    void insertSlot(netmap::iterator at);
    void resize(std::size_t slots);
    void rebuildIfStale();

    netmap& nets;
    std::vector<netmap::iterator> slots;  // open addressing, linear probing; end() marks a free slot
    std::size_t count = 0;
};

#endif
