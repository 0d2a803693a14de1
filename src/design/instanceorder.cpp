// SPDX-License-Identifier: Apache-2.0
#include "design/instanceorder.h"

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
