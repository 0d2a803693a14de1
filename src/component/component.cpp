// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <memory>

#include "connectivity/access.h"
#include "core/identity.h"
#include "core/maps.h"
#include "core/text.h"
#include "design/handedback.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalelements.h"
#include "kalfile.h"
#include "kalgenerators.h"
#include "kallpc.h"
#include "kalparameter.h"
#include "kalport.h"
#include "kalutilities.h"

namespace {

using kalidentity::libraryKey;
using kalidentity::nameKey;
using kalidentity::spirit;
using kalidentity::vendorKey;
using kalidentity::versionKey;

kaldesign* firstDesign(const kalcomponentdata* d) {
    return d->designs.empty() ? nullptr : d->designs.begin()->second;
}

}  // namespace

// ---- kalcomponentdata ----

kalcomponentdata::kalcomponentdata()
    : instanceName(nullptr),
      elements(new kalelements()),
      generators(new kalgenerators()),
      handedBack(nullptr) {}

kalcomponentdata::~kalcomponentdata() {
    // The catalogue goes first; ports destroyed below must find it gone, not freed.
    delete elements;
    elements = nullptr;
    kalmaps::destroyAll(designs);
    // Port buses go before the ports: each clears the bus links of its bits.
    kalmaps::destroyAll(portbuses);
    kalmaps::destroyAll(ports);
    // Designs handed back outlive their owner without a link to it; records
    // sent while the ports above left their nets still named it.
    kalhandback::ownerGone(this);
    kalmaps::destroyAll(parameters);
    lpcs.clear();
    lpcs.shrink_to_fit();
    delete instanceName;
    instanceName = nullptr;
    // File sets and the generator registry belong to the caller.
}

// ---- construction and identity ----

kalcomponent::kalcomponent(const std::string* vendor, const std::string* library, const std::string* name,
                           const std::string* version)
    : identity(nullptr),
      reserved1(nullptr),
      parentDesign(nullptr),
      data(nullptr),
      reserved2(nullptr),
      clockSourceState(0) {
    std::unique_ptr<kalcomponentdata> d(new kalcomponentdata());
    std::unique_ptr<kalattributes> id(new kalattributes());
    d->elements->setOwner(this);
    if (name) d->instanceName = new std::string(*name);
    kalidentity::set(*id, vendor, library, name, version);
    data = d.release();
    identity = id.release();
}

void kalcomponent::setVendor(const std::string* value) {
    identity->setAttribute(&vendorKey, value, &spirit);
}
void kalcomponent::setLibrary(const std::string* value) {
    identity->setAttribute(&libraryKey, value, &spirit);
}
void kalcomponent::setName(const std::string* value) {
    identity->setAttribute(&nameKey, value, &spirit);
}
void kalcomponent::setVersion(const std::string* value) {
    identity->setAttribute(&versionKey, value, &spirit);
}

kalcomponent::~kalcomponent() {
    kalhandback::forget(this);  // an instance handed back leaves its former design's list
    delete data;
    data = nullptr;
    delete identity;
    identity = nullptr;
}

// ---- attribute forwards ----

const std::string* kalcomponent::getAttributeValue(const std::string* name) const {
    return data->getAttributeValue(name);
}
const std::string* kalcomponent::getAttributeVendor(const std::string* name) const {
    return data->getAttributeVendor(name);
}
void kalcomponent::setAttribute(const std::string* name, const std::string* value,
                                const std::string* vendor) {
    data->setAttribute(name, value, vendor);
}
void kalcomponent::setAttributeValue(const std::string* name, const std::string* value) {
    data->setAttributeValue(name, value);
}
void kalcomponent::removeAttribute(const std::string* name) {
    data->removeAttribute(name);
}
void kalcomponent::removeAllAttributes() {
    data->removeAllAttributes();
}

// ---- parameters ----

int kalcomponent::addParameter(const std::string* name, kalparameter* parameter) {
    if (!name) return 0;
    auto inserted = data->parameters.emplace(*name, parameter);
    if (inserted.second) return 1;
    std::cout << "Parameter element " << *name << " already existed"
              << " with a value of " << static_cast<const void*>(inserted.first->second) << '\n';
    return 0;
}

kalparameter* kalcomponent::getParameter(const std::string* name) {
    return kalmaps::find(data->parameters, name);
}

int kalcomponent::removeParameter(const std::string* name) {
    return name ? static_cast<int>(data->parameters.erase(*name)) : 0;
}

