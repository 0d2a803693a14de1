// Flat open-addressing tables keyed by object addresses. Large designs have
// millions of nets; node-based containers would allocate per net and chase a
// pointer per lookup, and a compact table stays in the cache longer.
#ifndef KALVERILOG_PTRMAP_H
#define KALVERILOG_PTRMAP_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "compiler.h"

namespace kalverilog {
namespace detail {

inline std::size_t tableCapacity(std::size_t n) {
    std::size_t c = 16;
    while (3 * c < 4 * n)  // at most three quarters full
        c *= 2;
    return c;
}

inline std::size_t tableSlot(const void* key, std::size_t mask) {
    auto x = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key));
    x ^= x >> 31;
    x *= 0x9e3779b97f4a7c15ull;
    return static_cast<std::size_t>(x >> 32) & mask;
}

// Address -> 64-bit value.
class ptrmap {
public:
    explicit ptrmap(std::size_t expected) { rebuild(tableCapacity(expected)); }

    const std::uint64_t* find(const void* key) const {
        if (!count) return nullptr;  // often so: no hashing then
        for (std::size_t i = tableSlot(key, mask);; i = (i + 1) & mask) {
            if (cells[i].key == key) return &cells[i].value;
            if (!cells[i].key) return nullptr;
        }
    }

    // Inserts when the key is absent; answers the stored value and whether it
    // was inserted.
    std::pair<std::uint64_t, bool> emplace(const void* key, std::uint64_t value) {
        if (4 * (count + 1) > 3 * cells.size()) rebuild(cells.size() * 2);
        for (std::size_t i = tableSlot(key, mask);; i = (i + 1) & mask) {
            if (cells[i].key == key) return {cells[i].value, false};
            if (!cells[i].key) {
                cells[i] = {key, value};
                ++count;
                return {value, true};
            }
        }
    }

private:
    struct cell {
        const void* key;
        std::uint64_t value;
    };
    std::vector<cell> cells;
    std::size_t mask = 0, count = 0;

    void rebuild(std::size_t capacity) {
        std::vector<cell> old(capacity, cell{nullptr, 0});
        old.swap(cells);
        mask = capacity - 1;
        count = 0;
        for (const cell& c : old)
            if (c.key) emplace(c.key, c.value);
    }
};

// A set of addresses.
class ptrset {
public:
    explicit ptrset(std::size_t expected) { rebuild(tableCapacity(expected)); }

    void reserve(std::size_t expected) {
        if (tableCapacity(expected) > cells.size()) rebuild(tableCapacity(expected));
    }

    // Asks for the key's first cell ahead of a lookup.
    KALVERILOG_INLINE void prefetch(const void* key) const {
#if defined(__GNUC__) || defined(__clang__)
        __builtin_prefetch(&cells[tableSlot(key, mask)]);
#else
        (void)key;
#endif
    }

    bool contains(const void* key) const {
        for (std::size_t i = tableSlot(key, mask);; i = (i + 1) & mask) {
            if (cells[i] == key) return true;
            if (!cells[i]) return false;
        }
    }

    void insert(const void* key) {
        if (4 * (count + 1) > 3 * cells.size()) rebuild(cells.size() * 2);
        for (std::size_t i = tableSlot(key, mask);; i = (i + 1) & mask) {
            if (cells[i] == key) return;
            if (!cells[i]) {
                cells[i] = key;
                ++count;
                return;
            }
        }
    }

private:
    std::vector<const void*> cells;
    std::size_t mask = 0, count = 0;

    void rebuild(std::size_t capacity) {
        std::vector<const void*> old(capacity, nullptr);
        old.swap(cells);
        mask = capacity - 1;
        count = 0;
        for (const void* c : old)
            if (c) insert(c);
    }
};

}  // namespace detail
}  // namespace kalverilog

#endif
