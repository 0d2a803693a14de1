// SPDX-License-Identifier: Apache-2.0
#include "kalattributes.h"

// The value map alone decides whether an attribute exists; the vendor map is
// written alongside but never kept in step (removal leaves the vendor entry).
//
// Nearly every port and net of a large design carries no attribute at all, so
// the maps are made on the first write; missing maps read as empty.

using attrmap = std::map<std::string, std::string>;

struct kalattributes::maps {
    attrmap values;
    attrmap vendors;
};

kalattributes::kalattributes() : values(nullptr) {}

kalattributes::kalattributes(const kalattributes& other)
    : values(other.values ? new maps(*other.values) : nullptr) {}

kalattributes::~kalattributes() {
    delete values;
}

int kalattributes::hasAttribute(const std::string* name) {
    if (!name || !values) return 0;
    return values->values.count(*name) ? 1 : 0;
}

const std::string* kalattributes::getAttributeValue(const std::string* name) {
    if (!name || !values) return nullptr;
    auto it = values->values.find(*name);
    return it == values->values.end() ? nullptr : &it->second;
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
    if (!values) values = new maps();
    if (hasAttribute(name)) {
        values->values.erase(*name);
        values->vendors.erase(*name);
    }
    values->values.emplace(*name, *value);
    values->vendors.emplace(*name, *vendor);  // never overwrites a stale vendor entry
}

void kalattributes::setAttributeValue(const std::string* name, const std::string* value) {
    if (!name || !value) return;
    if (!values) values = new maps();
    values->values[*name] = *value;
}

void kalattributes::removeAttribute(const std::string* name) {
    if (!name || !values) return;
    values->values.erase(*name);
}

void kalattributes::removeAllAttributes() {
    delete values;
    values = nullptr;
}

void kalattributes::copyAttributesFrom(const kalattributes& other) {
    // A merge in which this set wins on every name it already has.
    if (!other.values || &other == this) return;
    if (!values) values = new maps();
    values->values.insert(other.values->values.begin(), other.values->values.end());
    values->vendors.insert(other.values->vendors.begin(), other.values->vendors.end());
}

std::map<std::string, std::string> kalattributes::getValueMap() const {
    return values ? values->values : attrmap();
}
std::map<std::string, std::string> kalattributes::getVendorMap() const {
    return values ? values->vendors : attrmap();
}
