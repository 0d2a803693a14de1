#include "kalattributes.h"

// The value map alone decides whether an attribute exists; the vendor map is
// written alongside but never kept in step (removal leaves the vendor entry).
//
// Nearly every port and net of a large design carries no attribute at all, so
// both maps are made on the first write; a missing map reads as empty.

namespace {

using attrmap = std::map<std::string, std::string>;

attrmap* copyOrNull(const attrmap* m) {
    return m && !m->empty() ? new attrmap(*m) : nullptr;
}

attrmap& made(attrmap*& m) {
    if (!m) m = new attrmap();
    return *m;
}

}  // namespace

kalattributes::kalattributes() : values(nullptr), vendors(nullptr) {}

kalattributes::kalattributes(const kalattributes& other)
    : values(copyOrNull(other.values)), vendors(copyOrNull(other.vendors)) {}

kalattributes::~kalattributes() {
    delete values;
    delete vendors;
}

int kalattributes::hasAttribute(const std::string* name) {
    if (!name || !values) return 0;
    return values->count(*name) ? 1 : 0;
}

const std::string* kalattributes::getAttributeValue(const std::string* name) {
    if (!name || !values) return nullptr;
    auto it = values->find(*name);
    return it == values->end() ? nullptr : &it->second;
}

const std::string* kalattributes::getAttributeVendor(const std::string* name) {
    return getAttributeValue(name);
}

namespace {
const std::string kVendor("Vendor"), kLibrary("Library"), kName("Name"), kVersion("Version");
}

const std::string* kalattributes::getVendor() {
    return getAttributeValue(&kVendor);
}
const std::string* kalattributes::getLibrary() {
    return getAttributeValue(&kLibrary);
}
const std::string* kalattributes::getName() {
    return getAttributeValue(&kName);
}
const std::string* kalattributes::getVersion() {
    return getAttributeValue(&kVersion);
}

void kalattributes::setAttribute(const std::string* name, const std::string* value,
                                 const std::string* vendor) {
    if (!name || !value || !vendor) return;
    if (hasAttribute(name)) {
        values->erase(*name);
        made(vendors).erase(*name);
    }
    made(values).emplace(*name, *value);
    made(vendors).emplace(*name, *vendor);  // never overwrites a stale vendor entry
}

void kalattributes::setAttributeValue(const std::string* name, const std::string* value) {
    if (!name || !value) return;
    made(values)[*name] = *value;
}

void kalattributes::removeAttribute(const std::string* name) {
    if (!name || !values) return;
    values->erase(*name);
}

void kalattributes::removeAllAttributes() {
    if (values) values->clear();
    if (vendors) vendors->clear();
}

void kalattributes::copyAttributesFrom(const kalattributes& other) {
    // A merge in which this set wins on every name it already has.
    if (other.values && !other.values->empty())
        made(values).insert(other.values->begin(), other.values->end());
    if (other.vendors && !other.vendors->empty())
        made(vendors).insert(other.vendors->begin(), other.vendors->end());
}

std::map<std::string, std::string> kalattributes::getValueMap() const {
    return values ? *values : attrmap();
}
std::map<std::string, std::string> kalattributes::getVendorMap() const {
    return vendors ? *vendors : attrmap();
}
