// SPDX-License-Identifier: Apache-2.0
#include "core/names.h"

#include <mutex>
#include <unordered_map>

namespace {

// Elements of an unordered_map keep their address across rehashing, so the
// key strings can be handed out. This is the one table that separate models
// share, and they may live on separate threads, hence the lock
// (tests/threads_test.cpp fails without it).
struct table {
    std::mutex lock;
    std::unordered_map<std::string, std::size_t> counts;
};

table& shared() {
    static table* t = new table();  // outlives every static model an application may keep
    return *t;
}

}  // namespace

namespace kalnames {

const std::string* acquire(const std::string& text) {
    table& t = shared();
    std::lock_guard<std::mutex> hold(t.lock);
    auto it = t.counts.try_emplace(text, 0).first;
    ++it->second;
    return &it->first;
}

const std::string* acquireOrNull(const std::string* text) {
    return text ? acquire(*text) : nullptr;
}

void release(const std::string* s) {
    if (!s) return;
    table& t = shared();
    std::lock_guard<std::mutex> hold(t.lock);
    auto it = t.counts.find(*s);
    if (it != t.counts.end() && --it->second == 0) t.counts.erase(it);
}

void reassign(const std::string*& field, const std::string* value) {
    if (!value) return;
    const std::string* fresh = acquire(*value);  // first, as value may be the field itself
    release(field);
    field = fresh;
}

void assignPaired(std::string*& field, std::string*& partner, const std::string* value) {
    if (!value) return;
    std::string* fresh = partner && *partner == *value ? partner : new std::string(*value);
    if (field != partner) delete field;
    field = fresh;
}

void releasePair(std::string*& first, std::string*& second) {
    if (second != first) delete second;
    delete first;
    first = second = nullptr;
}

}  // namespace kalnames
