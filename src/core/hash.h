// SPDX-License-Identifier: Apache-2.0
// A hash for the model's short names (ports, nets, instances).
#ifndef KALDATA_SRC_CORE_HASH_H
#define KALDATA_SRC_CORE_HASH_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kalhash {

// Names are short: eight bytes a step, the last few in at most two loads
// (never past the end), then a final mix. Cheaper than the library's hash for
// a few bytes.
inline std::uint64_t tail(const char* p, std::size_t n) {
    if (n >= 4) {
        std::uint32_t a, b;
        std::memcpy(&a, p, 4);
        std::memcpy(&b, p + n - 4, 4);
        return a | static_cast<std::uint64_t>(b) << 32;
    }
    if (n == 0) return 0;
    auto byte = [&](std::size_t k) { return static_cast<std::uint64_t>(static_cast<unsigned char>(p[k])); };
    return byte(0) | byte(n >> 1) << 8 | byte(n - 1) << 16;
}

inline std::uint64_t bytes(const char* p, std::size_t n, std::uint64_t seed) {
    std::uint64_t h = seed ^ (n * 0x9E3779B97F4A7C15ull);
    for (; n >= 8; p += 8, n -= 8) {
        std::uint64_t w;
        std::memcpy(&w, p, 8);
        h = (h ^ w) * 0xBF58476D1CE4E5B9ull;
        h ^= h >> 31;
    }
    h = (h ^ tail(p, n)) * 0x94D049BB133111EBull;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    return h ^ (h >> 32);
}

}  // namespace kalhash

// For hashed containers keyed by names.
struct kalnamehasher {
    std::size_t operator()(std::string_view s) const { return kalhash::bytes(s.data(), s.size(), 0); }
};

#endif
