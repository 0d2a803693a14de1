// Instance removal: detaching ports, pruning nets, dropping exports, and
// leaving no link to the destroyed instance behind.
#include <set>
#include <utility>

#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;
using pins = std::vector<std::pair<const char*, int>>;  // name, direction
}  // namespace

class removal : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1.0"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        d = top->getDesign(&rtl);
    }
    void TearDown() override {
        EXPECT_MODEL_OK(top);
        release(top);
        recorded::TearDown();
    }
    kalcomponent* inst(const char* name, const pins& list) {
        auto* c = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
        for (const auto& p : list)
            c->addPort(S(p.first), S(p.first), p.second, nullptr);
        std::string key(name);
        EXPECT_TRUE(d->addInstance(&key, c));
        return c;
    }
    // A new net joining (port, instance) pairs; an empty instance names a port of top.
    void wire(const char* net, const std::vector<std::pair<const char*, const char*>>& ends) {
        ASSERT_TRUE(d->addNet(S(net), S(net), nullptr, nullptr));
        for (const auto& e : ends)
            ASSERT_TRUE(top->connect(S(net), S(e.first), S(e.second))) << net << " " << e.first;
    }
    bool remove(const char* name) {
        std::string key(name);
        releaseLeftovers(d->getInstance(&key));
        return d->removeInstance(&key);
    }
    static kalport* pin(kalcomponent* c, const std::string& name) { return c->getPort(&name, false); }

    // Every link among what is left leads to an object that is still registered.
    void expectLinksLive() {
        std::set<kalport*> live;
        std::vector<kalcomponent*> comps{top};
        for (auto& e : *d->data->getInstanceMap())
            comps.push_back(e.second);
        for (kalcomponent* c : comps)
            for (auto& p : c->data->ports)
                live.insert(p.second);
        std::set<kalnet*> nets;
        for (auto& e : *d->data->getNetMap())
            nets.insert(e.second);
        std::set<kaldualport*> duals;
        for (auto& e : *d->data->getDualPortMap())
            duals.insert(e.second);
        for (kalnet* n : nets)
            for (kalport* p : n->getPorts()) {
                ASSERT_TRUE(live.count(p)) << "net " << *n->getName() << " holds a dead port";
                EXPECT_EQ(p->getNet(), n);
            }
        for (kalport* p : live) {
            EXPECT_TRUE(!p->getNet() || nets.count(p->getNet())) << *p->getName();
            EXPECT_TRUE(!p->getExportedTo() || live.count(p->getExportedTo())) << *p->getName();
            EXPECT_TRUE(!p->getExportedFrom() || live.count(p->getExportedFrom())) << *p->getName();
            EXPECT_TRUE(!p->getDualPort() || duals.count(p->getDualPort())) << *p->getName();
        }
        for (kaldualport* dp : duals)
            for (kalport* p : dp->getPortList())
                EXPECT_TRUE(live.count(p)) << "dual port " << dp->getName() << " holds a dead port";
    }

    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
};

TEST_F(removal, lone_connection_takes_its_net_along) {
    inst("u1", {{"a", 2}});
    kalcomponent* u2 = inst("u2", {{"b", 1}});
    kalcomponent* u3 = inst("u3", {});
    const std::string added = records().front();
    ASSERT_EQ(added.rfind("design/add ", 0), 0u);
    wire("n1", {{"a", "u1"}, {"b", "u2"}});
    kalrecorder::clear();

    EXPECT_FALSE(d->removeInstance(nullptr));
    EXPECT_TRUE(remove("u1"));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/n1 port=top/u1/a", "connect/rem net=top::rtl/n1 port=top/u2/b",
                     "net/rem net=top::rtl/n1", "design/remove instance=top::rtl/u1"}));
    EXPECT_EQ(records().back(), "design/remove" + added.substr(added.find(' ')));
    EXPECT_EQ(d->getNet(S("n1")), nullptr);
    EXPECT_EQ(pin(u2, "b")->getNet(), nullptr);
    EXPECT_EQ(d->getInstance(S("u1")), nullptr);
    EXPECT_EQ(*d->data->getInstanceList(), (std::list<kalcomponent*>{u2, u3}));

    kalrecorder::clear();
    std::string again("u1");
    EXPECT_FALSE(d->removeInstance(&again));
    EXPECT_TRUE(records().empty());

    // Through the hierarchy, the instance's own name string is what gets passed.
    releaseLeftovers(u3);
    EXPECT_EQ(top->removeComponent(S("top/u3")), 1);
    EXPECT_EQ(records(), lines{"design/remove instance=top::rtl/u3"});
    EXPECT_EQ(d->data->getInstanceMap()->size(), 1u);
    expectLinksLive();
}

