// Dual port management of a design: merging ports, splitting them again,
// dual port buses, and the records each step sends.
#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;
}  // namespace

// Root with instance name "top", own Name "Chip" and design "rtl", so that every
// path shows which of the three names it is built from.
class dualpin : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1.0"));
        top->setName(S("Chip"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        d = top->getDesign(&rtl);
        for (const char* name : {"u1", "u2", "u3"}) {
            auto* c = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
            c->addPort(S("a"), S("a"), 2, nullptr);
            c->addPort(S("b"), S("b"), 1, nullptr);
            std::string key(name);
            d->addInstance(&key, c);
        }
        kalrecorder::clear();
    }
    void TearDown() override {
        EXPECT_MODEL_OK(top);
        release(top);
        recorded::TearDown();
    }
    kalport* pin(const char* instance, const char* name) {
        return d->getInstance(S(instance))->getPort(S(name), false);
    }
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
};

TEST_F(dualpin, insert_and_merge) {
    auto* first = new kaldualport("dp");
    d->insertDualPort("dp", first);
    EXPECT_EQ(d->getDualPort("dp"), first);
    EXPECT_EQ(first->getDesign(), d);
    auto* late = new kaldualport("dp");
    d->insertDualPort("dp", late);  // taken: neither side changes
    EXPECT_EQ(d->getDualPort("dp"), first);
    EXPECT_EQ(late->getDesign(), nullptr);
    delete late;
    EXPECT_EQ(records(), lines{"dualpin/add dualpin=top::Chip/dp"});

    kalrecorder::clear();
    kalport* a = pin("u1", "a");
    d->addPortToDualPort("m", a);
    d->addPortToDualPort("m", a);
    d->addPortToDualPort("", a);
    d->addPortToDualPort("m", nullptr);
    kaldualport* m = d->getDualPort("m");
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->getName(), "m");
    EXPECT_EQ(m->getDesign(), d);
    EXPECT_EQ(m->getPortList(), ports{a});
    EXPECT_EQ(a->getDualPort(), m);
    EXPECT_EQ(records(), (lines{"dualpin/add dualpin=top::Chip/m", "dualpin/add dualpin=top::Chip/m"}));
}

TEST_F(dualpin, splitting_reports_and_dissolves) {
    ASSERT_TRUE(d->addNet(S("n"), S("n"), nullptr, nullptr));
    ASSERT_TRUE(top->connect(S("n"), S("a"), S("u1")));
    ASSERT_TRUE(top->connect(S("n"), S("a"), S("u2")));
    kalnet* n = d->getNet(S("n"));
    d->addPortToDualPort("m", pin("u1", "a"));
    d->addPortToDualPort("m", pin("u2", "a"));
    d->addPortsToDualPort("w", {pin("u1", "b"), pin("u2", "b"), pin("u3", "b")});
    kalrecorder::clear();

    // Two ports, one taken out: the dual port is gone and the other port is free again.
    d->removePortFromDualPort("m", pin("u1", "a"));
    EXPECT_EQ(records(), lines{"dualpin/remove dualpin=top::rtl/n port=top::rtl/u1/a"});
    EXPECT_EQ(d->getDualPort("m"), nullptr);
    EXPECT_EQ(pin("u1", "a")->getDualPort(), nullptr);
    EXPECT_EQ(pin("u2", "a")->getDualPort(), nullptr);
    EXPECT_EQ(pin("u1", "a")->getNet(), n);

    // The net is asked of the port, then of its dual port; with none the dual port's path is sent.
    kalrecorder::clear();
    d->removePortFromDualPort("w", pin("u1", "b"));
    EXPECT_EQ(records(), lines{"dualpin/remove dualpin=top::Chip/w port=top::rtl/u1/b"});
    d->addPortToDualPort("w", pin("u1", "b"));
    ASSERT_TRUE(d->addNet(S("k"), S("k"), nullptr, nullptr));
    ASSERT_TRUE(top->connect(S("k"), S("b"), S("u3")));
    kalrecorder::clear();
    d->removePortFromDualPort("w", pin("u1", "b"));
    d->removePortFromDualPort("w", pin("u1", "a"));  // not a member: reported all the same
    d->removePortFromDualPort("nope", pin("u2", "b"));
    d->removePortFromDualPort("", pin("u2", "b"));
    EXPECT_EQ(records(), (lines{"dualpin/remove dualpin=top::rtl/k port=top::rtl/u1/b",
                                "dualpin/remove dualpin=top::rtl/n port=top::rtl/u1/a"}));
    ASSERT_NE(d->getDualPort("w"), nullptr);
    EXPECT_EQ(d->getDualPort("w")->getPortList(), (ports{pin("u2", "b"), pin("u3", "b")}));
    EXPECT_EQ(pin("u1", "b")->getDualPort(), nullptr);

    // By name: silent, and dissolving all the same.
    kalrecorder::clear();
    d->removePortFromDualPort("w", std::string("u2/x"));
    ASSERT_NE(d->getDualPort("w"), nullptr);
    d->removePortFromDualPort("w", std::string("u2/b"));
    EXPECT_EQ(d->getDualPort("w"), nullptr);
    EXPECT_EQ(pin("u2", "b")->getDualPort(), nullptr);
    EXPECT_EQ(pin("u3", "b")->getDualPort(), nullptr);
    EXPECT_TRUE(records().empty());
}

