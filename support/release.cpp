// SPDX-License-Identifier: Apache-2.0
#include "kalsupport.h"

#include <set>
#include <vector>

#include "kaldata.h"

namespace {

struct leftovers {
    std::set<kalfileset*> filesets;
    std::set<kalgenerators*> registries;
    std::set<kalgenerator*> generators;
    std::set<kalgeneratorgroup*> groups;
    std::set<kallpc*> lpcs;
    std::set<kalelementgroup*> catalogueGroups;

    void collect(kalcomponent* c) {
        if (!c || !c->data) return;
        components.push_back(c);
        for (auto& f : c->data->filesets)
            filesets.insert(f.second);
        for (kallpc* l : c->data->lpcs)
            lpcs.insert(l);
        // The catalogue frees its elements but not the groups it made.
        if (kalelements* e = c->data->elements)
            for (auto& g : e->getGroupMap())
                catalogueGroups.insert(g.second);
        if (kalgenerators* g = c->data->generators) {
            registries.insert(g);
            for (auto& e : g->getGeneratorMap())
                generators.insert(e.second);
            for (auto& e : g->getGroupMap())
                groups.insert(e.second);
        }
        for (auto& d : c->data->designs)
            if (d.second)
                for (auto& i : *d.second->data->getInstanceMap())
                    collect(i.second);
    }

    std::vector<kalcomponent*> components;

    // Sets, so that an object that several entries (or components) name is
    // freed once.
    template <class T>
    static void deleteEach(const std::set<T*>& objects) {
        for (T* o : objects)
            delete o;
    }
    void free() {
        deleteEach(filesets);
        deleteEach(generators);
        deleteEach(groups);
        deleteEach(registries);
        deleteEach(lpcs);
        deleteEach(catalogueGroups);
    }
};

}  // namespace

void kalsupport::release(kalcomponent* root) {
    leftovers l;
    l.collect(root);
    delete root;
    l.free();
}

void kalsupport::releaseLeftovers(kalcomponent* component) {
    leftovers l;
    l.collect(component);
    l.free();
    // The components stay alive until their design destroys them: leave
    // nothing in them that points at what was just freed.
    for (kalcomponent* c : l.components) {
        c->data->filesets.clear();
        c->data->lpcs.clear();
        c->data->generators = nullptr;
        if (kalelements* e = c->data->elements)
            for (auto& g : e->getGroupMap())
                e->removeGroup(&g.first);
    }
}
