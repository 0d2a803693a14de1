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

    void collect(kalcomponent* c) {
        if (!c || !c->data) return;
        for (auto& f : c->data->filesets)
            filesets.insert(f.second);
        for (kallpc* l : c->data->lpcs)
            lpcs.insert(l);
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

    void free() {
        for (auto* f : filesets)
            delete f;
        for (auto* g : generators)
            delete g;
        for (auto* g : groups)
            delete g;
        for (auto* r : registries)
            delete r;
        for (auto* l : lpcs)
            delete l;
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
}
