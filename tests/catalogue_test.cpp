// SPDX-License-Identifier: Apache-2.0
// Element catalogue: exact flags, duplicate elements, marker lookups, merged
// group lists, removal, and names through the instance tree.
#include <memory>

#include "kaldata.h"
#include "support/model.h"

namespace {
// Lists and names that the catalogue hands out are the caller's.
template <class T>
T owned(T* p) {
    return *std::unique_ptr<T>(p);
}
// The catalogue never frees its groups (release() does, for a component's).
void freeGroups(kalelements& catalogue) {
    for (auto& entry : catalogue.getGroupMap())
        delete entry.second;
}
}  // namespace

class catalogue : public modeltest {
protected:
    ~catalogue() override { freeGroups(cat); }
    kalelementgroup* group(unsigned category, const char* name) {
        cat.createGroup(category, S("T"), S(name), false);
        return cat.getGroup(S(name));
    }
    kalelements cat;
};

TEST_F(catalogue, exact_flags_duplicate_names_and_markers) {
    kalelement* a = cat.addElement(S("LUT"), S("a"), true);
    EXPECT_TRUE(cat.getGroupHideAttribute(S("LUT")));  // taken from the first element of the type
    cat.getGroup(S("LUT"))->setAttributeValue(S("GroupHide"), S("TRUE"));
    EXPECT_FALSE(cat.getGroupHideAttribute(S("LUT")));  // only "true" itself is true

    // A name already taken yields an element that the catalogue does not keep,
    // though a new type still gets its group, holding the caller's element.
    std::unique_ptr<kalelement> again(cat.addElement(S("B"), S("a"), false));
    ASSERT_TRUE(again && again.get() != a);
    EXPECT_EQ(cat.getElement(S("a")), a);
    EXPECT_EQ(cat.getGroup(S("B"))->getElementMap().at("a"), again.get());

    // A lookup answers 0 and the first marked element by name (the unmarked "a"
    // sorts before them), or 1 and a default name when none is marked.
    std::string out;
    cat.addElement(S("T"), S("b2"), false)->setAttribute(S("bridged_DDRDLLA"), S("1"), S("V"));
    cat.addElement(S("T"), S("a1"), false)->setAttribute(S("bridged_DDRDLLA"), S(""), S("V"));
    EXPECT_EQ(cat.getBridgeDDRDLLName(out), 0);
    EXPECT_EQ(out, "a1");
    EXPECT_EQ(cat.getEclkBridgeCSName(out), 1);
    EXPECT_EQ(out, "Inst_ECLKBRIDGECS");
}

TEST_F(catalogue, element_lists_merge_depth_first_and_removal_reaches_registered_groups_only) {
    kalelementgroup *P = group(2, "P"), *a = group(2, "a"), *a1 = group(3, "a1"), *b = group(3, "b");
    kalelement* px = cat.addElement(S("T"), S("x"), false);
    kalelement ay(S("y")), a1y(S("y")), a1z(S("z")), bz(S("z")), bw(S("w")), bx(S("x"));
    using member = std::pair<kalelementgroup*, kalelement*>;
    for (member m : {member{P, px}, {a1, px}, {a, &ay}, {a1, &a1y}, {a1, &a1z}, {b, &bz}, {b, &bw}, {b, &bx}})
        m.first->addElement(m.second);
    P->addGroup(b);  // out of name order on purpose
    P->addGroup(a);
    a->addGroup(a1);
    a1->addGroup(P);  // a cycle must not make the walk run forever
    // Own elements first, then subgroups by name, depth first; the first of a name wins.
    EXPECT_EQ(owned(cat.getElementList(S("P"))),
              (std::map<std::string, kalelement*>{{"w", &bw}, {"x", px}, {"y", &ay}, {"z", &a1z}}));

    cat.removeGroup(S("a1"));  // out of the catalogue, not out of its nesting parent
    EXPECT_TRUE(cat.hasElement(S("z"), S("a")));
    cat.removeElement(S("x"));  // destroys it and takes it out of the registered groups
    EXPECT_EQ(cat.getElement(S("x")), nullptr);
    EXPECT_FALSE(P->hasElement(S("x")) || b->hasElement(S("x")));
    EXPECT_TRUE(a1->hasElement(S("x")));  // a1 is no longer registered
    delete a1;
}

TEST_F(catalogue, hierarchical_names_follow_instances) {
    std::string impl("impl"), u2name("u2");
    inst("u1")->createDesign(S("v"), S("l"), &impl, S("1.0"));
    auto* u2 = new kalcomponent(S("v"), S("l"), S("leaf"), S("1.0"));
    ASSERT_TRUE(inst("u1")->getDesign(&impl)->addInstance(&u2name, u2));
    EXPECT_EQ(owned(u2->getElements()->addElement(S("T"), S("e"), false)->hierarchicalName()), "u1/u2/e");
    EXPECT_EQ(owned(top->getElements()->addElement(S("T"), S("r"), false)->hierarchicalName()), "r");
}
