// SPDX-License-Identifier: Apache-2.0
// The design's instance list in order of placement, with an index from an
// instance to its entries so that taking one out does not walk the list.
// Removal gives exactly what std::list::remove gives (every entry of that
// instance goes). The list is handed out for reading; if it was changed from
// outside (its length no longer matches the index), the next removal walks it
// and rebuilds the index.
#ifndef KALDATA_SRC_DESIGN_INSTANCEORDER_H
#define KALDATA_SRC_DESIGN_INSTANCEORDER_H

#include <list>
#include <unordered_map>

class kalcomponent;

struct kalinstanceorder {
    explicit kalinstanceorder(std::list<kalcomponent*>& list) : list(list) {}

    void append(kalcomponent* instance);
    void remove(kalcomponent* instance);
    void clear();
    // Frees the index and leaves it stale (the list stays): the next removal rebuilds it.
    void shed() { decltype(where)().swap(where); }
    // What is wrong with the index, or null (for kalverify). A stale index
    // (the list's length changed from outside) is rebuilt before use: not wrong.
    const char* problem() const;

private:
    void rebuild();

    std::list<kalcomponent*>& list;
    std::unordered_multimap<const kalcomponent*, std::list<kalcomponent*>::iterator> where;
};

#endif
