// SPDX-License-Identifier: Apache-2.0
#include "connectivity/access.h"

#include <algorithm>
#include <vector>

#include "connectivity/bits.h"
#include "connectivity/busties.h"
#include "connectivity/linkword.h"
#include "connectivity/propagate.h"
#include "core/names.h"
#include "core/keys.h"
#include "core/text.h"
#include "kalcomponent.h"
#include "kaldualport.h"
#include "kalnet.h"
#include "kalport.h"

namespace {

bool validDirection(int d) {
    return d >= 1 && d <= 3;
}

const std::string& exportFromKey() {
    static const std::string k("exportFrom");
    return k;
}

std::string exportFromValue(const kalcomponent* c, const std::string* name) {
    std::string v = c && c->data && c->data->instanceName ? *c->data->instanceName : std::string();
    v.append(".").append(name ? *name : std::string());
    return v;
}

}  // namespace

// ---- kalport ----

struct kalport::extras {
    const std::string* secondName = nullptr;  // null: the same as the name
    std::string* text = nullptr;
    kalport* exportedTo = nullptr;
    kalport* exportedFrom = nullptr;
    kaldualport* dualPort = nullptr;
    // Nets that still list this port although its link moved on (to an equal
    // net of a replaced design, say). Rare, hence a pointer.
    std::vector<kalnet*>* listedBy = nullptr;
    std::vector<kaldualport*> listers;  // dual ports whose lists hold it
    std::vector<kalportbus*> busTies;   // see busties.h
    kalportbus* bus = nullptr;          // the link word's bus, moved here with the record
};

struct kalportbus::extras {
    std::string* text = nullptr;
    std::vector<kalport*> ties;  // see busties.h
};

kalport::extras& kalport::more() {
    return kallinkword::make<extras>(link);
}

void kalaccess::setLink(kalport* p, kalportbus* b) {
    kallinkword::setBus<kalport::extras>(p->link, b);
}

std::vector<kalportbus*>* kalaccess::ties(kalport* p, bool make) {
    return make || p->extra() ? &p->more().busTies : nullptr;
}
const std::vector<kalnet*>* kalaccess::listedBy(const kalport* p) {
    return p->extra() ? p->extra()->listedBy : nullptr;
}
std::vector<kaldualport*>* kalaccess::listers(kalport* p, bool make) {
    return make || p->extra() ? &p->more().listers : nullptr;
}

// ---- nets that list a port which left them ----

void kalaccess::portLeft(kalnet* net, kalport* p) {
    if (!net) return;
    kalportlist list = portList(net);
    if (!list.present() || !list.listsPointer(p)) return;
    list.markStray();
    auto*& nets = p->more().listedBy;
    if (!nets) nets = new std::vector<kalnet*>();
    if (std::find(nets->begin(), nets->end(), net) == nets->end()) nets->push_back(net);
}

void kalaccess::netUnlisted(kalport* p, const kalnet* net) {
    if (!p->extra() || !p->extra()->listedBy) return;
    auto& nets = *p->extra()->listedBy;
    nets.erase(std::remove(nets.begin(), nets.end(), net), nets.end());
}

namespace {

// The dying port takes itself off a net that still lists it: quietly, as the
// net never had a record of it that a "connect"/"rem" could undo.
void unlistFrom(kalnet* net, const kalport* port) {
    kalportlist list = kalaccess::portList(net);
    if (!list.present()) return;
    const std::ptrdiff_t at = list.findPointer(port);
    if (at >= 0) list.eraseAt(static_cast<std::size_t>(at));
}

}  // namespace

// Takes one reference to each shared name. Equal names are the same shared
// string, so a second name equal to the name is not stored apart.
void kalport::storeNames(const std::string* n, const std::string* second) {
    const std::string* oldName = name;
    const std::string* oldSecond = extra() ? extra()->secondName : nullptr;
    name = n;
    if (second == n) {
        kalnames::release(second);
        if (extra()) extra()->secondName = nullptr;
    } else {
        more().secondName = second;
    }
    kalnames::release(oldName);
    kalnames::release(oldSecond);
}

