// SPDX-License-Identifier: Apache-2.0
#include "connectivity/portlist.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <unordered_map>

#include "kalcomponent.h"
#include "kalport.h"

// Header of the storage of a list with several ports; the slots follow it.
struct kalportlist::block {
    std::uint32_t used;  // occupied slots, holes included
    std::uint32_t cap;
    large* big;  // index, holes and the stray mark; only for the few nets that need them
    kalport** slots() { return reinterpret_cast<kalport**>(this + 1); }
};

struct kalportlist::large {
    std::unordered_multimap<std::size_t, std::uint32_t> index;  // key -> slot
    bool indexed = false;
    bool strays = false;
    std::uint32_t holes = 0;
};

kalport* kalportlist::absent() {
    // Never a port's address: ports are aligned, and a block pointer has its low bit set.
    return reinterpret_cast<kalport*>(std::uintptr_t{2});
}

kalportlist::block* kalportlist::blk() const {
    return reinterpret_cast<block*>(reinterpret_cast<std::uintptr_t>(word) & ~std::uintptr_t{1});
}

std::uint32_t kalportlist::used() const {
    if (isBlock()) return blk()->used;
    return word && present() ? 1 : 0;
}

kalport** kalportlist::slots() {
    return isBlock() ? blk()->slots() : &word;
}

kalport* const* kalportlist::slots() const {
    return isBlock() ? blk()->slots() : &word;
}

kalportlist::large* kalportlist::big() const {
    return isBlock() ? blk()->big : nullptr;
}

void kalportlist::release() {
    if (isBlock()) {
        delete blk()->big;
        ::operator delete(blk());
    }
    word = nullptr;
}

kalportlist::block* kalportlist::toBlock(std::uint32_t capacity) {
    static_assert(sizeof(block) % alignof(kalport*) == 0, "slots follow the header");
    const std::uint32_t n = used();
    void* memory = ::operator new(sizeof(block) + capacity * sizeof(kalport*));
    block* fresh = new (memory) block{n, capacity, big()};
    std::copy(slots(), slots() + n, fresh->slots());
    if (isBlock()) ::operator delete(blk());
    word = reinterpret_cast<kalport*>(reinterpret_cast<std::uintptr_t>(fresh) | 1u);
    return fresh;
}

std::size_t kalportlist::key(const kalport* port) {
    const std::hash<std::string> hash;
    const std::string* name = port->getName();
    const kalcomponent* c = port->getComponent();
    std::size_t k = name ? hash(*name) : 0x51ed27u;
    std::size_t instance;
    if (!c)
        instance = 1;
    else if (!c->data || !c->data->instanceName)
        instance = 2;
    else
        instance = hash(*c->data->instanceName) + 3;
    return k ^ (instance + 0x9e3779b97f4a7c15ull + (k << 6) + (k >> 2));
}

bool kalportlist::indexed() const {
    large* b = big();
    return b && b->indexed;
}

std::uint32_t kalportlist::holes() const {
    large* b = big();
    return b ? b->holes : 0;
}

std::size_t kalportlist::size() const {
    return used() - holes();
}

std::vector<kalport*> kalportlist::snapshot() const {
    std::vector<kalport*> out;
    out.reserve(size());
    anyOf([&](kalport* p) {
        out.push_back(p);
        return false;
    });
    return out;
}

bool kalportlist::containsEqual(const kalport* port) const {
    return firstEqual(port) >= 0;
}

std::ptrdiff_t kalportlist::firstEqual(const kalport* port) const {
    kalport* const* s = slots();
    if (!indexed()) {
        const std::uint32_t n = used();
        for (std::uint32_t i = 0; i < n; ++i)
            if (*s[i] == *port) return i;
        return -1;
    }
    // Several equal entries can share a key; the earliest slot is the one a scan finds.
    std::ptrdiff_t first = -1;
    auto range = big()->index.equal_range(key(port));
    for (auto it = range.first; it != range.second; ++it)
        if ((first < 0 || it->second < first) && *s[it->second] == *port) first = it->second;
    return first;
}

bool kalportlist::listsPointer(const kalport* port) const {
    return findPointer(port) >= 0;
}

std::ptrdiff_t kalportlist::findPointer(const kalport* port) const {
    kalport* const* s = slots();
    if (!indexed()) {
        kalport* const* at = std::find(s, s + used(), port);
        return at == s + used() ? -1 : at - s;
    }
    auto range = big()->index.equal_range(key(port));
    for (auto it = range.first; it != range.second; ++it)
        if (s[it->second] == port) return it->second;
    return -1;
}

