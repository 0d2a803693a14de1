// SPDX-License-Identifier: Apache-2.0
// Exports: making an instance's port (or port bus) a port of the enclosing
// component, wired by a net (or net bus) of the design, and undoing it.
#include <algorithm>
#include <vector>

#include "core/keys.h"
#include "core/text.h"
#include "connectivity/bits.h"
#include "design/prune.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

const std::string kChangeConnect("ChangeConnect"), kTrue("true");

void markChanged(kalcomponent* enclosing) {
    if (enclosing) enclosing->setAttributeValue(&kChangeConnect, &kTrue);
}

std::string topNameFor(const std::string* topName, const kalcomponent* inner, const std::string& innerName) {
    if (topName && !topName->empty()) return *topName;
    return kalkeys::exportName(inner, innerName);
}

// Removes a net from its design under the export rule; true when it is gone.
bool dropIfDangling(kalnet* net) {
    if (!kalprune::shouldPrune(net) || !net->getDesign()) return false;
    const std::string name = *net->getName();
    return net->getDesign()->removeNet(&name);
}

int exportPort(kalport* port, const std::string& path, const std::string* netArg,
               const std::string* topName) {
    kalcomponent* inner = port->getComponent();
    kaldesign* design = inner ? inner->parentDesign : nullptr;
    kalcomponent* enclosing = design ? design->owner : nullptr;
    if (!enclosing) return 1;
    const std::string topPortName = topNameFor(topName, inner, kaltext::orEmpty(port->getName()));
    kalnet* net = port->getNet();
    if (!net) net = design->getNet(&topPortName);
    if (!net) {
        design->addNet(&topPortName, &topPortName, netArg, nullptr);
        net = design->getNet(&topPortName);
    }
    if (net && enclosing->addPort(&topPortName, &topPortName, port->getDirection(), nullptr)) {
        kalport* top = enclosing->getPort(&topPortName, false);
        net->connect(port, false);
        net->connect(top, false);
        port->exportTo(top);
        kalrecords::portExported(path, enclosing, design, topPortName);
    }
    markChanged(enclosing);
    return 1;
}

int exportPortbus(kalportbus* bus, const std::string& path, const std::string* netArg,
                  const std::string* topName) {
    kalcomponent* inner = bus->getComponent();
    kaldesign* design = inner ? inner->parentDesign : nullptr;
    kalcomponent* enclosing = design ? design->owner : nullptr;
    if (!enclosing) return 1;
    const std::string topPortName = topNameFor(topName, inner, kaltext::orEmpty(bus->getName()));
    const unsigned int msb = bus->getMsb(), lsb = bus->getLsb();
    bool ready = true;
    if (!bus->getConnectedNetbus()) {
        design->addNetbus(&topPortName, netArg, &topPortName, msb, lsb, nullptr);
        ready = design->getNetbus(&topPortName) != nullptr;
    }
    if (ready) {
        // Only a net bus bearing the top port's name is used, even when the bus was connected elsewhere.
        kalnetbus* netbus = design->getNetbus(&topPortName);
        enclosing->addPortbus(&topPortName, &topPortName, msb, lsb, bus->getDirection(), nullptr);
        kalportbus* topBus = enclosing->getPortbus(&topPortName, false);
        bus->connectToNetbus(netbus);
        if (topBus) topBus->connectToNetbus(netbus);
        bus->exportTo(topBus);
        kalrecords::portbusExported(path, enclosing, netbus ? netbus->getDesign() : design, topPortName);
    }
    markChanged(enclosing);
    return 1;
}

int unexportPort(kalport* port) {
    kalport* top = port->getExportedTo();
    if (!top) return 0;
    kalcomponent* inner = port->getComponent();
    kaldesign* design = inner ? inner->parentDesign : nullptr;
    kalcomponent* enclosing = design ? design->owner : nullptr;
    port->unexport();
    kalnet* net = port->getNet();
    if (net) net->disconnect(top, false);
    const kaltext::copied topPortName(top->getName());
    // Pruning the net can destroy the port itself: on a net of its own
    // component's design it counts as a top port there.
    const std::string portName = kaltext::orEmpty(port->getName());
    kalcomponent* topOwner = top->getComponent();
    const kaldesign* netDesign = net ? (design ? design : net->getDesign()) : nullptr;
    const bool hadNet = net != nullptr;
    if (topOwner) topOwner->removePort(topPortName.get());
    const bool netGone = !net || dropIfDangling(net);
    markChanged(enclosing);
    kalrecords::portUnexported(portName, topOwner, kaltext::orEmpty(topPortName.get()), netDesign, hadNet,
                               netGone);
    return 1;
}

