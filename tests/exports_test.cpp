// Exports: instance ports and port buses made ports of the enclosing
// component, and taken back.
#include <algorithm>

#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;

// The records of one kind, sorted, for steps whose inner order is not the point.
lines kind(const lines& all, const std::string& prefix) {
    lines out;
    for (const auto& l : all)
        if (l.rfind(prefix, 0) == 0) out.push_back(l);
    std::sort(out.begin(), out.end());
    return out;
}
}  // namespace

// Root "top" with design "rtl" holding u1 (a out, b in, q[3:0] out) and u2 (b in).
class exports : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1.0"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        d = top->getDesign(&rtl);
        u1 = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
        u1->addPort(S("a"), S("a"), 2, nullptr);
        u1->addPort(S("b"), S("b"), 1, nullptr);
        u1->addPortbus(S("q"), S("q"), 3, 0, 2, nullptr);
        u2 = new kalcomponent(S("v"), S("l"), S("sink"), S("1.0"));
        u2->addPort(S("b"), S("b"), 1, nullptr);
        std::string n1("u1"), n2("u2");
        d->addInstance(&n1, u1);
        d->addInstance(&n2, u2);
        ASSERT_TRUE(d->addNet(S("n"), S("n"), nullptr, nullptr));
        kalrecorder::clear();
    }
    void TearDown() override {
        EXPECT_MODEL_OK(top);
        release(top);
        recorded::TearDown();
    }
    kalport* pin(kalcomponent* c, const std::string& name) { return c->getPort(&name, false); }
    std::string changed() {
        const std::string* v = top->getAttributeValue(S("ChangeConnect"));
        return v ? *v : "<unset>";
    }
    std::string rtl = "rtl";
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
    kalcomponent* u1 = nullptr;
    kalcomponent* u2 = nullptr;
};

TEST_F(exports, scalar_export_wires_a_top_port) {
    EXPECT_EQ(top->addExport("top/u1/zz", true, S(""), nullptr), 0);
    EXPECT_EQ(changed(), "<unset>");
    EXPECT_TRUE(records().empty());

    ASSERT_EQ(top->addExport("top/u1/a", true, S("internal"), nullptr), 1);
    kalport* a = pin(u1, "a");
    kalport* tp = pin(top, "u1_a");
    kalnet* net = d->getNet(S("u1_a"));
    ASSERT_NE(tp, nullptr);
    ASSERT_NE(net, nullptr);
    EXPECT_EQ(tp->getDirection(), 2);
    EXPECT_TRUE(isInternalConnection(net));
    EXPECT_EQ(net->getPorts(), (ports{a, tp}));
    EXPECT_EQ(a->getExportedTo(), tp);
    EXPECT_EQ(tp->getExportedFrom(), a);
    EXPECT_EQ(*tp->getAttributeValue(S("exportFrom")), "u1.a");
    EXPECT_EQ(changed(), "true");
    EXPECT_EQ(records(), lines{"export/add port=top/u1/a topport=top/u1_a net=top::rtl/u1_a"});

    // A connected port keeps its net; the record still names the net after the top port.
    ASSERT_TRUE(top->connect(S("n"), S("b"), S("u1")));
    kalrecorder::clear();
    ASSERT_EQ(top->addExport("top/u1/b", true, S(""), S("")), 1);  // empty top name: as if none
    kalport* tb = pin(top, "u1_b");
    ASSERT_NE(tb, nullptr);
    EXPECT_EQ(tb->getDirection(), 1);
    EXPECT_EQ(d->getNet(S("u1_b")), nullptr);
    EXPECT_EQ(d->getNet(S("n"))->getPorts(), (ports{pin(u1, "b"), tb}));
    EXPECT_EQ(pin(u1, "b")->getExportedTo(), tb);
    EXPECT_EQ(records(), lines{"export/add port=top/u1/b topport=top/u1_b net=top::rtl/u1_b"});

    // A top name that is taken: nothing is wired and nothing reported, but the mark is set.
    ASSERT_TRUE(top->connect(S("n"), S("b"), S("u2")));
    ASSERT_EQ(top->addPort(S("busy"), S("busy"), 1, nullptr), 1);
    top->removeAttribute(S("ChangeConnect"));
    kalrecorder::clear();
    EXPECT_EQ(top->addExport("top/u2/b", true, S(""), S("busy")), 1);
    EXPECT_EQ(pin(u2, "b")->getExportedTo(), nullptr);
    EXPECT_EQ(pin(top, "busy")->getNet(), nullptr);
    EXPECT_EQ(d->getNet(S("n"))->getPorts().size(), 3u);
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(changed(), "true");
}

TEST_F(exports, bus_export_wires_bits_position_for_position) {
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    kalportbus* q = u1->getPortbus(S("q"), false);
    kalportbus* tq = top->getPortbus(S("u1_q"), false);
    kalnetbus* nb = d->getNetbus(S("u1_q"));
    ASSERT_NE(tq, nullptr);
    ASSERT_NE(nb, nullptr);
    EXPECT_EQ(tq->getDirection(), 2);
    for (unsigned i = 0; i <= 3; ++i) {
        ASSERT_NE(nb->netAtIndex(i), nullptr);
        EXPECT_EQ(nb->netAtIndex(i)->getPorts(), (ports{q->portAtIndex(i), tq->portAtIndex(i)})) << i;
        EXPECT_EQ(q->portAtIndex(i)->getExportedTo(), tq->portAtIndex(i)) << i;
    }
    EXPECT_EQ(q->getExportedToBus(), tq);
    EXPECT_EQ(*tq->getAttributeValue(S("exportFrom")), "u1.q");
    EXPECT_EQ(changed(), "true");
    EXPECT_EQ(records(), lines{"export/add portbus=top/u1/q topportbus=top/u1_q netbus=top::rtl/u1_q"});
}

