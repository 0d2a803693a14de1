// SPDX-License-Identifier: Apache-2.0
// A hash index over one of a design's name maps (nets, instances). The maps
// are std::map, and W1-sized designs hold millions of nets: a lookup by name
// walked some 22 tree levels, most of them cache misses. The index points at
// the map's own nodes, so a hit is the map's answer; every change the library
// makes to the map goes through here. A map whose size was changed from
// outside is re-indexed before the next lookup.
#ifndef KALDATA_SRC_DESIGN_NAMEINDEX_H
#define KALDATA_SRC_DESIGN_NAMEINDEX_H

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "core/hash.h"

class kalnet;
class kalcomponent;

template <class T>
struct kalnameindex {
    using map_t = std::map<std::string, T*>;

    explicit kalnameindex(map_t& entries) : entries(entries) {}

    typename map_t::iterator find(const std::string& name) { return find(name, hashOf(name)); }
    // The probe every lookup shares, for a name whose hash is known. On a miss,
    // `vacancy` (if given) receives the free slot where the probe ended.
    typename map_t::iterator find(const std::string& name, std::size_t hash, std::size_t* vacancy = nullptr);
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
        std::vector<word>().swap(slots);
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
    using iterator = typename map_t::iterator;
    // A slot is one word, zero when free: the iterator's bits (a node's
    // address) and, in the bits that address leaves free, the hash's lowest
    // four bits (the low four, as nodes are 16-byte aligned: they tell a
    // numbered block's names apart), then in the top sixteen the entry's
    // distance from its home slot (five bits, 31 standing for 31 or more)
    // and eleven hash bits above those that place it. Lookups compare the
    // hash bits before they touch a node; a resize or a deletion finds an
    // entry's home from them and its distance without reading its name.
    // Eight bytes where an iterator and a whole hash took sixteen: millions
    // of nets. Where words are narrower no bits are spare.
    using word = std::uintptr_t;
    static_assert(sizeof(iterator) == sizeof(word) && std::is_trivially_copyable_v<iterator>,
                  "a map iterator is a node address");
    static constexpr bool wide = sizeof(word) == 8;
    static constexpr int distanceShift = 48, upperShift = 53;
    static constexpr std::uint64_t lowBits = 0xF, far = 31, upperBits = 0x7FF;
    static constexpr word spareBits =
        wide ? static_cast<word>(lowBits | far << distanceShift | upperBits << upperShift) : 0;
    static word bitsOf(iterator it) {
        word w;
        std::memcpy(&w, &it, sizeof w);
        return w;
    }
    static iterator fromBits(word w) {
        iterator it;
        std::memcpy(static_cast<void*>(&it), &w, sizeof w);
        return it;
    }
    iterator iter(word w) const { return fromBits(w & ~spare); }
    // The hash's bits for a slot: its lowest four, and those above the position bits.
    word fieldOf(std::size_t hash) const {
        const std::uint64_t h = hash;
        return static_cast<word>((h & lowBits) | (order < 64 ? h >> order << upperShift : 0)) & spare;
    }
    std::uint64_t distanceOf(word w) const {
        return spare ? static_cast<std::uint64_t>(w) >> distanceShift & far : far;
    }
    word atDistance(word w, std::size_t d) const {
        const std::uint64_t kept = d < far ? d : far;
        return (w & ~static_cast<word>(far << distanceShift & spare)) |
               static_cast<word>(kept << distanceShift & spare);
    }
    // The home slot of the entry in slot i: from its distance where that was kept.
    std::size_t homeOf(std::size_t i, word w) const {
        const std::size_t mask = slots.size() - 1;
        const std::uint64_t d = distanceOf(w);
        return d < far ? (i - d) & mask : hashOf(iter(w)->first) & mask;
    }
    static std::size_t hashOf(const std::string& name);
    void insertSlot(iterator at, std::size_t hash);
    void settle(word w, std::size_t home);
    void dropTags();
    void setOrder(std::size_t size, unsigned knownBits);
    void resize(std::size_t slots);
    // The check is inline (it runs before every lookup); the rebuild is not.
    void rebuildIfStale() {
        if (count != entries.size() || (slots.empty() && !entries.empty())) rebuild();
    }
    void rebuild();

