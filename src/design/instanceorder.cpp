// SPDX-License-Identifier: Apache-2.0
#include "design/instanceorder.h"

#include <set>

void kalinstanceorder::append(kalcomponent* instance) {
    list.push_back(instance);
    where.emplace(instance, std::prev(list.end()));
}

void kalinstanceorder::remove(kalcomponent* instance) {
    if (where.size() != list.size()) {
        list.remove(instance);
        rebuild();
        return;
    }
    auto range = where.equal_range(instance);
    for (auto it = range.first; it != range.second; ++it)
        list.erase(it->second);
    where.erase(range.first, range.second);
}

void kalinstanceorder::clear() {
    list.clear();
    where.clear();
}

void kalinstanceorder::rebuild() {
    where.clear();
    for (auto it = list.begin(); it != list.end(); ++it)
        where.emplace(*it, it);
}

const char* kalinstanceorder::problem() const {
    if (where.size() != list.size()) return nullptr;
    std::set<const kalcomponent* const*> entries;
    for (const auto& e : where) {
        if (*e.second != e.first) return "its index names an entry of another instance";
        if (!entries.insert(&*e.second).second) return "its index names an entry twice";
    }
    for (const kalcomponent* const& c : list)
        if (!entries.count(&c)) return "an entry of the list is not in its index";
    return nullptr;
}
