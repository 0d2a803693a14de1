#include "connectivity/access.h"
#include "connectivity/bits.h"
#include "connectivity/heldbits.h"
#include "connectivity/portlist.h"
#include "connectivity/propagate.h"
#include "connectivity/unlisted.h"
#include "core/names.h"
#include "core/text.h"
#include "connectivity/roles.h"
#include "events/events.h"
#include "events/paths.h"
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
    if (v && *v == "true") c->setClockSourceState(state);
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
    kalportlist* list = kalaccess::portList(net);
    kalport* found = nullptr;
    if (list)
        list->anyOf([&](kalport* p) {
            if (isTopPort(p, net->getDesign())) found = p;
            return found != nullptr;
        });
    return found;
}

}  // namespace kalroles

// ---- kalnet ----

kalnet::kalnet(const std::string* name_, const std::string* secondName_, const std::string* text_)
    : design(nullptr), name(nullptr), secondName(nullptr), text(nullptr), bus(nullptr), ports(nullptr) {
    if (!name_ || !secondName_) return;
    kalnames::assignPaired(name, secondName, name_);
    kalnames::assignPaired(secondName, name, secondName_);
    text = kaltext::copyOf(text_);
    ports = new kalportlist();
}

bool kalnet::isConnectedTo(kalport* port) {
    return port && ports && ports->containsEqual(port);
}

void kalnet::connect(kalport* port, bool flag) {
    if (!port || !ports || isConnectedTo(port)) return;
    ports->append(port);
    port->connect(this);
    if (flag) markClockSource(port, 1);
}

void kalnet::disconnect(kalport* port, bool flag) {
    if (!port || !ports) return;
    std::ptrdiff_t at = ports->firstEqual(port);
    if (at < 0) return;
    kalport* listed = ports->at(static_cast<std::size_t>(at));
    ports->eraseAt(static_cast<std::size_t>(at));
    if (listed != port) kalunlisted::note(listed, this);  // an equal twin went; it keeps its link
    port->disconnect(this);
    kalevents::emit("connect", "rem", [&](kalevents::record& r) {
        r.set("net", kalpaths::designPath(design, kaltext::orEmpty(name)));
        r.set("port", kalpaths::portPathInDesign(port));
    });
    if (flag) markClockSource(port, 2);
}

void kalnet::setBus(kalnetbus* b) {
    if (b) bus = b;
}
void kalnet::unsetBus() {
    bus = nullptr;
}

std::vector<kalport*> kalnet::getTop() {
    std::vector<kalport*> out;
    if (!ports) return out;
    ports->anyOf([&](kalport* p) {
        if (kalroles::isTopPort(p, design)) out.push_back(p);
        return false;
    });
    return out;
}

namespace {
std::vector<kalport*> classify(const kalportlist* ports, const kaldesign* design, bool sources) {
    std::vector<kalport*> out;
    if (!ports) return out;
    ports->anyOf([&](kalport* p) {
        if (sources ? kalroles::drives(p, design) : kalroles::receives(p, design)) out.push_back(p);
        return false;
    });
    return out;
}
}  // namespace

std::vector<kalport*> kalnet::getSources() {
    return classify(ports, design, true);
}
std::vector<kalport*> kalnet::getSinks() {
    return classify(ports, design, false);
}

bool kalnet::operator==(const kalnet& other) const {
    if (this == &other) return true;
    if (!kaltext::same(name, other.name) || !kaltext::same(secondName, other.secondName)) return false;
    if (design == other.design || !design || !other.design) return true;
    return *design == *other.design;
}

bool kalnet::operator!=(const kalnet& other) const {
    return !(*this == other);
}