    map_t& entries;
    std::vector<word> slots;  // open addressing, linear probing
    std::size_t count = 0;
    // The bits of a slot beside the address. Were an address ever to use one
    // of them, they are all given up (to zero) and names alone decide.
    word spare = spareBits;
    unsigned order = 0;  // log2 of the slot count: the upper hash bits start here
    // A doubling takes the lowest of the upper hash bits into the position and
    // leaves their top bit unknown: this many of them are the hash's.
    unsigned known = 11;
    word compared = 0;  // the hash bits that lookups compare
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
void kalnameindex<T>::setOrder(std::size_t size, unsigned knownBits) {
    order = 0;
    while ((std::size_t(1) << order) < size)
        ++order;
    known = knownBits;
    compared = static_cast<word>(lowBits | ((std::uint64_t(1) << known) - 1) << upperShift) & spare;
}

template <class T>
void kalnameindex<T>::rebuild() {
    last = recent = entries.end();
    std::size_t size = 16;
    while (size < entries.size() * 2)
        size *= 2;
    slots.assign(size, 0);
    setOrder(size, 11);
    count = 0;
    for (auto it = entries.begin(); it != entries.end(); ++it)
        insertSlot(it, hashOf(it->first));
}

template <class T>
void kalnameindex<T>::insertSlot(iterator it, std::size_t hash) {
    const word bits = bitsOf(it);
    if (bits & spare) dropTags();
    settle(bits | fieldOf(hash), hash & (slots.size() - 1));
}

template <class T>
void kalnameindex<T>::settle(word w, std::size_t home) {
    const std::size_t mask = slots.size() - 1;
    std::size_t i = home;
    while (slots[i])
        i = (i + 1) & mask;
    slots[i] = atDistance(w, (i - home) & mask);
    ++count;
}

template <class T>
void kalnameindex<T>::dropTags() {
    for (word& w : slots)
        w &= ~spare;
    spare = 0;
    compared = 0;
}

// A doubling needs one more bit of each hash: the lowest of the upper eleven.
// Their top bit is then unknown, so after ten doublings the names are hashed
// again, as are entries whose distance from home was too far to keep. Those
// names are read ahead: a block's names sit side by side in the slots, and
// their nodes were made one after another.
template <class T>
void kalnameindex<T>::resize(std::size_t size) {
    std::vector<word> old(size, 0);
    old.swap(slots);
    const std::size_t oldMask = old.size() - 1;
    const word oldSpare = spare;
    const unsigned oldOrder = order;
    const bool derive = oldSpare && known > 1 && size == old.size() * 2;
    setOrder(size, derive ? known - 1 : 11);
    count = 0;
    constexpr std::size_t ahead = 16;
    for (std::size_t i = 0; i < old.size(); ++i) {
        const word w = old[i];
        if (!w) continue;
        const std::uint64_t d = derive ? static_cast<std::uint64_t>(w) >> distanceShift & far : far;
        if (d < far) {
            const std::uint64_t upper = static_cast<std::uint64_t>(w) >> upperShift;
            const std::size_t home = ((i - d) & oldMask) | static_cast<std::size_t>(upper & 1) << oldOrder;
            const word kept = (w & ~oldSpare) | (w & static_cast<word>(lowBits) & spare);
            settle(kept | (static_cast<word>(upper >> 1 << upperShift) & spare), home);
            continue;
        }
        if (!derive && i + ahead < old.size() && old[i + ahead]) {
            const char* node = reinterpret_cast<const char*>(&*fromBits(old[i + ahead] & ~oldSpare));
            __builtin_prefetch(node);
            __builtin_prefetch(node + 32);
        }
        const iterator it = fromBits(w & ~oldSpare);
        insertSlot(it, hashOf(it->first));
    }
}

template <class T>
typename kalnameindex<T>::map_t::iterator kalnameindex<T>::find(const std::string& name, std::size_t hash,
                                                                std::size_t* vacancy) {
    rebuildIfStale();
    if (slots.empty()) return entries.end();
    const std::size_t mask = slots.size() - 1;
    const word field = fieldOf(hash) & compared;
    std::size_t i = hash & mask;
    for (; slots[i]; i = (i + 1) & mask) {
        if ((slots[i] & compared) != field) continue;
        const iterator it = iter(slots[i]);
        if (it->first == name) return it;
    }
    if (vacancy) *vacancy = i;
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
    std::size_t vacancy = 0;
    auto found = find(name, hash, &vacancy);
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
    const bool grow = (count + 1) * 2 > slots.size();
    if (grow) resize(slots.empty() ? 16 : slots.size() * 2);
    const word bits = bitsOf(at);
    if (grow || (bits & spare)) {
        insertSlot(at, hash);
    } else {  // the miss ended at the slot the name takes: no second probe
        const std::size_t mask = slots.size() - 1;
        slots[vacancy] = atDistance(bits | fieldOf(hash), (vacancy - (hash & mask)) & mask);
        ++count;
    }
    return at->second;
}

template <class T>
void kalnameindex<T>::erase(typename map_t::iterator at) {
    rebuildIfStale();
    const std::size_t mask = slots.size() - 1;
    const word bits = bitsOf(at);
    std::size_t i = hashOf(at->first) & mask;
    while ((slots[i] & ~spare) != bits) {
        if (!slots[i]) {  // not indexed: the map was changed from outside
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
    for (std::size_t j = (i + 1) & mask; slots[j]; j = (j + 1) & mask) {
        const std::size_t want = homeOf(j, slots[j]);
        const bool movable = gap <= j ? (want <= gap || want > j) : (want <= gap && want > j);
        if (movable) {
            slots[gap] = atDistance(slots[j], (gap - want) & mask);
            gap = j;
        }
    }
    slots[gap] = 0;
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
    const std::size_t mask = slots.size() - 1;
    if (!slots.empty() && (std::size_t(1) << order) != slots.size()) return "its order is not its size's";
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const word w = slots[i];
        if (!w) continue;
        ++used;
        const std::size_t hash = hashOf(iter(w)->first);
        if ((w & compared) != (fieldOf(hash) & compared)) return "a slot's hash bits are not its name's";
        if (distanceOf(w) != distanceOf(atDistance(0, (i - (hash & mask)) & mask)))
            return "a slot's distance from home is wrong";
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
