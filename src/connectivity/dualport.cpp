// SPDX-License-Identifier: Apache-2.0
// Dual ports and dual port buses.
#include "core/text.h"
#include "design/handedback.h"
#include "kaldualport.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <set>

#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "connectivity/duallists.h"
#include "core/keys.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

// Every dual port that lists a port, whatever the port's link says (see duallists.h).
std::map<const kalport*, std::set<kaldualport*>>& listers() {
    // Never freed: model objects may still die during static destruction.
    static auto* table = new std::map<const kalport*, std::set<kaldualport*>>();
    return *table;
}

// The tables here are shared by every model in the process; separate models may live on separate threads.
std::recursive_mutex& tablesLock() {
    static auto* lock = new std::recursive_mutex();
    return *lock;
}

// Entries of listers(). Every port asks on its way out; while no port is listed
// (the usual case) it is answered without the lock. Another thread's entries
// concern another model, so a stale zero is safe.
std::atomic<std::size_t> listedPorts{0};
void countListed() {
    listedPorts.store(listers().size(), std::memory_order_release);
}

// ---- port <-> dual port: the only two places where the pair changes ----

void enlist(std::vector<kalport*>& list, kalport* port, kaldualport* dualPort) {
    list.push_back(port);
    if (!port) return;
    kalaccess::setDualPort(port, dualPort);
    std::lock_guard<std::recursive_mutex> hold(tablesLock());
    listers()[port].insert(dualPort);
    countListed();
}

kalport* delist(std::vector<kalport*>& list, std::vector<kalport*>::iterator at, kaldualport* dualPort) {
    kalport* port = *at;
    list.erase(at);
    if (!port) return port;
    kalaccess::setDualPort(port, nullptr);
    if (std::find(list.begin(), list.end(), port) == list.end()) {
        std::lock_guard<std::recursive_mutex> hold(tablesLock());
        auto it = listers().find(port);
        if (it != listers().end()) {
            it->second.erase(dualPort);
            if (it->second.empty()) listers().erase(it);
        }
        countListed();
    }
    return port;
}

// The key under which a member is removed: one level only, "u1/A" for a port
// of instance u1, "<Name>/A" for a port of a component that is no instance.
// Members come from instances placed directly in the dual port's design, so
// one level is also what a port's destructor asks for.
bool memberNameIs(const kalport* port, const std::string& wanted) {
    static const std::string nameKey("Name");
    if (!port || !port->getName()) return false;
    const kalcomponent* c = port->getComponent();
    std::string prefix;
    if (c && c->parentDesign) {
        prefix = kalkeys::instanceName(c);
    } else if (c && c->identity) {
        const std::string* name = c->identity->getAttributeValue(&nameKey);
        if (name) prefix = *name;
    }
    return prefix + "/" + kaltext::orEmpty(port->getName()) == wanted;
}

// ---- dual port <-> bus ----
//
// A bus link is not always mirrored by a slot: an overwritten or emptied slot
// leaves the former occupant linked, and one dual port can sit in several
// slots or buses. Every pairing ever made is remembered, so that whichever
// side is destroyed first clears the other's reference and nothing is left
// pointing at freed memory.
struct tieTable {
    std::map<kaldualport*, std::set<kaldualportbus*>> busesOf;
    std::map<kaldualportbus*, std::set<kaldualport*>> membersOf;
};

tieTable& ties() {
    // Never freed: model objects may still die during static destruction.
    static tieTable* table = new tieTable();
    return *table;
}

void tie(kaldualport* dualPort, kaldualportbus* bus) {
    std::lock_guard<std::recursive_mutex> hold(tablesLock());
    ties().busesOf[dualPort].insert(bus);
    ties().membersOf[bus].insert(dualPort);
}

// Buses still holding the dual port, untied from it.
std::set<kaldualportbus*> untie(kaldualport* dualPort) {
    std::set<kaldualportbus*> buses;
    std::lock_guard<std::recursive_mutex> hold(tablesLock());
    auto it = ties().busesOf.find(dualPort);
    if (it == ties().busesOf.end()) return buses;
    buses.swap(it->second);
    ties().busesOf.erase(it);
    for (kaldualportbus* bus : buses)
        ties().membersOf[bus].erase(dualPort);
    return buses;
}

