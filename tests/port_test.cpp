// Ports and port buses: bus slot order, equality seen through connected ports,
// export links between ports and between port buses, the port bus to net bus
// links, and what each side leaves behind when it is destroyed.
#include <algorithm>
#include <memory>
#include <utility>

#include "kaldata.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {

using portlist = std::vector<kalport*>;
using lines = std::vector<std::string>;
using pins = std::vector<std::pair<const char*, int>>;

kalport* port(kalcomponent* c, const std::string& name) {
    return c->getPort(&name, false);
}

std::string bit(const std::string& bus, unsigned i) {
    return bus + "[" + std::to_string(i) + "]";
}

}  // namespace

class portmodel : public recorded {
protected:
    void TearDown() override {
        for (auto it = roots.rbegin(); it != roots.rend(); ++it)
            release(*it);
        recorded::TearDown();
    }
    kalcomponent* make(const char* name, const pins& ports) {
        auto* c = new kalcomponent(S("v"), S("l"), S(name), S("1.0"));
        for (const auto& p : ports)
            c->addPort(S(p.first), S(p.first), p.second, nullptr);
        return c;
    }
    // Released in reverse order of creation.
    kalcomponent* root(const char* name, const pins& ports) {
        roots.push_back(make(name, ports));
        return roots.back();
    }
    kaldesign* design(kalcomponent* c) {
        c->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        return c->getDesign(&rtl);
    }
    kalcomponent* place(kaldesign* d, const char* instance, kalcomponent* c) {
        std::string name(instance);
        EXPECT_TRUE(d->addInstance(&name, c));
        return c;
    }
    kalnet* net(kaldesign* d, const char* name) {
        d->addNet(S(name), S(name), S(""), nullptr);
        return d->getNet(S(name));
    }
    std::vector<kalcomponent*> roots;
};

TEST_F(portmodel, bus_slots_follow_the_first_bound) {
    kalcomponent* c = root("blk", {});
    for (auto range :
         {std::make_pair(3u, 0u), std::make_pair(0u, 3u), std::make_pair(9u, 6u), std::make_pair(5u, 5u)}) {
        const unsigned msb = range.first, lo = std::min(range.first, range.second),
                       hi = std::max(range.first, range.second);
        const std::string name = "q" + std::to_string(msb) + "_" + std::to_string(range.second);
        ASSERT_EQ(c->addPortbus(S(name.c_str()), S(name.c_str()), msb, range.second, 2, nullptr), 1);
        kalportbus* bus = c->getPortbus(S(name.c_str()), false);
        ASSERT_EQ(bus->getBits().size(), hi - lo + 1);
        for (unsigned i = lo; i <= hi; ++i) {
            kalport* p = bus->portAtIndex(i);
            ASSERT_NE(p, nullptr) << name << " bit " << i;
            EXPECT_EQ(p, port(c, bit(name, i)));
            EXPECT_EQ(*p->getSecondName(), bit(name, i));
            EXPECT_EQ(bus->getBits().at(i > msb ? i - msb : msb - i), p) << name << " bit " << i;
            EXPECT_EQ(p->getBus(), bus);
        }
        EXPECT_EQ(bus->portAtIndex(hi + 1), nullptr);
        if (lo > 0) {
            EXPECT_EQ(bus->portAtIndex(lo - 1), nullptr);
        }
    }

    // Standalone: slots change without touching the ports' bus links.
    kalport x(S("x"), S("x"), 1, nullptr), y(S("y"), S("y"), 1, nullptr);
    kalportbus pb(S("p"), S("p"), 1, 2, 1, nullptr);
    pb.connect(1, &x);
    pb.connect(2, &x);
    pb.connect(3, &y);
    pb.connect(1, nullptr);
    EXPECT_EQ(pb.getBits(), (portlist{&x, &x}));
    EXPECT_EQ(x.getBus(), nullptr);
    pb.disconnect(&x);  // the first slot only
    EXPECT_EQ(pb.getBits(), (portlist{nullptr, &x}));
    pb.disconnect(0u);
    pb.disconnect(2u);
    EXPECT_EQ(pb.getBits(), (portlist{nullptr, nullptr}));
}

