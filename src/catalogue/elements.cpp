// SPDX-License-Identifier: Apache-2.0
#include "kalelements.h"

#include <set>
#include <vector>

#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalutilities.h"

namespace {
const std::string kVendorTag("KORVELL");
const std::string kGroupType("GroupType");
const std::string kGroupDrag("GroupDrag");
const std::string kGroupHide("GroupHide");
const std::string kElementType("ElementType");
const std::string kElementHide("ElementHide");
const std::string kElementDrag("ElementDrag");
const std::string kTrue("true");
const std::string kFalse("false");
const std::string kBridgeDDRDLLMarker("bridged_DDRDLLA");
const std::string kEclkBridgeCSMarker("Inst_ECLKBRIDGECS");
const std::string kPathSeparator("/");

// Group types made implicitly by addElement get this category.
const unsigned int kTypeGroupCategory = 1;
const unsigned int kNoCategory = 0xFFFFFFFFu;

const std::string& flagText(bool flag) {
    return flag ? kTrue : kFalse;
}

// A flag reads as set only for the exact lower-case spelling.
bool flagSet(kalattributes& attributes, const std::string& name) {
    if (!attributes.hasAttribute(&name)) return false;
    const std::string* value = attributes.getAttributeValue(&name);
    return value && *value == kTrue;
}

// Both-null counts as equal so that unowned catalogues still compare.
bool sameCatalogue(kalelements* a, kalelements* b) {
    if (!a || !b) return a == b;
    return *a == *b;
}

// First element, in name order, carrying the marker attribute; the marker
// itself stands in when there is none.
int findMarked(const std::map<std::string, kalelement*>& elements, const std::string& marker,
               std::string& out) {
    for (const auto& entry : elements) {
        if (entry.second && entry.second->hasAttribute(&marker)) {
            out = entry.first;
            return 0;
        }
    }
    out = marker;
    return 1;
}
}  // namespace

// ---- kalelement ----

kalelement::kalelement(const std::string* name_)
    : catalogue(nullptr), name(new std::string(name_ ? *name_ : std::string())) {}

kalelement::~kalelement() {
    delete name;
}

bool kalelement::operator==(kalelement& other) {
    if (this == &other) return true;
    if (!sameCatalogue(catalogue, other.catalogue)) return false;
    return *name == *other.name;
}

bool kalelement::operator!=(kalelement& other) {
    return !(*this == other);
}

std::string* kalelement::hierarchicalName() {
    std::vector<std::string> parts{*name};
    kalcomponent* component = catalogue ? catalogue->getOwner() : nullptr;
    // Only components that sit inside a design contribute their instance
    // name; the root of the tree (or an orphan) ends the walk.
    while (component && component->data && component->data->instanceName && component->parentDesign) {
        parts.insert(parts.begin(), *component->data->instanceName);
        component = component->parentDesign->owner;
    }
    return kalutilities::reconstructString(&parts, &kPathSeparator);
}

kalelements* kalelement::getCatalogue() const {
    return catalogue;
}
const std::string* kalelement::getName() const {
    return name;
}
void kalelement::setCatalogue(kalelements* c) {
    catalogue = c;
}

// ---- kalelementgroup ----

kalelementgroup::kalelementgroup(unsigned int category_, const std::string* name_)
    : catalogue(nullptr), category(category_), name(new std::string(name_ ? *name_ : std::string())) {}

// Elements belong to the catalogue and subgroups to whoever made them.
kalelementgroup::~kalelementgroup() {
    delete name;
}

void kalelementgroup::addElement(kalelement* element) {
    if (!element) return;
    elements.emplace(*element->getName(), element);  // an existing entry wins
}

void kalelementgroup::addGroup(kalelementgroup* group) {
    if (!group) return;
    subgroups.emplace(*group->name, group);
}

bool kalelementgroup::hasElement(const std::string* n) {
    return n && elements.count(*n) != 0;
}

bool kalelementgroup::hasGroup(const std::string* n) {
    return n && subgroups.count(*n) != 0;
}

