// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "core/identity.h"
#include "core/maps.h"
#include "design/handedback.h"
#include "design/instanceorder.h"
#include "design/nameindex.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kaldualport.h"
#include "kalelements.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

// The member is cleared before its entries die, so that a dying entry that
// calls back into the design finds the map gone rather than half torn down.
// The entries named in `first` die first.
template <class Map>
void destroyAll(Map*& member, const std::vector<std::string>& first = {}) {
    Map* m = member;
    member = nullptr;
    for (const std::string& name : first) {
        auto it = m->find(name);
        if (it == m->end()) continue;
        auto* value = it->second;
        m->erase(it);
        delete value;
    }
    kalmaps::destroyAll(*m);
    delete m;
}

bool equalComponents(const kalcomponent* a, const kalcomponent* b) {
    if (a == b) return true;
    return a && b && *a == *b;
}

}  // namespace

// ---- kaldesigndata ----

kaldesigndata::kaldesigndata()
    : instanceMap(new std::map<std::string, kalcomponent*>()),
      instanceList(new std::list<kalcomponent*>()),
      netbusMap(new std::map<std::string, kalnetbus*>()),
      netMap(new std::map<std::string, kalnet*>()),
      dualPortMap(new std::map<std::string, kaldualport*>()),
      dualPortbusMap(new std::map<std::string, kaldualportbus*>()),
      virtualElementList(new std::list<kalelement*>()),
      instanceOrder(new kalinstanceorder(*instanceList)),
      netIndex(new kalnetindex(*netMap)),
      instanceIndex(new kalinstanceindex(*instanceMap)),
      handedBack(nullptr) {}

kaldesigndata::~kaldesigndata() {
    // The large index blocks go first: freed after the mass of small frees
    // below, each would make malloc consolidate all of those chunks again.
    netIndex->shed();
    instanceIndex->shed();
    instanceOrder->shed();
    // Buses before their members: a dual port bus clears its members' bus links
    // so that the dual ports do not call back into a design being torn down,
    // and net buses release their bit nets before the nets go.
    destroyAll(dualPortbusMap);
    destroyAll(dualPortMap);
    destroyAll(netbusMap);
    const std::vector<std::string> crowded = std::move(netIndex->crowded);
    delete netIndex;
    destroyAll(netMap, crowded);
    kalhandback::freeUnkeyed(this);  // the nets no key reached
    delete instanceIndex;
    destroyAll(instanceMap);
    delete instanceOrder;
    delete instanceList;
    delete virtualElementList;
}

std::map<std::string, kalcomponent*>* kaldesigndata::getInstanceMap() const {
    return instanceMap;
}
std::list<kalcomponent*>* kaldesigndata::getInstanceList() const {
    return instanceList;
}
std::map<std::string, kalnetbus*>* kaldesigndata::getNetbusMap() const {
    return netbusMap;
}
std::map<std::string, kalnet*>* kaldesigndata::getNetMap() const {
    return netMap;
}
std::map<std::string, kaldualport*>* kaldesigndata::getDualPortMap() const {
    return dualPortMap;
}
std::map<std::string, kaldualportbus*>* kaldesigndata::getDualPortbusMap() const {
    return dualPortbusMap;
}
std::list<kalelement*>* kaldesigndata::getVirtualElementList() const {
    return virtualElementList;
}

// ---- construction and attributes ----

kaldesign::kaldesign(const std::string* vendor, const std::string* library, const std::string* name,
                     const std::string* version)
    : identity(nullptr), owner(nullptr), data(nullptr) {
    std::unique_ptr<kaldesigndata> d(new kaldesigndata());
    std::unique_ptr<kalattributes> id(new kalattributes());
    kalidentity::set(*id, vendor, library, name, version);
    data = d.release();
    identity = id.release();
}

kaldesign::~kaldesign() {
    kalhandback::forget(this);  // a design handed back leaves its former owner's list
    delete identity;
    identity = nullptr;
    // What the design handed back outlives it without a link to it.
    kalhandback::ownerGone(this);
    delete data;
    data = nullptr;
}

void kaldesign::setAttribute(const std::string* key, const std::string* value, const std::string* vendor) {
    data->setAttribute(key, value, vendor);
}

void kaldesign::removeAttribute(const std::string* key) {
    data->removeAttribute(key);
}

// ---- lookups ----

kalcomponent* kaldesign::getInstance(const std::string* name) {
    if (!name || name->empty()) return owner;
    return data->instanceIndex->lookupAgain(*name);
}

kalport* kaldesign::getComponentPort(const std::string* portName, const std::string* instanceName) {
    if (!portName) return nullptr;
    kalcomponent* c = instanceName && !instanceName->empty() ? getInstance(instanceName) : owner;
    return c ? c->getPort(portName, false) : nullptr;
}

kalnetbus* kaldesign::getNetbus(const std::string* name) {
    return kalmaps::find(*data->getNetbusMap(), name);
}

kalnet* kaldesign::getNet(const std::string* name) {
    return data->netIndex->lookup(name);
}

