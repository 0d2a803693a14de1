// SPDX-License-Identifier: Apache-2.0
// Generator registry: keys versus name fields, groups, and the deep copy.
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"

using gens = std::map<std::string, kalgenerator*>;

// Only a component names a generator (createGenerator); registries never free
// their generators, so the maker keeps and frees them.
struct maker {
    kalcomponent scratch{nullptr, nullptr, nullptr, nullptr};
    std::vector<std::unique_ptr<kalgenerator>> made;
    kalgenerator* operator()(const char* name) {
        made.emplace_back(scratch.createGenerator(name));
        return made.back().get();
    }
    ~maker() { delete scratch.data->generators; }
};

TEST(generators, keys_links_removal_by_object_and_groups) {
    strings S;
    kalgenerators r;
    maker make;
    kalgenerator &a = *make("a"), &b = *make("b"), &x1 = *make("x"), &x2 = *make("x");
    kalgenerator &g = *make("g"), &h = *make("h"), &twin = *make("g");
    r.addGenerator("k", &a);
    r.addGenerator("k", &b);  // replaces a, which stays linked
    EXPECT_EQ(r.getGeneratorMap(), (gens{{"k", &b}}));
    EXPECT_TRUE(a.getRegistry() == &r && b.getRegistry() == &r);  // b's name is not its key

    // By object, every entry whose name field matches goes, whichever object it holds.
    for (auto [key, x] : {std::pair{"a", &x1}, std::pair{"c", &x2}, std::pair{"d", &x1}})
        r.addGenerator(key, x);
    r.removeGenerator(&x2);
    EXPECT_EQ(r.getGeneratorMap(), (gens{{"k", &b}}));

    for (const char* name : {"beta", "alpha"})
        r.createGroup(name);
    using member = std::pair<kalgenerator*, const char*>;
    for (member m : {member{&g, "beta"}, {&g, "alpha"}, {&h, "alpha"}, {&h, "gamma"}, {&twin, "alpha"}})
        r.addGeneratorToGroup(m.first, m.second);
    // The first member under a name stays; a generator's group is the last by name.
    EXPECT_EQ(r.getGroup(S("alpha"))->getGeneratorMap(), (gens{{"g", &g}, {"h", &h}}));
    EXPECT_EQ(r.getGroupNames(S("g")), "beta");
    EXPECT_EQ(r.getGroupNames(S("h")), "alpha");
    r.removeElementFromAllGroups(S("g"));  // reaches past the first group
    EXPECT_EQ(r.getGroupNames(S("g")), "");
    for (const auto& e : r.getGroupMap())
        delete e.second;  // nor their groups
}

TEST(generators, clone_copies_by_key_and_drops_mismatched_members) {
    strings S;
    kalgenerators r;
    r.setAttribute(S("owner"), S("top"), S("SPIRIT"));
    r.createGroup("kept");
    r.createGroup("stale");
    std::unique_ptr<kalgenerators> empty(r.clone());  // without generators nothing else is copied
    EXPECT_TRUE(empty->getValueMap().empty() && empty->getGroupMap().empty());

    maker make;
    kalgenerator &a = *make("a"), &b = *make("b"), &moved = *make("renamed");
    for (auto [key, g] : {std::pair{"a", &a}, std::pair{"alias", &b}, std::pair{"m", &moved}})
        r.addGenerator(key, g);
    r.getGroup(S("kept"))->setAttributeValue(S("colour"), S("red"));
    // Members are found by name: b's name "b" and moved's "renamed" are no keys.
    for (auto [g, group] : {std::pair{&a, "kept"}, std::pair{&b, "kept"}, std::pair{&moved, "stale"}})
        r.addGeneratorToGroup(g, group);
    std::unique_ptr<kalgenerators> c(r.clone());
    gens copies = c->getGeneratorMap();
    ASSERT_EQ(copies.size(), 3u);
    for (const auto& [key, copy] : copies)
        EXPECT_TRUE(copy->getName() == key && copy->getRegistry() == c.get()) << key;
    EXPECT_EQ(*c->getAttributeValue(S("owner")), "top");
    ASSERT_EQ(c->getGroupMap().size(), 1u);
    EXPECT_EQ(c->getGroup(S("kept"))->getRegistry(), c.get());
    EXPECT_EQ(c->getGroup(S("kept"))->getGeneratorMap(), (gens{{"a", copies["a"]}}));
    EXPECT_TRUE(c->getGroup(S("kept"))->getValueMap().empty());
    for (const auto& e : copies)
        delete e.second;  // fresh objects, the caller's like the copy itself
    for (kalgenerators* x : {&r, c.get()})
        for (const auto& e : x->getGroupMap())
            delete e.second;
}