kalport::kalport(const std::string* name_, const std::string* secondName_, int direction_,
                 const std::string* text_)
    : owner(0), name(nullptr), net(nullptr), link(0) {
    if (!name_ || !secondName_ || !validDirection(direction_)) return;
    name =
        kalnames::acquire(*name_);  // one trip to the shared table when both names agree, as they mostly do
    if (*secondName_ != *name) more().secondName = kalnames::acquire(*secondName_);
    if (text_) more().text = new std::string(*text_);
    owner = static_cast<std::uintptr_t>(direction_);
}

void kalport::setBus(kalportbus* b) {
    if (b) kalbusties::setLink(this, b);
}
void kalport::unsetBus() {
    kalbusties::setLink(this, static_cast<kalportbus*>(nullptr));
}
kaldualport* kalport::getDualPort() {
    return extra() ? extra()->dualPort : nullptr;
}

void kalport::connect(kalnet* n) {
    kalnet* old = net;
    if (!n) {
        disconnect(net);
        return;
    }
    if (net && *net != *n) disconnect(net);
    net = n;
    if (old && old != n) {
        kalaccess::linkEnded(old, this);
        kalaccess::portLeft(old, this);
    }
}

void kalport::disconnect(kalnet* n) {
    if (!net || !n || !(*net == *n)) return;
    kalnet* old = net;
    if (n->isConnectedTo(this)) n->disconnect(this, true);
    if (!net) return;  // the net's disconnect came back here and ended the link
    net = nullptr;
    kalaccess::linkEnded(old, this);
    if (old != n) kalaccess::portLeft(old, this);
}

bool kalport::exportTo(kalport* target) {
    if (!net) return false;
    if (!target) {
        unexport();
        return true;
    }
    if (target->net != net) return false;
    unexport();
    if (kalport* previous = target->getExportedFrom()) previous->unexport();
    target->more().exportedFrom = this;
    std::string value = exportFromValue(getComponent(), name);
    target->setAttributeValue(&exportFromKey(), &value);
    more().exportedTo = target;
    return true;
}

void kalport::unexport() {
    kalport* target = getExportedTo();
    if (!target) return;
    target->extra()->exportedFrom = nullptr;
    extra()->exportedTo = nullptr;
}

kalport* kalport::getExportedFrom() {
    return extra() ? extra()->exportedFrom : nullptr;
}
kalport* kalport::getExportedTo() {
    return extra() ? extra()->exportedTo : nullptr;
}

std::vector<kalport*> kalport::getConnectedPorts() {
    std::vector<kalport*> out;
    if (!net) return out;
    for (kalport* p : net->getPorts())
        if (!(*p == *this)) out.push_back(p);
    return out;
}

std::vector<kalport*> kalport::getPortsOfDualPort() {
    std::vector<kalport*> out;
    kaldualport* dualPort = getDualPort();
    if (!dualPort) return out;
    out = dualPort->getPortList();
    for (auto it = out.begin(); it != out.end(); ++it) {
        if (*it == this) {
            out.erase(it);
            break;
        }
    }
    return out;
}

bool kalport::operator==(const kalport& other) const {
    if (this == &other) return true;
    // Names are shared strings: equal text is the same pointer.
    if (name != other.name || getSecondName() != other.getSecondName()) return false;
    kalcomponent *mine = getComponent(), *theirs = other.getComponent();
    if (mine == theirs) return true;
    if (!mine || !theirs) return false;
    return *mine == *theirs;
}

bool kalport::operator!=(const kalport& other) const {
    return !(*this == other);
}

