// SPDX-License-Identifier: Apache-2.0
// The word a port or a net keeps for its bus link and its side record. Most
// bits of a design have a bus and almost none a side record, so one word holds
// the bus or, with its lowest bit set, the record, which then holds the bus.
// Both kinds change the word here only, so the link cannot be lost when the
// record comes or goes.
#ifndef KALDATA_SRC_CONNECTIVITY_LINKWORD_H
#define KALDATA_SRC_CONNECTIVITY_LINKWORD_H

#include <cstdint>

namespace kallinkword {

template <class Extras>
Extras* record(std::uintptr_t word) {
    return word & 1 ? reinterpret_cast<Extras*>(word ^ 1) : nullptr;
}

// The side record, made on first use with the bus moved into it.
template <class Extras>
Extras& make(std::uintptr_t& word) {
    if (!(word & 1)) {
        auto* e = new Extras();
        e->bus = reinterpret_cast<decltype(e->bus)>(word);
        word = reinterpret_cast<std::uintptr_t>(e) | 1;
    }
    return *record<Extras>(word);
}

template <class Extras, class Bus>
Bus* bus(std::uintptr_t word) {
    const Extras* e = record<Extras>(word);
    return e ? e->bus : reinterpret_cast<Bus*>(word);
}

template <class Extras, class Bus>
void setBus(std::uintptr_t& word, Bus* b) {
    if (Extras* e = record<Extras>(word))
        e->bus = b;
    else
        word = reinterpret_cast<std::uintptr_t>(b);
}

// Frees the side record; the bus goes back into the word.
template <class Extras>
void drop(std::uintptr_t& word) {
    if (Extras* e = record<Extras>(word)) {
        word = reinterpret_cast<std::uintptr_t>(e->bus);
        delete e;
    }
}

}  // namespace kallinkword

#endif