std::map<std::string, kalelement*>* kalelementgroup::getElementList() {
    auto* list = new std::map<std::string, kalelement*>();
    // Depth first with insert-if-absent gives the same precedence as merging
    // each subgroup's own list in name order; the visited set keeps a group
    // that nests itself (directly or not) from recursing forever.
    std::set<const kalelementgroup*> visited;
    auto collect = [list, &visited](const kalelementgroup* group, auto& self) -> void {
        if (!visited.insert(group).second) return;
        list->insert(group->elements.begin(), group->elements.end());
        for (const auto& sub : group->subgroups) {
            if (sub.second) self(sub.second, self);
        }
    };
    collect(this, collect);
    return list;
}

void kalelementgroup::removeElement(const std::string* n) {
    if (n) elements.erase(*n);
}

void kalelementgroup::removeGroup(const std::string* n) {
    if (n) subgroups.erase(*n);
}

kalelements* kalelementgroup::getCatalogue() const {
    return catalogue;
}
unsigned int kalelementgroup::getCategory() const {
    return category;
}
const std::string* kalelementgroup::getName() const {
    return name;
}
std::map<std::string, kalelement*> kalelementgroup::getElementMap() const {
    return elements;
}
std::map<std::string, kalelementgroup*> kalelementgroup::getSubgroupMap() const {
    return subgroups;
}
void kalelementgroup::setCatalogue(kalelements* c) {
    catalogue = c;
}

// ---- kalelements ----

kalelements::kalelements() : owner(nullptr) {}

// Groups are shared with other groups' subgroup maps, so they are left to
// their creator; only elements are owned here.
kalelements::~kalelements() {
    for (auto& entry : elements)
        delete entry.second;
    elements.clear();
}

bool operator==(kalelements& a, kalelements& b) {
    kalcomponent* x = a.getOwner();
    kalcomponent* y = b.getOwner();
    if (!x || !y) return x == y;
    return *x == *y;
}

bool operator!=(kalelements& a, kalelements& b) {
    return !(a == b);
}

void kalelements::createGroup(unsigned int category, const std::string* type, const std::string* name,
                              bool hide) {
    if (!type || !name || groups.count(*name)) return;
    auto* group = new kalelementgroup(category, name);
    group->setAttribute(&kGroupType, type, &kVendorTag);
    group->setAttribute(&kGroupDrag, &kTrue, &kVendorTag);
    group->setAttribute(&kGroupHide, &flagText(hide), &kVendorTag);
    auto it = groups.emplace(*name, group).first;
    it->second->setCatalogue(this);
}

kalelement* kalelements::addElement(const std::string* type, const std::string* name, bool hide) {
    if (!type || !name) return nullptr;
    auto* element = new kalelement(name);
    element->setAttribute(&kElementType, type, &kVendorTag);
    element->setAttribute(&kElementHide, &kFalse, &kVendorTag);
    element->setAttribute(&kElementDrag, &kTrue, &kVendorTag);
    // A duplicate name leaves the earlier element registered; the new one
    // is still returned and belongs to the caller.
    elements.emplace(*name, element);
    if (!elements.count(*name)) return nullptr;
    element->setCatalogue(this);
    if (!hasGroup(type)) createGroup(kTypeGroupCategory, type, type, hide);
    addElementToGroup(element, type);
    return element;
}

void kalelements::addElementToGroup(const kalelement* element, const std::string* groupName) {
    if (!element || !groupName) return;
    kalelementgroup* group = getGroup(groupName);
    if (group) group->addElement(const_cast<kalelement*>(element));
}

bool kalelements::hasGroup(const std::string* name) {
    return name && groups.count(*name) != 0;
}

kalelementgroup* kalelements::getGroup(const std::string* name) {
    if (!name) return nullptr;
    auto it = groups.find(*name);
    return it == groups.end() ? nullptr : it->second;
}

unsigned int kalelements::getGroupCategory(const std::string* name) {
    kalelementgroup* group = getGroup(name);
    return group ? group->getCategory() : kNoCategory;
}

bool kalelements::hasElement(const std::string* name) {
    return name && elements.count(*name) != 0;
}

bool kalelements::hasElement(const std::string* name, std::map<std::string, kalelement*>* list) {
    return name && list && list->count(*name) != 0;
}

bool kalelements::hasElement(const std::string* name, const std::string* groupName) {
    if (!name || !groupName) return false;
    std::map<std::string, kalelement*>* list = getElementList(groupName);
    bool found = hasElement(name, list);
    delete list;
    return found;
}

kalelement* kalelements::getElement(const std::string* name) {
    if (!name) return nullptr;
    auto it = elements.find(*name);
    return it == elements.end() ? nullptr : it->second;
}

