// Port management of a component: adding, finding, renaming and removing
// ports and port buses, with the records that announce the changes.
#include <algorithm>
#include <sstream>

#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;

// Keys, names, bus and net links of every port and port bus, for rollback checks.
lines state(kalcomponent* c) {
    lines out;
    for (auto& [key, p] : c->data->ports) {
        std::ostringstream s;
        s << key << "->" << p << ' ' << *p->getName() << '|' << *p->getSecondName() << '|' << p->getBus()
          << '|' << p->getNet();
        out.push_back(s.str());
    }
    for (auto& [key, b] : c->data->portbuses) {
        std::ostringstream s;
        s << key << "=>" << b << ' ' << *b->getName() << '|' << *b->getSecondName();
        for (kalport* p : b->getBits())
            s << ' ' << p;
        out.push_back(s.str());
    }
    return out;
}

// Every port is registered under its name and linked both ways to its bus and its net.
void expectLinked(kalcomponent* c) {
    for (auto& [key, p] : c->data->ports) {
        EXPECT_EQ(*p->getName(), key);
        EXPECT_EQ(p->getComponent(), c) << key;
        if (kalportbus* b = p->getBus()) {
            const ports bits = b->getBits();
            EXPECT_NE(std::find(bits.begin(), bits.end(), p), bits.end()) << key;
            EXPECT_EQ(c->getPortbus(b->getName(), false), b) << key;
        }
        if (p->getNet()) {
            EXPECT_TRUE(p->getNet()->isConnectedTo(p)) << key;
        }
    }
    for (auto& [key, b] : c->data->portbuses) {
        EXPECT_EQ(*b->getName(), key);
        EXPECT_EQ(b->getComponent(), c) << key;
        for (kalport* p : b->getBits())
            if (p) {
                EXPECT_EQ(p->getBus(), b) << key;
                EXPECT_EQ(c->getPort(p->getName(), false), p) << key;
            }
    }
}
}  // namespace

// Root component "top" with design "rtl" and instance u1 carrying port x and port bus xb[1:0].
class portmgmt : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1.0"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        d = top->getDesign(&rtl);
        u1 = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
        u1->addPort(S("x"), S("x"), 1, nullptr);
        u1->addPortbus(S("xb"), S("xb"), 1, 0, 2, nullptr);
        std::string n("u1");
        ASSERT_TRUE(d->addInstance(&n, u1));
        kalrecorder::clear();
    }
    void TearDown() override {
        EXPECT_MODEL_OK(top);
        release(top);
        recorded::TearDown();
    }
    kalport* port(const char* name) { return top->getPort(S(name), false); }
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
    kalcomponent* u1 = nullptr;
};

TEST_F(portmgmt, port_renames) {
    top->addPort(S("a"), S("a"), 1, nullptr);
    top->addPort(S("c"), S("c"), 1, nullptr);
    top->addPortbus(S("d"), S("d"), 1, 0, 1, nullptr);
    top->addNet(S("n"), S("n"), S(""), nullptr);
    top->connect(S("n"), S("a"), S(""));
    kalport* a = port("a");
    kalrecorder::clear();
    const lines before = state(top);
    EXPECT_EQ(top->changePortName(S("a"), S("a")), 1);
    EXPECT_EQ(top->changePortName(S("a"), S("c")), 0);
    EXPECT_EQ(top->changePortName(S("a"), S("")), 0);
    EXPECT_EQ(top->changePortName(S(""), S("q")), 0);
    EXPECT_EQ(top->changePortName(S("zz"), S("q")), 0);
    EXPECT_EQ(top->changePortName(nullptr, S("q")), 0);
    EXPECT_EQ(top->changePortName(S("a"), nullptr), 0);
    EXPECT_EQ(state(top), before);
    EXPECT_TRUE(records().empty());

    EXPECT_EQ(top->changePortName(S("a"), S("b")), 1);
    EXPECT_EQ(records(), (lines{"port/rnm oname=top/a nname=top/b"}));
    EXPECT_EQ(port("b"), a);
    EXPECT_EQ(port("a"), nullptr);
    EXPECT_EQ(*a->getSecondName(), "b");
    EXPECT_EQ(a->getNet(), d->getNet(S("n")));

    // A renamed bit stays in its slot; an instance's port is named by its instance name.
    kalrecorder::clear();
    kalport* d0 = port("d[0]");
    EXPECT_EQ(top->changePortName(S("d[0]"), S("z")), 1);
    EXPECT_EQ(d0->getBus(), top->getPortbus(S("d"), false));
    EXPECT_EQ(top->getPortbus(S("d"), false)->portAtIndex(0), d0);
    EXPECT_EQ(u1->changePortName(S("x"), S("y")), 1);
    EXPECT_EQ(records(), (lines{"port/rnm oname=top/d[0] nname=top/z", "port/rnm oname=u1/x nname=u1/y"}));
    EXPECT_EQ(top->getPort(S("top/u1/y"), true),
              u1->getPort(S("y"), false));  // a path from the asked component
    EXPECT_EQ(top->getPort(S("top/u1/y"), false), nullptr);
    EXPECT_EQ(top->getPort(S("u1/y"), true), nullptr);
    expectLinked(top);
    expectLinked(u1);
}