std::set<kaldualport*> untie(kaldualportbus* bus) {
    std::set<kaldualport*> members;
    std::lock_guard<std::recursive_mutex> hold(tablesLock());
    auto it = ties().membersOf.find(bus);
    if (it == ties().membersOf.end()) return members;
    members.swap(it->second);
    ties().membersOf.erase(it);
    for (kaldualport* member : members)
        ties().busesOf[member].erase(bus);
    return members;
}

// The slot of bit index, or past the end when index is outside the range.
std::size_t slotOf(unsigned int msb, unsigned int lsb, unsigned int index) {
    return kalbits::inRange(index, msb, lsb) ? kalbits::slot(index, msb) : static_cast<std::size_t>(-1);
}

}  // namespace

void kalduallists::portGone(const kalport* port) {
    if (listedPorts.load(std::memory_order_acquire) == 0) return;
    std::lock_guard<std::recursive_mutex> hold(tablesLock());
    auto it = listers().find(port);
    if (it == listers().end()) return;
    const std::set<kaldualport*> lists = std::move(it->second);
    listers().erase(it);
    countListed();
    for (kaldualport* dualPort : lists)
        kalaccess::forgetPort(dualPort, port);
}

// ---------------------------------------------------------------- kaldualport

kaldualport::kaldualport(const std::string& name_) : name(name_), design(nullptr), bus(nullptr) {}

std::vector<kalport*> kaldualport::getPortList() const {
    return ports;
}

bool kaldualport::addPort(kalport* port) {
    if (!port) return false;
    if (std::find(ports.begin(), ports.end(), port) != ports.end()) return true;
    enlist(ports, port, this);
    return true;
}

bool kaldualport::addPort(std::vector<kalport*> added) {
    if (added.empty()) return false;
    for (kalport* port : added)
        enlist(ports, port, this);
    return true;
}

kalport* kaldualport::removePort(const std::string& hierarchicalName) {
    if (hierarchicalName.empty() || ports.empty()) return nullptr;
    for (auto it = ports.begin(); it != ports.end(); ++it) {
        if (memberNameIs(*it, hierarchicalName)) return delist(ports, it, this);
    }
    return nullptr;
}

int kaldualport::direction() const {
    // The first port speaks for all; the others are not consulted.
    return ports.empty() || !ports.front() ? 0 : ports.front()->getDirection();
}

kalnet* kaldualport::getConnectedNet() const {
    kalport* port = getConnectedPort();
    return port ? port->getNet() : nullptr;
}

kalport* kaldualport::getConnectedPort() const {
    for (kalport* port : ports) {
        if (port && port->getNet()) return port;
    }
    return nullptr;
}

bool kaldualport::isConnected() const {
    return getConnectedPort() != nullptr;
}

kalport* kaldualport::getExportedTo() const {
    for (kalport* port : ports) {
        kalport* target = port ? port->getExportedTo() : nullptr;
        if (target) return target;
    }
    return nullptr;
}

unsigned int kaldualport::getPortsCount() const {
    return static_cast<unsigned int>(ports.size());
}

void kaldualport::setBus(kaldualportbus* bus_) {
    if (!bus_) return;
    bus = bus_;
    tie(this, bus_);
}

void kaldualport::unsetBus() {
    bus = nullptr;
}

kaldualport::~kaldualport() {
    kalhandback::forget(this);
    while (!ports.empty())
        delist(ports, ports.begin(), this);

    if (bus) {
        bus->disconnect(this);
        if (kaldesign* owner = bus->getDesign()) {
            // The design may rework its bus map while handling this; keep our own copy of the key.
            const std::string busName = bus->getName();
            owner->removeDualPortBus(busName);
        }
    }

    // Slots that still hold this dual port (a second slot, or a bus it has
    // since left) are emptied so that no bus keeps a pointer to it.
    for (kaldualportbus* holder : untie(this)) {
        const std::vector<kaldualport*> slots = holder->getSlots();
        for (auto n = std::count(slots.begin(), slots.end(), this); n > 0; --n)
            holder->disconnect(this);
    }
}

