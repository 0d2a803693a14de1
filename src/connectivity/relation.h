// SPDX-License-Identifier: Apache-2.0
// A many-to-many relation between model objects, kept process-wide for the
// links the library clears for memory safety (see heldbits.h, unlisted.h).
// Separate models may live on separate threads, so changes take the lock; it
// is recursive because clearing a link may come back to the same table. The
// relations are nearly always empty and every port or net asks them on its
// way out, so an atomic count of entries answers "nothing here" without the
// lock. Another thread's entries concern another model, so a stale zero
// cannot hide an entry of this one.
#ifndef KALDATA_SRC_CONNECTIVITY_RELATION_H
#define KALDATA_SRC_CONNECTIVITY_RELATION_H

#include <atomic>
#include <map>
#include <mutex>
#include <set>

template <class A, class B>
class kalrelation {
public:
    bool empty() const { return entries.load(std::memory_order_acquire) == 0; }
    std::unique_lock<std::recursive_mutex> hold() { return std::unique_lock<std::recursive_mutex>(lock); }

    // The rest is called while holding the lock.
    bool has(A a) const { return forward.count(a) != 0; }
    void add(A a, B b) {
        forward[a].insert(b);
        backward[b].insert(a);
        count();
    }
    // Takes out every pair of `a`; answers whom it was paired with.
    std::set<B> takeFirst(A a) { return take(forward, backward, a); }
    std::set<A> takeSecond(B b) { return take(backward, forward, b); }

private:
    template <class From, class To, class Key>
    std::set<typename From::mapped_type::value_type> take(From& from, To& to, Key key) {
        std::set<typename From::mapped_type::value_type> partners;
        auto it = from.find(key);
        if (it == from.end()) return partners;
        partners.swap(it->second);
        from.erase(it);
        for (auto& partner : partners) {
            auto back = to.find(partner);
            if (back != to.end() && back->second.erase(key) && back->second.empty()) to.erase(back);
        }
        count();
        return partners;
    }
    void count() { entries.store(forward.size() + backward.size(), std::memory_order_release); }

    std::recursive_mutex lock;
    std::map<A, std::set<B>> forward;
    std::map<B, std::set<A>> backward;
    std::atomic<std::size_t> entries{0};
};

#endif