kalport::~kalport() {
    kalnet* const last = net;
    if (net) net->disconnect(this, true);
    // An equal twin listed first went in its place: this one is still listed.
    if (last) unlistFrom(last, this);
    if (extra() && extra()->listedBy) {
        for (kalnet* n : *extra()->listedBy)
            unlistFrom(n, this);
        delete extra()->listedBy;
        extra()->listedBy = nullptr;
    }
    // A net that took an equal twin off its list in this port's place still
    // counts on clearing this link.
    if (net) kalaccess::linkEnded(net, this);
    if (kalportbus* bus = getBus()) {  // as bus->disconnect(this): the first equal slot goes, maybe a twin's
        kalbusties::emptySlot(bus, kalbusties::firstEqual(bus, this), this);
    }
    kalbusties::memberGone(this);
    if (kaldualport* dp = getDualPort()) dp->removePort(kalkeys::memberName(this));
    // The key can miss (a root component whose "Name" is not its instance
    // name, a port listed twice), and dual ports other than its own may list
    // it too: no entry may outlive the port.
    if (extra()) {
        const std::vector<kaldualport*> lists = std::move(extra()->listers);
        extra()->listers.clear();
        for (kaldualport* dp : lists)
            kalaccess::forgetPort(dp, this);
    }
    kalnames::release(name);
    if (!extra()) return;
    if (kalport* to = extra()->exportedTo; to && to->getExportedFrom() == this)
        to->extra()->exportedFrom = nullptr;
    if (kalport* from = extra()->exportedFrom; from && from->getExportedTo() == this)
        from->extra()->exportedTo = nullptr;
    kalnames::release(extra()->secondName);
    delete extra()->text;
    delete extra();
}

kalcomponent* kalport::getComponent() const {
    return reinterpret_cast<kalcomponent*>(owner & ~std::uintptr_t(3));
}
const std::string* kalport::getName() const {
    return name;
}
const std::string* kalport::getSecondName() const {
    const extras* e = extra();
    return e && e->secondName ? e->secondName : name;
}
const std::string* kalport::getText() const {
    return extra() ? extra()->text : nullptr;
}
kalportbus* kalport::getBus() const {
    return kallinkword::bus<extras, kalportbus>(link);
}
kalnet* kalport::getNet() const {
    return net;
}
int kalport::getDirection() const {
    return static_cast<int>(owner & 3);
}

void kalport::setComponent(kalcomponent* c) {
    static_assert(alignof(kalcomponent) >= 4, "the direction lives in the pointer's low bits");
    owner = reinterpret_cast<std::uintptr_t>(c) | (owner & 3);
}
void kalport::setName(const std::string* n) {
    if (n) storeNames(kalnames::acquire(*n), kalnames::acquireOrNull(getSecondName()));
}
void kalport::setSecondName(const std::string* n) {
    if (n) storeNames(kalnames::acquireOrNull(name), kalnames::acquire(*n));
}
void kalport::setDualPort(kaldualport* d) {
    if (d || extra()) more().dualPort = d;
}

// ---- kalportbus ----

kalportbus::kalportbus(const std::string* name_, const std::string* secondName_, unsigned int msb_,
                       unsigned int lsb_, int direction_, const std::string* text_)
    : component(nullptr),
      name(nullptr),
      secondName(nullptr),
      extra(nullptr),
      bits(nullptr),
      direction(0),
      msb(0),
      lsb(0) {
    if (!name_ || !secondName_ || !validDirection(direction_)) return;
    name = kalnames::acquire(*name_);
    secondName = kalnames::acquire(*secondName_);
    if (text_) more().text = kaltext::copyOf(text_);
    direction = direction_;
    msb = msb_;
    lsb = lsb_;
    bits = new std::vector<kalport*>(kalbits::width(msb, lsb), nullptr);
}

namespace {
// The slot of bit i, or null when i is outside the range or the slot vector.
template <class T>
T** slotOf(std::vector<T*>* bits, unsigned int i, unsigned int msb, unsigned int lsb) {
    if (!bits || !kalbits::inRange(i, msb, lsb)) return nullptr;
    std::size_t s = kalbits::slot(i, msb);
    return s < bits->size() ? &(*bits)[s] : nullptr;
}
}  // namespace

kalport* kalportbus::portAtIndex(unsigned int i) {
    kalport** s = slotOf(bits, i, msb, lsb);
    return s ? *s : nullptr;
}

void kalportbus::connect(unsigned int i, kalport* port) {
    kalport** s = slotOf(bits, i, msb, lsb);
    if (s && port) kalbusties::fillSlot(this, static_cast<std::size_t>(s - bits->data()), port);
}

