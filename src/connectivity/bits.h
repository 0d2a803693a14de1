// Bit order shared by port buses, net buses and dual port buses: slot 0 holds
// bit msb and slots run toward lsb, whichever way the range goes.
#ifndef KALDATA_SRC_CONNECTIVITY_BITS_H
#define KALDATA_SRC_CONNECTIVITY_BITS_H

#include <cstddef>

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

}  // namespace kalbits

#endif
