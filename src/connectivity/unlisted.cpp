#include "connectivity/unlisted.h"

#include <atomic>
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
    // Entries in both maps. Every net and port asks on its way out; while
    // nothing is noted (the usual case) they are answered without the lock.
    // Another thread's entries concern another model, so a stale zero is safe.
    std::atomic<std::size_t> entries{0};
    void count() { entries.store(ports.size() + nets.size(), std::memory_order_release); }
    bool empty() const { return entries.load(std::memory_order_acquire) == 0; }
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
    t.count();
}

void netGone(const kalnet* net) {
    table& t = noted();
    if (t.empty()) return;
    std::lock_guard<std::mutex> hold(t.lock);
    auto it = t.ports.find(net);
    if (it == t.ports.end()) return;
    for (kalport* port : it->second) {
        if (port->getNet() == net) kalaccess::dropNet(port);
        auto n = t.nets.find(port);
        if (n != t.nets.end() && n->second.erase(net) && n->second.empty()) t.nets.erase(n);
    }
    t.ports.erase(it);
    t.count();
}

void portGone(const kalport* port) {
    table& t = noted();
    if (t.empty()) return;
    std::lock_guard<std::mutex> hold(t.lock);
    auto it = t.nets.find(port);
    if (it == t.nets.end()) return;
    for (const kalnet* net : it->second) {
        auto p = t.ports.find(net);
        if (p != t.ports.end() && p->second.erase(const_cast<kalport*>(port)) && p->second.empty())
            t.ports.erase(p);
    }
    t.nets.erase(it);
    t.count();
}

}  // namespace kalunlisted
