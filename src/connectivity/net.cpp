// SPDX-License-Identifier: Apache-2.0
#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "connectivity/busties.h"
#include "connectivity/linkword.h"
#include "connectivity/portlist.h"
#include "connectivity/propagate.h"
#include <algorithm>
#include <cstdint>

#include "core/names.h"
#include "design/handedback.h"
#include "core/text.h"
#include "connectivity/roles.h"
#include "events/records.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalelements.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

// Clock-source bookkeeping: when the catalogue element named like the port is
// marked "CLK_SRC", connecting sets the component's state to 1, disconnecting
// to 2. A component being torn down has no catalogue any more.
void markClockSource(kalport* port, int state) {
    static const std::string clkSrc("CLK_SRC");
    kalcomponent* c = port->getComponent();
    kalelements* catalogue = c && c->data ? c->data->elements : nullptr;
    kalelement* element = catalogue ? catalogue->getElement(port->getName()) : nullptr;
    if (!element) return;
    const std::string* v = element->getAttributeValue(&clkSrc);
    if (v && *v == "true") kalaccess::setClockSourceState(c, state);
}

}  // namespace

namespace kalroles {

bool isTopPort(const kalport* port, const kaldesign* design) {
    const kalcomponent* c = port->getComponent();
    const kalcomponent* owner = design ? design->owner : nullptr;
    if (!c || !owner) return false;
    return c == owner || *c == *owner;
}

bool drives(const kalport* port, const kaldesign* design) {
    int d = port->getDirection();
    return isTopPort(port, design) ? (d == 1 || d == 3) : (d == 2 || d == 3);
}

bool receives(const kalport* port, const kaldesign* design) {
    int d = port->getDirection();
    return isTopPort(port, design) ? (d == 2 || d == 3) : (d == 1 || d == 3);
}

kalport* firstTopPort(kalnet* net) {
    kalport* found = nullptr;
    kalaccess::portList(net).anyOf([&](kalport* p) {
        if (isTopPort(p, net->getDesign())) found = p;
        return found != nullptr;
    });
    return found;
}

}  // namespace kalroles

// ---- kalnet ----

// What only unusual nets carry. A net without one is named, its second name
// reads its name, and it has no text.
struct kalnet::extras {
    bool nameless = false;
    bool secondless = false;
    std::string* second = nullptr;  // the second name where it differs from the name
    std::string* text = nullptr;
    std::vector<kalnetbus*> busTies;  // see busties.h
    // Equal twins that the net took off its list in another port's place: they
    // still point here, and lose that link when the net dies.
    std::vector<kalport*> unlisted;
    bool unkeyed = false;      // in its design's unkeyed nets (design/handedback.h)
    kalnetbus* bus = nullptr;  // the link word's bus, moved here with the record
    ~extras() {
        delete second;
        delete text;
    }
    bool plain() const {
        return !nameless && !secondless && !second && !text && busTies.empty() && unlisted.empty() &&
               !unkeyed;
    }
};

std::vector<kalnetbus*>* kalaccess::ties(kalnet* n, bool make) {
    return make || n->extra() ? &n->more().busTies : nullptr;
}

void kalaccess::twinUnlisted(kalnet* net, kalport* twin) {
    // A twin whose link already moved on has nothing here to clear.
    if (twin->getNet() == net) net->more().unlisted.push_back(twin);
}

const std::vector<kalport*>* kalaccess::twins(const kalnet* n) {
    return n->extra() ? &n->extra()->unlisted : nullptr;
}

bool kalaccess::unkeyed(const kalnet* n) {
    return n->extra() && n->extra()->unkeyed;
}
void kalaccess::setUnkeyed(kalnet* n, bool unkeyed) {
    if (!unkeyed && !n->extra()) return;
    n->more().unkeyed = unkeyed;
    n->tidy();
}

void kalaccess::linkEnded(kalnet* net, const kalport* p) {
    if (!net->extra() || net->extra()->unlisted.empty()) return;
    auto& twins = net->extra()->unlisted;
    twins.erase(std::remove(twins.begin(), twins.end(), p), twins.end());
    net->tidy();
}