// The bus export is undone only when it hangs together: every bit on a net of
// one net bus, each net reaching exactly one top port, all bits exported to
// bits of one top port bus.
kalportbus* consistentTopBus(kalportbus* bus, kalnetbus*& netbus) {
    kalportbus* topBus = nullptr;
    bool any = false;
    netbus = nullptr;
    for (kalport* bit : bus->getBits()) {
        if (!bit) continue;
        kalnet* net = bit->getNet();
        if (!net || !net->getBus()) return nullptr;
        if (any && net->getBus() != netbus) return nullptr;
        if (net->getTop().size() != 1) return nullptr;
        kalport* target = bit->getExportedTo();
        kalportbus* targetBus = target ? target->getBus() : nullptr;
        if (!targetBus || (any && targetBus != topBus)) return nullptr;
        netbus = net->getBus();
        topBus = targetBus;
        any = true;
    }
    return topBus;
}

int unexportPortbus(kalportbus* bus) {
    kalnetbus* netbus = nullptr;
    kalportbus* topBus = consistentTopBus(bus, netbus);
    if (!topBus) return 0;
    kalcomponent* inner = bus->getComponent();
    kaldesign* design = inner ? inner->parentDesign : nullptr;
    kalcomponent* enclosing = design ? design->owner : nullptr;
    const kaltext::copied topBusName(topBus->getName());
    const kaldesign* netbusDesign = netbus->getDesign();  // before its bits go
    const unsigned int width = kalbits::width(topBus->getMsb(), topBus->getLsb());
    // Pruning a net removes the top ports on it, and with them whole port
    // buses: this bus, or the top bus itself when the instance sits in its own
    // component's design. Everything the record needs is taken first, and a
    // bit is visited only while the top bus still holds it.
    const std::string busName = kaltext::orEmpty(bus->getName());
    kalcomponent* topOwner = topBus->getComponent();
    auto stillHeld = [&](kalport* bit) {
        if (!topOwner) return true;  // no component can take a bus without one apart
        kalportbus* now = topOwner->getPortbus(topBusName.get(), false);
        if (now != topBus) return false;
        const std::vector<kalport*> bits = now->getBits();
        return std::find(bits.begin(), bits.end(), bit) != bits.end();
    };
    bus->unexport();
    unsigned int removed = 0;
    for (kalport* bit : topBus->getBits()) {
        if (!bit || !stillHeld(bit)) continue;
        kalnet* net = bit->getNet();
        if (!net) continue;
        net->disconnect(bit, false);
        if (dropIfDangling(net)) ++removed;
    }
    if (topOwner) topOwner->deletePortbus(topBusName.get());
    markChanged(enclosing);
    kalrecords::portbusUnexported(busName, topOwner ? topOwner : enclosing,
                                  kaltext::orEmpty(topBusName.get()), netbusDesign, removed == width);
    return 1;
}

}  // namespace

int kalcomponent::addExport(std::string path, bool hierarchical, const std::string* netArg,
                            const std::string* topName) {
    kalport* port = getPort(&path, hierarchical);
    kalportbus* bus = getPortbus(&path, hierarchical);
    if (port) return exportPort(port, path, netArg, topName);
    if (bus) return exportPortbus(bus, path, netArg, topName);
    return 0;
}

int kalcomponent::removeExport(std::string path, bool hierarchical) {
    kalport* port = getPort(&path, hierarchical);
    kalportbus* bus = getPortbus(&path, hierarchical);
    if (port) return unexportPort(port);
    if (bus) return unexportPortbus(bus);
    return 0;
}
