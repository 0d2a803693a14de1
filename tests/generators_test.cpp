// Generator registry: keys versus name fields, groups, and the deep copy.
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"

namespace {
using owned = std::unique_ptr<kalgenerator>;

owned named(const std::string& name) {
    owned g(new kalgenerator());
    g->setName(name);
    return g;
}

template <class Map>
std::vector<std::string> keysOf(const Map& m) {
    std::vector<std::string> keys;
    for (const auto& e : m)
        keys.push_back(e.first);
    return keys;
}

// Registries never free what they refer to, so whoever made the objects does.
void freeGroups(const kalgenerators& r) {
    for (const auto& e : r.getGroupMap())
        delete e.second;
}
void freeClone(kalgenerators* c) {
    for (const auto& e : c->getGeneratorMap())
        delete e.second;
    freeGroups(*c);
    delete c;
}
}  // namespace

TEST(generators, registration_by_key) {
    kalgenerators r;
    owned a = named("a"), b = named("b");
    EXPECT_EQ(a->getRegistry(), nullptr);

    r.addGenerator("k", a.get());
    r.addGenerator("k", b.get());  // replaces a, which stays alive and linked
    r.addGenerator("n", nullptr);
    EXPECT_EQ(keysOf(r.getGeneratorMap()), std::vector<std::string>{"k"});
    EXPECT_EQ(r.generatorAtIndex("k"), b.get());
    EXPECT_EQ(r.generatorAtIndex("n"), nullptr);
    EXPECT_EQ(a->getRegistry(), &r);
    // The entry found under the key is the argument itself, so the link is made
    // even though "b" differs from the key.
    EXPECT_EQ(b->getRegistry(), &r);
}

TEST(generators, remove_by_object_erases_every_same_named_entry) {
    kalgenerators r;
    owned x1 = named("x"), x2 = named("x"), y = named("y");
    r.addGenerator("a", x1.get());
    r.addGenerator("b", y.get());
    r.addGenerator("c", x2.get());
    r.addGenerator("d", x1.get());
    r.removeGenerator(static_cast<kalgenerator*>(nullptr));
    r.removeGenerator(x2.get());  // matches by name field, not by object
    EXPECT_EQ(keysOf(r.getGeneratorMap()), std::vector<std::string>{"b"});
    r.removeGenerator(std::string("b"));
    EXPECT_TRUE(r.getGeneratorMap().empty());
    EXPECT_EQ(x1->getName() + y->getName(), "xy");  // none was freed
}

TEST(generators, groups_membership_and_last_group) {
    strings S;
    kalgenerators r;
    owned g = named("g"), h = named("h"), twin = named("g");
    r.createGroup("beta");
    r.createGroup("alpha");
    kalgeneratorgroup* alpha = r.getGroup(S("alpha"));
    r.createGroup("alpha");
    ASSERT_EQ(r.getGroup(S("alpha")), alpha);
    EXPECT_EQ(alpha->getRegistry(), &r);
    std::unique_ptr<std::vector<std::string>> names(r.getGroupNames());
    EXPECT_EQ(*names, (std::vector<std::string>{"alpha", "beta"}));
    EXPECT_FALSE(r.hasGroup(nullptr));
    EXPECT_EQ(r.getGroup(nullptr), nullptr);

    r.addGeneratorToGroup(g.get(), "beta");
    r.addGeneratorToGroup(g.get(), "alpha");
    r.addGeneratorToGroup(h.get(), "alpha");
    r.addGeneratorToGroup(h.get(), "gamma");
    r.addGeneratorToGroup(twin.get(), "alpha");  // the first member under "g" stays
    EXPECT_EQ(alpha->getGeneratorMap().at("g"), g.get());
    EXPECT_EQ(r.getGroupNames(S("g")), "beta");
    EXPECT_EQ(r.getGroupNames(S("h")), "alpha");
    EXPECT_EQ(r.getGroupNames(S("none")), "");

    r.removeGeneratorFromGroup(S("alpha"), S("g"));
    r.removeGeneratorFromGroup(nullptr, S("h"));
    EXPECT_EQ(keysOf(alpha->getGeneratorMap()), std::vector<std::string>{"h"});
    EXPECT_EQ(r.getGroupNames(S("g")), "beta");
    r.removeElementFromAllGroups(S("g"));  // reaches past the first group
    EXPECT_EQ(r.getGroupNames(S("g")), "");
    alpha->removeGenerator(S("h"));
    EXPECT_FALSE(alpha->hasGenerator(S("h")));

    kalgeneratorgroup* beta = r.getGroup(S("beta"));
    r.removeGroup(S("beta"));
    EXPECT_FALSE(r.hasGroup(S("beta")));
    EXPECT_EQ(beta->getName(), "beta");  // taken out, not destroyed
    delete beta;
    freeGroups(r);
}