void kalportbus::disconnect(unsigned int i) {
    kalport** s = slotOf(bits, i, msb, lsb);
    if (s) kalbusties::emptySlot(this, static_cast<std::size_t>(s - bits->data()));
}

void kalportbus::disconnect(kalport* port) {
    if (!port) return;
    kalbusties::emptySlot(this, kalbusties::firstEqual(this, port));
}

bool kalportbus::hasConnectedPort() {
    if (!bits) return false;
    for (kalport* p : *bits)
        if (p && p->getNet()) return true;
    return false;
}

kalnetbus* kalportbus::getConnectedNetbus() {
    if (!bits || bits->empty()) return nullptr;
    kalport* first = (*bits)[0];
    kalnet* firstNet = first ? first->getNet() : nullptr;
    kalnetbus* candidate = firstNet ? firstNet->getBus() : nullptr;
    if (!candidate) return nullptr;
    if (kalbits::width(candidate->getMsb(), candidate->getLsb()) != kalbits::width(msb, lsb)) return nullptr;
    std::vector<kalnet*> nets = candidate->getBits();
    if (nets.empty() || !nets[0] || *nets[0] != *firstNet) return nullptr;
    for (std::size_t k = 1; k < bits->size(); ++k) {
        kalport* p = (*bits)[k];
        kalnet* n = p ? p->getNet() : nullptr;
        if (!n || n->getBus() != candidate) return nullptr;
        if (k >= nets.size() || !nets[k] || *nets[k] != *n) return nullptr;
    }
    return candidate;
}

bool kalportbus::connectToNetbus(kalnetbus* netbus) {
    if (!netbus) return false;
    if (kalbits::width(netbus->getMsb(), netbus->getLsb()) != kalbits::width(msb, lsb)) return false;
    if (!bits) return true;
    std::vector<kalnet*> nets = netbus->getBits();
    for (std::size_t k = 0; k < bits->size() && k < nets.size(); ++k) {
        kalport* p = (*bits)[k];
        if (p && nets[k] && !nets[k]->isConnectedTo(p)) nets[k]->connect(p, false);
    }
    return true;
}

void kalportbus::exportTo(kalportbus* target) {
    if (!target || !bits || bits->empty()) return;
    std::vector<kalport*> targets = target->getBits();
    for (std::size_t k = 0; k < bits->size(); ++k) {
        kalport* p = (*bits)[k];
        if (p) p->exportTo(k < targets.size() ? targets[k] : nullptr);
    }
    std::string value = exportFromValue(component, name);
    target->setAttributeValue(&exportFromKey(), &value, false);
}

void kalportbus::unexport() {
    if (!bits) return;
    for (kalport* p : *bits)
        if (p) p->unexport();
}

kalportbus* kalportbus::getExportedToBus() {
    if (!bits || bits->empty() || !(*bits)[0]) return nullptr;
    kalport* to = (*bits)[0]->getExportedTo();
    kalportbus* candidate = to ? to->getBus() : nullptr;
    if (!candidate) return nullptr;
    return kalbits::width(candidate->getMsb(), candidate->getLsb()) == kalbits::width(msb, lsb) ? candidate
                                                                                                : nullptr;
}

void kalportbus::setAttribute(const std::string* n, const std::string* value, const std::string* vendor,
                              bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.setAttribute(n, value, vendor); });
}

void kalportbus::setAttributeValue(const std::string* n, const std::string* value, bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.setAttributeValue(n, value); });
}

void kalportbus::removeAttribute(const std::string* n, bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.removeAttribute(n); });
}

void kalportbus::removeAllAttributes(bool propagate) {
    kalpropagate::apply(*this, bits, propagate, [&](kalattributes& a) { a.removeAllAttributes(); });
}

kalportbus::~kalportbus() {
    // Ports can point here from outside the slots too: bits of a bus made
    // without slots (a direction outside 1..3), or a bit whose slot connect()
    // gave to another port. None may keep the link.
    kalbusties::busGone(this);
    delete bits;
    kalnames::release(name);
    kalnames::release(secondName);
    if (extra) {
        delete extra->text;
        delete extra;
    }
}

