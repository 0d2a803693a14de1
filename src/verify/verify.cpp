// SPDX-License-Identifier: Apache-2.0
// The walk behind kalverify: every object reachable through the owning
// containers, each pair checked from the end that is reached.
#include "kalverify.h"

#include <algorithm>
#include <set>

#include "connectivity/access.h"
#include "connectivity/portlist.h"
#include "design/handedback.h"
#include "design/instanceorder.h"
#include "design/nameindex.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kaldualport.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

template <class V, class T>
bool holds(const V* list, const T* x) {
    return list && std::find(list->begin(), list->end(), x) != list->end();
}

std::string nameOf(const std::string* s) {
    return s ? *s : std::string("<no name>");
}
std::string label(const kalport* p) {
    const kalcomponent* c = p->getComponent();
    const std::string* instance = c && c->data ? c->data->instanceName : nullptr;
    return "port " + nameOf(instance) + "." + nameOf(p->getName());
}
std::string label(const kalnet* n) {
    return "net " + nameOf(n->getName());
}
std::string label(const kaldualport* d) {
    return "dual port " + d->getName();
}
std::string label(const kalportbus* b) {
    return "port bus " + nameOf(b->getName());
}
std::string label(const kalnetbus* b) {
    return "net bus " + nameOf(b->getName());
}
std::string label(const kaldualportbus* b) {
    return "dual port bus " + b->getName();
}

struct walker {
    std::vector<std::string>& out;
    std::set<kalcomponent*> components;
    std::vector<kaldesign*> designs;

    void report(const std::string& line) { out.push_back(line); }

    void component(kalcomponent* c) {
        if (!c || !components.insert(c).second) return;
        for (auto& e : c->data->ports)
            port(e.second);
        for (auto& e : c->data->portbuses)
            bus(e.second);
        for (auto& e : c->data->designs)
            design(e.second);
    }

    void design(kaldesign* d) {
        designs.push_back(d);
        kaldesigndata* data = d->data;
        for (auto& e : *data->getNetMap()) {
            if (e.second->getDesign() != d) report(label(e.second) + " is in the net map of another design");
            if (!e.second->getName() || *e.second->getName() != e.first)
                report(label(e.second) + " is keyed under " + e.first);
            net(e.second);
        }
        for (auto& e : *data->getNetbusMap()) {
            bus(e.second);
            // Every bit of the design is reached by its key or listed as unkeyed: else it leaks.
            for (kalnet* bit : e.second->getBits()) {
                if (!bit || bit->getDesign() != d) continue;
                const bool keyed = bit->getName() && d->getNet(bit->getName()) == bit;
                if (keyed == kalaccess::unkeyed(bit))
                    report(label(bit) +
                           (keyed ? " is keyed yet marked unkeyed" : " is neither keyed nor unkeyed"));
                if (!keyed) net(bit);
            }
        }
        for (auto& e : *data->getDualPortMap())
            dualPort(e.second);
        for (auto& e : *data->getDualPortbusMap())
            bus(e.second);
        kalhandback::verify(d, out);
        for (auto& e : *data->getInstanceMap())
            component(e.second);
    }

    void port(kalport* p) {
        member(p, label(p));
        if (kalnet* n = p->getNet()) {
            kalportlist list = kalaccess::portList(n);
            if (!(list.present() && list.listsPointer(p)) && !holds(kalaccess::twins(n), p))
                report(label(p) + ": its " + label(n) + " neither lists it nor knows it as a twin");
        }
        if (const auto* nets = kalaccess::listedBy(p))
            for (kalnet* n : *nets) {
                kalportlist list = kalaccess::portList(n);
                if (!list.present() || !list.listsPointer(p) || p->getNet() == n)
                    report(label(p) + ": it notes " + label(n) + " as listing it after its link moved on");
            }
        if (const auto* dualPorts = kalaccess::listers(p, false))
            for (kaldualport* d : *dualPorts) {
                const std::vector<kalport*> listed = d->getPortList();
                if (!holds(&listed, p))
                    report(label(p) + ": " + label(d) + " is noted as listing it but does not");
            }
    }

    void net(kalnet* n) {
        member(n, label(n));
        kalportlist list = kalaccess::portList(n);
        if (const char* problem = list.problem()) report(label(n) + ": port list: " + problem);
        if (list.present()) {
            for (kalport* p : list.snapshot()) {
                if (p->getNet() == n) continue;
                if (list.isIndexed()) report(label(n) + " indexes " + label(p) + ", which points elsewhere");
                if (!holds(kalaccess::listedBy(p), n))
                    report(label(n) + " lists " + label(p) + ", which neither points to it nor notes it");
            }
        }
        if (const auto* twins = kalaccess::twins(n))
            for (kalport* t : *twins)
                if (t->getNet() != n) report(label(n) + " keeps twin " + label(t) + ", whose link moved on");
    }

    void dualPort(kaldualport* d) {
        member(d, label(d));
        for (kalport* p : d->getPortList())
            if (p && !holds(kalaccess::listers(p, false), d))
                report(label(d) + " lists " + label(p) + ", which does not note it");
    }

    // A member sits in a slot of the bus it links to, or the two are tied,
    // each listing the other; ties are mutual whatever their reason.
    template <class M, class B>
    static bool tied(M* m, B* b) {
        return holds(kalaccess::ties(m, false), b) && holds(kalaccess::ties(b, false), m);
    }

    template <class M>
    void member(M* m, const std::string& what) {
        if (auto* b = m->getBus()) {
            auto* slots = kalaccess::slots(b);
            if (!holds(slots, m) && !tied(m, b))
                report(what + " links to " + label(b) + ", which neither holds it nor is tied to it");
        }
        if (auto* ties = kalaccess::ties(m, false))
            for (auto* b : *ties)
                if (!holds(kalaccess::ties(b, false), m))
                    report(what + " is tied to " + label(b) + ", which is not tied to it");
    }

    template <class B>
    void bus(B* b) {
        if (auto* slots = kalaccess::slots(b))
            for (auto* m : *slots)
                if (m && m->getBus() != b && !tied(m, b))
                    report(label(b) + " holds " + label(m) + ", which neither links to it nor is tied to it");
        if (auto* ties = kalaccess::ties(b, false))
            for (auto* m : *ties)
                if (!holds(kalaccess::ties(m, false), b))
                    report(label(b) + " is tied to " + label(m) + ", which is not tied to it");
    }
};

}  // namespace

std::vector<std::string> kalverify::model(kalcomponent* root) {
    std::vector<std::string> out;
    walker w{out, {}, {}};
    w.component(root);
    for (kaldesign* d : w.designs) {
        kaldesigndata* data = d->data;
        if (const char* p = data->netIndex->problem()) out.push_back(std::string("net index: ") + p);
        if (const char* p = data->instanceIndex->problem())
            out.push_back(std::string("instance index: ") + p);
        if (const char* p = data->instanceOrder->problem())
            out.push_back(std::string("instance order: ") + p);
    }
    return out;
}
