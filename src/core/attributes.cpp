// SPDX-License-Identifier: Apache-2.0
#include "kalattributes.h"

// An attribute has a value and a vendor, each of which may be missing: the
// value alone decides whether the attribute exists, and removing it keeps its
// vendor (the vendor is written alongside but never kept in step). Both live
// in one entry per name, as one map node where two maps took two.
//
// Nearly every port and net of a large design carries no attribute at all, so
// the map is made on the first write; a missing map reads as empty.

namespace {

struct cell {
    std::string value;
    std::string vendor;
    bool hasValue = false;
    bool hasVendor = false;
};

}  // namespace

struct kalattributes::maps {
    std::map<std::string, cell> cells;

    const cell* find(const std::string& name) const {
        auto it = cells.find(name);
        return it == cells.end() ? nullptr : &it->second;
    }
    std::map<std::string, std::string> collect(bool values) const {
        std::map<std::string, std::string> out;
        for (const auto& [name, c] : cells)
            if (values ? c.hasValue : c.hasVendor)
                out.emplace_hint(out.end(), name, values ? c.value : c.vendor);
        return out;
    }
};

kalattributes::kalattributes() : values(nullptr) {}

kalattributes::kalattributes(const kalattributes& other)
    : values(other.values ? new maps(*other.values) : nullptr) {}

kalattributes::~kalattributes() {
    delete values;
}

int kalattributes::hasAttribute(const std::string* name) {
    if (!name || !values) return 0;
    const cell* c = values->find(*name);
    return c && c->hasValue ? 1 : 0;
}

const std::string* kalattributes::getAttributeValue(const std::string* name) {
    if (!name || !values) return nullptr;
    const cell* c = values->find(*name);
    return c && c->hasValue ? &c->value : nullptr;
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
    // Copies first: value or vendor may be this very entry's strings.
    std::string newValue = *value, newVendor = *vendor;
    cell& c = values->cells[*name];
    if (c.hasValue) c.hasVendor = false;  // a present attribute is replaced whole
    c.value = std::move(newValue);
    c.hasValue = true;
    if (!c.hasVendor) {  // never overwrites a stale vendor entry
        c.vendor = std::move(newVendor);
        c.hasVendor = true;
    }
}

void kalattributes::setAttributeValue(const std::string* name, const std::string* value) {
    if (!name || !value) return;
    if (!values) values = new maps();
    std::string newValue = *value;
    cell& c = values->cells[*name];
    c.value = std::move(newValue);
    c.hasValue = true;
}

void kalattributes::removeAttribute(const std::string* name) {
    if (!name || !values) return;
    auto it = values->cells.find(*name);
    if (it == values->cells.end()) return;
    if (!it->second.hasVendor) {
        values->cells.erase(it);
        return;
    }
    it->second.hasValue = false;
    std::string().swap(it->second.value);
}

void kalattributes::removeAllAttributes() {
    delete values;
    values = nullptr;
}

void kalattributes::copyAttributesFrom(const kalattributes& other) {
    // A merge in which this set wins on every value and vendor it already has.
    if (!other.values || &other == this) return;
    if (!values) values = new maps();
    for (const auto& [name, theirs] : other.values->cells) {
        cell& c = values->cells[name];
        if (theirs.hasValue && !c.hasValue) {
            c.value = theirs.value;
            c.hasValue = true;
        }
        if (theirs.hasVendor && !c.hasVendor) {
            c.vendor = theirs.vendor;
            c.hasVendor = true;
        }
    }
}

std::map<std::string, std::string> kalattributes::getValueMap() const {
    return values ? values->collect(true) : std::map<std::string, std::string>();
}
std::map<std::string, std::string> kalattributes::getVendorMap() const {
    return values ? values->collect(false) : std::map<std::string, std::string>();
}