void kalportlist::append(kalport* port) {
    if (!word) {
        word = port;
        return;
    }
    block* b = isBlock() ? blk() : toBlock(2);
    if (b->used == b->cap) b = toBlock(b->cap * 2);
    b->slots()[b->used++] = port;
    if (indexed())
        b->big->index.emplace(key(port), b->used - 1);
    else if (b->used >= indexThreshold && !(b->big && b->big->strays))
        build();
}

void kalportlist::build() {
    block* b = blk();
    if (!b->big) b->big = new large();
    b->big->index.reserve(b->used * 2);
    kalport** s = b->slots();
    for (std::uint32_t i = 0; i < b->used; ++i)
        b->big->index.emplace(key(s[i]), i);
    b->big->indexed = true;
}

void kalportlist::unindex(const kalport* port, std::size_t k) {
    auto range = big()->index.equal_range(k);
    for (auto it = range.first; it != range.second; ++it) {
        if (slots()[it->second] == port) {
            big()->index.erase(it);
            return;
        }
    }
}

void kalportlist::eraseAt(std::size_t position) {
    if (!isBlock()) {
        word = nullptr;
        return;
    }
    block* b = blk();
    kalport** s = b->slots();
    if (!indexed()) {
        std::memmove(s + position, s + position + 1, (b->used - position - 1) * sizeof(kalport*));
        --b->used;
        return;
    }
    unindex(s[position], key(s[position]));
    s[position] = nullptr;
    ++b->big->holes;
    trimHoles();
    if (b->big->holes > 16 && b->big->holes * 2 > b->used) compact();
}

kalport* kalportlist::popBack() {
    if (!isBlock()) {
        kalport* port = word;
        word = nullptr;
        return port;
    }
    block* b = blk();
    kalport* port = b->slots()[b->used - 1];
    if (indexed()) unindex(port, key(port));
    --b->used;
    if (b->big) trimHoles();
    return port;
}

void kalportlist::trimHoles() {
    block* b = blk();
    kalport** s = b->slots();
    while (b->used > 0 && !s[b->used - 1]) {
        --b->used;
        --b->big->holes;
    }
}

void kalportlist::compact() {
    block* b = blk();
    kalport** s = b->slots();
    b->used = static_cast<std::uint32_t>(std::remove(s, s + b->used, nullptr) - s);
    b->big->holes = 0;
    if (!b->big->indexed) return;
    b->big->index.clear();
    for (std::uint32_t i = 0; i < b->used; ++i)
        b->big->index.emplace(key(s[i]), i);
}

void kalportlist::rekey(kalport* port, std::size_t oldKey) {
    if (!indexed()) return;
    auto range = big()->index.equal_range(oldKey);
    for (auto it = range.first; it != range.second; ++it) {
        if (slots()[it->second] == port) {
            const std::uint32_t slot = it->second;
            big()->index.erase(it);
            big()->index.emplace(key(port), slot);
            return;
        }
    }
}

void kalportlist::markStray() {
    block* b = isBlock() ? blk() : toBlock(2);
    if (!b->big) b->big = new large();
    b->big->strays = true;
    b->big->indexed = false;
    b->big->index.clear();
    // From now on this list scans; a scan must not meet holes.
    if (b->big->holes) compact();
}

const char* kalportlist::problem() const {
    if (!present()) return nullptr;
    kalport* const* s = slots();
    const std::uint32_t n = used();
    const std::uint32_t nulls = static_cast<std::uint32_t>(std::count(s, s + n, nullptr));
    if (nulls != holes()) return "its hole count is not the number of empty slots";
    if (n && !s[n - 1]) return "its last slot is a hole";
    if (!indexed()) return nulls ? "it scans a list with holes" : nullptr;
    if (big()->strays) return "it indexes a list with strays";
    if (big()->index.size() != n - nulls) return "its index has not one entry per port";
    std::vector<bool> seen(n, false);
    for (const auto& entry : big()->index) {
        const std::uint32_t i = entry.second;
        if (i >= n || !s[i] || seen[i]) return "its index names a slot that is empty, gone or named twice";
        if (entry.first != key(s[i])) return "its index holds a port under a stale key";
        seen[i] = true;
    }
    return nullptr;
}