TEST(generators, clone_copies_by_key_and_drops_mismatched_members) {
    strings S;
    kalgenerators r;
    r.setAttribute(S("owner"), S("top"), S("SPIRIT"));
    owned a = named("a"), b = named("b"), moved = named("m");
    a->setDetail("run.tcl");
    a->setAttribute(S("type"), S("tcl"), S("SPIRIT"));
    r.addGenerator("a", a.get());
    r.addGenerator("alias", b.get());
    r.addGenerator("m", moved.get());
    r.createGroup("kept");
    r.createGroup("empty");
    r.createGroup("stale");
    r.getGroup(S("kept"))->setAttributeValue(S("colour"), S("red"));
    r.addGeneratorToGroup(a.get(), "kept");
    r.addGeneratorToGroup(b.get(), "kept");  // member key "b" has no registry entry
    r.addGeneratorToGroup(moved.get(), "stale");
    moved->setName("renamed");  // no longer matches its key

    kalgenerators* c = r.clone();
    auto copies = c->getGeneratorMap();
    ASSERT_EQ(keysOf(copies), (std::vector<std::string>{"a", "alias", "m"}));
    for (const auto& e : copies) {
        EXPECT_EQ(e.second->getName(), e.first);
        EXPECT_EQ(e.second->getRegistry(), c);
        EXPECT_NE(e.second, r.generatorAtIndex(e.first));
    }
    EXPECT_EQ(copies["a"]->getDetail(), "run.tcl");
    EXPECT_EQ(*copies["a"]->getAttributeValue(S("type")), "tcl");
    EXPECT_EQ(*c->getAttributeValue(S("owner")), "top");

    ASSERT_EQ(keysOf(c->getGroupMap()), std::vector<std::string>{"kept"});
    kalgeneratorgroup* kept = c->getGroup(S("kept"));
    EXPECT_EQ(kept->getRegistry(), c);
    EXPECT_EQ(kept->getGeneratorMap(), (std::map<std::string, kalgenerator*>{{"a", copies["a"]}}));
    EXPECT_TRUE(kept->getValueMap().empty());
    freeClone(c);
    freeGroups(r);
}

TEST(generators, clone_without_generators_loses_registry_attributes) {
    strings S;
    kalgenerators r;
    r.setAttribute(S("owner"), S("top"), S("SPIRIT"));
    r.createGroup("lonely");
    kalgenerators* c = r.clone();
    EXPECT_TRUE(c->getValueMap().empty());
    EXPECT_TRUE(c->getGroupMap().empty());
    freeClone(c);
    freeGroups(r);
}

TEST(generators, registry_and_group_never_free_generators) {
    strings S;
    owned g = named("g");
    auto* r = new kalgenerators();
    r->addGenerator("g", g.get());
    r->createGroup("grp");
    r->addGeneratorToGroup(g.get(), "grp");
    kalgeneratorgroup* grp = r->getGroup(S("grp"));
    delete r;
    EXPECT_TRUE(grp->hasGenerator(S("g")));  // the group outlives its registry
    delete grp;
    EXPECT_EQ(g->getName(), "g");  // and the generator outlives both
}
