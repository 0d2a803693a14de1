// The port list of a net: ports in order of connection, plus, for large nets,
// an index that answers the equality-based searches without scanning.
//
// Two ports can only compare equal when their names match and their
// components' instance names match (or both are missing), so the index is keyed
// on a hash of exactly that and every candidate is confirmed with the port's
// own equality. The library re-keys a port whenever it changes either value
// (see kalaccess). A net that lists a port which does not point back to it
// (possible only through unusual direct calls) could hold a stale key, so such
// a net drops its index and scans, which is always exact.
//
// Most nets hold one or two ports, so the list keeps a single port inline and
// allocates nothing else until it grows. In an indexed list an erased entry
// leaves a hole (so erasing from the middle of a clock net does not move the
// rest); holes are squeezed out once they make up half of the list.
#ifndef KALDATA_SRC_CONNECTIVITY_PORTLIST_H
#define KALDATA_SRC_CONNECTIVITY_PORTLIST_H

#include <cstddef>
#include <cstdint>
#include <vector>

class kalport;

struct kalportlist {
    kalportlist() = default;
    kalportlist(const kalportlist&) = delete;
    kalportlist& operator=(const kalportlist&) = delete;
    ~kalportlist();

    static std::size_t key(const kalport* port);

    std::size_t size() const;
    bool empty() const { return size() == 0; }
    std::vector<kalport*> snapshot() const;
    // Visits the ports in list order until `stop` returns true; says whether it did.
    template <class Stop>
    bool anyOf(Stop stop) const {
        kalport* const* s = slots();
        for (std::uint32_t i = 0; i < used; ++i)
            if (s[i] && stop(s[i])) return true;
        return false;
    }

    // The plain-scan answers (first equal entry in list order), computed
    // faster where possible. firstEqual returns a position for eraseAt, or -1.
    bool containsEqual(const kalport* port) const;
    std::ptrdiff_t firstEqual(const kalport* port) const;
    bool listsPointer(const kalport* port) const;
    kalport* at(std::size_t position) const { return slots()[position]; }

    void append(kalport* port);
    void eraseAt(std::size_t position);
    kalport* popBack();

    // Called by the library after it changed the key fields of a listed port.
    void rekey(kalport* port, std::size_t oldKey);
    // A listed port no longer points back to this net.
    void markStray();

private:
    struct large;
    static constexpr std::uint32_t indexThreshold = 24;

    kalport** slots() { return cap == 1 ? &one : many; }
    kalport* const* slots() const { return cap == 1 ? &one : many; }
    bool indexed() const;
    std::uint32_t holes() const;
    void grow();
    void build();
    void compact();
    void trimHoles();
    void unindex(const kalport* port, std::size_t k);

    union {
        kalport* one = nullptr;
        kalport** many;
    };
    std::uint32_t used = 0;  // occupied slots, holes included
    std::uint32_t cap = 1;
    large* big = nullptr;  // index, holes and the stray mark; only for the few nets that need them
};

#endif
