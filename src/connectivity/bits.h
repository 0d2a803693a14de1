// SPDX-License-Identifier: Apache-2.0
// Bit order shared by port buses, net buses and dual port buses: slot 0 holds
// bit msb and slots run toward lsb, whichever way the range goes.
#ifndef KALDATA_SRC_CONNECTIVITY_BITS_H
#define KALDATA_SRC_CONNECTIVITY_BITS_H

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace kalbits {

inline unsigned int width(unsigned int msb, unsigned int lsb) {
    return (msb > lsb ? msb - lsb : lsb - msb) + 1u;
}

inline bool inRange(unsigned int i, unsigned int msb, unsigned int lsb) {
    return msb > lsb ? (i <= msb && i >= lsb) : (i >= msb && i <= lsb);
}

inline std::size_t slot(unsigned int i, unsigned int msb) {
    return i > msb ? i - msb : msb - i;
}

// Visits each slot with the bit number it stands for, from the first bound
// toward the second, empty slots included: visit(slot, member, bit).
template <class T, class Visit>
void forEachSlot(const std::vector<T*>& slots, unsigned int first, unsigned int last, Visit visit) {
    unsigned int bit = first;
    for (std::size_t k = 0; k < slots.size(); ++k) {
        visit(k, slots[k], bit);
        bit = first <= last ? bit + 1 : bit - 1;
    }
}

// name + "[" + bit + "]", written over `out`: buses name every bit, and
// reusing one buffer keeps the names off the heap. A usual name is composed
// on the stack and assigned in one step.
inline void nameBit(std::string& out, const std::string& name, unsigned int bit) {
    char text[64];
    const std::size_t stem = name.size();
    if (stem + 12 > sizeof text) {
        out.assign(name).append(1, '[').append(std::to_string(bit)).append(1, ']');
        return;
    }
    std::memcpy(text, name.data(), stem);
    text[stem] = '[';
    char* end = std::to_chars(text + stem + 1, text + sizeof text - 1, bit).ptr;
    *end++ = ']';
    out.assign(text, static_cast<std::size_t>(end - text));
}

}  // namespace kalbits

#endif