TEST_F(removal, nets_keep_only_a_driver_with_a_receiver) {
    inst("u1", {{"a", 2}, {"o", 2}});
    kalcomponent* u2 = inst("u2", {{"b", 1}, {"e", 1}});
    kalcomponent* u3 = inst("u3", {{"c", 2}, {"f", 1}});
    wire("keep", {{"a", "u1"}, {"b", "u2"}, {"c", "u3"}});
    wire("lone", {{"o", "u1"}, {"e", "u2"}, {"f", "u3"}});
    kalrecorder::clear();

    EXPECT_TRUE(remove("u1"));
    EXPECT_EQ(
        records(),
        (lines{"connect/rem net=top::rtl/keep port=top/u1/a", "connect/rem net=top::rtl/lone port=top/u1/o",
               "connect/rem net=top::rtl/lone port=top/u2/e", "connect/rem net=top::rtl/lone port=top/u3/f",
               "net/rem net=top::rtl/lone", "design/remove instance=top::rtl/u1"}));
    ASSERT_NE(d->getNet(S("keep")), nullptr);
    EXPECT_EQ(d->getNet(S("keep"))->getPorts(), (ports{pin(u2, "b"), pin(u3, "c")}));
    EXPECT_EQ(d->getNet(S("lone")), nullptr);
    expectLinksLive();
}

TEST_F(removal, exports_go_before_nets_are_examined) {
    inst("u1", {{"a", 2}, {"x", 2}});
    kalcomponent* u2 = inst("u2", {{"b", 1}});
    wire("m", {{"x", "u1"}, {"b", "u2"}});
    ASSERT_EQ(top->addExport("top/u1/a", true, S(""), nullptr), 1);
    top->removeAttribute(S("ChangeConnect"));
    kalrecorder::clear();

    EXPECT_TRUE(remove("u1"));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/u1_a port=top/u1_a", "port/rem topport=top/u1_a",
                     "connect/rem net=top::rtl/u1_a port=top/u1/a", "net/rem net=top::rtl/u1_a",
                     "export/rem net=top::rtl/u1_a port=a topport=top/u1_a",
                     "connect/rem net=top::rtl/m port=top/u1/x", "connect/rem net=top::rtl/m port=top/u2/b",
                     "net/rem net=top::rtl/m", "design/remove instance=top::rtl/u1"}));
    EXPECT_EQ(pin(top, "u1_a"), nullptr);
    EXPECT_TRUE(d->data->getNetMap()->empty());
    EXPECT_EQ(pin(u2, "b")->getNet(), nullptr);
    ASSERT_NE(top->getAttributeValue(S("ChangeConnect")), nullptr);
    EXPECT_EQ(*top->getAttributeValue(S("ChangeConnect")), "true");
    expectLinksLive();
}

TEST_F(removal, exported_bus_and_dual_port_members_leave_no_dangling_links) {
    kalcomponent* u1 = inst("u1", {{"a", 1}, {"y", 2}});
    u1->addPortbus(S("q"), S("q"), 1, 0, 2, nullptr);
    kalcomponent* u2 = inst("u2", {{"b", 1}, {"z", 2}});
    kalcomponent* u3 = inst("u3", {{"c", 1}});
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    ASSERT_EQ(top->addPort(S("in"), S("in"), 1, nullptr), 1);
    ASSERT_EQ(top->addPort(S("out"), S("out"), 2, nullptr), 1);
    // Without u1/a, net w still has drivers (in, u2/z) and a receiver (out).
    wire("w", {{"in", ""}, {"a", "u1"}, {"z", "u2"}, {"out", ""}});
    d->addPortsToDualPort("dp", {pin(u1, "a"), pin(u2, "b"), pin(u3, "c")});
    d->addPortsToDualPort("pair", {pin(u1, "y"), pin(u2, "z")});
    kalrecorder::clear();

    EXPECT_TRUE(remove("u1"));
    ASSERT_FALSE(records().empty());
    EXPECT_EQ(records().back(), "design/remove instance=top::rtl/u1");
    EXPECT_TRUE(top->data->portbuses.empty());
    EXPECT_EQ(top->data->ports.size(), 2u);  // in, out
    EXPECT_TRUE(d->data->getNetbusMap()->empty());
    ASSERT_EQ(d->data->getNetMap()->size(), 1u);
    ASSERT_NE(d->getNet(S("w")), nullptr);
    EXPECT_EQ(d->getNet(S("w"))->getPorts(), (ports{pin(top, "in"), pin(u2, "z"), pin(top, "out")}));
    // The dual ports are not reworked, but a dying port takes itself out of them.
    ASSERT_NE(d->getDualPort("dp"), nullptr);
    ASSERT_NE(d->getDualPort("pair"), nullptr);
    EXPECT_EQ(d->getDualPort("dp")->getPortList(), (ports{pin(u2, "b"), pin(u3, "c")}));
    EXPECT_EQ(d->getDualPort("pair")->getPortList(), ports{pin(u2, "z")});
    EXPECT_EQ(pin(u2, "z")->getDualPort(), d->getDualPort("pair"));
    expectLinksLive();
}
