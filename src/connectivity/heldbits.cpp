// SPDX-License-Identifier: Apache-2.0
#include "connectivity/heldbits.h"

#include <vector>

#include "connectivity/bits.h"
#include "connectivity/relation.h"
#include "kalnet.h"

namespace kalheldbits {

namespace {

// Shared nets and every bus that holds them.
kalrelation<const kalnet*, kalnetbus*>& holders() {
    // Never freed: model objects may still die during static destruction.
    static auto* table = new kalrelation<const kalnet*, kalnetbus*>();
    return *table;
}

// Nets that left a slot of a bus with their link to it kept, by bus.
kalrelation<const kalnetbus*, kalnet*>& strays() {
    static auto* table = new kalrelation<const kalnetbus*, kalnet*>();
    return *table;
}

}  // namespace

void left(kalnet* net, kalnetbus* bus) {
    if (net->getBus() != bus) return;
    auto& t = strays();
    auto hold = t.hold();
    t.add(bus, net);
}

void joined(kalnet* net, kalnetbus* bus) {
    auto& t = holders();
    kalnetbus* link = net->getBus();
    if (t.empty() && (!link || link == bus)) return;
    auto hold = t.hold();
    if (!t.has(net) && (!link || link == bus)) return;
    for (kalnetbus* holder : {link, bus})
        if (holder) t.add(net, holder);
}

void netGone(const kalnet* net) {
    auto& t = holders();
    if (!t.empty()) {
        auto hold = t.hold();
        for (kalnetbus* bus : t.takeFirst(net)) {
            const std::vector<kalnet*> slots = bus->getBits();
            kalbits::forEachSlot(slots, bus->getMsb(), bus->getLsb(),
                                 [&](std::size_t, kalnet* n, unsigned int bit) {
                                     if (n == net) bus->disconnect(bit);
                                 });
        }
    }
    auto& s = strays();  // after the slots above: leaving them notes the net again
    if (s.empty()) return;
    auto hold = s.hold();
    s.takeSecond(const_cast<kalnet*>(net));
}

void busGone(const kalnetbus* bus) {
    auto& t = holders();
    if (!t.empty()) {
        auto hold = t.hold();
        t.takeSecond(const_cast<kalnetbus*>(bus));
    }
    auto& s = strays();
    if (s.empty()) return;
    auto hold = s.hold();
    for (kalnet* net : s.takeFirst(bus))
        if (net->getBus() == bus) net->unsetBus();
}

}  // namespace kalheldbits
