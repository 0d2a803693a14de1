// Component core and port registry: identity, parameters, designs, file sets,
// LPC values, lookups by path, element counts, equality, ports and port buses.
#include <algorithm>
#include <memory>
#include <sstream>

#include "kaldata.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
// The catalogue never deletes the type groups that addElement makes.
void freeGroups(kalcomponent* c) {
    for (auto& g : c->getElements()->getGroupMap())
        delete g.second;
}
}  // namespace

class component : public recorded {
protected:
    kalcomponent* make(const char* name) { return new kalcomponent(S("acme"), S("lib"), S(name), S("1.0")); }
    kaldesign* design(kalcomponent* c, const char* name, const char* version = "1.0") {
        std::string key(name);
        EXPECT_EQ(c->createDesign(S("acme"), S("lib"), S(name), S(version)), 1);
        return c->getDesign(&key);
    }
    kalcomponent* place(kaldesign* d, const char* name, kalcomponent* c) {
        std::string key(name);
        EXPECT_TRUE(d->addInstance(&key, c));
        return c;
    }
};

TEST_F(component, construction_identity_and_black_box) {
    std::unique_ptr<kalcomponent> c(make("top"));
    for (const char* key : {"Vendor", "Library", "Name", "Version"})
        EXPECT_EQ(c->identity->getVendorMap().at(key), "SPIRIT") << key;
    EXPECT_EQ(*c->identity->getAttributeValue(S("Library")), "lib");
    ASSERT_NE(c->data->instanceName, nullptr);
    EXPECT_EQ(*c->data->instanceName, "top");
    EXPECT_EQ(c->parentDesign, nullptr);
    EXPECT_EQ(c->getElements()->getOwner(), c.get());

    c->setName(S("renamed"));
    EXPECT_EQ(*c->identity->getAttributeValue(S("Name")), "renamed");
    EXPECT_EQ(*c->data->instanceName, "top");
    EXPECT_EQ(c->getComponent(S("top")), c.get());  // the own name is the instance name
    EXPECT_EQ(c->getComponent(S("renamed")), nullptr);

    // Free attributes live beside the identity, not in it.
    c->setAttribute(S("BBox"), S("True"), S("X"));
    EXPECT_FALSE(c->identity->hasAttribute(S("BBox")));
    EXPECT_FALSE(c->needBBox());
    c->setAttributeValue(S("BBox"), S("true"));
    EXPECT_TRUE(c->needBBox());

    // Black-box pad pins: buses first, then scalar ports, each by name.
    c->addPort(S("b"), S("b"), 1, nullptr);
    c->addPort(S("a"), S("a"), 1, nullptr);
    c->addPort(S("c"), S("c"), 1, nullptr);
    c->addPortbus(S("z"), S("z"), 1, 0, 2, nullptr);
    c->addPortbus(S("y"), S("y"), 1, 0, 2, nullptr);
    for (const char* p : {"b", "a", "z[1]"})
        c->getPort(S(p), false)->setAttribute(S("PadPin"), S("true"), S("SPIRIT"));
    c->getPortbus(S("z"), false)->setAttribute(S("PadPin"), S("true"), S("SPIRIT"), false);
    c->getPortbus(S("y"), false)->setAttribute(S("PadPin"), S("false"), S("SPIRIT"), false);
    std::vector<std::string> names{"kept"};
    EXPECT_EQ(c->initBlackBoxPadPin(names), 0);
    EXPECT_EQ(names, (std::vector<std::string>{"kept", "y", "z", "a", "b", "z[1]"}));

    kalcomponent unnamed(S("acme"), S("lib"), nullptr, S("1.0"));
    EXPECT_EQ(unnamed.data->instanceName, nullptr);
    unnamed.setName(S("late"));
    EXPECT_EQ(unnamed.data->instanceName, nullptr);
    EXPECT_EQ(unnamed.getComponent(S("late")), &unnamed);  // falls back to "Name"
    release(c.release());
    releaseLeftovers(&unnamed);
}

