// Design core: instances, nets and net buses, lookups, virtual elements,
// relative names, source ports, equality, and what a teardown leaves behind.
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using nets = std::vector<kalnet*>;
}  // namespace

// A root component "top" with one design "rtl".
class design : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = make("top");
        std::string rtl("rtl");
        top->createDesign(S("acme"), S("lib"), S("rtl"), S("1.0"));
        d = top->getDesign(&rtl);
        ASSERT_NE(d, nullptr);
    }
    void TearDown() override {
        if (top) release(top);
        recorded::TearDown();
    }
    kalcomponent* make(const char* name) { return new kalcomponent(S("acme"), S("lib"), S(name), S("1.0")); }
    kalcomponent* place(kaldesign* in, const char* name, kalcomponent* c) {
        std::string key(name);
        EXPECT_TRUE(in->addInstance(&key, c));
        return c;
    }
    kaldesign* inner(kalcomponent* c, const char* name) {
        std::string key(name);
        c->createDesign(S("acme"), S("lib"), S(name), S("1.0"));
        return c->getDesign(&key);
    }
    kalport* port(kalcomponent* c, const char* name, int direction) {
        c->addPort(S(name), S(name), direction, nullptr);
        return c->getPort(S(name), false);
    }
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
};

TEST_F(design, add_instance_registers_and_reports) {
    top->setName(S("TopName"));  // paths use the instance name of the owner
    std::string name("u1");
    kalcomponent* u1 = make("leaf");
    ASSERT_TRUE(d->addInstance(&name, u1));
    name = "changed";  // the design keeps its own copy
    ASSERT_NE(u1->data->instanceName, nullptr);
    EXPECT_EQ(*u1->data->instanceName, "u1");
    EXPECT_EQ(u1->parentDesign, d);
    kalcomponent* u0 = place(d, "u0", make("leaf"));
    EXPECT_EQ(*d->data->getInstanceList(), (std::list<kalcomponent*>{u1, u0}));
    ASSERT_EQ(d->data->getInstanceMap()->size(), 2u);
    EXPECT_EQ(d->data->getInstanceMap()->begin()->second, u0);
    EXPECT_EQ(records(), (std::vector<std::string>{"design/add instance=top::rtl/u1",
                                                   "design/add instance=top::rtl/u0"}));

    std::string dup("u1");
    kalcomponent* other = make("other");
    EXPECT_FALSE(d->addInstance(&dup, other));
    EXPECT_EQ(*other->data->instanceName, "other");
    EXPECT_EQ(other->parentDesign, nullptr);
    EXPECT_EQ(d->getInstance(&dup), u1);
    EXPECT_EQ(records().size(), 2u);
    release(other);

    kalrecorder::setNullObjects(true);
    kalcomponent* u2 = place(d, "u2", make("leaf"));
    kalrecorder::setNullObjects(false);
    EXPECT_EQ(u2->parentDesign, d);
    EXPECT_EQ(d->getInstance(S("u2")), u2);
    EXPECT_EQ(d->data->getInstanceList()->back(), u2);
    EXPECT_EQ(records().size(), 2u);
}

