#include "kalattributes.h"

// The value map alone decides whether an attribute exists; the vendor map is
// written alongside but never kept in step (removal leaves the vendor entry).

kalattributes::kalattributes()
    : values(new std::map<std::string, std::string>()), vendors(new std::map<std::string, std::string>()) {}

kalattributes::kalattributes(const kalattributes& other)
    : values(new std::map<std::string, std::string>(*other.values)),
      vendors(new std::map<std::string, std::string>(*other.vendors)) {}

kalattributes::~kalattributes() {
    delete values;
    delete vendors;
}

int kalattributes::hasAttribute(const std::string* name) {
    if (!name) return 0;
    return values->count(*name) ? 1 : 0;
}

const std::string* kalattributes::getAttributeValue(const std::string* name) {
    if (!name) return nullptr;
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
        vendors->erase(*name);
    }
    values->emplace(*name, *value);
    vendors->emplace(*name, *vendor);  // never overwrites a stale vendor entry
}

void kalattributes::setAttributeValue(const std::string* name, const std::string* value) {
    if (!name || !value) return;
    (*values)[*name] = *value;
}

void kalattributes::removeAttribute(const std::string* name) {
    if (!name) return;
    values->erase(*name);
}

void kalattributes::removeAllAttributes() {
    values->clear();
    vendors->clear();
}

void kalattributes::copyAttributesFrom(const kalattributes& other) {
    // A merge in which this set wins on every name it already has.
    values->insert(other.values->begin(), other.values->end());
    vendors->insert(other.vendors->begin(), other.vendors->end());
}

std::map<std::string, std::string> kalattributes::getValueMap() const {
    return *values;
}
std::map<std::string, std::string> kalattributes::getVendorMap() const {
    return *vendors;
}