TEST_F(exports, scalar_removal_drops_top_port_and_dangling_net) {
    EXPECT_EQ(top->removeExport("top/u1/a", true), 0);  // never exported
    EXPECT_EQ(top->removeExport("top/u1/zz", true), 0);
    EXPECT_TRUE(records().empty());

    ASSERT_EQ(top->addExport("top/u1/a", true, S(""), nullptr), 1);
    top->removeAttribute(S("ChangeConnect"));
    kalrecorder::clear();
    EXPECT_EQ(top->removeExport("top/u1/a", true), 1);
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/u1_a port=top/u1_a", "port/rem topport=top/u1_a",
                                "connect/rem net=top::rtl/u1_a port=top/u1/a", "net/rem net=top::rtl/u1_a",
                                "export/rem net=top::rtl/u1_a port=a topport=top/u1_a"}));
    EXPECT_EQ(pin(top, "u1_a"), nullptr);
    EXPECT_EQ(d->getNet(S("u1_a")), nullptr);
    EXPECT_EQ(pin(u1, "a")->getNet(), nullptr);
    EXPECT_EQ(pin(u1, "a")->getExportedTo(), nullptr);
    EXPECT_EQ(changed(), "true");

    // A net that still joins a driver to a receiver survives, and the record leaves it out.
    ASSERT_TRUE(top->connect(S("n"), S("a"), S("u1")));
    ASSERT_TRUE(top->connect(S("n"), S("b"), S("u2")));
    ASSERT_EQ(top->addExport("top/u1/a", true, S(""), nullptr), 1);
    kalrecorder::clear();
    EXPECT_EQ(top->removeExport("top/u1/a", true), 1);
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/n port=top/u1_a", "port/rem topport=top/u1_a",
                                "export/rem port=a topport=top/u1_a"}));
    EXPECT_EQ(d->getNet(S("n"))->getPorts(), (ports{pin(u1, "a"), pin(u2, "b")}));
    EXPECT_EQ(pin(top, "u1_a"), nullptr);
}

TEST_F(exports, bus_removal_needs_a_consistent_export) {
    EXPECT_EQ(top->removeExport("top/u1/q", true), 0);  // bits on no net
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    kalportbus* q = u1->getPortbus(S("q"), false);

    // A second top port on one bit net breaks the export apart: refused, nothing touched.
    ASSERT_EQ(top->addPort(S("extra"), S("extra"), 1, nullptr), 1);
    ASSERT_TRUE(top->connect(S("u1_q[1]"), S("extra"), S("")));
    top->removeAttribute(S("ChangeConnect"));
    kalrecorder::clear();
    EXPECT_EQ(top->removeExport("top/u1/q", true), 0);
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(changed(), "<unset>");
    EXPECT_EQ(q->getExportedToBus(), top->getPortbus(S("u1_q"), false));
    EXPECT_EQ(d->getNet(S("u1_q[1]"))->getPorts().size(), 3u);

    ASSERT_TRUE(top->disconnect(S("u1_q[1]"), S("extra"), S("")));
    kalrecorder::clear();
    EXPECT_EQ(top->removeExport("top/u1/q", true), 1);
    const lines got = records();
    ASSERT_FALSE(got.empty());
    EXPECT_EQ(got.back(), "export/rem netbus=top::rtl/u1_q portbus=q topportbus=top/u1_q");
    EXPECT_EQ(kind(got, "port/rem "),
              (lines{"port/rem topport=top/u1_q[0]", "port/rem topport=top/u1_q[1]",
                     "port/rem topport=top/u1_q[2]", "port/rem topport=top/u1_q[3]"}));
    EXPECT_EQ(kind(got, "net/rem "), (lines{"net/rem net=top::rtl/u1_q[0]", "net/rem net=top::rtl/u1_q[1]",
                                            "net/rem net=top::rtl/u1_q[2]", "net/rem net=top::rtl/u1_q[3]"}));
    // Destroying the first bit net takes its whole net bus along.
    EXPECT_EQ(kind(got, "netbus/"), lines{"netbus/rem netbus=top::rtl/u1_q"});
    EXPECT_EQ(top->getPortbus(S("u1_q"), false), nullptr);
    EXPECT_EQ(d->getNetbus(S("u1_q")), nullptr);
    for (unsigned i = 0; i <= 3; ++i) {
        const std::string bit = "u1_q[" + std::to_string(i) + "]";
        EXPECT_EQ(q->portAtIndex(i)->getNet(), nullptr) << i;
        EXPECT_EQ(q->portAtIndex(i)->getExportedTo(), nullptr) << i;
        EXPECT_EQ(pin(top, bit), nullptr) << bit;
    }
    EXPECT_EQ(changed(), "true");

    // When one bit's net keeps a driver and a receiver, the record carries no net bus.
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    ASSERT_TRUE(top->connect(S("u1_q[0]"), S("b"), S("u2")));
    kalrecorder::clear();
    EXPECT_EQ(top->removeExport("top/u1/q", true), 1);
    EXPECT_EQ(kind(records(), "export/"), lines{"export/rem portbus=q topportbus=top/u1_q"});
    ASSERT_NE(d->getNet(S("u1_q[0]")), nullptr);
    EXPECT_EQ(d->getNet(S("u1_q[0]"))->getPorts(), (ports{q->portAtIndex(0), pin(u2, "b")}));
    EXPECT_EQ(top->getPortbus(S("u1_q"), false), nullptr);
}