std::map<std::string, kalelement*>* kalelements::getElementList(const std::string* groupName) {
    kalelementgroup* group = getGroup(groupName);
    return group ? group->getElementList() : nullptr;
}

unsigned int kalelements::elementCount(const std::string* groupName) {
    std::map<std::string, kalelement*>* list = getElementList(groupName);
    if (!list) return 0;
    auto count = static_cast<unsigned int>(list->size());
    delete list;
    return count;
}

std::vector<std::string>* kalelements::getGroupNames() {
    auto* names = new std::vector<std::string>();
    for (const auto& entry : groups)
        names->push_back(entry.first);
    return names;
}

std::vector<std::string>* kalelements::getGroupNames(unsigned int category) {
    auto* names = new std::vector<std::string>();
    for (const auto& entry : groups) {
        if (entry.second && entry.second->getCategory() == category) names->push_back(entry.first);
    }
    return names;
}

std::vector<std::string>* kalelements::getGroupNames(unsigned int category, const std::string* elementName) {
    auto* names = new std::vector<std::string>();
    if (!elementName) return names;
    for (const auto& entry : groups) {
        kalelementgroup* group = entry.second;
        if (!group || group->getCategory() != category) continue;
        std::map<std::string, kalelement*>* list = group->getElementList();
        if (list->count(*elementName)) names->push_back(entry.first);
        delete list;
    }
    return names;
}

void kalelements::setGroupHideAttribute(const std::string* name, bool flag) {
    if (kalelementgroup* group = getGroup(name)) group->setAttributeValue(&kGroupHide, &flagText(flag));
}

void kalelements::setGroupDragAttribute(const std::string* name, bool flag) {
    if (kalelementgroup* group = getGroup(name)) group->setAttributeValue(&kGroupDrag, &flagText(flag));
}

bool kalelements::getGroupHideAttribute(const std::string* name) {
    kalelementgroup* group = getGroup(name);
    return group && flagSet(*group, kGroupHide);
}

bool kalelements::getGroupDragAttribute(const std::string* name) {
    kalelementgroup* group = getGroup(name);
    return group && flagSet(*group, kGroupDrag);
}

void kalelements::setElementHideAttribute(const std::string* name, bool flag) {
    if (kalelement* element = getElement(name)) element->setAttributeValue(&kElementHide, &flagText(flag));
}

void kalelements::setElementDragAttribute(const std::string* name, bool flag) {
    if (kalelement* element = getElement(name)) element->setAttributeValue(&kElementDrag, &flagText(flag));
}

bool kalelements::getElementHideAttribute(const std::string* name) {
    kalelement* element = getElement(name);
    return element && flagSet(*element, kElementHide);
}

bool kalelements::getElementDragAttribute(const std::string* name) {
    kalelement* element = getElement(name);
    return element && flagSet(*element, kElementDrag);
}

void kalelements::removeElementFromGroup(const std::string* groupName, const std::string* elementName) {
    if (!groupName || !elementName) return;
    if (kalelementgroup* group = getGroup(groupName)) group->removeElement(elementName);
}

// Only registered groups are visited: a subgroup that was never registered
// (or has been removed) keeps its entry.
void kalelements::removeElementFromAllGroups(const std::string* name) {
    if (!name) return;
    for (auto& entry : groups) {
        if (entry.second) entry.second->removeElement(name);
    }
}

void kalelements::removeElement(const std::string* name) {
    if (!name) return;
    removeElementFromAllGroups(name);
    auto it = elements.find(*name);
    if (it == elements.end()) return;
    kalelement* element = it->second;
    elements.erase(it);
    delete element;
}

void kalelements::removeGroup(const std::string* name) {
    if (name) groups.erase(*name);
}

int kalelements::getBridgeDDRDLLName(std::string& out) {
    return findMarked(elements, kBridgeDDRDLLMarker, out);
}

int kalelements::getEclkBridgeCSName(std::string& out) {
    return findMarked(elements, kEclkBridgeCSMarker, out);
}

kalcomponent* kalelements::getOwner() const {
    return owner;
}
std::map<std::string, kalelementgroup*> kalelements::getGroupMap() const {
    return groups;
}
std::map<std::string, kalelement*> kalelements::getElementMap() const {
    return elements;
}
void kalelements::setOwner(kalcomponent* o) {
    owner = o;
}