kalnet::~kalnet() {
    kalheldbits::netGone(this);  // buses other than its own may still hold it
    kalunlisted::netGone(this);  // ports it took off its list may still point to it
    if (ports) {
        while (!ports->empty())
            ports->popBack()->disconnect(this);
        delete ports;
        ports = nullptr;
    }
    if (bus) {
        kalnetbus* b = bus;
        b->disconnect(this);
        if (b->getDesign() && b->getName()) {
            const std::string busName = *b->getName();  // the design may drop the bus's name with it
            b->getDesign()->removeNetbus(&busName);
        }
        // Deleting one bit net deletes its whole bus; the other bits survive.
        if (bus) delete bus;
        bus = nullptr;
    }
    kalnames::releasePair(name, secondName);
    delete text;
}

kaldesign* kalnet::getDesign() const {
    return design;
}
const std::string* kalnet::getName() const {
    return name;
}
const std::string* kalnet::getSecondName() const {
    return secondName;
}
const std::string* kalnet::getText() const {
    return text;
}
kalnetbus* kalnet::getBus() const {
    return bus;
}
std::vector<kalport*> kalnet::getPorts() const {
    return ports ? ports->snapshot() : std::vector<kalport*>();
}

void kalnet::setDesign(kaldesign* d) {
    design = d;
}
void kalnet::setName(const std::string* n) {
    kalnames::assignPaired(name, secondName, n);
}
void kalnet::setSecondName(const std::string* n) {
    kalnames::assignPaired(secondName, name, n);
}

// ---- kalnetbus ----

kalnetbus::kalnetbus(const std::string* name_, const std::string* secondName_, unsigned int msb_,
                     unsigned int lsb_, const std::string* text_)
    : design(nullptr), name(nullptr), secondName(nullptr), text(nullptr), bits(nullptr), msb(0), lsb(0) {
    if (!name_ || !secondName_) return;
    kalnames::assignPaired(name, secondName, name_);
    kalnames::assignPaired(secondName, name, secondName_);
    text = kaltext::copyOf(text_);
    msb = msb_;
    lsb = lsb_;
    bits = new std::vector<kalnet*>(kalbits::width(msb, lsb), nullptr);
}

kalnetbus* kalnetbus::createNetBus(const std::string* name, const std::string* secondName, unsigned int msb,
                                   unsigned int lsb, const std::vector<kalnet*>& nets,
                                   const std::string* text) {
    auto* b = new kalnetbus(name, secondName, msb, lsb, text);
    delete b->bits;
    b->bits = new std::vector<kalnet*>(nets);
    for (kalnet* n : nets) {
        if (!n) continue;
        kalheldbits::joined(n, b);  // another bus may hold it too
        n->setBus(b);
    }
    return b;
}

kalnet* kalnetbus::netAtIndex(unsigned int i) {
    if (!bits || !kalbits::inRange(i, msb, lsb)) return nullptr;
    return bits->at(kalbits::slot(i, msb));  // a short slot vector raises out_of_range
}

void kalnetbus::connect(unsigned int i, kalnet* net) {
    if (!net || !bits || !kalbits::inRange(i, msb, lsb)) return;
    std::size_t s = kalbits::slot(i, msb);
    if (s >= bits->size()) return;
    disconnect(i);
    (*bits)[s] = net;
    kalheldbits::joined(net, this);  // another bus may hold it too
    net->setBus(this);
}

void kalnetbus::disconnect(unsigned int i) {
    if (!bits || !kalbits::inRange(i, msb, lsb)) return;
    std::size_t s = kalbits::slot(i, msb);
    if (s >= bits->size()) return;
    (*bits)[s] = nullptr;  // the net that was there keeps its bus link
}

void kalnetbus::disconnect(kalnet* net) {
    if (!net || !bits) return;
    for (kalnet*& n : *bits) {
        if (n && *n == *net) {
            n = nullptr;  // both nets keep their bus links
            return;
        }
    }
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

kalnetbus::~kalnetbus() {
    if (bits) {
        for (kalnet* n : *bits)
            if (n) n->unsetBus();
        delete bits;
    }
    kalheldbits::busGone(this);
    kalnames::releasePair(name, secondName);
    delete text;
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
    return text;
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
void kalnetbus::clearBits() {
    if (bits) bits->clear();
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
