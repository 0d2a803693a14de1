// SPDX-License-Identifier: Apache-2.0
// Renaming a port bus or a net bus together with its bits: both kinds keep
// their bits as ordinary members of the owner's name map under bus-bit names,
// so a rename re-keys every bit and must not start before all the new names
// are known to be free.
#ifndef KALDATA_SRC_CONNECTIVITY_BUSRENAME_H
#define KALDATA_SRC_CONNECTIVITY_BUSRENAME_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "kalutilities.h"

namespace kalbusrename {

// Moves the bus at `at` of `buses` from `from` to `to` and renames its bits
// to the bus-bit names of `to`, bit numbers counted from msb toward lsb over
// every slot, empty ones included. `keys` is the owner's map of bit names:
//   bool taken(name)        any entry counts, even one of this bus's own bits;
//   void drop(bit)          removes the bit's current entry;
//   void add(name, bit)     enters it under its new name.
// A new bit name that is taken puts the bus back under `from` and answers
// false before anything is renamed. The caller has checked both names and
// sends the record.
template <class BusMap, class Keys>
bool apply(BusMap& buses, typename BusMap::iterator at, const std::string& from, const std::string& to,
           Keys&& keys) {
    auto* bus = at->second;
    buses.erase(at);
    const auto slots = bus->getBits();
    std::vector<std::string> names;
    bool clash = false;
    kalbits::forEachSlot(slots, bus->getMsb(), bus->getLsb(),
                         [&](std::size_t, auto* bit, unsigned int index) {
                             if (!bit || clash) return;
                             std::unique_ptr<std::string> n(kalutilities::constructBusBit(&to, index));
                             if (keys.owns(bit) && keys.taken(*n)) clash = true;
                             names.push_back(*n);
                         });
    if (clash) {
        buses.emplace(from, bus);
        return false;
    }
    std::size_t next = 0;
    for (auto* bit : slots) {
        if (!bit) continue;
        const std::string& bitName = names[next++];
        // A member of another owner (a bus slot can be given to any port or
        // net) is keyed in its own owner's map: it keeps its name and key.
        if (!keys.owns(bit)) continue;
        keys.drop(bit);
        kalaccess::setName(bit, &bitName);
        kalaccess::setSecondName(bit, &bitName);
        keys.add(bitName, bit);
    }
    buses.emplace(to, bus);
    kalaccess::setName(bus, &to);
    kalaccess::setSecondName(bus, &to);
    return true;
}

}  // namespace kalbusrename

#endif
