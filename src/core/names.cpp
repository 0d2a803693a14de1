// SPDX-License-Identifier: Apache-2.0
#include "core/names.h"

#include <mutex>
#include <string_view>
#include <type_traits>
#include <unordered_map>

#include "core/hash.h"

namespace {

// One shared name: the text first, so that the pointer handed out is the
// entry's own address and a release finds its count without hashing.
struct entry {
    std::string text;
    std::size_t count;
};
static_assert(std::is_standard_layout<entry>::value, "the text must sit at the entry's address");

entry* entryOf(const std::string* s) {
    return reinterpret_cast<entry*>(const_cast<std::string*>(s));
}

// Separate models share this table, and they may live on separate threads,
// hence the lock (tests/threads_test.cpp fails without it). The keys view
// the entries' own text.
struct table {
    std::mutex lock;
    std::unordered_map<std::string_view, entry*, kalnamehasher> entries;
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
    auto it = t.entries.find(std::string_view(text));
    if (it != t.entries.end()) {
        ++it->second->count;
        return &it->second->text;
    }
    auto* e = new entry{text, 1};
    t.entries.emplace(std::string_view(e->text), e);
    return &e->text;
}

const std::string* acquireOrNull(const std::string* text) {
    return text ? acquire(*text) : nullptr;
}

void release(const std::string* s) {
    if (!s) return;
    table& t = shared();
    std::lock_guard<std::mutex> hold(t.lock);
    entry* e = entryOf(s);
    if (--e->count) return;
    t.entries.erase(std::string_view(e->text));
    delete e;
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
