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
    const kalhandedback& r = *slot;
    if (r.netbuses.empty() && r.dualPorts.empty() && r.dualPortbuses.empty() && r.instances.empty() &&
        r.designs.empty()) {
        delete slot;
        slot = nullptr;
    }
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
