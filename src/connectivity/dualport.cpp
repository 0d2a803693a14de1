// SPDX-License-Identifier: Apache-2.0
// Dual ports and dual port buses.
#include "core/text.h"
#include "design/handedback.h"
#include "kaldualport.h"

#include <algorithm>
#include <cstddef>

#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "connectivity/busties.h"
#include "connectivity/propagate.h"
#include "core/keys.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

// ---- port <-> dual port: the only two places where the pair changes ----
//
// A port can be in the lists of several dual ports while its link names at
// most one of them, so each port keeps the dual ports that list it: a port
// that is destroyed leaves every list it is in.

void enlist(std::vector<kalport*>& list, kalport* port, kaldualport* dualPort) {
    list.push_back(port);
    if (!port) return;
    kalaccess::setDualPort(port, dualPort);
    auto& listers = *kalaccess::listers(port, true);
    if (std::find(listers.begin(), listers.end(), dualPort) == listers.end()) listers.push_back(dualPort);
}

kalport* delist(std::vector<kalport*>& list, std::vector<kalport*>::iterator at, kaldualport* dualPort) {
    kalport* port = *at;
    list.erase(at);
    if (!port) return port;
    kalaccess::setDualPort(port, nullptr);
    if (std::find(list.begin(), list.end(), port) == list.end()) {
        if (auto* listers = kalaccess::listers(port, false))
            listers->erase(std::remove(listers->begin(), listers->end(), dualPort), listers->end());
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

// The slot of bit index, or past the end when index is outside the range.
std::size_t slotOf(unsigned int msb, unsigned int lsb, unsigned int index) {
    return kalbits::inRange(index, msb, lsb) ? kalbits::slot(index, msb) : static_cast<std::size_t>(-1);
}

}  // namespace

// ---------------------------------------------------------------- kaldualport

struct kaldualport::extras {
    kaldualportbus* bus = nullptr;
    std::vector<kaldualportbus*> ties;  // see busties.h
};

kaldualport::extras& kaldualport::more() {
    if (!extra) extra = new extras();
    return *extra;
}
std::vector<kaldualportbus*>* kalaccess::ties(kaldualport* d, bool make) {
    return make || d->extra ? &d->more().ties : nullptr;
}
void kalaccess::setLink(kaldualport* d, kaldualportbus* b) {
    if (b || d->extra) d->more().bus = b;
}

kaldualport::kaldualport(const std::string& name_) : name(name_), design(nullptr), extra(nullptr) {}

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
    if (bus_) kalbusties::setLink(this, bus_);
}

void kaldualport::unsetBus() {
    kalbusties::setLink(this, static_cast<kaldualportbus*>(nullptr));
}

kaldualport::~kaldualport() {
    kalhandback::forget(this);
    while (!ports.empty())
        delist(ports, ports.begin(), this);

    if (kaldualportbus* bus = getBus()) {
        kalbusties::emptySlot(bus, kalbusties::firstHolding(bus, this), this);
        if (kaldesign* owner = bus->getDesign()) {
            // The design may rework its bus map while handling this; keep our own copy of the key.
            const std::string busName = bus->getName();
            owner->removeDualPortBus(busName);
        }
    }
    // Slots that still hold this dual port (a second slot, or a bus it has
    // since left) are emptied so that no bus keeps a pointer to it.
    kalbusties::memberGone(this);
    delete extra;
}

const std::string& kaldualport::getName() const {
    return name;
}
kaldesign* kaldualport::getDesign() const {
    return design;
}
kaldualportbus* kaldualport::getBus() const {
    return extra ? extra->bus : nullptr;
}
void kaldualport::setDesign(kaldesign* design_) {
    design = design_;
}

// ------------------------------------------------------------- kaldualportbus

kaldualportbus::kaldualportbus(const std::string& name_, unsigned int msb_, unsigned int lsb_)
    : name(name_), extra(nullptr), msb(msb_), lsb(lsb_) {
    // A bus without a name stays without slots, whatever its range.
    if (!name.empty()) slotVector.assign(kalbits::width(msb, lsb), nullptr);
}

kaldualportbus* kaldualportbus::createDualPortBus(std::string name, unsigned int msb, unsigned int lsb,
                                                  std::vector<kaldualport*> dualPorts) {
    // Checked against the range, not the slot vector, so that an unnamed bus
    // is held to the same width.
    if (dualPorts.size() != kalbits::width(msb, lsb)) return nullptr;
    kaldualportbus* created = new kaldualportbus(name, msb, lsb);
    created->slotVector.assign(dualPorts.size(), nullptr);
    for (std::size_t k = 0; k < dualPorts.size(); ++k)
        if (dualPorts[k]) kalbusties::place(created, k, dualPorts[k]);
    return created;
}

unsigned int kaldualportbus::getDualPortsCount() const {
    return static_cast<unsigned int>(slotVector.size());
}

void kaldualportbus::connect(unsigned int index, kaldualport* dualPort) {
    std::size_t slot = slotOf(msb, lsb, index);
    // A former occupant is not told: it keeps its link to this bus.
    if (dualPort && slot < slotVector.size()) kalbusties::place(this, slot, dualPort);
}

void kaldualportbus::disconnect(unsigned int index) {
    kalbusties::emptySlot(this, slotOf(msb, lsb, index));
}

void kaldualportbus::disconnect(kaldualport* dualPort) {
    if (dualPort) kalbusties::emptySlot(this, kalbusties::firstHolding(this, dualPort));
}

int kaldualportbus::direction() const {
    return slotVector.empty() || !slotVector.front() ? 0 : slotVector.front()->direction();
}

// The propagating forms reach only filled slots; callers use them on complete buses.
void kaldualportbus::setAttribute(const std::string* name_, const std::string* value,
                                  const std::string* vendor, bool propagate) {
    kalpropagate::apply(*this, &slotVector, propagate,
                        [&](kalattributes& a) { a.setAttribute(name_, value, vendor); });
}

void kaldualportbus::setAttributeValue(const std::string* name_, const std::string* value, bool propagate) {
    kalpropagate::apply(*this, &slotVector, propagate,
                        [&](kalattributes& a) { a.setAttributeValue(name_, value); });
}

void kaldualportbus::removeAttribute(const std::string* name_, bool propagate) {
    kalpropagate::apply(*this, &slotVector, propagate, [&](kalattributes& a) { a.removeAttribute(name_); });
}

void kaldualportbus::removeAllAttributes(bool propagate) {
    kalpropagate::apply(*this, &slotVector, propagate, [&](kalattributes& a) { a.removeAllAttributes(); });
}

struct kaldualportbus::extras {
    kaldesign* design = nullptr;
    std::vector<kaldualport*> ties;  // see busties.h
};

kaldualportbus::extras& kaldualportbus::more() {
    if (!extra) extra = new extras();
    return *extra;
}
std::vector<kaldualport*>* kalaccess::ties(kaldualportbus* b, bool make) {
    return make || b->extra ? &b->more().ties : nullptr;
}

kaldualportbus::~kaldualportbus() {
    kalhandback::forget(this);
    // Members that left their slot but kept the link must not outlive it with a dangling bus.
    kalbusties::busGone(this);
    delete extra;
}

const std::string& kaldualportbus::getName() const {
    return name;
}
kaldesign* kaldualportbus::getDesign() const {
    return extra ? extra->design : nullptr;
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
    if (design_ || extra) more().design = design_;
}
