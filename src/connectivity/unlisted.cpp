#include "connectivity/unlisted.h"

#include <map>
#include <mutex>
#include <set>

#include "connectivity/access.h"
#include "kalnet.h"
#include "kalport.h"

namespace kalunlisted {

namespace {

// Shared by every model in the process; separate models may live on separate threads.
struct table {
    std::mutex lock;
    std::map<const kalnet*, std::set<kalport*>> ports;
    std::map<const kalport*, std::set<const kalnet*>> nets;
};

table& noted() {
    // Never freed: model objects may still die during static destruction.
    static table* t = new table();
    return *t;
}

}  // namespace

void note(kalport* port, const kalnet* net) {
    table& t = noted();
    std::lock_guard<std::mutex> hold(t.lock);
    t.ports[net].insert(port);
    t.nets[port].insert(net);
}

void netGone(const kalnet* net) {
    table& t = noted();
    std::lock_guard<std::mutex> hold(t.lock);
    auto it = t.ports.find(net);
    if (it == t.ports.end()) return;
    for (kalport* port : it->second) {
        if (port->getNet() == net) kalaccess::dropNet(port);
        auto n = t.nets.find(port);
        if (n != t.nets.end() && n->second.erase(net) && n->second.empty()) t.nets.erase(n);
    }
    t.ports.erase(it);
}

void portGone(const kalport* port) {
    table& t = noted();
    std::lock_guard<std::mutex> hold(t.lock);
    auto it = t.nets.find(port);
    if (it == t.nets.end()) return;
    for (const kalnet* net : it->second) {
        auto p = t.ports.find(net);
        if (p != t.ports.end() && p->second.erase(const_cast<kalport*>(port)) && p->second.empty())
            t.ports.erase(p);
    }
    t.nets.erase(it);
}

}  // namespace kalunlisted