TEST_F(design, nets_and_net_buses) {
    ASSERT_TRUE(d->addNet(S("n"), S("n2"), S("internal"), S("text")));
    kalnet* n = d->getNet(S("n"));
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->getDesign(), d);
    EXPECT_EQ(*n->getAttributeValue(S("type")), "internal");
    EXPECT_EQ(n->getVendorMap().at("type"), "SPIRIT");
    EXPECT_FALSE(d->addNet(S("n"), S("x"), nullptr, nullptr));
    EXPECT_EQ(d->getNet(S("n")), n);
    ASSERT_TRUE(d->addNet(S("m"), S("m"), S(""), nullptr));
    EXPECT_FALSE(d->getNet(S("m"))->hasAttribute(S("type")));

    ASSERT_TRUE(d->addNetbus(S("d"), S("t"), S("s"), 3, 0, nullptr));
    kalnetbus* bus = d->getNetbus(S("d"));
    ASSERT_NE(bus, nullptr);
    EXPECT_EQ(bus->getDesign(), d);
    EXPECT_EQ(*bus->getAttributeValue(S("type")), "t");
    nets expected{d->getNet(S("d[3]")), d->getNet(S("d[2]")), d->getNet(S("d[1]")), d->getNet(S("d[0]"))};
    EXPECT_EQ(bus->getBits(), expected);
    for (kalnet* bit : expected) {
        ASSERT_NE(bit, nullptr);
        EXPECT_EQ(bit->getBus(), bus);
        EXPECT_EQ(bit->getDesign(), d);
        EXPECT_EQ(*bit->getAttributeValue(S("type")), "t");
    }
    EXPECT_EQ(*d->getNet(S("d[1]"))->getSecondName(), "s[1]");
    EXPECT_EQ(d->data->getNetMap()->size(), 6u);  // stops after index 0

    ASSERT_TRUE(d->addNetbus(S("a"), S(""), S("a"), 0, 2, nullptr));
    EXPECT_EQ(d->getNetbus(S("a"))->getBits(),
              (nets{d->getNet(S("a[0]")), d->getNet(S("a[1]")), d->getNet(S("a[2]"))}));
    EXPECT_FALSE(d->getNetbus(S("a"))->hasAttribute(S("type")));
    EXPECT_FALSE(d->addNetbus(S("a"), nullptr, S("a"), 5, 4, nullptr));
    EXPECT_EQ(d->data->getNetMap()->size(), 9u);

    ASSERT_TRUE(d->addNet(S("r[1]"), S("x"), nullptr, nullptr));
    kalnet* existing = d->getNet(S("r[1]"));
    ASSERT_TRUE(d->addNetbus(S("r"), S("t"), S("r"), 2, 0, nullptr));
    EXPECT_EQ(d->getNetbus(S("r"))->netAtIndex(1), existing);
    EXPECT_EQ(existing->getBus(), d->getNetbus(S("r")));
    EXPECT_EQ(*existing->getSecondName(), "x");
    EXPECT_FALSE(existing->hasAttribute(S("type")));
    EXPECT_TRUE(records().empty());
}

TEST_F(design, lookups_and_virtual_elements) {
    kalcomponent* b = place(d, "b", make("leaf"));
    kalcomponent* a = place(d, "a", make("leaf"));
    place(d, "c", make("leaf"));
    kalport* tp = port(top, "tp", 1);
    kalport* p = port(a, "p", 2);
    EXPECT_EQ(d->getInstance(S("")), top);
    EXPECT_EQ(d->getInstance(S("a")), a);
    EXPECT_EQ(d->getComponentPort(S("p"), S("a")), p);
    EXPECT_EQ(d->getComponentPort(S("tp"), S("")), tp);
    EXPECT_EQ(d->getComponentPort(S("tp"), nullptr), tp);
    EXPECT_EQ(d->getComponentPort(S("p"), S("zz")), nullptr);

    kalelements* eb = b->getElements();
    kalelement* bz = eb->addElement(S("T"), S("z"), false);
    kalelement* ba = eb->addElement(S("T"), S("a"), false);
    eb->addElement(S("T"), S("m"), false);
    kalelement* aq = a->getElements()->addElement(S("T"), S("q"), false);
    bz->setAttribute(S("UVCCIO"), S("3.3"), S("SPIRIT"));
    ba->setAttribute(S("UVCCIO"), S(""), S("SPIRIT"));  // any value counts
    aq->setAttribute(S("UVCCIO"), S("1.8"), S("SPIRIT"));
    top->getElements()->addElement(S("T"), S("own"), false)->setAttribute(S("UVCCIO"), S("1"), S("SPIRIT"));
    std::list<kalelement*>* first = d->getVirtualElements();
    EXPECT_EQ(*first, (std::list<kalelement*>{aq, ba, bz}));
    EXPECT_EQ(d->getVirtualElements(), first);
    EXPECT_EQ(first->size(), 3u);  // rebuilt, not appended to
    for (kalcomponent* c : {top, a, b})
        for (auto& g : c->getElements()->getGroupMap())
            delete g.second;
}

