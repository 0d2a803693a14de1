// SPDX-License-Identifier: Apache-2.0
// Instance removal: detaching an instance's ports, pruning the nets that lose
// their point, destroying the instance and reporting it.
#include <set>

#include "core/text.h"
#include "design/instanceorder.h"
#include "design/nameindex.h"
#include "design/prune.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"

bool kaldesign::removeInstance(const std::string* name) {
    if (!name) return false;
    kalinstanceindex& instances = *data->instanceIndex;
    auto it = instances.find(*name);
    if (it == data->getInstanceMap()->end()) return false;
    const std::string instanceName = *name;  // may be the instance's own name string
    kalcomponent* instance = it->second;

    std::vector<kalport*> ports;
    ports.reserve(instance->data->ports.size());
    for (auto& entry : instance->data->ports)
        ports.push_back(entry.second);
    // Undoing an export can destroy ports of the instance still to come (on a
    // net of the instance's own design they count as top ports): after one,
    // only the ports still in the map are visited.
    std::set<kalport*> remaining;
    bool reworked = false;
    for (kalport* port : ports) {
        if (reworked && !remaining.count(port)) continue;
        if (port->getExportedTo()) {
            instance->removeExport(kaltext::orEmpty(port->getName()), false);
            remaining.clear();
            for (auto& entry : instance->data->ports)
                remaining.insert(entry.second);
            reworked = true;
            if (!remaining.count(port)) continue;
        }
        kalnet* net = port->getNet();
        if (!net) continue;
        net->disconnect(port, true);
        if (kalprune::shouldPrune(net)) {
            const std::string netName = *net->getName();
            removeNet(&netName);
        }
    }
    data->instanceOrder->remove(instance);
    delete instance;
    instances.erase(instanceName);
    kalrecords::instanceRemoved(this, instanceName);
    return true;
}