const std::string& kaldualport::getName() const {
    return name;
}
kaldesign* kaldualport::getDesign() const {
    return design;
}
kaldualportbus* kaldualport::getBus() const {
    return bus;
}
void kaldualport::setDesign(kaldesign* design_) {
    design = design_;
}

// ------------------------------------------------------------- kaldualportbus

kaldualportbus::kaldualportbus(const std::string& name_, unsigned int msb_, unsigned int lsb_)
    : name(name_), design(nullptr), msb(msb_), lsb(lsb_) {
    // A bus without a name stays without slots, whatever its range.
    if (!name.empty()) slotVector.assign(kalbits::width(msb, lsb), nullptr);
}

kaldualportbus* kaldualportbus::createDualPortBus(std::string name, unsigned int msb, unsigned int lsb,
                                                  std::vector<kaldualport*> dualPorts) {
    // Checked against the range, not the slot vector, so that an unnamed bus
    // is held to the same width.
    if (dualPorts.size() != kalbits::width(msb, lsb)) return nullptr;
    kaldualportbus* created = new kaldualportbus(name, msb, lsb);
    created->slotVector = std::move(dualPorts);
    for (kaldualport* member : created->slotVector) {
        if (member) member->setBus(created);
    }
    return created;
}

unsigned int kaldualportbus::getDualPortsCount() const {
    return static_cast<unsigned int>(slotVector.size());
}

void kaldualportbus::connect(unsigned int index, kaldualport* dualPort) {
    std::size_t slot = slotOf(msb, lsb, index);
    if (!dualPort || slot >= slotVector.size()) return;
    // A former occupant is not told: it keeps its link to this bus.
    slotVector[slot] = dualPort;
    dualPort->setBus(this);
}

void kaldualportbus::disconnect(unsigned int index) {
    std::size_t slot = slotOf(msb, lsb, index);
    if (slot < slotVector.size()) slotVector[slot] = nullptr;
}

void kaldualportbus::disconnect(kaldualport* dualPort) {
    if (!dualPort) return;
    auto it = std::find(slotVector.begin(), slotVector.end(), dualPort);
    if (it != slotVector.end()) *it = nullptr;
}

int kaldualportbus::direction() const {
    return slotVector.empty() || !slotVector.front() ? 0 : slotVector.front()->direction();
}

// The propagating forms reach only filled slots; callers use them on complete buses.
void kaldualportbus::setAttribute(const std::string* name_, const std::string* value,
                                  const std::string* vendor, bool propagate) {
    kalattributes::setAttribute(name_, value, vendor);
    if (!propagate) return;
    for (kaldualport* member : slotVector) {
        if (member) member->setAttribute(name_, value, vendor);
    }
}

void kaldualportbus::setAttributeValue(const std::string* name_, const std::string* value, bool propagate) {
    kalattributes::setAttributeValue(name_, value);
    if (!propagate) return;
    for (kaldualport* member : slotVector) {
        if (member) member->setAttributeValue(name_, value);
    }
}

void kaldualportbus::removeAttribute(const std::string* name_, bool propagate) {
    kalattributes::removeAttribute(name_);
    if (!propagate) return;
    for (kaldualport* member : slotVector) {
        if (member) member->removeAttribute(name_);
    }
}

void kaldualportbus::removeAllAttributes(bool propagate) {
    kalattributes::removeAllAttributes();
    if (!propagate) return;
    for (kaldualport* member : slotVector) {
        if (member) member->removeAllAttributes();
    }
}

kaldualportbus::~kaldualportbus() {
    kalhandback::forget(this);
    for (kaldualport*& member : slotVector) {
        if (member) member->unsetBus();
        member = nullptr;
    }
    // Members that left their slot but kept the link must not outlive it with a dangling bus.
    for (kaldualport* former : untie(this)) {
        if (former->getBus() == this) former->unsetBus();
    }
}

const std::string& kaldualportbus::getName() const {
    return name;
}
kaldesign* kaldualportbus::getDesign() const {
    return design;
}
std::vector<kaldualport*> kaldualportbus::getSlots() const {
    return slotVector;
}
unsigned int kaldualportbus::getMsb() const {
    return msb;
}
unsigned int kaldualportbus::getLsb() const {
    return lsb;
}
void kaldualportbus::setDesign(kaldesign* design_) {
    design = design_;
}