kalnet::kalnet(const std::string* name_, const std::string* secondName_, const std::string* text_)
    : design(nullptr), link(0), ports(nullptr) {
    if (!name_ || !secondName_) {
        extras& e = more();
        e.nameless = e.secondless = true;
        ports = kalportlist::absent();
        return;
    }
    name = *name_;
    if (*secondName_ != name || text_) {
        extras& e = more();
        if (*secondName_ != name) e.second = new std::string(*secondName_);
        e.text = kaltext::copyOf(text_);
    }
}

bool kalnet::isConnectedTo(kalport* port) {
    kalportlist list(ports);
    return port && list.present() && list.containsEqual(port);
}

void kalnet::connect(kalport* port, bool flag) {
    if (!port || isConnectedTo(port)) return;
    append(port, flag);
}

void kalnet::append(kalport* port, bool flag) {
    kalportlist list(ports);
    if (!list.present()) return;
    list.append(port);
    port->connect(this);
    if (flag) markClockSource(port, 1);
}

void kalnet::disconnect(kalport* port, bool flag) {
    kalportlist list(ports);
    if (!port || !list.present()) return;
    std::ptrdiff_t at = list.firstEqual(port);
    if (at < 0) return;
    kalport* listed = list.at(static_cast<std::size_t>(at));
    list.eraseAt(static_cast<std::size_t>(at));
    kalaccess::netUnlisted(listed, this);
    if (listed != port) kalaccess::twinUnlisted(this, listed);  // it keeps its link
    port->disconnect(this);
    kalrecords::portLeftNet(this, port);
    if (flag) markClockSource(port, 2);
}

void kalnet::setBus(kalnetbus* b) {
    if (b) kalbusties::setLink(this, b);
}
void kalnet::unsetBus() {
    kalbusties::setLink(this, static_cast<kalnetbus*>(nullptr));
}

std::vector<kalport*> kalnet::getTop() {
    std::vector<kalport*> out;
    kalportlist(ports).anyOf([&](kalport* p) {
        if (kalroles::isTopPort(p, design)) out.push_back(p);
        return false;
    });
    return out;
}

namespace {
std::vector<kalport*> classify(const kalportlist& ports, const kaldesign* design, bool sources) {
    std::vector<kalport*> out;
    ports.anyOf([&](kalport* p) {
        if (sources ? kalroles::drives(p, design) : kalroles::receives(p, design)) out.push_back(p);
        return false;
    });
    return out;
}
}  // namespace

std::vector<kalport*> kalnet::getSources() {
    return classify(kalportlist(ports), design, true);
}
std::vector<kalport*> kalnet::getSinks() {
    return classify(kalportlist(ports), design, false);
}

bool kalnet::operator==(const kalnet& other) const {
    if (this == &other) return true;
    if (!kaltext::same(getName(), other.getName()) || !kaltext::same(getSecondName(), other.getSecondName()))
        return false;
    if (design == other.design || !design || !other.design) return true;
    return *design == *other.design;
}

bool kalnet::operator!=(const kalnet& other) const {
    return !(*this == other);
}

kalnet::~kalnet() {
    kalportlist list(ports);
    if (list.present()) {
        while (!list.empty()) {
            kalport* p = list.popBack();
            kalaccess::netUnlisted(p, this);
            p->disconnect(this);
        }
        list.release();
    }
    // Ports it took off its list may still point to it, also those that the
    // loop above took off: disconnecting one port takes out the first equal
    // entry, which may be its twin.
    if (extra()) {
        const std::vector<kalport*> twins = std::move(extra()->unlisted);
        extra()->unlisted.clear();
        for (kalport* p : twins)
            if (p->getNet() == this) kalaccess::dropNet(p);
    }
    if (kalnetbus* b = getBus()) {
        // As b->disconnect(this): the first equal slot goes, maybe a twin's.
        kalbusties::emptySlot(b, kalbusties::firstEqual(b, this), this);
        // A bus that removeNetbus handed back is the caller's: it loses this
        // bit but is not destroyed with it.
        // Nor does it call back into the design: its name there may belong to
        // another bus by now.
        const bool callers = kalaccess::handedBack(b);
        if (!callers && b->getDesign() && b->getName()) {
            const std::string busName = *b->getName();  // the design may drop the bus's name with it
            b->getDesign()->removeNetbus(&busName);
        }
        // Deleting one bit net deletes its whole bus; the other bits survive.
        if (getBus() && !callers) {
            // It may no longer hold this net, so would not clear the link.
            kallinkword::setBus<extras>(link, static_cast<kalnetbus*>(nullptr));
            delete b;
        }
    }
    kalbusties::memberGone(this);  // a bus kept by the caller, or buses other than its own
    if (kalaccess::unkeyed(this)) kalhandback::forget(this);
    delete extra();
}