TEST_F(portmodel, connected_ports_leave_out_equal_ports) {
    kalcomponent* top = root("top", {});
    kaldesign* d = design(top);
    kalnet* n = net(d, "n");
    kalcomponent* u1 = place(d, "u1", make("blk", {{"p", 1}}));
    kalcomponent* r1 = root("blk", {{"p", 1}, {"o", 2}});
    kalcomponent* r2 = root("blk", {{"p", 1}});
    kalcomponent* r3 = root("blk", {});
    r3->addPort(S("p"), S("other"), 1, nullptr);
    kalport *p1 = port(r1, "p"), *o1 = port(r1, "o"), *p2 = port(r2, "p"), *pu = port(u1, "p");
    EXPECT_TRUE(*p1 == *p2);
    EXPECT_TRUE(*p1 != *pu);
    EXPECT_TRUE(*p1 != *port(r3, "p"));

    n->connect(p1, false);
    n->connect(pu, false);
    n->connect(o1, false);
    n->connect(p2, false);  // an equal port is listed already
    EXPECT_EQ(n->getPorts(), (portlist{p1, pu, o1}));
    EXPECT_EQ(p2->getNet(), nullptr);
    EXPECT_TRUE(p2->getConnectedPorts().empty());
    p2->connect(n);  // the port side alone leaves the list as it is
    EXPECT_EQ(n->getPorts(), (portlist{p1, pu, o1}));
    EXPECT_EQ(p2->getConnectedPorts(), (portlist{pu, o1}));
    EXPECT_EQ(p1->getConnectedPorts(), (portlist{pu, o1}));
    EXPECT_EQ(pu->getConnectedPorts(), (portlist{p1, o1}));
}

TEST_F(portmodel, export_links) {
    kalcomponent* top = root("top", {{"ta", 2}, {"tb", 2}, {"tc", 2}});
    kaldesign* d = design(top);
    kalnet *n1 = net(d, "n1"), *n2 = net(d, "n2");
    kalcomponent* u1 = place(d, "u1", make("blk", {{"a", 2}, {"x", 2}}));
    kalcomponent* u2 = place(d, "u2", make("blk", {{"a", 2}}));
    kalport *a1 = port(u1, "a"), *x1 = port(u1, "x"), *a2 = port(u2, "a");
    kalport *ta = port(top, "ta"), *tb = port(top, "tb"), *tc = port(top, "tc");
    for (kalport* p : {a1, a2, ta, tc})
        n1->connect(p, false);
    n2->connect(tb, false);
    const std::string* exportFrom = S("exportFrom");

    EXPECT_FALSE(x1->exportTo(ta));  // not on a net
    EXPECT_FALSE(x1->exportTo(nullptr));
    EXPECT_FALSE(a1->exportTo(tb));  // on another net
    EXPECT_EQ(tb->getExportedFrom(), nullptr);
    EXPECT_EQ(a1->getExportedTo(), nullptr);
    EXPECT_FALSE(tb->hasAttribute(exportFrom));

    ASSERT_TRUE(a1->exportTo(ta));
    EXPECT_EQ(a1->getExportedTo(), ta);
    EXPECT_EQ(ta->getExportedFrom(), a1);
    EXPECT_EQ(*ta->getAttributeValue(exportFrom), "u1.a");
    ASSERT_TRUE(a2->exportTo(ta));  // takes the target over
    EXPECT_EQ(a1->getExportedTo(), nullptr);
    EXPECT_EQ(ta->getExportedFrom(), a2);
    EXPECT_EQ(*ta->getAttributeValue(exportFrom), "u2.a");
    ASSERT_TRUE(a2->exportTo(tc));  // leaves its old target
    EXPECT_EQ(ta->getExportedFrom(), nullptr);
    EXPECT_EQ(tc->getExportedFrom(), a2);
    EXPECT_TRUE(a2->exportTo(nullptr));
    EXPECT_EQ(a2->getExportedTo(), nullptr);
    EXPECT_EQ(tc->getExportedFrom(), nullptr);
    EXPECT_EQ(*tc->getAttributeValue(exportFrom), "u2.a");
    EXPECT_EQ(*ta->getAttributeValue(exportFrom), "u2.a");

    // An equal net is not the same net.
    kalnet loose(S("n1"), S("n1"), nullptr);
    loose.connect(tb, false);
    ASSERT_TRUE(loose == *n1);
    EXPECT_FALSE(a1->exportTo(tb));
    EXPECT_EQ(tb->getExportedFrom(), nullptr);
}

