// SPDX-License-Identifier: Apache-2.0
// Dual port management: merging ports into dual ports and dual port buses,
// splitting them again, and removing them. A design that no component holds
// changes its maps but announces nothing.
#include <set>
#include <utility>

#include "connectivity/busties.h"
#include "design/handedback.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kaldualport.h"
#include "kalnet.h"
#include "kalport.h"

#include "connectivity/access.h"

namespace {

template <class Map>
typename Map::mapped_type find(Map* m, const std::string& name) {
    if (name.empty()) return nullptr;
    auto it = m->find(name);
    return it == m->end() ? nullptr : it->second;
}

}  // namespace

kaldualport* kaldesign::getDualPort(const std::string& name) {
    return find(data->getDualPortMap(), name);
}

kaldualportbus* kaldesign::getDualPortbus(const std::string& name) {
    return find(data->getDualPortbusMap(), name);
}

void kaldesign::insertDualPort(const std::string& name, kaldualport* dualPort) {
    auto* map = data->getDualPortMap();
    if (name.empty() || !dualPort || map->count(name)) return;
    kalhandback::forget(dualPort);  // it may come back from a design that handed it out
    kalaccess::setDesign(dualPort, this);
    map->emplace(name, dualPort);
    kalrecords::dualPortAdded(this, name);
}

namespace {
template <class Add>
void addToDualPort(kaldesign* d, const std::string& name, Add add) {
    auto* map = d->data->getDualPortMap();
    auto it = map->find(name);
    if (it == map->end()) {
        auto* dp = new kaldualport(name);
        add(dp);
        kalaccess::setDesign(dp, d);
        map->emplace(name, dp);
    } else {
        add(it->second);
    }
    if (!map->count(name)) return;
    kalrecords::dualPortAdded(d, name);
}
}  // namespace

void kaldesign::addPortToDualPort(const std::string& name, kalport* port) {
    if (name.empty() || !port) return;
    addToDualPort(this, name, [port](kaldualport* dp) { dp->addPort(port); });
}

void kaldesign::addPortsToDualPort(const std::string& name, const std::vector<kalport*>& ports) {
    if (name.empty() || ports.empty()) return;
    addToDualPort(this, name, [&ports](kaldualport* dp) { dp->addPort(ports); });
}

bool kaldesign::insertDualPortBus(const std::string& name, kaldualportbus* bus) {
    auto* map = data->getDualPortbusMap();
    if (name.empty() || !bus) return false;
    if (!map->empty() && map->count(name)) return false;
    kalhandback::forget(bus);
    kalaccess::setDesign(bus, this);
    map->emplace(name, bus);
    kalrecords::dualPortbusAdded(this, name);
    return true;
}

namespace {
// A dual port never survives with fewer than two ports.
void dissolveIfSingle(kaldesign* d, const std::string& name, kaldualport* dp) {
    if (dp->getPortsCount() > 1) return;
    d->data->getDualPortMap()->erase(name);
    delete dp;
}
}  // namespace

void kaldesign::removePortFromDualPort(const std::string& dualPortName, kalport* port) {
    kaldualport* dp = getDualPort(dualPortName);
    if (!dp) return;
    const std::string key = dualPortName;  // may be the dual port's own name
    kalnet* net = getNetConnectedToPortOrDualPort(port);
    dp->removePort(getRelativeHierarchyName(port));  // frees no net: the record may read it after
    kalrecords::dualPortLostPort(this, key, net, port);
    dissolveIfSingle(this, key, dp);
}

void kaldesign::removePortFromDualPort(const std::string& dualPortName, const std::string& portName) {
    kaldualport* dp = getDualPort(dualPortName);
    if (!dp) return;
    const std::string key = dualPortName;
    dp->removePort(portName);
    dissolveIfSingle(this, key, dp);
}

void kaldesign::removeDualPort(const std::string& name) {
    if (name.empty()) return;
    auto* map = data->getDualPortMap();
    auto it = map->find(name);
    if (it == map->end()) return;
    if (it->second) kalhandback::note(this, it->second);
    map->erase(it);
}

void kaldesign::deleteDualPort(const std::string& name) {
    kaldualport* dp = getDualPort(name);
    if (!dp) return;
    data->getDualPortMap()->erase(name);
    delete dp;
}

void kaldesign::removeDualPortBus(const std::string& name) {
    if (name.empty()) return;
    const std::string given = name;  // may be the name field of the bus being dropped
    auto* map = data->getDualPortbusMap();
    if (!map) return;  // called back while the design is torn down
    auto it = map->find(given);
    if (it != map->end()) {
        if (it->second) kalhandback::note(this, it->second);
        map->erase(it);
    }
    kalrecords::dualPortbusRemoved(this, given);
}

void kaldesign::deleteDualPortBus(const std::string& name) {
    kaldualportbus* bus = getDualPortbus(name);
    if (!bus) return;
    const std::string key = name;
    // Each member leaves the bus before its own name is deleted; one that an
    // earlier member's name deleted has left every slot by then.
    kalbusties::drain(bus, [&](kaldualport* dp) {
        const std::string own = dp->getName();
        deleteDualPort(own);
    });
    data->getDualPortbusMap()->erase(key);
    delete bus;
}
