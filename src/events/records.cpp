// SPDX-License-Identifier: Apache-2.0
#include "events/records.h"

#include "core/text.h"
#include "events/events.h"
#include "events/paths.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalnet.h"
#include "kalport.h"

namespace kalrecords {

namespace {

namespace k {
// Categories and actions, made once: a record the service drops should cost
// no string building.
const std::string add_("add"), connect_("connect"), design_("design"), dualpin_("dualpin"),
    dualpinbus_("dualpinbus"), export_("export"), net_("net"), netbus_("netbus"), port_("port"),
    portbus_("portbus"), rem_("rem"), remove_("remove"), rnm_("rnm");
}  // namespace k

bool isTopPort(const kalport* port) {
    return port->getComponent() && !port->getComponent()->parentDesign;
}

// Dual port records need an owner as well as an object; an object created
// for a design without owner stays with the service unsent.
template <class Fill>
void announce(const kaldesign* design, const std::string& category, const std::string& action, Fill fill) {
    kalevents::record r(category, action);
    if (!r || !design->owner) return;
    fill(r);
    r.send();
}

}  // namespace

// ---- instances ----

void instanceAdded(const kaldesign* design, const std::string& instanceName) {
    kalevents::emit(k::design_, k::add_, [&](kalevents::record& r) {
        r.set("instance", kalpaths::designPath(design, instanceName));
    });
}

void instanceRemoved(const kaldesign* design, const std::string& instanceName) {
    kalevents::emit(k::design_, k::remove_, [&](kalevents::record& r) {
        r.set("instance", kalpaths::designPath(design, instanceName));
    });
}

// ---- nets and net buses ----

void netAdded(const kalnet* net, const kalport* port) {
    kalevents::emit(k::net_, k::add_, [&](kalevents::record& r) {
        r.set("net", kalpaths::designPath(net->getDesign(), *net->getName()));
        if (isTopPort(port)) r.set("topport", kalpaths::portPath(port));
    });
}

void netAdded(const kalnet* net) {
    kalevents::emit(k::net_, k::add_, [&](kalevents::record& r) {
        r.set("net", kalpaths::designPath(net->getDesign(), *net->getName()));
        for (const kalport* p : net->getPorts()) {
            if (isTopPort(p)) {
                r.set("topport", kalpaths::portPath(p));
                break;
            }
        }
    });
}

void netRemoved(const kaldesign* design, const std::string& name) {
    kalevents::emit(k::net_, k::rem_,
                    [&](kalevents::record& r) { r.set("net", kalpaths::designPath(design, name)); });
}

void netRenamed(const kaldesign* design, const std::string& from, const std::string& to) {
    kalevents::emit(k::net_, k::rnm_, [&](kalevents::record& r) {
        r.set("oname", kalpaths::designPath(design, from));
        r.set("nname", kalpaths::designPath(design, to));
    });
}

void netbusRemoved(const kaldesign* design, const std::string& name) {
    kalevents::emit(k::netbus_, k::rem_,
                    [&](kalevents::record& r) { r.set("netbus", kalpaths::designPath(design, name)); });
}

void netbusRenamed(const kaldesign* design, const std::string& from, const std::string& to) {
    kalevents::emit(k::netbus_, k::rnm_, [&](kalevents::record& r) {
        r.set("oname", kalpaths::designPath(design, from));
        r.set("nname", kalpaths::designPath(design, to));
    });
}

void portLeftNet(const kalnet* net, const kalport* port) {
    kalevents::emit(k::connect_, k::rem_, [&](kalevents::record& r) {
        r.set("net", kalpaths::designPath(net->getDesign(), kaltext::orEmpty(net->getName())));
        r.set("port", kalpaths::portPathInDesign(port));
    });
}

// ---- component ports ----

void portRemoved(const kalcomponent* owner, const std::string& name) {
    kalevents::emit(k::port_, k::rem_,
                    [&](kalevents::record& r) { r.set("topport", kalpaths::portPath(owner, name)); });
}

void portRenamed(const kalcomponent* owner, const std::string& from, const std::string& to) {
    kalevents::emit(k::port_, k::rnm_, [&](kalevents::record& r) {
        r.set("oname", kalpaths::portPath(owner, from));
        r.set("nname", kalpaths::portPath(owner, to));
    });
}

void portbusRemoved(const kalcomponent* owner, const std::string& name) {
    kalevents::emit(k::portbus_, k::rem_,
                    [&](kalevents::record& r) { r.set("topportbus", kalpaths::portPath(owner, name)); });
}

void portbusRenamed(const kalcomponent* owner, const std::string& from, const std::string& to) {
    kalevents::emit(k::portbus_, k::rnm_, [&](kalevents::record& r) {
        r.set("oname", kalpaths::portPath(owner, from));
        r.set("nname", kalpaths::portPath(owner, to));
    });
}

// ---- exports ----

void portExported(const std::string& path, const kalcomponent* enclosing, const kaldesign* design,
                  const std::string& topName) {
    kalevents::emit(k::export_, k::add_, [&](kalevents::record& r) {
        r.set("port", path);
        r.set("topport", kalpaths::portPath(enclosing, topName));
        r.set("net", kalpaths::designPath(design, topName));
    });
}

void portbusExported(const std::string& path, const kalcomponent* enclosing, const kaldesign* design,
                     const std::string& topName) {
    kalevents::emit(k::export_, k::add_, [&](kalevents::record& r) {
        r.set("portbus", path);
        r.set("topportbus", kalpaths::portPath(enclosing, topName));
        r.set("netbus", kalpaths::designPath(design, topName));
    });
}

void portUnexported(const std::string& portName, const kalcomponent* topOwner, const std::string& topName,
                    const kaldesign* netDesign, bool hadNet, bool netGone) {
    kalevents::emit(k::export_, k::rem_, [&](kalevents::record& r) {
        if (netGone) r.set("net", hadNet ? kalpaths::designPath(netDesign, topName) : std::string());
        r.set("port", portName);
        r.set("topport", topOwner ? kalpaths::portPath(topOwner, topName) : std::string());
    });
}

void portbusUnexported(const std::string& busName, const kalcomponent* topOwner, const std::string& topName,
                       const kaldesign* netbusDesign, bool netbusGone) {
    kalevents::emit(k::export_, k::rem_, [&](kalevents::record& r) {
        if (netbusGone) r.set("netbus", kalpaths::designPath(netbusDesign, topName));
        r.set("portbus", busName);
        r.set("topportbus", kalpaths::portPath(topOwner, topName));
    });
}

// ---- dual ports ----

void dualPortAdded(const kaldesign* design, const std::string& name) {
    announce(design, k::dualpin_, k::add_,
             [&](kalevents::record& r) { r.set("dualpin", kalpaths::dualPortPath(design, name)); });
}

void dualPortbusAdded(const kaldesign* design, const std::string& name) {
    announce(design, k::dualpinbus_, k::add_, [&](kalevents::record& r) { r.set("dualpinbus", name); });
}

void dualPortLostPort(const kaldesign* design, const std::string& name, const kalnet* net,
                      const kalport* port) {
    announce(design, k::dualpin_, k::remove_, [&](kalevents::record& r) {
        r.set("dualpin", net ? kalpaths::designPath(net->getDesign(), *net->getName())
                             : kalpaths::dualPortPath(design, name));
        r.set("port", port ? kalpaths::designPortPath(port) : std::string());
    });
}

void dualPortbusRemoved(const kaldesign* design, const std::string& name) {
    announce(design, k::dualpinbus_, k::remove_, [&](kalevents::record& r) { r.set("dualpinbus", name); });
}

}  // namespace kalrecords
