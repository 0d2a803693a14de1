// The port list of a net: ports in order of connection, plus, for large nets,
// an index that answers the equality-based searches without scanning.
//
// Two ports can only compare equal when their names match and their
// components' instance names match (or both are missing), so the index is keyed
// on exactly that. The library re-keys a port whenever it changes either value
// (see kalaccess). A net that lists a port which does not point back to it
// (possible only through unusual direct calls) could hold a stale key, so such
// a net stops trusting its index and scans, which is always exact.
#ifndef KALDATA_SRC_CONNECTIVITY_PORTLIST_H
#define KALDATA_SRC_CONNECTIVITY_PORTLIST_H

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class kalport;

struct kalportlist {
    std::vector<kalport*> order;

    static std::string key(const kalport* port);

    // The plain-scan answers, computed faster where possible.
    bool containsEqual(const kalport* port) const;
    std::ptrdiff_t firstEqual(const kalport* port) const;  // -1 when none
    bool listsPointer(const kalport* port) const;

    void append(kalport* port);
    void eraseAt(std::size_t position);
    kalport* popBack();

    // Called by the library after it changed the key fields of a listed port.
    void rekey(kalport* port, const std::string& oldKey);
    // A listed port no longer points back to this net.
    void markStray() { strays = true; }

private:
    using index_t = std::unordered_multimap<std::string, kalport*>;
    static constexpr std::size_t indexThreshold = 24;

    bool indexed() const { return index && !strays; }
    void build();
    void unindex(kalport* port, const std::string& k);

    std::unique_ptr<index_t> index;
    bool strays = false;
};

#endif
