// SPDX-License-Identifier: Apache-2.0
// Members of buses: ports in port buses, nets in net buses, dual ports in dual
// port buses. A bus holds members in slots without owning them; a member links
// to one bus. Nearly every member sits in a slot of the bus it links to, and
// that pair needs nothing more: a dying bus clears the links of its slots, a
// dying member empties the slots of its own bus.
//
// The public interface can change one end alone (a slot given to another
// member, a slot emptied, a link set or cleared), so a member can also sit in
// slots of buses it does not link to, or link to a bus that holds it in no
// slot. Every such pair is "tied": each side lists the other in its side
// record, and whichever dies first clears what the survivor holds of it. A
// tie may outlive the reason for it; both deaths check before they clear.
//
// Both ends of a pair change here only, for all three kinds of bus, through
// kalaccess's uniform doors: slots(bus), ties(member|bus, make), setLink().
#ifndef KALDATA_SRC_CONNECTIVITY_BUSTIES_H
#define KALDATA_SRC_CONNECTIVITY_BUSTIES_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "connectivity/access.h"

namespace kalbusties {

namespace detail {

template <class T>
void addOnce(std::vector<T*>& list, T* x) {
    if (std::find(list.begin(), list.end(), x) == list.end()) list.push_back(x);
}

template <class T, class U>
void dropFrom(std::vector<T*>* list, const U* x) {
    if (list) list->erase(std::remove(list->begin(), list->end(), x), list->end());
}

// Empties every slot of the bus that holds this very member.
template <class M, class B>
void emptySlotsOf(B* bus, const M* m) {
    if (auto* slots = kalaccess::slots(bus))
        std::replace(slots->begin(), slots->end(), const_cast<M*>(m), static_cast<M*>(nullptr));
}

template <class M, class B>
bool holds(B* bus, const M* m) {
    auto* slots = kalaccess::slots(bus);
    return slots && std::find(slots->begin(), slots->end(), m) != slots->end();
}

}  // namespace detail

template <class M, class B>
void tie(M* m, B* bus) {
    detail::addOnce(*kalaccess::ties(m, true), bus);
    detail::addOnce(*kalaccess::ties(bus, true), m);
}

// The member left a slot of the bus; it may keep its link.
template <class M, class B>
void leftSlot(M* m, B* bus) {
    if (m->getBus() == bus) tie(m, bus);
}

// Only the link changes: to `bus`, or cleared when bus is null.
template <class M, class B>
void setLink(M* m, B* bus) {
    B* old = m->getBus();
    if (old == bus) return;
    kalaccess::setLink(m, bus);
    if (old && detail::holds(old, m)) tie(m, old);
    if (bus && !detail::holds(bus, m)) tie(m, bus);
}

// Both ends at once: the member takes slot s (whose former occupant is not
// told and keeps its link) and links to the bus. Without such a slot (a bus
// made without slots) only the link is set.
template <class M, class B>
void place(B* bus, std::size_t s, M* m) {
    auto* slots = kalaccess::slots(bus);
    if (!slots || s >= slots->size()) {
        setLink(m, bus);
        return;
    }
    M* former = (*slots)[s];
    (*slots)[s] = m;
    if (former && former != m) leftSlot(former, bus);
    B* old = m->getBus();
    kalaccess::setLink(m, bus);
    if (old && old != bus) tie(m, old);  // that bus may still hold it
}

// Only the slot changes: the member takes slot s, its link stays.
template <class M, class B>
void fillSlot(B* bus, std::size_t s, M* m) {
    auto& slots = *kalaccess::slots(bus);
    M* former = slots[s];
    slots[s] = m;
    if (former && former != m) leftSlot(former, bus);
    if (m->getBus() != bus) tie(m, bus);
}

// Only the slot changes: slot s is emptied. A former occupant that is dying
// needs no tie: memberGone() clears the rest of it.
template <class B, class M = void>
void emptySlot(B* bus, std::size_t s, const M* dying = nullptr) {
    auto* slots = kalaccess::slots(bus);
    if (!slots || s >= slots->size()) return;
    auto* former = (*slots)[s];
    (*slots)[s] = nullptr;
    if (former && static_cast<const void*>(former) != dying) leftSlot(former, bus);
}

// The first slot holding this very member, or past the end.
template <class M, class B>
std::size_t firstHolding(B* bus, const M* m) {
    auto* slots = kalaccess::slots(bus);
    if (!slots) return static_cast<std::size_t>(-1);
    return static_cast<std::size_t>(std::find(slots->begin(), slots->end(), m) - slots->begin());
}

// The first slot holding a member equal to m (the public disconnect(member)
// matches by value), or past the end.
template <class M, class B>
std::size_t firstEqual(B* bus, const M* m) {
    auto* slots = kalaccess::slots(bus);
    if (!slots) return static_cast<std::size_t>(-1);
    for (std::size_t k = 0; k < slots->size(); ++k)
        if ((*slots)[k] && *(*slots)[k] == *m) return k;
    return static_cast<std::size_t>(-1);
}

// Both ends at once: the member leaves every slot of the bus and, when it
// links there, loses the link.
template <class M, class B>
void release(B* bus, M* m) {
    detail::emptySlotsOf(bus, m);
    if (m->getBus() == bus) kalaccess::setLink(m, static_cast<B*>(nullptr));
}

// Hands the members to `handle` one at a time, each released from the bus
// first, so that `handle` may destroy it (and others of the bus with it); a
// member in two slots comes once. `handle` may also destroy the bus itself
// (a port or net that still links to it without a slot goes and takes its bus
// along): `registered` says whether the bus is still in its owner's map, and
// the drain stops, answering false, once it is not.
template <class B, class Registered, class Handle>
bool drain(B* bus, Registered registered, Handle handle) {
    for (;;) {
        if (!registered()) return false;
        auto* slots = kalaccess::slots(bus);
        if (!slots) return true;
        auto at = std::find_if(slots->begin(), slots->end(), [](const auto* m) { return m != nullptr; });
        if (at == slots->end()) return true;
        auto* m = *at;
        release(bus, m);
        handle(m);
    }
}

// As above, for a bus that no handler can destroy.
template <class B, class Handle>
void drain(B* bus, Handle handle) {
    drain(bus, [] { return true; }, handle);
}

// The member is being destroyed: no slot may keep it.
template <class M>
void memberGone(M* m) {
    if (auto* own = m->getBus()) {
        detail::emptySlotsOf(own, m);
        kalaccess::setLink(m, static_cast<decltype(own)>(nullptr));
    }
    auto* ties = kalaccess::ties(m, false);
    if (!ties) return;
    const auto buses = std::move(*ties);
    ties->clear();
    for (auto* bus : buses) {
        detail::emptySlotsOf(bus, m);
        detail::dropFrom(kalaccess::ties(bus, false), m);
    }
}

// The bus is being destroyed: no member may keep its link to it. Its slots are emptied.
template <class B>
void busGone(B* bus) {
    if (auto* slots = kalaccess::slots(bus)) {
        for (auto*& m : *slots) {
            if (!m) continue;
            // A member it holds either links here or is tied to it (below).
            if (m->getBus() == bus) kalaccess::setLink(m, static_cast<B*>(nullptr));
            m = nullptr;
        }
    }
    auto* ties = kalaccess::ties(bus, false);
    if (!ties) return;
    const auto members = std::move(*ties);
    ties->clear();
    for (auto* m : members) {
        if (m->getBus() == bus) kalaccess::setLink(m, static_cast<B*>(nullptr));
        detail::dropFrom(kalaccess::ties(m, false), bus);
    }
}

}  // namespace kalbusties

#endif
