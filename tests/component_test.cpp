// SPDX-License-Identifier: Apache-2.0
// Component core: parameters, designs and their forwards, lookups by path,
// element counts, equality, and the bits of port buses.
#include <sstream>
#include <tuple>

#include "kaldata.h"
#include "support/model.h"

class component : public modeltest {
protected:
    // The design and instance calls take names by non-const pointer.
    std::string* K(const char* s) { return const_cast<std::string*>(S(s)); }
    kaldesign* design(kalcomponent* c, const char* name, const char* version = "1.0") {
        EXPECT_EQ(c->createDesign(S("v"), S("l"), S(name), S(version)), 1);
        return c->getDesign(K(name));
    }
    kalcomponent* place(kaldesign* in, const char* name) {
        auto* c = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
        EXPECT_TRUE(in->addInstance(K(name), c));
        return c;
    }
};

TEST_F(component, parameters_keep_the_first_and_designs_are_replaced) {
    auto* first = new kalparameter(S("W"), S("int"), S("8"), S("user"));
    kalparameter second(S("W"), S("int"), S("16"), S("user"));
    EXPECT_EQ(top->addParameter(S("W"), first), 1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(top->addParameter(S("W"), &second), 0);
    std::ostringstream want;
    want << "Parameter element W already existed with a value of " << static_cast<void*>(first) << '\n';
    EXPECT_EQ(testing::internal::GetCapturedStdout(), want.str());
    EXPECT_EQ(top->getParameter(S("W")), first);
    EXPECT_EQ(top->removeParameter(S("W")), 1);
    delete first;  // handed back to the caller

    // Forwards reach only the design whose name sorts first.
    kaldesign* beh = design(top, "beh");
    EXPECT_EQ(top->addNet(S("n"), S("n"), nullptr, nullptr), 1);
    ASSERT_TRUE(beh->getNet(S("n")) && !d->getNet(S("n")));
    beh->getNet(S("n"))->connect(pin("", "a", 1), true);
    EXPECT_NE(design(top, "beh", "2.0"), beh);  // replaced, not destroyed
    delete beh;  // its teardown takes the top port off its net without a record
    EXPECT_EQ(top->getPort(S("a"), false)->getNet(), nullptr);
    EXPECT_TRUE(records().empty());
}

TEST_F(component, paths_and_element_counts_follow_first_designs) {
    top->setName(S("TopName"));  // lookups use the instance name, not "Name"
    kalcomponent* u1 = inst("u1");
    kalcomponent* u2 = place(design(u1, "impl"), "u2");
    kalcomponent* u3 = inst("u3");
    kalcomponent* u9 = place(design(top, "zzz"), "u9");
    // u9 sits in a later design, and u2 has none to look into.
    const std::pair<const char*, kalcomponent*> paths[] = {
        {"top", top},       {"TopName", nullptr}, {"top/u1", u1},           {"top/u1/u2", u2},
        {"u1/u2", nullptr}, {"top/u9", nullptr},  {"top/u1/u2/u3", nullptr}};
    for (const auto& [path, want] : paths)
        EXPECT_EQ(top->getComponent(S(path)), want) << path;

    // Only leaves count; a component with a design counts its first design.
    using entry = std::tuple<kalcomponent*, const char*, const char*>;
    for (auto [c, type, name] : {entry{top, "T", "own"}, entry{u1, "T", "own"}, entry{u9, "T", "own"},
                                 entry{u2, "T", "e1"}, entry{u2, "U", "e2"}, entry{u3, "T", "e3"}})
        c->getElements()->addElement(S(type), S(name), false);
    EXPECT_EQ(top->elementCount(), 3u);
    EXPECT_EQ(top->elementCount(S("T")), 2u);
}

TEST_F(component, equality_follows_identity_instance_name_and_parent_design) {
    kalcomponent a(S("v"), S("l"), S("x"), S("1")), b(S("v"), S("l"), S("x"), S("1"));
    kalcomponent older(S("v"), S("l"), S("x"), S("0"));
    kalcomponent n1(S("v"), S("l"), nullptr, S("1")), n2(S("v"), S("l"), nullptr, S("1"));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a == older);
    EXPECT_TRUE(n1 == n2);
    n1.setName(S("x"));  // same identity as a, but no instance name
    EXPECT_FALSE(n1 == a);
    EXPECT_FALSE(a == n1);
    EXPECT_EQ(n1.getComponent(S("x")), &n1);  // without an instance name, "Name" stands in

    kaldesign* d2 = design(new kalcomponent(S("v"), S("l"), S("top"), S("1.0")), "rtl");
    EXPECT_TRUE(*inst("u") == *place(d2, "u"));
    EXPECT_TRUE(*inst("u") != *place(d2, "w"));
    d2->owner->setVersion(S("2.0"));
    EXPECT_TRUE(*inst("u") != *d2->getInstance(S("u")));  // the parent designs' owners differ now
    release(d2->owner);
    for (kalcomponent* c : {&a, &b, &older, &n1, &n2})
        releaseLeftovers(c);
}

TEST_F(component, port_buses_make_and_link_their_bits) {
    kalport* existing = pin("", "x[1]", 1);
    EXPECT_EQ(top->addPortbus(S("u"), S("e"), 0, 3, 2, nullptr), 1);
    EXPECT_EQ(top->addPortbus(S("x"), S("x"), 2, 0, 2, nullptr), 1);
    EXPECT_EQ(top->addPortbus(S("u"), S("u"), 1, 0, 2, nullptr), 0);
    using bus = std::tuple<const char*, int, int>;
    for (auto [name, msb, lsb] : {bus{"u", 0, 3}, bus{"x", 2, 0}}) {
        kalportbus* pb = top->getPortbus(S(name), false);
        std::vector<kalport*> slots;  // slot 0 holds the msb bit
        for (int i = msb, step = msb > lsb ? -1 : 1; i != lsb + step; i += step) {
            kalport* bit = top->getPort(S((name + ('[' + std::to_string(i) + ']')).c_str()), false);
            ASSERT_TRUE(bit && pb && bit->getBus() == pb) << name << i;
            EXPECT_EQ(pb->portAtIndex(i), bit);
            slots.push_back(bit);
        }
        EXPECT_EQ(pb->getBits(), slots) << name;
    }
    EXPECT_EQ(*top->getPort(S("u[2]"), false)->getSecondName(), "e[2]");
    EXPECT_EQ(top->getPort(S("x[1]"), false), existing);  // reused as it was
    EXPECT_EQ(existing->getDirection(), 1);
}