std::list<kalelement*>* kaldesign::getVirtualElements() {
    static const std::string uvccio("UVCCIO");
    std::list<kalelement*>* list = data->getVirtualElementList();
    list->clear();
    for (auto& entry : *data->getInstanceMap()) {
        if (entry.first.empty() || !entry.second) continue;
        kalelements* catalogue = entry.second->getElements();
        if (!catalogue) continue;
        for (auto& element : catalogue->getElementMap()) {
            if (element.first.empty() || !element.second) continue;
            if (element.second->hasAttribute(&uvccio)) list->push_back(element.second);
        }
    }
    return list;
}

std::string kaldesign::getRelativeHierarchyName(kalport* port) const {
    if (!port) return std::string();
    std::string result = port->getName() ? *port->getName() : std::string();
    for (kalcomponent* c = port->getComponent(); c;) {
        const std::string* segment =
            c->parentDesign ? c->data->instanceName : c->identity->getAttributeValue(&kalidentity::nameKey);
        result = (segment ? *segment : std::string()) + "/" + result;
        if (!c->parentDesign || c->parentDesign == this) break;
        c = c->parentDesign->owner;
    }
    return result;
}

namespace {
// Seen from inside, a top port drives on 1/3; an instance port drives on 2/3.
bool drives(const kaldesign* design, const kalcomponent* c, int direction) {
    if (!c) return false;
    if (equalComponents(c, design->owner) && design->owner) return direction == 1 || direction == 3;
    if (c->parentDesign && (c->parentDesign == design || *design == *c->parentDesign))
        return direction == 2 || direction == 3;
    return false;
}
}  // namespace

bool kaldesign::isSourcePort(kalport* port) const {
    return port && drives(this, port->getComponent(), port->getDirection());
}

bool kaldesign::isSourcePort(kalportbus* bus) const {
    return bus && drives(this, bus->getComponent(), bus->getDirection());
}

namespace {
// A design being torn down has dropped its identity before its contents, whose
// ports still compare components and thereby designs: it reads as having none.
kalattributes& identityOf(const kaldesign& d) {
    static kalattributes* none = new kalattributes();  // never freed: used up to static destruction
    return d.identity ? *d.identity : *none;
}
}  // namespace

bool kaldesign::operator==(const kaldesign& other) const {
    if (this == &other) return true;
    return kalidentity::same(identityOf(*this), identityOf(other)) && equalComponents(owner, other.owner);
}

bool kaldesign::operator!=(const kaldesign& other) const {
    return !(*this == other);
}

// ---- adding ----

bool kaldesign::addInstance(std::string* name, kalcomponent* component) {
    if (!name || !component || !data->instanceIndex->emplace(*name, component)) return false;
    if (component->parentDesign) kalhandback::forget(component);  // handed back by a design before
    kalaccess::setInstanceName(component, *name);
    component->parentDesign = this;
    data->instanceOrder->append(component);
    kalrecords::instanceAdded(this, *component->data->instanceName);
    return true;
}

bool kaldesign::addNet(const std::string* name, const std::string* secondName, const std::string* type,
                       const std::string* text) {
    bool added = false;
    if (name && secondName) placeNet(*name, *secondName, type, text, added);
    return added;
}

kalnet* kaldesign::placeNet(const std::string& name, const std::string& secondName, const std::string* type,
                            const std::string* text, bool& added) {
    static const std::string typeKey("type");
    kalnet* net = data->netIndex->place(
        name, [&] { return new kalnet(&name, &secondName, text); }, added);
    if (!added) return net;
    if (type && !type->empty()) net->setAttribute(&typeKey, type, &kalidentity::spirit);
    kalaccess::setDesign(net, this);
    return net;
}

bool kaldesign::addNetbus(const std::string* name, const std::string* type, const std::string* secondName,
                          unsigned int first, unsigned int last, const std::string* text) {
    static const std::string typeKey("type");
    if (!name || !secondName || data->getNetbusMap()->count(*name)) return false;
    std::vector<kalnet*> bits;
    std::string bitName, bitSecond;
    const bool samePair = *secondName == *name;
    // The walk compares as signed 32-bit values; bounds from 2^31 up are not supported.
    const long long from = static_cast<int>(first), to = static_cast<int>(last);
    const long long step = last >= first ? 1 : -1;
    const long long width = (to - from) * step + 1;  // not positive when the walk is empty
    if (width > 0 && width <= 4096) bits.reserve(static_cast<std::size_t>(width));
    for (long long i = from; step > 0 ? i <= to : i >= to; i += step) {
        const unsigned int bit = static_cast<unsigned int>(i);
        kalbits::nameBit(bitName, *name, bit);
        if (!samePair) kalbits::nameBit(bitSecond, *secondName, bit);
        bool added;
        bits.push_back(placeNet(bitName, samePair ? bitName : bitSecond, type, text,
                                added));  // an existing net becomes the bit
    }
    kalnetbus* bus = kalnetbus::createNetBus(name, secondName, first, last, bits, text);
    if (type && !type->empty()) bus->setAttribute(&typeKey, type, &kalidentity::spirit, false);
    data->getNetbusMap()->emplace(*name, bus);
    kalaccess::setDesign(bus, this);
    return true;
}

void kaldesign::removeAllInstances() {
    for (auto& entry : *data->getInstanceMap())
        if (entry.second) kalhandback::note(this, entry.second);
    data->instanceIndex->clear();
    data->instanceOrder->clear();
}