// ---- designs ----

int kalcomponent::createDesign(const std::string* vendor, const std::string* library, const std::string* name,
                               const std::string* version) {
    if (!vendor || !library || !name || !version) return 0;
    auto* design = new kaldesign(vendor, library, name, version);
    design->owner = this;
    auto old = data->designs.find(*name);
    if (old != data->designs.end()) {  // a replaced design is not destroyed: the caller has it
        if (old->second) kalhandback::note(this, old->second);
        data->designs.erase(old);
    }
    data->designs.emplace(*name, design);
    return 1;
}

int kalcomponent::deleteDesign(const std::string* name) {
    if (!name) return 0;
    auto it = data->designs.find(*name);
    if (it == data->designs.end()) return 1;
    if (it->second) kalhandback::note(this, it->second);
    data->designs.erase(it);
    return 1;
}

kaldesign* kalcomponent::getDesign(std::string* name) {
    return kalmaps::find(data->designs, name);
}

// ---- nets and connections, forwarded to the first design ----

int kalcomponent::addNet(const std::string* name, const std::string* secondName, const std::string* type,
                         const std::string* text) {
    kaldesign* d = firstDesign(data);
    if (!name || !secondName || !d) return 0;
    return d->addNet(name, secondName, type, text) ? 1 : 0;
}

int kalcomponent::removeNet(const std::string* name) {
    kaldesign* d = firstDesign(data);
    if (!name || !d) return 0;
    return d->removeNet(name) ? 1 : 0;
}

int kalcomponent::addNetbus(const std::string* name, const std::string* type, const std::string* secondName,
                            unsigned int msb, unsigned int lsb, const std::string* text) {
    kaldesign* d = firstDesign(data);
    if (!name || !secondName || !d) return 0;
    return d->addNetbus(name, type, secondName, msb, lsb, text) ? 1 : 0;
}

int kalcomponent::removeNetbus(const std::string* name) {
    kaldesign* d = firstDesign(data);
    if (!name || !d) return 0;
    return d->removeNetbus(name) ? 1 : 0;
}

bool kalcomponent::connect(const std::string* netName, const std::string* portName,
                           const std::string* instanceName) {
    kaldesign* d = firstDesign(data);
    return d ? d->connect(netName, portName, instanceName) : false;
}

bool kalcomponent::disconnect(const std::string* netName, const std::string* portName,
                              const std::string* instanceName) {
    kaldesign* d = firstDesign(data);
    return d ? d->disconnect(netName, portName, instanceName) : false;
}

// ---- file sets and files ----

kalfileset* kalcomponent::addFileSet(const std::string* name, const std::string* second,
                                     const std::string* third) {
    if (!name || !second) return nullptr;
    auto it = data->filesets.find(*name);
    if (it != data->filesets.end()) return it->second;
    auto* set = new kalfileset(name, second, third);
    data->filesets.emplace(*name, set);
    set->setOwner(this);
    return set;
}

kalfile* kalcomponent::addFile(const std::string* filesetName, const std::string* fileName,
                               const std::string* second, const std::string* third) {
    if (!filesetName || !fileName || !second) return nullptr;
    auto it = data->filesets.find(*filesetName);
    if (it == data->filesets.end() || !it->second) return nullptr;
    for (kalfile* f : it->second->getFiles())
        if (f && f->getName() && *f->getName() == *fileName) return nullptr;
    auto* file = new kalfile(fileName, second, third);
    it->second->addFile(fileName, file);
    return file;
}

// ---- LPC values ----

int kalcomponent::addLPC(kallpc* lpc) {
    data->lpcs.push_back(lpc);
    return 1;
}

int kalcomponent::hasLPC(std::string* name) {
    if (!name) return 0;
    for (kallpc* l : data->lpcs)
        if (l && l->hasAttribute(name)) return 1;
    return 0;
}

const std::string* kalcomponent::getLPCValue(const std::string* name) {
    if (!name) return nullptr;
    for (kallpc* l : data->lpcs)
        if (l && l->hasAttribute(name)) return l->getAttributeValue(name);
    return nullptr;
}

// ---- element catalogue and generators ----

kalelements* kalcomponent::getElements() {
    return data->elements;
}

kalelements* kalcomponent::getElements(const std::string* path) {
    kalcomponent* c = getComponent(path);
    return c ? c->getElements() : nullptr;
}

