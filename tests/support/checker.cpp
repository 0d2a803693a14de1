#include "support/checker.h"

#include <algorithm>
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

struct checker {
    std::vector<std::string> problems;

    void fail(const std::string& where, const std::string& what) { problems.push_back(where + ": " + what); }

    void component(kalcomponent* c, const std::string& where) {
        for (auto& [key, p] : c->data->ports)
            port(c, key, p, where + "/" + key);
        for (auto& [key, b] : c->data->portbuses) {
            const std::string at = where + "/" + key + "[bus]";
            if (text(b->getName()) != key)
                fail(at, "bus name " + text(b->getName()) + " differs from its key");
            if (b->getComponent() != c) fail(at, "bus does not point back to its component");
            for (kalport* bit : b->getBits()) {
                if (!bit) continue;
                if (bit->getBus() != b)
                    fail(at, "bit " + text(bit->getName()) + " does not point back to its bus");
                auto it = c->data->ports.find(text(bit->getName()));
                if (it == c->data->ports.end() || it->second != bit)
                    fail(at, "bit " + text(bit->getName()) + " is not registered under its name");
            }
        }
        for (auto& [key, d] : c->data->designs)
            design(c, d, where + "::" + key);
    }

    void port(kalcomponent* c, const std::string& key, kalport* p, const std::string& at) {
        if (text(p->getName()) != key) fail(at, "port name " + text(p->getName()) + " differs from its key");
        if (p->getComponent() != c) fail(at, "port does not point back to its component");
        if (kalnet* n = p->getNet()) {
            if (!holds(n->getPorts(), p)) fail(at, "its net " + text(n->getName()) + " does not list it");
        }
        if (kalportbus* b = p->getBus()) {
            if (!holds(b->getBits(), p)) fail(at, "its bus " + text(b->getName()) + " has no slot for it");
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
            const std::string at = where + "/" + key + "[net]";
            if (text(n->getName()) != key)
                fail(at, "net name " + text(n->getName()) + " differs from its key");
            if (n->getDesign() != d) fail(at, "net's design is not the design that maps it");
            for (kalport* p : n->getPorts())
                if (p->getNet() != n) fail(at, "lists port " + text(p->getName()) + " which is not on it");
            if (kalnetbus* b = n->getBus()) {
                if (!holds(b->getBits(), n))
                    fail(at, "its bus " + text(b->getName()) + " has no slot for it");
            }
        }
        for (auto& [key, b] : *d->data->getNetbusMap()) {
            const std::string at = where + "/" + key + "[netbus]";
            if (text(b->getName()) != key) fail(at, "net bus name differs from its key");
            if (b->getDesign() != d) fail(at, "net bus's design is not the design that maps it");
            for (kalnet* bit : b->getBits())
                if (bit && bit->getBus() != b)
                    fail(at, "bit " + text(bit->getName()) + " does not point back");
        }
        for (auto& [key, dp] : *d->data->getDualPortMap()) {
            const std::string at = where + "/" + key + "[dualport]";
            if (dp->getDesign() != d) fail(at, "dual port's design is not the design that maps it");
            for (kalport* p : dp->getPortList())
                if (p && p->getDualPort() != dp)
                    fail(at, "member " + text(p->getName()) + " does not point back");
            if (kaldualportbus* b = dp->getBus()) {
                if (!holds(b->getSlots(), dp)) fail(at, "its bus " + b->getName() + " has no slot for it");
            }
        }
        for (auto& [key, b] : *d->data->getDualPortbusMap()) {
            const std::string at = where + "/" + key + "[dualportbus]";
            if (b->getDesign() != d) fail(at, "dual port bus's design is not the design that maps it");
            for (kaldualport* dp : b->getSlots())
                if (dp && dp->getBus() != b) fail(at, "slot " + dp->getName() + " does not point back");
        }
    }
};

}  // namespace

std::vector<std::string> checkModel(kalcomponent* root) {
    checker c;
    if (root) c.component(root, text(root->data->instanceName));
    return c.problems;
}
