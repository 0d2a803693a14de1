// SPDX-License-Identifier: Apache-2.0
#include "connectivity/access.h"

#include "connectivity/portlist.h"
#include "kalcomponent.h"
#include "kaldualport.h"

#include <algorithm>

template <class Change>
void kalaccess::rekeyAround(kalport* p, Change change) {
    kalnet* net = p->getNet();
    if (!net || !portList(net).present()) {
        change();
        return;
    }
    const std::size_t oldKey = kalportlist::key(p);
    change();
    portList(net).rekey(p, oldKey);
}

void kalaccess::setComponent(kalport* p, kalcomponent* c) {
    rekeyAround(p, [&] { p->setComponent(c); });
}

void kalaccess::setName(kalport* p, const std::string* n) {
    if (!n) return;
    rekeyAround(p, [&] { p->setName(n); });
}

void kalaccess::setInstanceName(kalcomponent* c, const std::string& name) {
    kalcomponentdata* d = c->data;
    std::string* fresh = new std::string(name);
    // Ports on nets are re-keyed one by one; the swap happens once for all.
    struct keyed {
        kalport* port;
        std::size_t oldKey;
    };
    std::vector<keyed> connected;
    for (auto& entry : d->ports)
        if (entry.second && entry.second->getNet() && portList(entry.second->getNet()).present())
            connected.push_back({entry.second, kalportlist::key(entry.second)});
    delete d->instanceName;
    d->instanceName = fresh;
    for (auto& k : connected)
        portList(k.port->getNet()).rekey(k.port, k.oldKey);
}

void kalaccess::forgetPort(kaldualport* d, const kalport* p) {
    auto& list = d->ports;
    list.erase(std::remove(list.begin(), list.end(), p), list.end());
}
