// SPDX-License-Identifier: Apache-2.0
#include "kalgenerators.h"

// ---- kalgenerator ----

kalgenerator::kalgenerator() : reserved(nullptr), registry(nullptr) {}

// Generators are the same when their name fields are; nothing else is compared.
bool kalgenerator::operator==(kalgenerator& other) {
    return this == &other || name == other.name;
}
bool kalgenerator::operator!=(kalgenerator& other) {
    return !(*this == other);
}

kalgenerators* kalgenerator::getRegistry() const {
    return registry;
}
const std::string& kalgenerator::getName() const {
    return name;
}
const std::string& kalgenerator::getDetail() const {
    return detail;
}
void kalgenerator::setRegistry(kalgenerators* r) {
    registry = r;
}
void kalgenerator::setName(const std::string& n) {
    name = n;
}
void kalgenerator::setDetail(const std::string& d) {
    detail = d;
}

// ---- kalgeneratorgroup ----

kalgeneratorgroup::kalgeneratorgroup(std::string name_) : name(std::move(name_)), registry(nullptr) {}

void kalgeneratorgroup::addGenerator(kalgenerator* generator) {
    if (!generator) return;
    generators.emplace(generator->getName(), generator);  // an existing member keeps its key
}

bool kalgeneratorgroup::hasGenerator(const std::string* n) {
    return n && generators.count(*n) != 0;
}

void kalgeneratorgroup::removeGenerator(const std::string* n) {
    if (n) generators.erase(*n);
}

void kalgeneratorgroup::removeFromGroup(const std::string* n) {
    removeGenerator(n);
}

kalgeneratorgroup::~kalgeneratorgroup() = default;

const std::string& kalgeneratorgroup::getName() const {
    return name;
}
kalgenerators* kalgeneratorgroup::getRegistry() const {
    return registry;
}
std::map<std::string, kalgenerator*> kalgeneratorgroup::getGeneratorMap() const {
    return generators;
}
void kalgeneratorgroup::setRegistry(kalgenerators* r) {
    registry = r;
}

// ---- kalgenerators ----

kalgenerators::kalgenerators() : owner(nullptr) {}

void kalgenerators::addGenerator(std::string key, kalgenerator* generator) {
    if (!generator) return;
    removeGenerator(key);
    auto it = generators.emplace(key, generator).first;
    // The lookup finds the argument itself, so the registry link is always set.
    if (*it->second == *generator) generator->setRegistry(this);
}

kalgenerator* kalgenerators::generatorAtIndex(std::string key) {
    auto it = generators.find(key);
    return it == generators.end() ? nullptr : it->second;
}

void kalgenerators::removeGenerator(std::string key) {
    generators.erase(key);
}

void kalgenerators::removeGenerator(kalgenerator* generator) {
    if (!generator) return;
    for (auto it = generators.begin(); it != generators.end();) {
        if (it->second && *it->second == *generator)
            it = generators.erase(it);
        else
            ++it;
    }
}

void kalgenerators::createGroup(std::string n) {
    if (groups.count(n)) return;
    auto* group = new kalgeneratorgroup(n);
    groups.emplace(n, group);
    groups.find(n)->second->setRegistry(this);
}

bool kalgenerators::hasGroup(const std::string* n) {
    return n && groups.count(*n) != 0;
}

kalgeneratorgroup* kalgenerators::getGroup(const std::string* n) {
    if (!n) return nullptr;
    auto it = groups.find(*n);
    return it == groups.end() ? nullptr : it->second;
}

std::vector<std::string>* kalgenerators::getGroupNames() {
    auto* names = new std::vector<std::string>();
    names->reserve(groups.size());
    for (const auto& g : groups)
        names->push_back(g.first);
    return names;
}

std::string kalgenerators::getGroupNames(const std::string* generatorName) {
    std::string last;
    if (!generatorName) return last;
    for (const auto& g : groups)
        if (g.second->hasGenerator(generatorName)) last = g.first;
    return last;
}

void kalgenerators::addGeneratorToGroup(const kalgenerator* generator, std::string groupName) {
    if (!generator) return;
    auto it = groups.find(groupName);
    if (it == groups.end()) return;
    it->second->addGenerator(const_cast<kalgenerator*>(generator));
}

void kalgenerators::removeGeneratorFromGroup(const std::string* groupName, const std::string* generatorName) {
    if (!groupName || !generatorName) return;
    auto it = groups.find(*groupName);
    if (it != groups.end()) it->second->removeFromGroup(generatorName);
}

void kalgenerators::removeElementFromAllGroups(const std::string* generatorName) {
    if (!generatorName) return;
    for (auto& g : groups)
        g.second->removeFromGroup(generatorName);
}

void kalgenerators::removeGroup(const std::string* n) {
    if (n) groups.erase(*n);  // the group object belongs to whoever keeps it
}

kalgenerators* kalgenerators::clone() {
    auto* copy = new kalgenerators();
    for (const auto& entry : generators) {
        auto* g = new kalgenerator();
        g->setName(entry.first);  // the key becomes the copy's name
        g->setRegistry(copy);
        g->setDetail(entry.second->getDetail());
        g->copyAttributesFrom(*entry.second);
        copy->addGenerator(entry.first, g);
        // Once per generator: a registry without generators loses its own attributes.
        copy->copyAttributesFrom(*this);
    }
    for (const auto& group : groups) {
        for (const auto& member : group.second->getGeneratorMap()) {
            kalgenerator* found = copy->generatorAtIndex(member.first);
            if (!found || *found != *member.second) continue;
            copy->createGroup(group.first);
            copy->addGeneratorToGroup(found, group.first);
        }
    }
    return copy;
}

kalgenerators::~kalgenerators() = default;

kalcomponent* kalgenerators::getOwner() const {
    return owner;
}
std::map<std::string, kalgenerator*> kalgenerators::getGeneratorMap() const {
    return generators;
}
std::map<std::string, kalgeneratorgroup*> kalgenerators::getGroupMap() const {
    return groups;
}
void kalgenerators::setOwner(kalcomponent* o) {
    owner = o;
}
