#include "design/handedback.h"

#include <set>

#include "connectivity/access.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kaldualport.h"
#include "kalnet.h"

struct kalhandedback {
    std::set<kalnetbus*> netbuses;
    std::set<kaldualport*> dualPorts;
    std::set<kaldualportbus*> dualPortbuses;
    std::set<kalcomponent*> instances;
    std::set<kaldesign*> designs;
    std::set<kalnet*> unkeyed;

    bool empty() const {
        return netbuses.empty() && dualPorts.empty() && dualPortbuses.empty() && instances.empty() &&
               designs.empty() && unkeyed.empty();
    }
};

namespace {

kalhandedback& record(kalhandedback*& slot) {
    if (!slot) slot = new kalhandedback();
    return *slot;
}

template <class T>
void drop(kalhandedback*& slot, std::set<T*> kalhandedback::*kind, T* object) {
    if (!slot) return;
    (slot->*kind).erase(object);
    if (slot->empty()) {
        delete slot;
        slot = nullptr;
    }
}

// The net's map entry, if a key reaches it: only a net keyed under its own
// name counts (the library keys no net otherwise).
bool keyed(kaldesign* design, kalnet* net) {
    const std::string* name = net->getName();
    return name && design->getNet(name) == net;
}

}  // namespace

kalhandedback** kalhandback::slotOf(kaldesign* d) {
    return d && d->data ? &d->data->handedBack : nullptr;
}
kalhandedback** kalhandback::slotOf(kalcomponent* c) {
    return c && c->data ? &c->data->handedBack : nullptr;
}

void kalhandback::note(kaldesign* from, kalnetbus* bus) {
    if (kalhandedback** s = slotOf(from)) record(*s).netbuses.insert(bus);
}
void kalhandback::note(kaldesign* from, kaldualport* dualPort) {
    if (kalhandedback** s = slotOf(from)) record(*s).dualPorts.insert(dualPort);
}
void kalhandback::note(kaldesign* from, kaldualportbus* bus) {
    if (kalhandedback** s = slotOf(from)) record(*s).dualPortbuses.insert(bus);
}
void kalhandback::note(kaldesign* from, kalcomponent* instance) {
    if (kalhandedback** s = slotOf(from)) record(*s).instances.insert(instance);
}
void kalhandback::note(kalcomponent* from, kaldesign* design) {
    if (kalhandedback** s = slotOf(from)) record(*s).designs.insert(design);
}

void kalhandback::forget(kalnetbus* bus) {
    if (kalhandedback** s = slotOf(bus->getDesign())) drop(*s, &kalhandedback::netbuses, bus);
}
void kalhandback::forget(kaldualport* dualPort) {
    if (kalhandedback** s = slotOf(dualPort->getDesign())) drop(*s, &kalhandedback::dualPorts, dualPort);
}
void kalhandback::forget(kaldualportbus* bus) {
    if (kalhandedback** s = slotOf(bus->getDesign())) drop(*s, &kalhandedback::dualPortbuses, bus);
}
void kalhandback::forget(kalcomponent* instance) {
    if (kalhandedback** s = slotOf(instance->parentDesign)) drop(*s, &kalhandedback::instances, instance);
}
void kalhandback::forget(kaldesign* design) {
    if (kalhandedback** s = slotOf(design->owner)) drop(*s, &kalhandedback::designs, design);
}

void kalhandback::ownerGone(kaldesign* design) {
    kalhandedback* r = design->data->handedBack;
    if (!r) return;
    design->data->handedBack = nullptr;
    for (kalnetbus* b : r->netbuses)
        if (b->getDesign() == design) kalaccess::setDesign(b, nullptr);
    for (kaldualport* p : r->dualPorts)
        if (p->getDesign() == design) kalaccess::setDesign(p, nullptr);
    for (kaldualportbus* b : r->dualPortbuses)
        if (b->getDesign() == design) kalaccess::setDesign(b, nullptr);
    for (kalcomponent* c : r->instances)
        if (c->parentDesign == design) c->parentDesign = nullptr;
    // The unkeyed nets are still the design's, freed with its contents.
    if (!r->unkeyed.empty()) {
        kalhandedback* kept = new kalhandedback();
        kept->unkeyed.swap(r->unkeyed);
        design->data->handedBack = kept;
    }
    delete r;
}

void kalhandback::ownerGone(kalcomponentdata* data) {
    kalhandedback* r = data->handedBack;
    if (!r) return;
    data->handedBack = nullptr;
    for (kaldesign* d : r->designs)
        d->owner = nullptr;
    delete r;
}

void kalhandback::settleKeys(kaldesign* design, const std::vector<kalnet*>& touched) {
    kalhandedback** s = slotOf(design);
    if (!s) return;
    for (kalnet* net : touched) {
        if (!net || net->getDesign() != design) continue;
        const bool lost = !keyed(design, net);
        if (lost == kalaccess::unkeyed(net)) continue;
        kalaccess::setUnkeyed(net, lost);
        if (lost)
            record(*s).unkeyed.insert(net);
        else
            drop(*s, &kalhandedback::unkeyed, net);
    }
}

void kalhandback::forget(kalnet* net) {
    kalaccess::setUnkeyed(net, false);
    if (kalhandedback** s = slotOf(net->getDesign())) drop(*s, &kalhandedback::unkeyed, net);
}

void kalhandback::freeUnkeyed(kaldesigndata* data) {
    kalhandedback* r = data->handedBack;
    if (!r) return;
    data->handedBack = nullptr;
    const std::set<kalnet*> nets = std::move(r->unkeyed);
    delete r;
    for (kalnet* net : nets) {
        kalaccess::setUnkeyed(net, false);
        delete net;
    }
}

void kalhandback::verify(kaldesign* design, std::vector<std::string>& out) {
    const kalhandedback* r = design->data->handedBack;
    if (!r) return;
    if (r->empty()) out.push_back("an empty handed-back record is kept");
    for (kalnetbus* b : r->netbuses)
        if (b->getDesign() != design || !kalaccess::handedBack(b))
            out.push_back("a handed-back net bus no longer names the design, or lost its mark");
    for (kaldualport* p : r->dualPorts)
        if (p->getDesign() != design) out.push_back("a handed-back dual port no longer names the design");
    for (kaldualportbus* b : r->dualPortbuses)
        if (b->getDesign() != design) out.push_back("a handed-back dual port bus no longer names the design");
    for (kalcomponent* c : r->instances)
        if (c->parentDesign != design) out.push_back("a handed-back instance no longer names the design");
    for (kalnet* n : r->unkeyed) {
        const std::string name = n->getName() ? *n->getName() : std::string("<no name>");
        if (n->getDesign() != design) out.push_back("unkeyed net " + name + " is of another design");
        if (!kalaccess::unkeyed(n)) out.push_back("unkeyed net " + name + " lacks its mark");
        if (keyed(design, n)) out.push_back("unkeyed net " + name + " is reached by its key");
    }
}
