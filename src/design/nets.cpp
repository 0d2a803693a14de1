// SPDX-License-Identifier: Apache-2.0
// Net and net bus editing: renames, range changes and removals.
#include <memory>

#include "core/text.h"
#include "connectivity/access.h"
#include "connectivity/roles.h"
#include "connectivity/bits.h"
#include "connectivity/busrename.h"
#include "connectivity/busties.h"
#include "design/handedback.h"
#include "design/nameindex.h"
#include "design/prune.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"
#include "kalutilities.h"

bool kaldesign::removeNetbus(const std::string* name) {
    if (!name) return false;
    auto* buses = data->getNetbusMap();
    if (!buses) return true;  // called back while the design is torn down
    auto it = buses->find(*name);
    if (it == buses->end()) return true;
    const std::string busName = *name;  // name may belong to the bus
    kalnetbus* bus = it->second;
    buses->erase(it);
    if (bus) {
        kalaccess::markHandedBack(bus);
        kalhandback::note(this, bus);
    }
    kalrecords::netbusRemoved(this, busName);
    return true;
}

bool kaldesign::changeNetName(const std::string* oldName, const std::string* newName) {
    kalnetindex& nets = *data->netIndex;
    if (!oldName || !newName) return false;
    auto it = nets.find(*oldName);
    if (it == data->getNetMap()->end()) return false;
    const std::string from = *oldName, to = *newName;  // either may be the net's own name
    kalnet* net = it->second;
    nets.erase(it);
    if (!nets.emplace(to, net)) {
        nets.emplace(from, net);
        return false;
    }
    kalaccess::setName(net, &to);
    kalaccess::setSecondName(net, &to);
    kalport* top = kalroles::firstTopPort(net);
    if (top && top->getComponent()) {
        const kaltext::copied portName(top->getName());
        top->getComponent()->changePortName(portName.get(), &to);
    }
    kalrecords::netRenamed(net->getDesign(), from, to);
    return true;
}

bool kaldesign::changeNetbusName(const std::string* oldName, const std::string* newName) {
    auto* buses = data->getNetbusMap();
    kalnetindex& nets = *data->netIndex;
    if (!oldName || !newName || oldName->empty() || newName->empty() || *oldName == *newName) return false;
    if (buses->count(*newName)) return false;
    auto it = buses->find(*oldName);
    if (it == buses->end()) return false;
    const std::string from = *oldName, to = *newName;
    // The bits are keyed in the net map, each under its own name.
    // A bit that no key reached erases the key of the net holding its name:
    // both are settled afterwards.
    struct netKeys {
        const kaldesign* design;
        kalnetindex& nets;
        std::vector<kalnet*>& touched;
        bool owns(const kalnet* bit) const { return bit->getDesign() == design && bit->getName(); }
        bool taken(const std::string& name) { return nets.contains(name); }
        void drop(kalnet* bit) {
            touched.push_back(nets.lookup(bit->getName()));
            touched.push_back(bit);
            nets.erase(*bit->getName());
        }
        void add(const std::string& name, kalnet* bit) { nets.emplace(name, bit); }
    };
    kalnetbus* bus = it->second;
    std::vector<kalnet*> touched;
    if (!kalbusrename::apply(*buses, it, from, to, netKeys{this, nets, touched})) return false;
    kalhandback::settleKeys(this, touched);

    // A bus without slots fails here, after the rename, as it always has. An
    // empty first slot (its net destroyed while another bus held it too)
    // reaches no top port.
    kalnet* first = bus->getBits().at(0);
    kalport* top = first ? kalroles::firstTopPort(first) : nullptr;
    if (!top) return false;  // the rename stays; no port bus to follow it
    kalportbus* portbus = top->getBus();
    if (portbus && top->getComponent()) {
        const kaltext::copied busName(portbus->getName());
        top->getComponent()->changePortbusName(busName.get(), &to);
    }
    kalrecords::netbusRenamed(bus->getDesign(), from, to);
    return true;
}