TEST_F(component, parameters_keep_the_first_and_hand_back_on_removal) {
    std::unique_ptr<kalcomponent> c(make("top"));
    auto* first = new kalparameter(S("W"), S("int"), S("8"), S("user"));
    auto* second = new kalparameter(S("W"), S("int"), S("16"), S("user"));
    auto* kept = new kalparameter(S("K"), S("int"), S("1"), S("user"));
    EXPECT_EQ(c->addParameter(S("W"), first), 1);
    EXPECT_EQ(c->addParameter(S("K"), kept), 1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(c->addParameter(S("W"), second), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    std::ostringstream expected;
    expected << "Parameter element W already existed with a value of " << static_cast<const void*>(first)
             << "\n";
    EXPECT_EQ(out, expected.str());
    EXPECT_EQ(c->getParameter(S("W")), first);
    delete second;  // never taken over

    EXPECT_EQ(c->removeParameter(S("none")), 0);
    EXPECT_EQ(c->removeParameter(S("W")), 1);
    EXPECT_EQ(c->getParameter(S("K")), kept);
    delete first;  // the caller owns a removed parameter; "K" goes with the component
    release(c.release());
}

TEST_F(component, designs_are_replaced_and_forgotten_not_destroyed) {
    std::unique_ptr<kalcomponent> c(make("top"));
    EXPECT_EQ(c->addNet(S("n"), S("n"), nullptr, nullptr), 0);  // no design yet
    EXPECT_EQ(c->createDesign(S("acme"), nullptr, S("x"), S("1")), 0);
    kaldesign* rtl = design(c.get(), "rtl");
    kaldesign* beh = design(c.get(), "beh");
    ASSERT_NE(rtl, nullptr);
    EXPECT_EQ(rtl->owner, c.get());

    // Forwards reach the design whose name sorts first.
    EXPECT_EQ(c->addNet(S("n"), S("n"), nullptr, nullptr), 1);
    EXPECT_EQ(c->addNetbus(S("b"), nullptr, S("b"), 1, 0, nullptr), 1);
    EXPECT_NE(beh->getNet(S("n")), nullptr);
    EXPECT_NE(beh->getNetbus(S("b")), nullptr);
    EXPECT_EQ(rtl->getNet(S("n")), nullptr);

    // A top port on a net of the replaced design: the design's teardown frees
    // the port silently and leaves it without a net.
    c->addPort(S("a"), S("a"), 1, nullptr);
    kalport* a = c->getPort(S("a"), false);
    beh->getNet(S("n"))->connect(a, true);
    std::string behName("beh");
    kaldesign* replacement = design(c.get(), "beh", "2.0");
    EXPECT_NE(replacement, beh);
    EXPECT_EQ(c->getDesign(&behName), replacement);
    EXPECT_EQ(c->addNet(S("n"), S("n"), nullptr, nullptr), 1);  // the new, empty design
    delete beh;
    EXPECT_EQ(a->getNet(), nullptr);
    EXPECT_TRUE(records().empty());

    std::string rtlName("rtl");
    EXPECT_EQ(c->deleteDesign(S("unknown")), 1);
    EXPECT_EQ(c->deleteDesign(nullptr), 0);
    EXPECT_EQ(c->deleteDesign(S("rtl")), 1);
    EXPECT_EQ(c->getDesign(&rtlName), nullptr);
    EXPECT_EQ(rtl->owner, c.get());
    delete rtl;
    release(c.release());
}

TEST_F(component, file_sets_files_and_lpc_values) {
    std::unique_ptr<kalcomponent> c(make("top"));
    kalfileset* set = c->addFileSet(S("src"), S("rtl"), nullptr);
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->getOwner(), c.get());
    EXPECT_EQ(c->addFileSet(S("src"), S("other"), S("x")), set);
    EXPECT_EQ(*set->getSecondField(), "rtl");

    kalfile* file = c->addFile(S("src"), S("a.v"), S("verilog"), nullptr);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(c->addFile(S("src"), S("a.v"), S("vhdl"), nullptr), nullptr);
    EXPECT_EQ(c->addFile(S("none"), S("b.v"), S("verilog"), nullptr), nullptr);
    ASSERT_NE(c->addFile(S("src"), S("b.v"), S("verilog"), nullptr), nullptr);
    ASSERT_EQ(set->getFiles().size(), 2u);
    EXPECT_EQ(set->getFiles()[0], file);

    kallpc one("one"), two("two");  // not released by the component
    one.setAttribute(S("A"), S("1"), S("SPIRIT"));
    two.setAttribute(S("A"), S("2"), S("SPIRIT"));
    two.setAttribute(S("B"), S("b"), S("SPIRIT"));
    EXPECT_EQ(c->addLPC(&one), 1);
    EXPECT_EQ(c->addLPC(&two), 1);
    EXPECT_EQ(*c->getLPCValue(S("A")), "1");
    EXPECT_EQ(*c->getLPCValue(S("B")), "b");
    std::string b("B"), none("C");
    EXPECT_EQ(c->hasLPC(&b), 1);
    EXPECT_EQ(c->hasLPC(&none), 0);
    EXPECT_EQ(c->hasLPC(nullptr), 0);
    release(c.release());
}

TEST_F(component, paths_go_through_first_designs_only) {
    kalcomponent* top = make("top");
    kalcomponent* u1 = place(design(top, "rtl"), "u1", make("mid"));
    kalcomponent* u2 = place(design(u1, "impl"), "u2", make("leaf"));
    place(design(top, "zzz"), "u9", make("other"));  // not the first design
    u2->addPort(S("p"), S("p"), 1, nullptr);
    u1->addPortbus(S("b"), S("b"), 1, 0, 1, nullptr);

    EXPECT_EQ(top->getComponent(S("top")), top);
    EXPECT_EQ(top->getComponent(S("other")), nullptr);
    EXPECT_EQ(top->getComponent(S("top/u1")), u1);
    EXPECT_EQ(top->getComponent(S("top/u1/u2")), u2);
    EXPECT_EQ(top->getComponent(S("u1/u2")), nullptr);
    EXPECT_EQ(top->getComponent(S("top/u9")), nullptr);
    EXPECT_EQ(top->getComponent(S("top/u1/u2/u3")), nullptr);  // u2 has no design
    EXPECT_EQ(u2->getComponent(S("u2")), u2);                  // instance name, not "leaf"
    EXPECT_EQ(u2->getComponent(S("leaf")), nullptr);
    kalcomponent solo(S("acme"), S("lib"), S("solo"), S("1"));
    EXPECT_EQ(solo.getComponent(S("solo/u1")), nullptr);

    EXPECT_EQ(top->getPort(S("top/u1/u2/p"), true), u2->getPort(S("p"), false));
    EXPECT_EQ(top->getPort(S("top/u1/u2/p"), false), nullptr);
    EXPECT_EQ(top->getPort(S("u1/u2/p"), true), nullptr);
    EXPECT_EQ(top->getPortbus(S("top/u1/b"), true), u1->getPortbus(S("b"), false));
    EXPECT_EQ(top->getElements(S("top/u1/u2")), u2->getElements());
    release(top);
    releaseLeftovers(&solo);
}

TEST_F(component, element_counts_sum_the_leaves_of_first_designs) {
    kalcomponent* top = make("top");
    kaldesign* rtl = design(top, "rtl");
    kalcomponent* u1 = place(rtl, "u1", make("mid"));
    kalcomponent* u2 = place(design(u1, "impl"), "u2", make("leaf"));
    kalcomponent* u3 = place(rtl, "u3", make("leaf"));
    kalcomponent* empty = make("empty");
    design(empty, "rtl");
    for (kalcomponent* c : {top, u1, empty})
        c->getElements()->addElement(S("T"), S("own"), false);  // not counted: these have designs
    u2->getElements()->addElement(S("T"), S("e1"), false);
    u2->getElements()->addElement(S("U"), S("e2"), false);
    u3->getElements()->addElement(S("T"), S("e3"), false);

    EXPECT_EQ(top->elementCount(), 3u);
    EXPECT_EQ(top->elementCount(S("T")), 2u);
    EXPECT_EQ(top->elementCount(S("U")), 1u);
    EXPECT_EQ(u1->elementCount(), 2u);
    EXPECT_EQ(empty->elementCount(), 0u);
    for (kalcomponent* c : {top, u1, u2, u3, empty})
        freeGroups(c);
    release(top);
    release(empty);
}

TEST_F(component, equality_follows_identity_instance_name_and_parent_design) {
    kalcomponent a(S("v"), S("l"), S("x"), S("1")), b(S("v"), S("l"), S("x"), S("1"));
    kalcomponent older(S("v"), S("l"), S("x"), S("0"));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a == older);
    kalcomponent n1(S("v"), S("l"), nullptr, S("1")), n2(S("v"), S("l"), nullptr, S("1"));
    EXPECT_TRUE(n1 == n2);
    n1.setName(S("x"));  // same identity as a, but no instance name
    EXPECT_FALSE(n1 == a);
    EXPECT_FALSE(a == n1);

    // Equal instance names inside equal designs of equal owners.
    kalcomponent* t1 = make("top");
    kalcomponent* t2 = make("top");
    kalcomponent* t3 = make("top");
    kalcomponent* i1 = place(design(t1, "rtl"), "u", make("leaf"));
    kaldesign* d2 = design(t2, "rtl");
    kalcomponent* i2 = place(d2, "u", make("leaf"));
    kalcomponent* i3 = place(design(t3, "rtl", "2.0"), "u", make("leaf"));
    kalcomponent* i4 = place(d2, "w", make("leaf"));
    EXPECT_TRUE(*i1 == *i2);
    EXPECT_TRUE(*i1 != *i3);  // the designs differ in version
    EXPECT_TRUE(*i2 != *i4);  // different instance names
    for (kalcomponent* c : {t1, t2, t3})
        release(c);
    for (kalcomponent* c : {&a, &b, &older, &n1, &n2})
        releaseLeftovers(c);
}

