// Element catalogue: type groups, flags, nested group lists, removal,
// duplicate elements, marker lookups and names through the instance tree.
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"

namespace {
using names = std::vector<std::string>;
using owned_names = std::unique_ptr<names>;
using element_map = std::map<std::string, kalelement*>;

// The catalogue never deletes its groups.
void freeGroups(kalelements& catalogue) {
    for (auto& entry : catalogue.getGroupMap())
        delete entry.second;
}
}  // namespace

class catalogue : public ::testing::Test {
protected:
    void TearDown() override { freeGroups(cat); }
    kalelementgroup* group(unsigned category, const char* name) {
        cat.createGroup(category, S("T"), S(name), false);
        return cat.getGroup(S(name));
    }
    strings S;
    kalelements cat;
};

TEST_F(catalogue, type_groups_and_exact_flags) {
    kalelement* a = cat.addElement(S("LUT"), S("a"), true);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->getCatalogue(), &cat);
    cat.addElement(S("LUT"), S("b"), false);  // the first element of a type decides GroupHide
    EXPECT_EQ(*owned_names(cat.getGroupNames(1)), names{"LUT"});
    EXPECT_EQ(cat.getGroup(S("LUT"))->getVendorMap().at("GroupHide"), "KORVELL");
    EXPECT_TRUE(cat.getGroupHideAttribute(S("LUT")));
    EXPECT_TRUE(cat.getGroupDragAttribute(S("LUT")));
    EXPECT_FALSE(cat.getElementHideAttribute(S("a")));
    EXPECT_TRUE(cat.getElementDragAttribute(S("a")));

    cat.setGroupHideAttribute(S("LUT"), false);
    cat.setElementHideAttribute(S("a"), true);
    EXPECT_FALSE(cat.getGroupHideAttribute(S("LUT")));
    EXPECT_TRUE(cat.getElementHideAttribute(S("a")));
    cat.getGroup(S("LUT"))->setAttributeValue(S("GroupDrag"), S("TRUE"));
    EXPECT_FALSE(cat.getGroupDragAttribute(S("LUT")));
    EXPECT_EQ(cat.getGroupCategory(S("ghost")), 0xFFFFFFFFu);
}

TEST_F(catalogue, element_list_merges_own_first_then_subgroups_depth_first) {
    kalelementgroup *P = group(2, "P"), *a = group(2, "a"), *a1 = group(3, "a1"), *b = group(3, "b");
    group(2, "c");
    cat.createGroup(9, S("T"), S("P"), false);  // already registered: ignored
    kalelement px(S("x")), ay(S("y")), a1y(S("y")), a1z(S("z")), bz(S("z")), bw(S("w")), bx(S("x"));
    using member = std::pair<kalelementgroup*, kalelement*>;
    for (member m : {member{P, &px}, {a, &ay}, {a1, &a1y}, {a1, &a1z}, {b, &bz}, {b, &bw}, {b, &bx}})
        m.first->addElement(m.second);
    P->addGroup(b);  // out of name order on purpose
    P->addGroup(a);
    a->addGroup(a1);
    a1->addGroup(P);  // a cycle must not make the walk run forever

    std::unique_ptr<element_map> list(cat.getElementList(S("P")));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(*list, (element_map{{"w", &bw}, {"x", &px}, {"y", &ay}, {"z", &a1z}}));
    EXPECT_FALSE(P->hasGroup(S("a1")));  // one level only
    EXPECT_EQ(*owned_names(cat.getGroupNames()), (names{"P", "a", "a1", "b", "c"}));
    EXPECT_EQ(*owned_names(cat.getGroupNames(2)), (names{"P", "a", "c"}));
    EXPECT_EQ(*owned_names(cat.getGroupNames(2, S("z"))), (names{"P", "a"}));
    EXPECT_EQ(*owned_names(cat.getGroupNames(3, S("x"))), (names{"a1", "b"}));
}

TEST_F(catalogue, duplicate_name_returns_unregistered_element) {
    kalelement* first = cat.addElement(S("A"), S("x"), false);
    std::unique_ptr<kalelement> again(cat.addElement(S("A"), S("x"), true));
    ASSERT_NE(again, nullptr);
    EXPECT_NE(again.get(), first);
    EXPECT_EQ(cat.getElement(S("x")), first);
    EXPECT_TRUE(*again == *first);  // same catalogue, same name
    // Another type still gets its group, holding the caller's element.
    std::unique_ptr<kalelement> other(cat.addElement(S("B"), S("x"), false));
    EXPECT_EQ(cat.getGroup(S("B"))->getElementMap().at("x"), other.get());
    EXPECT_EQ(cat.getElementMap().size(), 1u);
}

