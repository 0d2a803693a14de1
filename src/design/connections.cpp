// SPDX-License-Identifier: Apache-2.0
// Connection editing: attaching ports to existing nets and detaching them,
// with the net pruned when it no longer joins a driver to a receiver.
#include "connectivity/access.h"
#include "core/text.h"
#include "design/nameindex.h"
#include "design/prune.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"

bool kaldesign::connect(const std::string* netName, const std::string* portName,
                        const std::string* instanceName) {
    if (!netName) return false;
    // The net's slot in the index is asked for first, so that its cache miss
    // overlaps with finding the port.
    const std::size_t hash = data->netIndex->expect(*netName);
    // The instance is looked up as a hierarchical path first, then among this design's own instances.
    kalcomponent* found = owner ? owner->getComponent(instanceName) : nullptr;
    kalport* port = found ? found->getPort(portName, false) : getComponentPort(portName, instanceName);
    if (!portName) return false;
    kalnet* net = data->netIndex->lookup(*netName, hash);
    if (!net || !port || net->isConnectedTo(port)) return false;
    kalaccess::join(net, port, true);
    if (kalaccess::portList(net).size() == kalnetindex::crowd) data->netIndex->noteCrowded(*netName);
    kalrecords::netAdded(net, port);
    return true;
}

bool kaldesign::disconnect(const std::string* netName, const std::string* portName,
                           const std::string* instanceName) {
    if (!netName || !portName) return false;
    kalnet* net = getNet(netName);
    if (!net) return false;
    // Only this design's own instances: a hierarchical path is not understood here.
    kalport* port = getComponentPort(portName, instanceName);
    if (!port || !net->isConnectedTo(port)) return false;
    net->disconnect(port, true);
    if (port->getExportedTo() && port->getComponent())
        port->getComponent()->removeExport(kaltext::orEmpty(port->getName()), false);
    if (kalprune::shouldPrune(net)) {
        const std::string name = *netName;
        removeNet(&name);
    }
    return true;
}
