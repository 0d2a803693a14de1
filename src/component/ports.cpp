// SPDX-License-Identifier: Apache-2.0
// Port and port bus management of a component: adding, finding, renaming and
// removing, with the records that announce renames and removals.
#include <memory>

#include "core/text.h"
#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "connectivity/busrename.h"
#include "connectivity/busties.h"
#include "kalcomponent.h"
#include "kalport.h"
#include "kalutilities.h"

namespace {

using portmap = std::map<std::string, kalport*>;

template <class Map>
typename Map::mapped_type find(Map& m, const std::string& name) {
    auto it = m.find(name);
    return it == m.end() ? nullptr : it->second;
}

// Resolves "top/u1/a" to the component named by all but the last part and
// hands back the last part.
kalcomponent* resolveOwner(kalcomponent* self, const std::string& path, std::string& leaf) {
    static const std::string slash("/");
    std::unique_ptr<std::vector<std::string>> parts(kalutilities::deconstructString(&path, &slash));
    leaf = parts->back();
    parts->pop_back();
    std::unique_ptr<std::string> owner(kalutilities::reconstructString(parts.get(), &slash));
    return self->getComponent(owner.get());
}

// addPort's work: answers the port the name maps to, new or not (null when
// the name maps to no port). `hint` is where the previous name went: names
// mostly arrive in order (i0 ... o7, d[0] ... d[9], d[10] ...), and a name
// that belongs beside the hint costs no descent of the map.
kalport* placePort(kalcomponent* c, const std::string& name, const std::string& second, int direction,
                   const std::string* text, bool& added, portmap::iterator& hint) {
    auto& ports = c->data->ports;
    const std::size_t before = ports.size();
    auto at = ports.emplace_hint(hint, name, nullptr);
    hint = at;
    added = ports.size() != before;
    if (!added) return at->second;
    try {
        at->second = new kalport(&name, &second, direction, text);
    } catch (...) {
        hint = ports.end();
        ports.erase(at);
        throw;
    }
    kalaccess::setComponent(at->second, c);
    return at->second;
}

}  // namespace

int kalcomponent::addPort(const std::string* name, const std::string* second, int direction,
                          const std::string* fourth) {
    bool added = false;
    auto hint = data->ports.end();
    if (name && second) placePort(this, *name, *second, direction, fourth, added, hint);
    return added ? 1 : 0;
}

int kalcomponent::addPortbus(const std::string* name, const std::string* second, unsigned int msb,
                             unsigned int lsb, int direction, const std::string* fourth) {
    if (!name || !second || data->portbuses.count(*name)) return 0;
    auto* bus = new kalportbus(name, second, msb, lsb, direction, fourth);
    data->portbuses.emplace(*name, bus);
    kalaccess::setComponent(bus, this);
    unsigned int low = msb < lsb ? msb : lsb, high = msb < lsb ? lsb : msb;
    std::string bitName, bitSecond;
    const bool samePair = *second == *name;
    auto hint = data->ports.end();
    for (unsigned long long i = low; i <= high; ++i) {
        const unsigned int bit = static_cast<unsigned int>(i);
        kalbits::nameBit(bitName, *name, bit);
        if (!samePair) kalbits::nameBit(bitSecond, *second, bit);
        bool added;
        // An existing port of that name becomes the bit.
        kalport* port =
            placePort(this, bitName, samePair ? bitName : bitSecond, direction, fourth, added, hint);
        if (!port) continue;
        kalbusties::place(bus, kalbits::slot(bit, msb), port);
    }
    return 1;
}

kalport* kalcomponent::getPort(const std::string* name, bool hierarchical) {
    if (!name) return nullptr;
    if (!hierarchical) return find(data->ports, *name);
    std::string leaf;
    kalcomponent* owner = resolveOwner(this, *name, leaf);
    return owner ? owner->getPort(&leaf, false) : nullptr;
}

kalportbus* kalcomponent::getPortbus(const std::string* name, bool hierarchical) {
    if (!name) return nullptr;
    if (!hierarchical) return find(data->portbuses, *name);
    std::string leaf;
    kalcomponent* owner = resolveOwner(this, *name, leaf);
    return owner ? owner->getPortbus(&leaf, false) : nullptr;
}

#include "connectivity/bits.h"
#include "events/records.h"
#include "kaldesign.h"
#include "kalnet.h"

