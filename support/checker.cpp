// SPDX-License-Identifier: Apache-2.0
#include "kalsupport.h"

#include <algorithm>
#include <map>
#include <set>

#include "kaldata.h"

namespace {

std::string text(const std::string* s) {
    return s ? *s : std::string("<null>");
}

template <class T>
bool holds(const std::vector<T*>& v, const T* x) {
    return std::find(v.begin(), v.end(), x) != v.end();
}

// A member may sit in two containers of a kind at once: a port that a second
// port bus takes over as a bit (addPortbus), a net that a second net bus takes
// over (addNetbus), a port added to a second dual port (also of another design:
// an instance's port is a top port of the instance's own design), a dual port
// connected into a second bus slot. Its link then names the newest container,
// or none once that one let it go, while the older one still holds it. So a
// container only requires that a member's link is its own, empty, or another
// container that the model still holds; every member is read, so that one
// that is gone is reported by the sanitizers.
template <class Map, class T>
bool maps(const Map& registered, const T* x) {
    for (auto& entry : registered)
        if (entry.second == x) return true;
    return false;
}
// Made with a direction outside 1..3: no slots (and no name, unless renamed since).
bool emptyBus(const kalportbus* b) {
    return b->getBits().empty();
}
bool held(const kalportbus* b) {
    return !b || (b->getComponent() && maps(b->getComponent()->data->portbuses, b));
}
bool held(const kalnetbus* b) {
    return !b || (b->getDesign() && maps(*b->getDesign()->data->getNetbusMap(), b));
}
bool held(const kaldualport* dp) {
    return !dp || (dp->getDesign() && maps(*dp->getDesign()->data->getDualPortMap(), dp));
}
bool held(const kaldualportbus* b) {
    return !b || (b->getDesign() && maps(*b->getDesign()->data->getDualPortbusMap(), b));
}

// Where a problem is: a path and a key, joined only when something is reported.
struct place {
    const std::string& where;
    const std::string& key;
    const char* sep;
    const char* suffix;
    std::string str() const { return where + sep + key + suffix; }
};

struct checker {
    std::vector<std::string> problems;
    volatile std::size_t touched = 0;  // reads that only have to happen
    // Copies the interface hands out, taken once per object: every port of a
    // net, every bit of a bus asks for the same list.
    std::map<const kalnet*, std::vector<kalport*>> netPorts;
    std::map<const kalportbus*, std::vector<kalport*>> portBits;
    std::map<const kalnetbus*, std::vector<kalnet*>> netBits;

    const std::vector<kalport*>& portsOf(kalnet* n) {
        auto it = netPorts.find(n);
        return it != netPorts.end() ? it->second : netPorts.emplace(n, n->getPorts()).first->second;
    }
    const std::vector<kalport*>& bitsOf(kalportbus* b) {
        auto it = portBits.find(b);
        return it != portBits.end() ? it->second : portBits.emplace(b, b->getBits()).first->second;
    }
    const std::vector<kalnet*>& bitsOf(kalnetbus* b) {
        auto it = netBits.find(b);
        return it != netBits.end() ? it->second : netBits.emplace(b, b->getBits()).first->second;
    }

    void fail(const std::string& where, const std::string& what) { problems.push_back(where + ": " + what); }
    void fail(const place& at, const std::string& what) { fail(at.str(), what); }

    void component(kalcomponent* c, const std::string& where) {
        for (auto& [key, p] : c->data->ports)
            port(c, key, p, {where, key, "/", ""});
        for (auto& [key, b] : c->data->portbuses) {
            const place at{where, key, "/", "[bus]"};
            // A bus made with a direction outside 1..3 stays empty: no name, no slots.
            if (b->getName() ? *b->getName() != key : !emptyBus(b))
                fail(at, "bus name " + text(b->getName()) + " differs from its key");
            if (b->getComponent() != c) fail(at, "bus does not point back to its component");
            for (kalport* bit : bitsOf(b)) {
                if (!bit) continue;
                if (bit->getBus() != b && !held(bit->getBus()))
                    fail(at, "bit " + text(bit->getName()) + " belongs to a bus that is not held");
                auto it = bit->getName() ? c->data->ports.find(*bit->getName()) : c->data->ports.end();
                // An empty port (no name: a direction outside 1..3) that became a bit is keyed by its bit name.
                if (bit->getName() && (it == c->data->ports.end() || it->second != bit))
                    fail(at, "bit " + text(bit->getName()) + " is not registered under its name");
            }
        }
        for (auto& [key, d] : c->data->designs)
            design(c, d, where + "::" + key);
    }