TEST_F(dualpin, dual_port_buses) {
    d->removeDualPortBus("nope");
    EXPECT_EQ(records(), lines{"dualpinbus/remove dualpinbus=nope"});

    d->addPortsToDualPort("x0", {pin("u1", "a"), pin("u2", "a")});
    auto* odd = new kaldualport("own");
    odd->addPort(pin("u3", "a"));
    d->insertDualPort("k", odd);  // key differs from its own name
    kaldualport* x0 = d->getDualPort("x0");
    kaldualportbus* bus = kaldualportbus::createDualPortBus("B", 1, 0, {x0, odd});
    ASSERT_NE(bus, nullptr);
    kalrecorder::clear();
    EXPECT_TRUE(d->insertDualPortBus("B", bus));
    EXPECT_EQ(bus->getDesign(), d);
    kaldualportbus other("B", 0, 0);
    EXPECT_FALSE(d->insertDualPortBus("B", &other));
    EXPECT_FALSE(d->insertDualPortBus("", &other));
    EXPECT_FALSE(d->insertDualPortBus("C", nullptr));
    EXPECT_EQ(other.getDesign(), nullptr);
    EXPECT_EQ(d->getDualPortbus("B"), bus);
    EXPECT_EQ(records(), lines{"dualpinbus/add dualpinbus=B"});

    kalrecorder::clear();
    d->deleteDualPortBus("B");
    EXPECT_EQ(d->getDualPortbus("B"), nullptr);
    EXPECT_EQ(d->getDualPort("x0"), nullptr);
    EXPECT_EQ(pin("u1", "a")->getDualPort(), nullptr);
    EXPECT_EQ(pin("u2", "a")->getDualPort(), nullptr);
    ASSERT_EQ(d->getDualPort("k"), odd);  // deleted by its own name "own", which is no key
    EXPECT_EQ(odd->getBus(), nullptr);
    EXPECT_EQ(odd->getPortList(), ports{pin("u3", "a")});
    d->deleteDualPortBus("B");
    EXPECT_TRUE(records().empty());
}

TEST_F(dualpin, design_without_owner_is_silent) {
    auto* solo = new kaldesign(S("v"), S("l"), S("solo"), S("1.0"));
    auto* c = new kalcomponent(S("v"), S("l"), S("free"), S("1.0"));
    c->addPort(S("a"), S("a"), 1, nullptr);
    c->addPort(S("b"), S("b"), 1, nullptr);
    kalport* a = c->getPort(S("a"), false);
    kalport* b = c->getPort(S("b"), false);

    solo->insertDualPort("p", new kaldualport("p"));
    solo->addPortToDualPort("q", a);
    solo->addPortsToDualPort("q", {b});
    kaldualportbus bus("B", 0, 0);
    EXPECT_TRUE(solo->insertDualPortBus("B", &bus));
    ASSERT_NE(solo->getDualPort("p"), nullptr);
    ASSERT_NE(solo->getDualPort("q"), nullptr);
    EXPECT_EQ(solo->getDualPort("q")->getPortList(), (ports{a, b}));

    solo->removePortFromDualPort("q", a);  // member name: the component's Name, "free/a"
    EXPECT_EQ(solo->getDualPort("q"), nullptr);
    EXPECT_EQ(b->getDualPort(), nullptr);
    solo->removeDualPortBus("B");
    EXPECT_EQ(solo->getDualPortbus("B"), nullptr);
    EXPECT_TRUE(records().empty());
    delete solo;
    release(c);
}