kalportbus::extras& kalportbus::more() {
    if (!extra) extra = new extras();
    return *extra;
}
std::vector<kalport*>* kalaccess::ties(kalportbus* b, bool make) {
    return make || b->extra ? &b->more().ties : nullptr;
}

kalcomponent* kalportbus::getComponent() const {
    return component;
}
const std::string* kalportbus::getName() const {
    return name;
}
const std::string* kalportbus::getSecondName() const {
    return secondName;
}
const std::string* kalportbus::getText() const {
    return extra ? extra->text : nullptr;
}
std::vector<kalport*> kalportbus::getBits() const {
    return bits ? *bits : std::vector<kalport*>();
}
int kalportbus::getDirection() const {
    return direction;
}
unsigned int kalportbus::getMsb() const {
    return msb;
}
unsigned int kalportbus::getLsb() const {
    return lsb;
}

void kalportbus::setComponent(kalcomponent* c) {
    component = c;
}
void kalportbus::setName(const std::string* n) {
    kalnames::reassign(name, n);
}
void kalportbus::setSecondName(const std::string* n) {
    kalnames::reassign(secondName, n);
}

// ---- free queries that look through dual ports ----

namespace {
const std::string& padPinKey() {
    static const std::string k("PadPin");
    return k;
}
bool isTrue(const std::string* v) {
    return v && *v == "true";
}
}  // namespace

bool isPadPin(kalport* port) {
    if (!port) return false;
    if (port->getBus()) return isPadPinBus(port->getBus());
    return isTrue(port->getAttributeValue(&padPinKey()));
}

bool isPadPinBus(kalportbus* portbus) {
    return portbus && isTrue(portbus->getAttributeValue(&padPinKey()));
}

bool isPortOrDualPortConnected(kalport* port) {
    if (!port) return false;
    if (port->getNet()) return true;
    kaldualport* dp = port->getDualPort();
    if (!dp) return false;
    for (kalport* p : dp->getPortList())
        if (p && p->getNet()) return true;
    return false;
}

kalnet* getNetConnectedToPortOrDualPort(kalport* port) {
    if (!port) return nullptr;
    if (port->getNet()) return port->getNet();
    return port->getDualPort() ? port->getDualPort()->getConnectedNet() : nullptr;
}

kalport* getExportedToOfPortOrDualPort(kalport* port) {
    if (!port) return nullptr;
    if (port->getExportedTo()) return port->getExportedTo();
    return port->getDualPort() ? port->getDualPort()->getExportedTo() : nullptr;
}

bool isDualPort(kalport* port) {
    return port && port->getDualPort();
}

bool isDualPortbus(kalportbus* portbus) {
    return portbus && isDualPort(portbus->portAtIndex(portbus->getMsb()));
}

kalnetbus* getNetbusConnectedToPortbusOrDualPortbus(kalportbus* portbus) {
    if (!portbus) return nullptr;
    if (kalnetbus* nb = portbus->getConnectedNetbus()) return nb;
    if (portbus->hasConnectedPort()) return nullptr;
    kalport* msbPort = portbus->portAtIndex(portbus->getMsb());
    if (!msbPort) return nullptr;
    for (kalport* partner : msbPort->getPortsOfDualPort()) {
        kalportbus* b = partner ? partner->getBus() : nullptr;
        if (!b) continue;
        if (kalnetbus* nb = b->getConnectedNetbus()) return nb;
        if (b->hasConnectedPort()) return nullptr;
    }
    return nullptr;
}

bool hasPortBitConnectedToPortbusOrDualPortbus(kalportbus* portbus) {
    if (!portbus) return false;
    if (portbus->hasConnectedPort()) return true;
    kalport* msbPort = portbus->portAtIndex(portbus->getMsb());
    if (!msbPort) return false;
    for (kalport* partner : msbPort->getPortsOfDualPort()) {
        kalportbus* b = partner ? partner->getBus() : nullptr;
        if (b && b->hasConnectedPort()) return true;
    }
    return false;
}