TEST_F(design, relative_names_and_source_ports) {
    top->setName(S("TopN"));  // a root is named by its "Name"
    kalcomponent* u1 = place(d, "u1", make("mid"));
    kaldesign* impl = inner(u1, "impl");
    kalcomponent* u2 = place(impl, "u2", make("leaf"));
    kalport *ti = port(top, "ti", 1), *to = port(top, "to", 2), *tb = port(top, "tb", 3);
    kalport *p = port(u1, "p", 2), *pi = port(u1, "pi", 1);
    kalport *q = port(u2, "q", 1), *qo = port(u2, "qo", 2);

    EXPECT_EQ(d->getRelativeHierarchyName(p), "u1/p");
    EXPECT_EQ(d->getRelativeHierarchyName(q), "u1/u2/q");
    EXPECT_EQ(d->getRelativeHierarchyName(ti), "TopN/ti");
    EXPECT_EQ(impl->getRelativeHierarchyName(q), "u2/q");
    EXPECT_EQ(impl->getRelativeHierarchyName(p), "TopN/u1/p");
    EXPECT_EQ(d->getRelativeHierarchyName(nullptr), "");

    // Seen from inside, a top input drives; an instance output drives.
    EXPECT_TRUE(d->isSourcePort(ti));
    EXPECT_FALSE(d->isSourcePort(to));
    EXPECT_TRUE(d->isSourcePort(tb));
    EXPECT_TRUE(d->isSourcePort(p));
    EXPECT_FALSE(d->isSourcePort(qo));  // one level too deep
    EXPECT_FALSE(impl->isSourcePort(p));
    EXPECT_TRUE(impl->isSourcePort(pi));
    EXPECT_TRUE(impl->isSourcePort(qo));
    top->addPortbus(S("ib"), S("ib"), 1, 0, 1, nullptr);
    u1->addPortbus(S("ob"), S("ob"), 1, 0, 2, nullptr);
    EXPECT_TRUE(d->isSourcePort(top->getPortbus(S("ib"), false)));
    EXPECT_TRUE(d->isSourcePort(u1->getPortbus(S("ob"), false)));
    EXPECT_FALSE(impl->isSourcePort(u1->getPortbus(S("ob"), false)));
}

TEST_F(design, equality_is_identity_and_owners) {
    kalcomponent* twin = make("top");
    std::string rtl("rtl"), other("other");
    twin->createDesign(S("acme"), S("lib"), S("rtl"), S("1.0"));
    kaldesign* same = twin->getDesign(&rtl);
    same->addNet(S("only_here"), S("x"), nullptr, nullptr);
    EXPECT_TRUE(*d == *same);  // contents are not compared
    EXPECT_FALSE(*d != *same);
    twin->setVersion(S("2.0"));
    EXPECT_TRUE(*d != *same);  // owners differ now
    top->createDesign(S("acme"), S("lib"), S("other"), S("1.0"));
    EXPECT_TRUE(*d != *top->getDesign(&other));
    release(twin);
}

TEST_F(design, instances_outlive_remove_all_and_teardown_is_silent) {
    kalcomponent* u1 = place(d, "u1", make("leaf"));
    kalcomponent* u2 = place(d, "u2", make("leaf"));
    kalport* p = port(u1, "p", 2);
    kalport* a = port(top, "a", 2);
    d->addNet(S("n"), S("n"), nullptr, nullptr);
    kalnet* n = d->getNet(S("n"));
    n->connect(p, true);
    n->connect(a, true);
    kalrecorder::clear();

    d->removeAllInstances();
    EXPECT_TRUE(d->data->getInstanceMap()->empty());
    EXPECT_TRUE(d->data->getInstanceList()->empty());
    EXPECT_EQ(u1->parentDesign, d);
    EXPECT_EQ(*u1->data->instanceName, "u1");
    EXPECT_EQ(p->getNet(), n);
    EXPECT_TRUE(records().empty());

    // A port that dies while on a net leaves it with one record.
    release(u1);
    EXPECT_EQ(n->getPorts(), (std::vector<kalport*>{a}));
    EXPECT_EQ(records(), (std::vector<std::string>{"connect/rem net=top::rtl/n port=top/u1/p"}));
    release(u2);
    kalrecorder::clear();

    // A full tree: nets and net buses go before instances and top ports, so
    // nothing is left on a net when the ports die and no record is sent.
    kalcomponent* m = place(d, "m", make("mid"));
    kaldesign* impl = inner(m, "impl");
    kalcomponent* leaf = place(impl, "x", make("leaf"));
    impl->addNet(S("i"), S("i"), nullptr, nullptr);
    impl->getNet(S("i"))->connect(port(m, "mi", 1), true);
    impl->getNet(S("i"))->connect(port(leaf, "li", 1), true);
    d->addNetbus(S("nb"), nullptr, S("nb"), 1, 0, nullptr);
    top->addPortbus(S("tb"), S("tb"), 1, 0, 2, nullptr);
    m->addPortbus(S("mb"), S("mb"), 1, 0, 2, nullptr);
    for (unsigned i = 0; i < 2; ++i) {
        d->getNetbus(S("nb"))->netAtIndex(i)->connect(top->getPortbus(S("tb"), false)->portAtIndex(i), true);
        d->getNetbus(S("nb"))->netAtIndex(i)->connect(m->getPortbus(S("mb"), false)->portAtIndex(i), true);
    }
    n->connect(port(m, "mo", 2), true);
    ASSERT_EQ(n->getPorts().size(), 2u);
    kalrecorder::clear();
    release(top);
    top = nullptr;
    EXPECT_TRUE(records().empty());
}
