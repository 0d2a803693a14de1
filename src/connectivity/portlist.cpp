#include "connectivity/portlist.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <unordered_map>

#include "kalcomponent.h"
#include "kalport.h"

struct kalportlist::large {
    std::unordered_multimap<std::size_t, std::uint32_t> index;  // key -> slot
    bool indexed = false;
    bool strays = false;
    std::uint32_t holes = 0;
};

kalportlist::~kalportlist() {
    if (cap > 1) delete[] many;
    delete big;
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
    return big && big->indexed;
}

std::uint32_t kalportlist::holes() const {
    return big ? big->holes : 0;
}

std::size_t kalportlist::size() const {
    return used - holes();
}

std::vector<kalport*> kalportlist::snapshot() const {
    std::vector<kalport*> out;
    out.reserve(size());
    kalport* const* s = slots();
    for (std::uint32_t i = 0; i < used; ++i)
        if (s[i]) out.push_back(s[i]);
    return out;
}

bool kalportlist::containsEqual(const kalport* port) const {
    return firstEqual(port) >= 0;
}

std::ptrdiff_t kalportlist::firstEqual(const kalport* port) const {
    kalport* const* s = slots();
    if (!indexed()) {
        for (std::uint32_t i = 0; i < used; ++i)
            if (*s[i] == *port) return i;
        return -1;
    }
    // Several equal entries can share a key; the earliest slot is the one a scan finds.
    std::ptrdiff_t first = -1;
    auto range = big->index.equal_range(key(port));
    for (auto it = range.first; it != range.second; ++it)
        if ((first < 0 || it->second < first) && *s[it->second] == *port) first = it->second;
    return first;
}

bool kalportlist::listsPointer(const kalport* port) const {
    kalport* const* s = slots();
    if (!indexed()) return std::find(s, s + used, port) != s + used;
    auto range = big->index.equal_range(key(port));
    for (auto it = range.first; it != range.second; ++it)
        if (s[it->second] == port) return true;
    return false;
}

void kalportlist::grow() {
    const std::uint32_t bigger = cap * 2;
    auto* fresh = new kalport*[bigger];
    std::copy(slots(), slots() + used, fresh);
    if (cap > 1) delete[] many;
    many = fresh;
    cap = bigger;
}

void kalportlist::append(kalport* port) {
    if (used == cap) grow();
    slots()[used++] = port;
    if (indexed())
        big->index.emplace(key(port), used - 1);
    else if (used >= indexThreshold && !(big && big->strays))
        build();
}

void kalportlist::build() {
    if (!big) big = new large();
    big->index.reserve(used * 2);
    kalport** s = slots();
    for (std::uint32_t i = 0; i < used; ++i)
        big->index.emplace(key(s[i]), i);
    big->indexed = true;
}

void kalportlist::unindex(const kalport* port, std::size_t k) {
    auto range = big->index.equal_range(k);
    for (auto it = range.first; it != range.second; ++it) {
        if (slots()[it->second] == port) {
            big->index.erase(it);
            return;
        }
    }
}

void kalportlist::eraseAt(std::size_t position) {
    kalport** s = slots();
    if (!indexed()) {
        std::memmove(s + position, s + position + 1, (used - position - 1) * sizeof(kalport*));
        --used;
        return;
    }
    unindex(s[position], key(s[position]));
    s[position] = nullptr;
    ++big->holes;
    trimHoles();
    if (big->holes > 16 && big->holes * 2 > used) compact();
}

kalport* kalportlist::popBack() {
    kalport* port = slots()[used - 1];
    if (indexed()) unindex(port, key(port));
    --used;
    if (big) trimHoles();
    return port;
}

void kalportlist::trimHoles() {
    kalport** s = slots();
    while (used > 0 && !s[used - 1]) {
        --used;
        --big->holes;
    }
}

void kalportlist::compact() {
    kalport** s = slots();
    used = static_cast<std::uint32_t>(std::remove(s, s + used, nullptr) - s);
    big->holes = 0;
    if (!big->indexed) return;
    big->index.clear();
    for (std::uint32_t i = 0; i < used; ++i)
        big->index.emplace(key(s[i]), i);
}

void kalportlist::rekey(kalport* port, std::size_t oldKey) {
    if (!indexed()) return;
    auto range = big->index.equal_range(oldKey);
    for (auto it = range.first; it != range.second; ++it) {
        if (slots()[it->second] == port) {
            const std::uint32_t slot = it->second;
            big->index.erase(it);
            big->index.emplace(key(port), slot);
            return;
        }
    }
}

void kalportlist::markStray() {
    if (!big) big = new large();
    big->strays = true;
    big->indexed = false;
    big->index.clear();
    // From now on this list scans; a scan must not meet holes.
    if (big->holes) compact();
}