    void port(kalcomponent* c, const std::string& key, kalport* p, const place& at) {
        // A port made with a direction outside 1..3 stays empty, without a name.
        const bool empty = !p->getName() && (p->getDirection() < 1 || p->getDirection() > 3);
        if (p->getName() ? *p->getName() != key : !empty)
            fail(at, "port name " + text(p->getName()) + " differs from its key");
        if (p->getComponent() != c) fail(at, "port does not point back to its component");
        if (kalnet* n = p->getNet()) {
            if (!holds(portsOf(n), p)) fail(at, "its net " + text(n->getName()) + " does not list it");
        }
        if (kalportbus* b = p->getBus()) {
            if (!holds(bitsOf(b), p) && !emptyBus(b)) fail(at, "its bus " + text(b->getName()) + " has no slot for it");
        }
        if (kaldualport* dp = p->getDualPort()) {
            if (!holds(dp->getPortList(), p))
                fail(at, "its dual port " + dp->getName() + " does not list it");
        }
        if (kalport* to = p->getExportedTo()) {
            if (to->getExportedFrom() != p)
                fail(at, "export target " + text(to->getName()) + " does not point back");
        }
        if (kalport* from = p->getExportedFrom()) {
            if (from->getExportedTo() != p)
                fail(at, "export source " + text(from->getName()) + " does not point back");
        }
    }

    void design(kalcomponent* owner, kaldesign* d, const std::string& where) {
        if (d->owner != owner) fail(where, "design does not point back to its owner");
        auto* instances = d->data->getInstanceMap();
        std::multiset<kalcomponent*> listed(d->data->getInstanceList()->begin(),
                                            d->data->getInstanceList()->end());
        std::multiset<kalcomponent*> mapped;
        for (auto& [key, inst] : *instances) {
            const std::string at = where + "/" + key;
            mapped.insert(inst);
            if (inst->parentDesign != d) fail(at, "instance's parentDesign is not the design that holds it");
            if (text(inst->data->instanceName) != key)
                fail(at, "instanceName " + text(inst->data->instanceName) + " differs from its key");
            component(inst, at);
        }
        if (listed != mapped) fail(where, "instance list and instance map hold different components");
        for (auto& [key, n] : *d->data->getNetMap()) {
            const place at{where, key, "/", "[net]"};
            if (!n->getName() || *n->getName() != key)
                fail(at, "net name " + text(n->getName()) + " differs from its key");
            if (n->getDesign() != d) fail(at, "net's design is not the design that maps it");
            for (kalport* p : portsOf(n))
                if (p->getNet() != n) fail(at, "lists port " + text(p->getName()) + " which is not on it");
            if (kalnetbus* b = n->getBus()) {
                if (!holds(bitsOf(b), n)) fail(at, "its bus " + text(b->getName()) + " has no slot for it");
            }
        }
        for (auto& [key, b] : *d->data->getNetbusMap()) {
            const place at{where, key, "/", "[netbus]"};
            if (text(b->getName()) != key) fail(at, "net bus name differs from its key");
            if (b->getDesign() != d) fail(at, "net bus's design is not the design that maps it");
            for (kalnet* bit : bitsOf(b))
                if (bit && bit->getBus() != b && !held(bit->getBus()))
                    fail(at, "bit " + text(bit->getName()) + " belongs to a bus that is not held");
        }
        for (auto& [key, dp] : *d->data->getDualPortMap()) {
            const place at{where, key, "/", "[dualport]"};
            if (dp->getDesign() != d) fail(at, "dual port's design is not the design that maps it");
            for (kalport* p : dp->getPortList())
                if (p && p->getDualPort() != dp && !held(p->getDualPort()))
                    fail(at, "member " + text(p->getName()) + " belongs to a dual port that is not held");
            // A bus keeps no slot for a dual port it let go (disconnect, an overwritten slot), nor
            // need it be registered (removeDualPortBus hands it back); it must still exist.
            if (kaldualportbus* b = dp->getBus()) touched += b->getSlots().size();
        }
        for (auto& [key, b] : *d->data->getDualPortbusMap()) {
            const place at{where, key, "/", "[dualportbus]"};
            if (b->getDesign() != d) fail(at, "dual port bus's design is not the design that maps it");
            for (kaldualport* dp : b->getSlots())
                if (dp && dp->getBus() != b && !held(dp->getBus()))
                    fail(at, "slot " + dp->getName() + " belongs to a bus that is not held");
        }
    }
};

}  // namespace

std::vector<std::string> kalsupport::checkModel(kalcomponent* root) {
    checker c;
    if (root) c.component(root, text(root->data->instanceName));
    return c.problems;
}
