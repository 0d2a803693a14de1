#include "connectivity/portlist.h"

#include <algorithm>

#include "kalcomponent.h"
#include "kalport.h"

std::string kalportlist::key(const kalport* port) {
    std::string k;
    const std::string* name = port->getName();
    k.push_back(name ? 'n' : '-');
    if (name) k.append(*name);
    k.push_back('\0');
    const kalcomponent* c = port->getComponent();
    if (!c) {
        k.push_back('0');
    } else if (!c->data || !c->data->instanceName) {
        k.push_back('1');
    } else {
        k.push_back('2');
        k.append(*c->data->instanceName);
    }
    return k;
}

bool kalportlist::containsEqual(const kalport* port) const {
    return firstEqual(port) >= 0;
}

std::ptrdiff_t kalportlist::firstEqual(const kalport* port) const {
    auto scanFrom = [&](std::size_t start) -> std::ptrdiff_t {
        for (std::size_t i = start; i < order.size(); ++i)
            if (*order[i] == *port) return static_cast<std::ptrdiff_t>(i);
        return -1;
    };
    if (!indexed()) return scanFrom(0);
    auto range = index->equal_range(key(port));
    kalport* only = nullptr;
    for (auto it = range.first; it != range.second; ++it) {
        if (!(*it->second == *port)) continue;
        if (only) return scanFrom(0);  // several equal entries: list order decides
        only = it->second;
    }
    if (!only) return -1;
    return std::find(order.begin(), order.end(), only) - order.begin();
}

bool kalportlist::listsPointer(const kalport* port) const {
    if (indexed()) {
        auto range = index->equal_range(key(port));
        for (auto it = range.first; it != range.second; ++it)
            if (it->second == port) return true;
        return false;
    }
    return std::find(order.begin(), order.end(), port) != order.end();
}

void kalportlist::append(kalport* port) {
    order.push_back(port);
    if (index)
        index->emplace(key(port), port);
    else if (order.size() >= indexThreshold && !strays)
        build();
}

void kalportlist::eraseAt(std::size_t position) {
    kalport* port = order[position];
    if (index) unindex(port, key(port));
    order.erase(order.begin() + static_cast<std::ptrdiff_t>(position));
}

kalport* kalportlist::popBack() {
    kalport* port = order.back();
    if (index) unindex(port, key(port));
    order.pop_back();
    return port;
}

void kalportlist::rekey(kalport* port, const std::string& oldKey) {
    if (!index) return;
    unindex(port, oldKey);
    index->emplace(key(port), port);
}

void kalportlist::build() {
    index = std::make_unique<index_t>();
    index->reserve(order.size() * 2);
    for (kalport* p : order)
        index->emplace(key(p), p);
}

void kalportlist::unindex(kalport* port, const std::string& k) {
    auto range = index->equal_range(k);
    for (auto it = range.first; it != range.second; ++it) {
        if (it->second == port) {
            index->erase(it);
            return;
        }
    }
}