bool kaldesign::changeNetBusRange(const std::string* name, unsigned int first, unsigned int last) {
    kalnetbus* bus = getNetbus(name);
    if (!bus) return false;
    if (kalbits::width(first, last) != kalbits::width(bus->getMsb(), bus->getLsb())) return false;
    if (first == bus->getMsb() && last == bus->getLsb()) return true;
    kalnetindex& nets = *data->netIndex;
    const std::string busName = *name;
    // Nets of another design (a bus slot can be given to any net) are keyed
    // in their own design's index: they keep their names, like empty slots.
    std::vector<kalnet*> slots = bus->getBits();
    for (kalnet*& bit : slots)
        if (bit && (bit->getDesign() != this || !bit->getName())) bit = nullptr;
    std::vector<std::unique_ptr<std::string>> fresh(slots.size());
    // The bits, and the nets whose keys they erase (a bit no key reached
    // shares its name with the net holding the key): settled at the end.
    std::vector<kalnet*> touched(slots.begin(), slots.end());
    kalbits::forEachSlot(slots, first, last, [&](std::size_t k, kalnet* bit, unsigned int index) {
        if (!bit) return;
        fresh[k].reset(kalutilities::constructBusBit(&busName, index));
        touched.push_back(nets.lookup(bit->getName()));
        nets.erase(*bit->getName());
    });
    // Proceeds only when every new name is already a key (held by other nets).
    for (auto& n : fresh) {
        if (!n || nets.contains(*n)) continue;
        for (kalnet* bit : slots)
            if (bit) nets.emplace(*bit->getName(), bit);
        kalhandback::settleKeys(this, touched);
        return false;
    }
    for (std::size_t k = 0; k < slots.size(); ++k) {
        if (!slots[k]) continue;
        kalaccess::setName(slots[k], fresh[k].get());
        nets.emplace(*fresh[k], slots[k]);  // a taken key keeps its present entry: the bit is unkeyed
    }
    kalaccess::setRange(bus, first, last);
    kalhandback::settleKeys(this, touched);
    return true;
}

bool kaldesign::removeNet(const std::string* name) {
    kalnetindex& nets = *data->netIndex;
    if (!name) return false;
    auto it = nets.find(*name);
    if (it == data->getNetMap()->end()) return false;
    const std::string netName = *name;
    kalnet* net = it->second;
    for (kalport* port : net->getPorts()) {
        net->disconnect(port, true);
        kalcomponent* c = port->getComponent();
        if (c && c->parentDesign == net->getDesign()) {
            port->unexport();
        } else if (c) {
            const kaltext::copied portName(port->getName());
            c->removePort(portName.get());
        }
    }
    kalrecords::netRemoved(net->getDesign(), netName);
    nets.erase(netName);
    kalnetbus* bus = net->getBus();
    // A bus handed back by removeNetbus is the caller's: no longer the design's to drop.
    std::vector<kalnet*> bits = bus && !kalaccess::handedBack(bus) ? bus->getBits() : std::vector<kalnet*>();
    if (!bits.empty()) {
        std::size_t connected = 0;
        for (kalnet* bit : bits)
            if (bit && !bit->getPorts().empty()) ++connected;
        if (connected == 1) {
            const std::string busName = *bus->getName();
            kaldesign* busDesign = bus->getDesign();
            kaldesign* owning = busDesign ? busDesign : this;
            owning->removeNetbus(&busName);
            delete bus;
            kalrecords::netbusRemoved(busDesign, busName);  // reported a second time, as consumers expect
        }
    }
    delete net;
    return true;
}

bool kaldesign::deleteNetbus(const std::string* name) {
    auto* buses = data->getNetbusMap();
    if (!name) return false;
    auto it = buses->find(*name);
    if (it == buses->end()) return false;
    const std::string busName = *name;
    kalnetbus* bus = it->second;
    // A bit leaves the bus before it goes, so that removeNet does not take the
    // bus with it. The net a bit's name reaches may be another one that still
    // links to the bus: removing it destroys the bus too, which ends the work here.
    const auto registered = [&] {
        auto at = buses->find(busName);
        return at != buses->end() && at->second == bus;
    };
    const bool kept = kalbusties::drain(bus, registered, [&](kalnet* bit) {
        const kaltext::copied bitName(bit->getName());
        removeNet(bitName.get());
    });
    if (!kept) return true;
    buses->erase(busName);
    delete bus;
    return true;
}