TEST_F(portmgmt, port_bus_renames) {
    top->addPortbus(S("d"), S("d"), 3, 0, 1, nullptr);
    top->addPortbus(S("h"), S("h"), 0, 0, 1, nullptr);
    top->addPort(S("g[2]"), S("g[2]"), 1, nullptr);
    kalportbus* db = top->getPortbus(S("d"), false);
    const ports bits = db->getBits();
    kalrecorder::clear();
    const lines before = state(top);
    EXPECT_EQ(top->changePortbusName(S("d"), S("g")), 0);  // g[2] is taken by a scalar port
    EXPECT_EQ(top->changePortbusName(S("d"), S("h")), 0);
    EXPECT_EQ(top->changePortbusName(S("d"), S("")), 0);
    EXPECT_EQ(top->changePortbusName(S("zz"), S("e")), 0);
    EXPECT_EQ(top->changePortbusName(nullptr, S("e")), 0);
    EXPECT_EQ(top->changePortbusName(S("d"), S("d")), 1);
    EXPECT_EQ(state(top), before);
    EXPECT_TRUE(records().empty());

    EXPECT_EQ(top->changePortbusName(S("d"), S("e")), 1);
    EXPECT_EQ(records(), (lines{"portbus/rnm oname=top/d nname=top/e"}));
    EXPECT_EQ(top->getPortbus(S("e"), false), db);
    EXPECT_EQ(top->getPortbus(S("d"), false), nullptr);
    EXPECT_EQ(*db->getSecondName(), "e");
    EXPECT_EQ(bits, (ports{port("e[3]"), port("e[2]"), port("e[1]"), port("e[0]")}));
    EXPECT_EQ(db->getBits(), bits);
    EXPECT_EQ(*bits[1]->getSecondName(), "e[2]");
    for (const char* old : {"d[3]", "d[2]", "d[1]", "d[0]"})
        EXPECT_EQ(port(old), nullptr) << old;

    // A bus made low to high holds its lowest bit in slot 0, and its bits are renamed by slot.
    ASSERT_EQ(top->addPortbus(S("q"), S("q"), 0, 3, 2, nullptr), 1);
    EXPECT_EQ(top->getPortbus(S("q"), false)->getBits(),
              (ports{port("q[0]"), port("q[1]"), port("q[2]"), port("q[3]")}));
    const ports low = top->getPortbus(S("q"), false)->getBits();
    EXPECT_EQ(top->changePortbusName(S("q"), S("s")), 1);
    EXPECT_EQ(low, (ports{port("s[0]"), port("s[1]"), port("s[2]"), port("s[3]")}));
    expectLinked(top);
}