namespace {
// Sums over the instances of the first design; a leaf answers from its own catalogue.
template <class Leaf>
unsigned int countElements(kalcomponent* c, Leaf leaf) {
    if (c->data->designs.empty()) return leaf(c);
    kaldesign* d = c->data->designs.begin()->second;
    if (!d) return 0;
    unsigned int sum = 0;
    for (auto& entry : *d->data->getInstanceMap())
        if (entry.second) sum += countElements(entry.second, leaf);
    return sum;
}
}  // namespace

unsigned int kalcomponent::elementCount() {
    return countElements(this, [](kalcomponent* c) {
        return c->data->elements ? static_cast<unsigned int>(c->data->elements->getElementMap().size()) : 0u;
    });
}

unsigned int kalcomponent::elementCount(const std::string* name) {
    return countElements(this, [name](kalcomponent* c) {
        return c->data->elements ? c->data->elements->elementCount(name) : 0u;
    });
}

kalgenerators* kalcomponent::createGenerators() {
    data->generators->setOwner(this);
    return data->generators;
}

kalgenerator* kalcomponent::createGenerator(std::string name) {
    auto* g = new kalgenerator();
    g->setName(name);
    data->generators->addGenerator(name, g);
    return g;
}

// ---- hierarchy and black box ----

namespace {
const std::string& ownName(kalcomponent* c) {
    static const std::string empty;
    if (c->data->instanceName) return *c->data->instanceName;
    const std::string* n = c->identity->getAttributeValue(&nameKey);
    return n ? *n : empty;
}
}  // namespace

kalcomponent* kalcomponent::getComponent(const std::string* path) {
    static const std::string slash("/");
    // A single part names this component or nothing; every connect by instance name comes here.
    if (path && path->find(slash) == std::string::npos) return *path == ownName(this) ? this : nullptr;
    std::unique_ptr<std::vector<std::string>> parts(kalutilities::deconstructString(path, &slash));
    if (!parts) return nullptr;
    if (parts->size() == 1) return (*parts)[0] == ownName(this) ? this : nullptr;
    kaldesign* d = firstDesign(data);
    if (data->designs.empty()) return nullptr;
    if (parts->at(0) != ownName(this)) return nullptr;
    kalcomponent* instance = d ? d->getInstance(&parts->at(1)) : nullptr;
    if (!instance) return nullptr;
    parts->erase(parts->begin());
    std::unique_ptr<std::string> rest(kalutilities::reconstructString(parts.get(), &slash));
    return instance->getComponent(rest.get());
}

int kalcomponent::removeComponent(const std::string* path) {
    kalcomponent* found = getComponent(path);
    if (!found || !(*found != *this) || !found->parentDesign || !found->data->instanceName) return 0;
    const std::string name = *found->data->instanceName;  // the instance dies with its removal
    return found->parentDesign->removeInstance(&name) ? 1 : 0;
}

bool kalcomponent::needBBox() {
    static const std::string bbox("BBox");
    const std::string* v = data->getAttributeValue(&bbox);
    return v && *v == "true";
}

int kalcomponent::initBlackBoxPadPin(std::vector<std::string>& names) {
    static const std::string padPin("PadPin");
    for (auto& entry : data->portbuses)
        if (entry.second && entry.second->hasAttribute(&padPin)) names.push_back(entry.first);
    for (auto& entry : data->ports)
        if (entry.second && entry.second->hasAttribute(&padPin)) names.push_back(entry.first);
    return 0;
}

// ---- equality ----

bool kalcomponent::operator==(const kalcomponent& other) const {
    if (this == &other) return true;
    // The instance names decide most comparisons, so they are looked at before
    // the identity lookups; the result is the same conjunction either way.
    const std::string* mine = data->instanceName;
    const std::string* theirs = other.data->instanceName;
    if (!kaltext::same(mine, theirs)) return false;
    if (!kalidentity::same(*identity, *other.identity)) return false;
    if (!mine) return true;
    if (parentDesign == other.parentDesign) return true;
    if (!parentDesign || !other.parentDesign) return false;
    return !(*parentDesign != *other.parentDesign);
}

bool kalcomponent::operator!=(const kalcomponent& other) const {
    return !(*this == other);
}

int kalcomponent::getClockSourceState() const {
    return clockSourceState;
}
void kalcomponent::setClockSourceState(int state) {
    clockSourceState = state;
}