TEST_F(portmodel, port_bus_export_and_net_bus_links) {
    kalcomponent* top = root("top", {});
    top->addPortbus(S("tq"), S("tq"), 3, 0, 2, nullptr);
    kaldesign* d = design(top);
    ASSERT_TRUE(d->addNetbus(S("d"), S(""), S("d"), 3, 0, nullptr));
    ASSERT_TRUE(d->addNetbus(S("w"), S(""), S("w"), 4, 0, nullptr));
    kalnetbus *nb = d->getNetbus(S("d")), *wide = d->getNetbus(S("w"));
    kalcomponent* u1 = place(d, "u1", make("blk", {}));
    u1->addPortbus(S("q"), S("q"), 3, 0, 2, nullptr);
    u1->addPortbus(S("r"), S("r"), 0, 3, 2, nullptr);
    kalportbus *q = u1->getPortbus(S("q"), false), *r = u1->getPortbus(S("r"), false),
               *tq = top->getPortbus(S("tq"), false);
    kalrecorder::clear();

    EXPECT_FALSE(q->connectToNetbus(wide));
    EXPECT_FALSE(q->connectToNetbus(nullptr));
    EXPECT_FALSE(q->hasConnectedPort());
    EXPECT_EQ(q->getConnectedNetbus(), nullptr);
    ASSERT_TRUE(q->connectToNetbus(nb));
    ASSERT_TRUE(tq->connectToNetbus(nb));
    ASSERT_TRUE(r->connectToNetbus(nb));  // position for position: r[0] joins d[3]
    EXPECT_TRUE(records().empty());
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(q->portAtIndex(i)->getNet(), nb->netAtIndex(i));
        EXPECT_EQ(r->portAtIndex(i)->getNet(), nb->netAtIndex(3 - i));
    }
    EXPECT_EQ(nb->netAtIndex(3)->getPorts(),
              (portlist{q->portAtIndex(3), tq->portAtIndex(3), r->portAtIndex(0)}));
    EXPECT_EQ(q->getConnectedNetbus(), nb);
    EXPECT_EQ(r->getConnectedNetbus(), nb);
    kalnet loose(S("d[2]"), S("d[2]"), nullptr);  // equal to d[2], but in no bus
    loose.connect(r->portAtIndex(1), false);
    EXPECT_EQ(r->getConnectedNetbus(), nullptr);

    q->exportTo(tq);
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(q->portAtIndex(i)->getExportedTo(), tq->portAtIndex(i));
        EXPECT_EQ(*tq->portAtIndex(i)->getAttributeValue(S("exportFrom")), "u1." + bit("q", i));
    }
    EXPECT_EQ(*tq->getAttributeValue(S("exportFrom")), "u1.q");
    EXPECT_EQ(q->getExportedToBus(), tq);
    EXPECT_EQ(r->getExportedToBus(), nullptr);

    // One bit elsewhere: the bus no longer counts as connected to the net bus.
    kalnet* n = net(d, "n");
    n->connect(q->portAtIndex(1), false);
    EXPECT_EQ(q->getConnectedNetbus(), nullptr);
    EXPECT_TRUE(q->hasConnectedPort());
    EXPECT_EQ(records(), lines{"connect/rem net=top::rtl/d[1] port=top/u1/q[1]"});

    q->unexport();
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(q->portAtIndex(i)->getExportedTo(), nullptr);
        EXPECT_EQ(tq->portAtIndex(i)->getExportedFrom(), nullptr);
    }
    EXPECT_EQ(q->getExportedToBus(), nullptr);
}

TEST_F(portmodel, destruction_orders) {
    kalcomponent* top = root("top", {{"ta", 1}});
    kaldesign* d = design(top);
    kalnet *n1 = net(d, "n1"), *n2 = net(d, "n2");
    kalcomponent* u1 = place(d, "u1", make("blk", {{"a", 1}}));
    kalcomponent* r = make("blk", {{"a", 1}});
    r->addPortbus(S("q"), S("q"), 1, 0, 1, nullptr);
    for (kalport* p : {port(top, "ta"), port(r, "q[1]"), port(u1, "a"), port(r, "a")})
        n1->connect(p, false);
    n2->connect(port(r, "q[0]"), false);

    // A dying component's ports leave their nets one record each, in name order.
    kalrecorder::clear();
    release(r);
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/n1 port=blk/a", "connect/rem net=top::rtl/n2 port=blk/q[0]",
                     "connect/rem net=top::rtl/n1 port=blk/q[1]"}));
    EXPECT_EQ(n1->getPorts(), (portlist{port(top, "ta"), port(u1, "a")}));
    EXPECT_TRUE(n2->getPorts().empty());

    // A dying bus clears its bits' links; a dying bit empties its slot.
    auto* pb = new kalportbus(S("p"), S("p"), 1, 0, 1, nullptr);
    kalport keep(S("p[1]"), S("p[1]"), 1, nullptr);
    auto* gone = new kalport(S("p[0]"), S("p[0]"), 1, nullptr);
    pb->connect(1, &keep);
    pb->connect(0, gone);
    keep.setBus(pb);
    gone->setBus(pb);
    delete gone;
    EXPECT_EQ(pb->getBits(), (portlist{&keep, nullptr}));
    delete pb;
    EXPECT_EQ(keep.getBus(), nullptr);

    // The design drops its nets before its instances, so nothing is announced.
    kalrecorder::clear();
    roots.clear();
    release(top);
    EXPECT_TRUE(records().empty());
}