TEST_F(component, port_buses_make_and_link_their_bits) {
    std::unique_ptr<kalcomponent> c(make("top"));
    EXPECT_EQ(c->addPort(S("a"), S("a2"), 1, nullptr), 1);
    EXPECT_EQ(c->addPort(S("a"), S("other"), 2, nullptr), 0);
    EXPECT_EQ(*c->getPort(S("a"), false)->getSecondName(), "a2");
    EXPECT_EQ(c->getPort(S("a"), false)->getComponent(), c.get());

    EXPECT_EQ(c->addPortbus(S("d"), S("e"), 3, 0, 2, nullptr), 1);
    EXPECT_EQ(c->addPortbus(S("u"), S("u"), 0, 3, 2, nullptr), 1);
    EXPECT_EQ(c->addPortbus(S("d"), S("d"), 1, 0, 2, nullptr), 0);
    EXPECT_EQ(c->data->ports.size(), 9u);
    for (const char* name : {"d", "u"}) {
        kalportbus* bus = c->getPortbus(S(name), false);
        ASSERT_NE(bus, nullptr);
        EXPECT_EQ(bus->getComponent(), c.get());
        std::vector<kalport*> expected;
        for (unsigned i = 0; i < 4; ++i) {
            kalport* bit = c->getPort(
                std::unique_ptr<std::string>(kalutilities::constructBusBit(S(name), i)).get(), false);
            ASSERT_NE(bit, nullptr);
            EXPECT_EQ(bit->getBus(), bus);
            EXPECT_EQ(bus->portAtIndex(i), bit);
            EXPECT_EQ(bit->getComponent(), c.get());
            expected.push_back(bit);
        }
        if (bus->getMsb() == 3) std::reverse(expected.begin(), expected.end());
        EXPECT_EQ(bus->getBits(), expected) << name;  // slot 0 holds the msb bit
    }
    EXPECT_EQ(*c->getPort(S("d[2]"), false)->getSecondName(), "e[2]");

    c->addPort(S("x[1]"), S("old"), 1, nullptr);
    kalport* existing = c->getPort(S("x[1]"), false);
    EXPECT_EQ(c->addPortbus(S("x"), S("x"), 2, 0, 2, nullptr), 1);
    EXPECT_EQ(c->getPort(S("x[1]"), false), existing);
    EXPECT_EQ(existing->getBus(), c->getPortbus(S("x"), false));
    EXPECT_EQ(c->getPortbus(S("x"), false)->portAtIndex(1), existing);
    EXPECT_EQ(*existing->getSecondName(), "old");
    EXPECT_EQ(existing->getDirection(), 1);

    c->addPort(S("a/b"), S("a/b"), 1, nullptr);
    EXPECT_NE(c->getPort(S("a/b"), false), nullptr);
    EXPECT_TRUE(records().empty());
    release(c.release());
}
