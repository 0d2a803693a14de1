// SPDX-License-Identifier: Apache-2.0
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
// The list lives in one pointer-sized word of the net, because a large design
// has millions of nets and most hold one or two ports: the word is null (no
// ports), the single port itself, or a tagged pointer to a block of slots that
// also carries, for the few nets that need them, the index, the holes and the
// stray mark. A net made without names has no list at all (`absent`). In an
// indexed list an erased entry leaves a hole (so erasing from the middle of a
// clock net does not move the rest); holes are squeezed out once they make up
// half of the list.
#ifndef KALDATA_SRC_CONNECTIVITY_PORTLIST_H
#define KALDATA_SRC_CONNECTIVITY_PORTLIST_H

#include <cstddef>
#include <cstdint>
#include <vector>

class kalport;

class kalportlist {
public:
    // A view of the list stored in `word`.
    explicit kalportlist(kalport*& word) : word(word) {}

    static kalport* absent();
    bool present() const { return word != absent(); }
    // Frees the storage; the word is left empty.
    void release();

    static std::size_t key(const kalport* port);

    std::size_t size() const;
    bool empty() const { return size() == 0; }
    std::vector<kalport*> snapshot() const;
    // Visits the ports in list order until `stop` returns true; says whether it did.
    template <class Stop>
    bool anyOf(Stop stop) const {
        kalport* const* s = slots();
        const std::uint32_t n = used();
        for (std::uint32_t i = 0; i < n; ++i)
            if (s[i] && stop(s[i])) return true;
        return false;
    }

    // The plain-scan answers (first equal entry in list order), computed
    // faster where possible. firstEqual returns a position for eraseAt, or -1.
    bool containsEqual(const kalport* port) const;
    std::ptrdiff_t firstEqual(const kalport* port) const;
    bool listsPointer(const kalport* port) const;
    // Position of this very port, or -1.
    std::ptrdiff_t findPointer(const kalport* port) const;
    kalport* at(std::size_t position) const { return slots()[position]; }

    void append(kalport* port);
    void eraseAt(std::size_t position);
    kalport* popBack();

    // Called by the library after it changed the key fields of a listed port.
    void rekey(kalport* port, std::size_t oldKey);
    // A listed port no longer points back to this net.
    void markStray();

    // What is wrong with the storage or the index, or null (for kalverify).
    const char* problem() const;
    bool isIndexed() const { return indexed(); }

private:
    struct block;
    struct large;
    static constexpr std::uint32_t indexThreshold = 24;

    bool isBlock() const { return (reinterpret_cast<std::uintptr_t>(word) & 1u) != 0; }
    block* blk() const;
    std::uint32_t used() const;
    kalport** slots();
    kalport* const* slots() const;
    large* big() const;
    bool indexed() const;
    std::uint32_t holes() const;
    block* toBlock(std::uint32_t capacity);
    void build();
    void compact();
    void trimHoles();
    void unindex(const kalport* port, std::size_t k);

    kalport*& word;
};

#endif
