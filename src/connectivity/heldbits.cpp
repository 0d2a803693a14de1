#include "connectivity/heldbits.h"

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <vector>

#include "connectivity/bits.h"
#include "kalnet.h"

namespace kalheldbits {

namespace {

// Shared by every model in the process; separate models may live on separate
// threads. Recursive, as emptying a slot may come back here.
struct table {
    std::recursive_mutex lock;
    std::map<const kalnet*, std::set<kalnetbus*>> holders;
    std::map<const kalnetbus*, std::set<const kalnet*>> held;
    // Entries in both maps. Every bit net and net bus asks on its way in and
    // out; while no net is shared (the usual case) they are answered without
    // the lock. Another thread's entries concern another model, so a stale zero is safe.
    std::atomic<std::size_t> entries{0};
    void count() { entries.store(holders.size() + held.size(), std::memory_order_release); }
    bool empty() const { return entries.load(std::memory_order_acquire) == 0; }
};

table& noted() {
    // Never freed: model objects may still die during static destruction.
    static table* t = new table();
    return *t;
}

}  // namespace

void joined(kalnet* net, kalnetbus* bus) {
    table& t = noted();
    kalnetbus* link = net->getBus();
    if (t.empty() && (!link || link == bus)) return;
    std::lock_guard<std::recursive_mutex> hold(t.lock);
    const bool shared = t.holders.count(net) != 0;
    if (!shared && (!link || link == bus)) return;
    for (kalnetbus* holder : {link, bus}) {
        if (!holder) continue;
        t.holders[net].insert(holder);
        t.held[holder].insert(net);
    }
    t.count();
}

void netGone(const kalnet* net) {
    table& t = noted();
    if (t.empty()) return;
    std::lock_guard<std::recursive_mutex> hold(t.lock);
    auto it = t.holders.find(net);
    if (it == t.holders.end()) return;
    const std::set<kalnetbus*> holders = std::move(it->second);
    t.holders.erase(it);
    t.count();
    for (kalnetbus* bus : holders) {
        auto h = t.held.find(bus);
        if (h != t.held.end() && h->second.erase(net) && h->second.empty()) t.held.erase(h);
        t.count();
        const std::vector<kalnet*> slots = bus->getBits();
        kalbits::forEachSlot(slots, bus->getMsb(), bus->getLsb(),
                             [&](std::size_t, kalnet* n, unsigned int bit) {
                                 if (n == net) bus->disconnect(bit);
                             });
    }
}

void busGone(const kalnetbus* bus) {
    table& t = noted();
    if (t.empty()) return;
    std::lock_guard<std::recursive_mutex> hold(t.lock);
    auto it = t.held.find(bus);
    if (it == t.held.end()) return;
    for (const kalnet* net : it->second) {
        auto h = t.holders.find(net);
        if (h == t.holders.end()) continue;
        h->second.erase(const_cast<kalnetbus*>(bus));
        if (h->second.empty()) t.holders.erase(h);
    }
    t.held.erase(it);
    t.count();
}

}  // namespace kalheldbits