int kalcomponent::changePortName(const std::string* oldName, const std::string* newName) {
    if (!oldName || !newName || oldName->empty() || newName->empty()) return 0;
    if (*oldName == *newName) return 1;
    auto& ports = data->ports;
    auto it = ports.find(*oldName);
    if (it == ports.end() || ports.count(*newName)) return 0;
    const std::string from = *oldName, to = *newName;  // either may be the port's own name
    kalport* port = it->second;
    ports.erase(it);
    if (!ports.emplace(to, port).second) {
        ports.emplace(from, port);
        return 0;
    }
    kalaccess::setName(port, &to);
    kalaccess::setSecondName(port, &to);
    kalrecords::portRenamed(port->getComponent(), from, to);
    return 1;
}

int kalcomponent::changePortbusName(const std::string* oldName, const std::string* newName) {
    if (!oldName || !newName || oldName->empty() || newName->empty()) return 0;
    if (*oldName == *newName) return 1;
    auto& buses = data->portbuses;
    auto it = buses.find(*oldName);
    if (it == buses.end() || buses.count(*newName)) return 0;
    const std::string from = *oldName, to = *newName;
    // The bits are keyed in the port map. An empty port taken over as a bit
    // has no name to find its entry by: its key is all there is.
    struct portKeys {
        kalcomponent* owner;
        std::map<std::string, kalport*>& ports;
        bool owns(const kalport* p) const { return p->getComponent() == owner; }
        bool taken(const std::string& name) { return ports.count(name) != 0; }
        void drop(kalport* p) {
            if (p->getName()) {
                ports.erase(*p->getName());
                return;
            }
            for (auto at = ports.begin(); at != ports.end(); ++at)
                if (at->second == p) {
                    ports.erase(at);
                    return;
                }
        }
        void add(const std::string& name, kalport* p) { ports.emplace(name, p); }
    };
    kalportbus* bus = it->second;
    if (!kalbusrename::apply(buses, it, from, to, portKeys{this, data->ports})) return 0;
    kalrecords::portbusRenamed(bus->getComponent(), from, to);
    return 1;
}

int kalcomponent::removePort(const std::string* name) {
    if (!name) return 0;
    auto it = data->ports.find(*name);
    if (it == data->ports.end()) return 0;
    const std::string portName = *name;  // may be the port's own name
    kalport* port = it->second;
    const kalcomponent* owner = port->getComponent();
    if (kalportbus* bus = port->getBus()) {
        const kaltext::copied busName(bus->getName());
        removePortbus(busName.get());
    }
    data->ports.erase(portName);
    delete port;
    kalrecords::portRemoved(owner, portName);
    return 1;
}

int kalcomponent::removePortbus(const std::string* name) {
    if (!name) return 0;
    auto it = data->portbuses.find(*name);
    if (it == data->portbuses.end()) return 0;
    const std::string busName = *name;
    kalportbus* bus = it->second;
    const std::vector<kalport*> bits = bus->getBits();
    const kalcomponent* owner = bus->getComponent();
    data->portbuses.erase(it);
    delete bus;  // the bits stay as scalar ports, their bus links cleared
    kalrecords::portbusRemoved(owner, busName);
    for (kalport* bit : bits) {
        kalnet* net = bit ? bit->getNet() : nullptr;
        if (!net) continue;
        kalrecords::netAdded(net);
    }
    return 1;
}

int kalcomponent::deletePortbus(const std::string* name) {
    if (!name) return 0;
    auto it = data->portbuses.find(*name);
    if (it == data->portbuses.end()) return 0;
    const std::string busName = *name;
    kalportbus* bus = it->second;
    // A bit leaves the bus before it goes, so that removePort does not take the
    // bus with it. The port a bit's name reaches may be another one that still
    // links to the bus: removing it removes the bus (with its record), which
    // ends the work here.
    const auto registered = [&] {
        auto at = data->portbuses.find(busName);
        return at != data->portbuses.end() && at->second == bus;
    };
    const bool kept = kalbusties::drain(bus, registered, [&](kalport* bit) {
        const kaltext::copied bitName(bit->getName());
        removePort(bitName.get());
    });
    if (!kept) return 1;
    data->portbuses.erase(busName);
    delete bus;
    return 1;
}