kaldesign* kalnet::getDesign() const {
    return design;
}
const std::string* kalnet::getName() const {
    return extra() && extra()->nameless ? nullptr : &name;
}
const std::string* kalnet::getSecondName() const {
    if (!extra()) return &name;
    if (extra()->second) return extra()->second;
    return extra()->secondless ? nullptr : &name;
}
const std::string* kalnet::getText() const {
    return extra() ? extra()->text : nullptr;
}
kalnetbus* kalnet::getBus() const {
    return kallinkword::bus<extras, kalnetbus>(link);
}
std::vector<kalport*> kalnet::getPorts() const {
    return kalportlist(const_cast<kalport*&>(ports)).snapshot();
}

void kalnet::setDesign(kaldesign* d) {
    design = d;
}
kalnet::extras& kalnet::more() {
    return kallinkword::make<extras>(link);
}

void kalaccess::setLink(kalnet* n, kalnetbus* b) {
    kallinkword::setBus<kalnet::extras>(n->link, b);
}

void kalnet::tidy() {
    if (extras* e = extra(); e && e->plain()) kallinkword::drop<extras>(link);
}

void kalnet::setName(const std::string* n) {
    if (!n) return;
    std::string value = *n;  // n may be either of this net's names
    const std::string* second = getSecondName();
    if (second == &name && value != name) more().second = new std::string(name);  // keeps its value
    name.swap(value);
    if (extra()) {
        extra()->nameless = false;
        if (extra()->second && *extra()->second == name) {  // equal names share again
            delete extra()->second;
            extra()->second = nullptr;
        }
    }
    tidy();
}

void kalnet::setSecondName(const std::string* n) {
    if (!n) return;
    if (getName() && *n == name) {
        if (extra()) {
            delete extra()->second;
            extra()->second = nullptr;
            extra()->secondless = false;
        }
    } else {
        std::string* fresh = new std::string(*n);  // n may be the second name itself
        extras& e = more();
        delete e.second;
        e.second = fresh;
        e.secondless = false;
    }
    tidy();
}

// ---- kalnetbus ----

struct kalnetbus::extras {
    std::string* text = nullptr;
    std::vector<kalnet*> ties;  // see busties.h
};

kalnetbus::kalnetbus(const std::string* name_, const std::string* secondName_, unsigned int msb_,
                     unsigned int lsb_, const std::string* text_)
    : design(nullptr), name(nullptr), secondName(nullptr), extra(nullptr), bits(nullptr), msb(0), lsb(0) {
    if (!name_ || !secondName_) return;
    kalnames::assignPaired(name, secondName, name_);
    kalnames::assignPaired(secondName, name, secondName_);
    if (text_) more().text = kaltext::copyOf(text_);
    msb = msb_;
    lsb = lsb_;
    bits = new std::vector<kalnet*>(kalbits::width(msb, lsb), nullptr);
}

kalnetbus* kalnetbus::createNetBus(const std::string* name, const std::string* secondName, unsigned int msb,
                                   unsigned int lsb, const std::vector<kalnet*>& nets,
                                   const std::string* text) {
    auto* b = new kalnetbus(name, secondName, msb, lsb, text);
    delete b->bits;
    b->bits = new std::vector<kalnet*>(nets.size(), nullptr);
    for (std::size_t k = 0; k < nets.size(); ++k)
        if (nets[k]) kalbusties::place(b, k, nets[k]);  // another bus may hold it too
    return b;
}

kalnet* kalnetbus::netAtIndex(unsigned int i) {
    if (!bits || !kalbits::inRange(i, msb, lsb)) return nullptr;
    return bits->at(kalbits::slot(i, msb));  // a short slot vector raises out_of_range
}