TEST_F(catalogue, removal_reaches_registered_groups_only) {
    kalelement* e = cat.addElement(S("T"), S("e"), false);
    kalelement* f = cat.addElement(S("T"), S("f"), false);
    kalelementgroup *G = group(5, "G"), *N = group(5, "N");
    kalelementgroup loose(5, S("U"));  // nested but never registered
    G->addElement(e);
    loose.addElement(e);
    N->addElement(f);
    G->addGroup(&loose);
    G->addGroup(N);

    cat.removeElement(S("e"));
    EXPECT_EQ(cat.getElement(S("e")), nullptr);
    EXPECT_FALSE(G->hasElement(S("e")));
    EXPECT_TRUE(loose.hasElement(S("e")));
    EXPECT_EQ(cat.elementCount(S("G")), 2u);

    cat.removeElementFromGroup(S("N"), S("f"));
    EXPECT_EQ(cat.getElement(S("f")), f);
    EXPECT_FALSE(cat.hasElement(S("f"), S("G")));
    N->addElement(f);
    cat.removeGroup(S("N"));
    EXPECT_EQ(*owned_names(cat.getGroupNames(5)), names{"G"});
    EXPECT_TRUE(cat.hasElement(S("f"), S("G")));  // the nesting parent keeps N
    cat.removeElementFromAllGroups(S("f"));
    EXPECT_TRUE(N->hasElement(S("f")));
    delete N;
}

TEST_F(catalogue, marker_lookups_take_first_by_name) {
    std::string out;
    EXPECT_EQ(cat.getBridgeDDRDLLName(out), 1);
    EXPECT_EQ(out, "bridged_DDRDLLA");
    cat.addElement(S("T"), S("b2"), false)->setAttribute(S("bridged_DDRDLLA"), S("1"), S("V"));
    cat.addElement(S("T"), S("a1"), false)->setAttribute(S("bridged_DDRDLLA"), S(""), S("V"));
    cat.addElement(S("T"), S("a0"), false);
    EXPECT_EQ(cat.getBridgeDDRDLLName(out), 0);
    EXPECT_EQ(out, "a1");
    EXPECT_EQ(cat.getEclkBridgeCSName(out), 1);
    EXPECT_EQ(out, "Inst_ECLKBRIDGECS");
}

TEST_F(catalogue, null_names_are_neutral) {
    EXPECT_EQ(cat.addElement(nullptr, S("x"), false), nullptr);
    EXPECT_EQ(cat.addElement(S("T"), nullptr, false), nullptr);
    cat.createGroup(1, nullptr, S("g"), false);
    cat.addElement(S("T"), S("x"), false);
    EXPECT_FALSE(cat.hasElement(S("x"), static_cast<const std::string*>(nullptr)));
    EXPECT_TRUE(owned_names(cat.getGroupNames(1, nullptr))->empty());
    EXPECT_EQ(*owned_names(cat.getGroupNames()), names{"T"});
    cat.removeElement(nullptr);
    cat.removeGroup(nullptr);
    EXPECT_TRUE(cat.hasElement(S("x"), S("T")));
}

TEST_F(catalogue, equality_without_owners) {
    kalelements other;
    EXPECT_TRUE(cat == other);
    kalelement* x1 = cat.addElement(S("T"), S("x"), false);
    kalelement* x2 = other.addElement(S("T"), S("x"), false);
    EXPECT_TRUE(*x1 == *x2);
    EXPECT_TRUE(*x1 != *cat.addElement(S("T"), S("y"), false));
    kalelement loose(S("x"));
    EXPECT_FALSE(loose == *x1);
    EXPECT_EQ(*std::unique_ptr<std::string>(x1->hierarchicalName()), "x");
    freeGroups(other);
}

// Needs components and designs.
class catalogue_hierarchy : public recorded {
protected:
    // What a component leaves to its creator: catalogue groups and the generator registry.
    static void release(kalcomponent* c) {
        freeGroups(*c->getElements());
        delete c->data->generators;
    }
};

TEST_F(catalogue_hierarchy, hierarchical_name_follows_instances) {
    auto* top = new kalcomponent(S("v"), S("l"), S("top"), S("1"));
    auto* u1 = new kalcomponent(S("v"), S("l"), S("mid"), S("1"));
    auto* u2 = new kalcomponent(S("v"), S("l"), S("leaf"), S("1"));
    std::string topImpl("top_impl"), midImpl("mid_impl"), n1("u1"), n2("u2");
    ASSERT_EQ(top->createDesign(S("v"), S("l"), &topImpl, S("1")), 1);
    ASSERT_EQ(u1->createDesign(S("v"), S("l"), &midImpl, S("1")), 1);
    ASSERT_TRUE(top->getDesign(&topImpl)->addInstance(&n1, u1));
    ASSERT_TRUE(u1->getDesign(&midImpl)->addInstance(&n2, u2));
    EXPECT_EQ(u2->getElements()->getOwner(), u2);

    kalelement* deep = u2->getElements()->addElement(S("T"), S("e"), false);
    kalelement* root = top->getElements()->addElement(S("T"), S("r"), false);
    EXPECT_EQ(*std::unique_ptr<std::string>(deep->hierarchicalName()), "u1/u2/e");
    EXPECT_EQ(*std::unique_ptr<std::string>(root->hierarchicalName()), "r");
    for (kalcomponent* c : {top, u1, u2})
        release(c);
    delete top;
}

TEST_F(catalogue_hierarchy, equality_compares_owners) {
    kalcomponent c1(S("v"), S("l"), S("n1"), S("1")), c2(S("v"), S("l"), S("n2"), S("1"));
    kalelements loose;
    kalelements &e1 = *c1.getElements(), &e2 = *c2.getElements();
    EXPECT_TRUE(e1 == e1);
    EXPECT_TRUE(e1 != e2);
    EXPECT_TRUE(e1 != loose);
    EXPECT_FALSE(*e1.addElement(S("T"), S("x"), false) == *e2.addElement(S("T"), S("x"), false));
    release(&c1);
    release(&c2);
}