TEST_F(portmgmt, removals) {
    top->addPort(S("a"), S("a"), 1, nullptr);
    top->addPortbus(S("d"), S("d"), 3, 0, 1, nullptr);
    kalport* d3 = port("d[3]");
    kalrecorder::clear();
    EXPECT_EQ(top->removePort(S("a")), 1);
    EXPECT_EQ(port("a"), nullptr);
    EXPECT_EQ(top->removePort(S("a")), 0);
    EXPECT_EQ(top->removePort(nullptr), 0);
    EXPECT_EQ(top->removePortbus(S("zz")), 0);
    EXPECT_EQ(top->removePortbus(nullptr), 0);
    EXPECT_EQ(top->deletePortbus(S("zz")), 0);
    EXPECT_EQ(top->deletePortbus(nullptr), 0);
    EXPECT_EQ(records(), (lines{"port/rem topport=top/a"}));

    // A bit takes its whole bus first; the other bits stay as scalar ports.
    kalrecorder::clear();
    EXPECT_EQ(top->removePort(S("d[1]")), 1);
    EXPECT_EQ(records(), (lines{"portbus/rem topportbus=top/d", "port/rem topport=top/d[1]"}));
    EXPECT_EQ(top->getPortbus(S("d"), false), nullptr);
    EXPECT_EQ(port("d[1]"), nullptr);
    EXPECT_EQ(port("d[3]"), d3);
    EXPECT_EQ(d3->getBus(), nullptr);
    expectLinked(top);

    // removePortbus keeps the bits and announces each wired bit's net again, naming its first root port.
    top->addPortbus(S("p"), S("p"), 1, 0, 1, nullptr);
    for (const char* n : {"n1", "n0", "n2", "m"})
        top->addNet(S(n), S(n), S(""), nullptr);
    top->connect(S("n1"), S("x"), S("u1"));
    top->connect(S("n1"), S("p[1]"), S(""));
    top->connect(S("n0"), S("p[0]"), S(""));
    kalrecorder::clear();
    EXPECT_EQ(top->removePortbus(S("p")), 1);
    EXPECT_EQ(records(), (lines{"portbus/rem topportbus=top/p", "net/add net=top::rtl/n1 topport=top/p[1]",
                                "net/add net=top::rtl/n0 topport=top/p[0]"}));
    EXPECT_EQ(top->getPortbus(S("p"), false), nullptr);
    ASSERT_NE(port("p[1]"), nullptr);
    EXPECT_EQ(port("p[1]")->getBus(), nullptr);
    EXPECT_EQ(port("p[1]")->getNet(), d->getNet(S("n1")));
    EXPECT_EQ(d->getNet(S("n1"))->getPorts().size(), 2u);

    // An instance's bus: no port of a root component is on the net.
    top->connect(S("n2"), S("xb[0]"), S("u1"));
    kalrecorder::clear();
    EXPECT_EQ(u1->removePortbus(S("xb")), 1);
    EXPECT_EQ(records(), (lines{"portbus/rem topportbus=u1/xb", "net/add net=top::rtl/n2"}));
    EXPECT_NE(u1->getPort(S("xb[1]"), false), nullptr);

    // deletePortbus: one record per bit, in slot order, none for the bus.
    top->addPortbus(S("r"), S("r"), 1, 0, 1, nullptr);
    top->connect(S("m"), S("r[0]"), S(""));
    kalrecorder::clear();
    EXPECT_EQ(top->deletePortbus(S("r")), 1);
    EXPECT_EQ(records(), (lines{"port/rem topport=top/r[1]", "connect/rem net=top::rtl/m port=top/r[0]",
                                "port/rem topport=top/r[0]"}));
    EXPECT_EQ(top->getPortbus(S("r"), false), nullptr);
    EXPECT_EQ(port("r[1]"), nullptr);
    EXPECT_EQ(port("r[0]"), nullptr);
    EXPECT_TRUE(d->getNet(S("m"))->getPorts().empty());
    expectLinked(top);
    expectLinked(u1);
}