void kalnetbus::connect(unsigned int i, kalnet* net) {
    if (!net || !bits || !kalbits::inRange(i, msb, lsb)) return;
    std::size_t s = kalbits::slot(i, msb);
    if (s < bits->size()) kalbusties::place(this, s, net);  // the former occupant keeps its link
}

void kalnetbus::disconnect(unsigned int i) {
    if (!bits || !kalbits::inRange(i, msb, lsb)) return;
    kalbusties::emptySlot(this, kalbits::slot(i, msb));  // the net that was there keeps its bus link
}

void kalnetbus::disconnect(kalnet* net) {
    if (net) kalbusties::emptySlot(this, kalbusties::firstEqual(this, net));  // both keep their links
}

bool kalnetbus::hasSoucePortsInNetBus() {
    if (!bits || bits->empty()) return false;
    // Only slot 0 is ever examined; while it has no source this does not
    // return. The volatile read keeps the wait well-defined.
    kalnet* const volatile* first = bits->data();
    for (;;) {
        kalnet* n = *first;
        if (n && !n->getSources().empty()) return true;
    }
}

void kalnetbus::setAttribute(const std::string* n, const std::string* value, const std::string* vendor,
                             bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.setAttribute(n, value, vendor); });
}

void kalnetbus::setAttributeValue(const std::string* n, const std::string* value, bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.setAttributeValue(n, value); });
}

void kalnetbus::removeAttribute(const std::string* n, bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.removeAttribute(n); });
}

void kalnetbus::removeAllAttributes(bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.removeAllAttributes(); });
}

// A bus handed back is the caller's: a dying bit leaves it but does not
// destroy it. The mark rides on the side record pointer, whose lowest bit is free.
void kalnetbus::markHandedBack() {
    extra = reinterpret_cast<extras*>(reinterpret_cast<std::uintptr_t>(extra) | 1u);
}
bool kalnetbus::handedBack() const {
    return reinterpret_cast<std::uintptr_t>(extra) & 1u;
}
kalnetbus::extras* kalnetbus::side() const {
    return reinterpret_cast<extras*>(reinterpret_cast<std::uintptr_t>(extra) & ~std::uintptr_t(1));
}
kalnetbus::extras& kalnetbus::more() {
    if (!side())
        extra = reinterpret_cast<extras*>(reinterpret_cast<std::uintptr_t>(new extras()) | handedBack());
    return *side();
}
std::vector<kalnet*>* kalaccess::ties(kalnetbus* b, bool make) {
    return make || b->side() ? &b->more().ties : nullptr;
}

kalnetbus::~kalnetbus() {
    kalhandback::forget(this);
    kalbusties::busGone(this);
    delete bits;
    kalnames::releasePair(name, secondName);
    if (extras* e = side()) {
        delete e->text;
        delete e;
    }
}

kaldesign* kalnetbus::getDesign() const {
    return design;
}
const std::string* kalnetbus::getName() const {
    return name;
}
const std::string* kalnetbus::getSecondName() const {
    return secondName;
}
const std::string* kalnetbus::getText() const {
    return side() ? side()->text : nullptr;
}
std::vector<kalnet*> kalnetbus::getBits() const {
    return bits ? *bits : std::vector<kalnet*>();
}
unsigned int kalnetbus::getMsb() const {
    return msb;
}
unsigned int kalnetbus::getLsb() const {
    return lsb;
}

void kalnetbus::setDesign(kaldesign* d) {
    design = d;
}
void kalnetbus::setName(const std::string* n) {
    kalnames::assignPaired(name, secondName, n);
}
void kalnetbus::setSecondName(const std::string* n) {
    kalnames::assignPaired(secondName, name, n);
}
void kalnetbus::setRange(unsigned int msb_, unsigned int lsb_) {
    msb = msb_;
    lsb = lsb_;
}

// ---- free queries ----

namespace {
bool typeIsInternal(kalattributes& a) {
    static const std::string type("type");
    const std::string* v = a.getAttributeValue(&type);
    return v && *v == "internal";
}
}  // namespace

bool isInternalConnection(kalnet* net) {
    return net && typeIsInternal(*net);
}
bool isInternalConnection(kalnetbus* netbus) {
    return netbus && typeIsInternal(*netbus);
}
