// Nets and net buses: membership and its removal records, the direction table,
// clock-source marks, equality, bus slots and bit-net destruction, and the port
// lookup of large nets, which must answer exactly like a scan of the list.
#include <algorithm>
#include <memory>
#include <stdexcept>
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

// Each listed port points back to its net, and each port on a net is listed once.
void expectLinked(const std::vector<kalnet*>& nets, const portlist& ports) {
    for (kalnet* n : nets)
        for (kalport* p : n->getPorts())
            EXPECT_EQ(p->getNet(), n) << *p->getName() << " on " << *n->getName();
    for (kalport* p : ports) {
        if (!p->getNet()) continue;
        portlist on = p->getNet()->getPorts();
        EXPECT_EQ(std::count(on.begin(), on.end(), p), 1) << *p->getName();
    }
}

std::ptrdiff_t scanFirstEqual(kalnet* n, kalport* p) {
    portlist on = n->getPorts();
    for (std::size_t i = 0; i < on.size(); ++i)
        if (*on[i] == *p) return static_cast<std::ptrdiff_t>(i);
    return -1;
}

void expectLikeScan(kalnet* n, const portlist& probes) {
    for (kalport* p : probes)
        EXPECT_EQ(n->isConnectedTo(p), scanFirstEqual(n, p) >= 0) << *p->getName();
}

// The first equal entry goes; when the port itself points to an equal net, its
// own detach finds the net still listing an equal port and repeats the removal.
void disconnectLikeScan(kalnet* n, kalport* p) {
    portlist expected = n->getPorts();
    auto eraseFirstEqual = [&] {
        for (auto it = expected.begin(); it != expected.end(); ++it)
            if (**it == *p) return expected.erase(it), true;
        return false;
    };
    if (eraseFirstEqual() && p->getNet() && *p->getNet() == *n)
        while (eraseFirstEqual()) {
        }
    n->disconnect(p, false);
    EXPECT_EQ(n->getPorts(), expected) << *p->getName();
    EXPECT_EQ(n->isConnectedTo(p), scanFirstEqual(n, p) >= 0) << *p->getName();
}

}  // namespace

class netmodel : public recorded {
protected:
    void TearDown() override {
        for (auto it = roots.rbegin(); it != roots.rend(); ++it)
            release(*it);
        for (kalelementgroup* g : groups)  // a catalogue never deletes its groups
            delete g;
        recorded::TearDown();
    }
    kalcomponent* make(const char* name, const pins& ports) {
        auto* c = new kalcomponent(S("v"), S("l"), S(name), S("1.0"));
        for (const auto& p : ports)
            c->addPort(S(p.first), S(p.first), p.second, nullptr);
        return c;
    }
    // Roots are released in reverse order of creation, so later ones may sit on earlier ones' nets.
    kalcomponent* root(const char* name, const pins& ports) {
        roots.push_back(make(name, ports));
        return roots.back();
    }
    kaldesign* design(kalcomponent* c) {
        c->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        return c->getDesign(&rtl);
    }
    kalcomponent* place(kaldesign* d, const std::string& instance, kalcomponent* c) {
        std::string name(instance);
        EXPECT_TRUE(d->addInstance(&name, c));
        return c;
    }
    kalnet* net(kaldesign* d, const char* name) {
        d->addNet(S(name), S(name), S(""), nullptr);
        return d->getNet(S(name));
    }
    std::vector<kalcomponent*> roots;
    std::vector<kalelementgroup*> groups;
};

TEST_F(netmodel, membership_records_and_clock_marks) {
    kalcomponent* top = root("top", {{"ta", 1}});
    kaldesign* d = design(top);
    kalcomponent* u1 = place(d, "u1", make("blk", {{"a", 1}, {"b", 2}}));
    // a is marked as a clock source in its component's catalogue; b's mark is not exactly "true".
    u1->getElements()->addElement(S("t"), S("a"), false)->setAttributeValue(S("CLK_SRC"), S("true"));
    u1->getElements()->addElement(S("t"), S("b"), false)->setAttributeValue(S("CLK_SRC"), S("True"));
    for (auto& g : u1->getElements()->getGroupMap())
        groups.push_back(g.second);
    kalnet *n1 = net(d, "n1"), *n2 = net(d, "n2");
    kalport *a = port(u1, "a"), *b = port(u1, "b"), *ta = port(top, "ta");
    const portlist all{a, b, ta};
    kalrecorder::clear();

    n1->connect(a, false);
    n1->connect(b, true);
    n1->connect(a, true);  // listed already: nothing at all
    n1->connect(ta, true);
    EXPECT_EQ(u1->getClockSourceState(), 0);
    EXPECT_EQ(n1->getPorts(), (portlist{a, b, ta}));
    EXPECT_TRUE(records().empty());
    expectLinked({n1, n2}, all);

    n2->connect(a, false);  // leaving n1 counts as a flagged disconnect
    EXPECT_EQ(u1->getClockSourceState(), 2);
    n2->connect(ta, true);
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/n1 port=top/u1/a",
                                "connect/rem net=top::rtl/n1 port=top/ta"}));
    EXPECT_EQ(n1->getPorts(), portlist{b});
    EXPECT_EQ(n2->getPorts(), (portlist{a, ta}));
    expectLinked({n1, n2}, all);

    kalrecorder::clear();
    n1->disconnect(a, true);  // a sits on n2
    n1->disconnect(nullptr, true);
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(a->getNet(), n2);
    n2->disconnect(a, false);
    n1->connect(a, true);
    EXPECT_EQ(u1->getClockSourceState(), 1);
    b->connect(nullptr);  // from the port side the net is told, once
    n1->disconnect(a, true);
    EXPECT_EQ(u1->getClockSourceState(), 2);
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/n2 port=top/u1/a", "connect/rem net=top::rtl/n1 port=top/u1/b",
                     "connect/rem net=top::rtl/n1 port=top/u1/a"}));
    EXPECT_TRUE(n1->getPorts().empty());
    expectLinked({n1, n2}, all);

    // Without event objects every change still happens.
    n1->connect(a, true);
    kalrecorder::clear();
    kalrecorder::setNullObjects(true);
    n2->connect(a, true);
    n2->disconnect(ta, true);
    EXPECT_TRUE(kalrecorder::sent().empty());
    EXPECT_TRUE(n1->getPorts().empty());
    EXPECT_EQ(n2->getPorts(), portlist{a});
    EXPECT_EQ(ta->getNet(), nullptr);
    expectLinked({n1, n2}, all);
}

TEST_F(netmodel, sources_sinks_and_top_follow_direction_table) {
    kalcomponent* top = root("top", {{"ti", 1}, {"to", 2}, {"tb", 3}});
    kaldesign* d = design(top);
    kalcomponent* u1 = place(d, "u1", make("blk", {{"a", 1}, {"b", 2}, {"c", 3}}));
    kalcomponent* twin = root("top", {{"tx", 1}});  // equal to top, so its ports are top ports too
    kalnet* n = net(d, "n");
    kalport *ti = port(top, "ti"), *to = port(top, "to"), *tb = port(top, "tb"), *tx = port(twin, "tx");
    kalport *a = port(u1, "a"), *b = port(u1, "b"), *c = port(u1, "c");
    for (kalport* p : {ti, a, b, to, tb, c, tx})
        n->connect(p, false);
    EXPECT_EQ(n->getTop(), (portlist{ti, to, tb, tx}));
    EXPECT_EQ(n->getSources(), (portlist{ti, b, tb, c, tx}));
    EXPECT_EQ(n->getSinks(), (portlist{a, to, tb, c}));
    n->disconnect(tb, false);
    EXPECT_EQ(n->getSources(), (portlist{ti, b, c, tx}));
}

TEST_F(netmodel, equality_of_nets) {
    kalnet a(S("n"), S("n"), nullptr), text(S("n"), S("n"), S("t")), second(S("n"), S("m"), nullptr),
        other(S("x"), S("n"), nullptr);
    EXPECT_TRUE(a == text);
    EXPECT_TRUE(a != second);
    EXPECT_TRUE(a != other);

    kalcomponent* top = root("top", {});
    kalnet* mine = net(design(top), "n");
    kalnet* twins = net(design(root("top", {})), "n");
    kalnet* strangers = net(design(root("other", {})), "n");
    top->createDesign(S("v"), S("l"), S("alt"), S("1.0"));
    std::string alt("alt");
    kalnet* alts = net(top->getDesign(&alt), "n");
    EXPECT_TRUE(*mine == a && a == *mine);  // a net without a design matches any design
    EXPECT_TRUE(*mine == *twins);
    EXPECT_TRUE(*mine != *strangers);
    EXPECT_TRUE(*mine != *alts);
    EXPECT_FALSE(*strangers == *twins);
}

TEST_F(netmodel, bus_slots_follow_the_first_bound) {
    for (auto range :
         {std::make_pair(3u, 0u), std::make_pair(0u, 3u), std::make_pair(6u, 4u), std::make_pair(5u, 5u)}) {
        const unsigned msb = range.first, lo = std::min(range.first, range.second),
                       hi = std::max(range.first, range.second);
        std::vector<std::unique_ptr<kalnet>> bits;  // outlive the bus
        kalnetbus bus(S("d"), S("d"), msb, range.second, nullptr);
        ASSERT_EQ(bus.getBits().size(), hi - lo + 1);
        for (unsigned i = lo; i <= hi; ++i) {
            bits.emplace_back(new kalnet(S("d"), S("d"), nullptr));
            bus.connect(i, bits.back().get());
        }
        for (unsigned i = lo; i <= hi; ++i) {
            kalnet* bit = bits[i - lo].get();
            EXPECT_EQ(bus.netAtIndex(i), bit) << msb << " bit " << i;
            EXPECT_EQ(bus.getBits().at(i > msb ? i - msb : msb - i), bit) << msb << " bit " << i;
            EXPECT_EQ(bit->getBus(), &bus);
        }
        EXPECT_EQ(bus.netAtIndex(hi + 1), nullptr);
        if (lo > 0) {
            EXPECT_EQ(bus.netAtIndex(lo - 1), nullptr);
        }
    }

    // A bus made from fewer nets than its range: the missing slots are out of range.
    kalnet x(S("s[3]"), S("s[3]"), nullptr);
    std::unique_ptr<kalnetbus> shortBus(kalnetbus::createNetBus(S("s"), S("s"), 3, 0, {&x}, nullptr));
    EXPECT_EQ(shortBus->netAtIndex(3), &x);
    EXPECT_EQ(x.getBus(), shortBus.get());
    EXPECT_THROW(shortBus->netAtIndex(0), std::out_of_range);
    EXPECT_EQ(shortBus->netAtIndex(4), nullptr);

    // Only slot 0 is looked at for a source.
    kalcomponent* drv = root("drv", {{"o", 2}});
    kalnet y(S("y"), S("y"), nullptr);
    y.connect(port(drv, "o"), false);
    std::unique_ptr<kalnetbus> driven(kalnetbus::createNetBus(S("y"), S("y"), 1, 0, {&y, nullptr}, nullptr));
    EXPECT_TRUE(driven->hasSoucePortsInNetBus());
    std::unique_ptr<kalnetbus> none(kalnetbus::createNetBus(S("z"), S("z"), 1, 0, {}, nullptr));
    EXPECT_FALSE(none->hasSoucePortsInNetBus());
}

TEST_F(netmodel, bus_links_survive_slot_changes_and_bit_deletion) {
    auto* bus = new kalnetbus(S("b"), S("b"), 2, 0, nullptr);
    auto *x = new kalnet(S("b[2]"), S("b[2]"), nullptr), *y = new kalnet(S("b[1]"), S("b[1]"), nullptr),
         *z = new kalnet(S("b[0]"), S("b[0]"), nullptr), *w = new kalnet(S("w"), S("w"), nullptr);
    bus->connect(2, x);
    bus->connect(1, y);
    bus->connect(0, z);
    bus->disconnect(1u);
    EXPECT_EQ(bus->getBits(), (std::vector<kalnet*>{x, nullptr, z}));
    EXPECT_EQ(y->getBus(), bus);
    bus->connect(0, w);  // z is pushed out but keeps its link
    EXPECT_EQ(z->getBus(), bus);
    kalnet likeX(S("b[2]"), S("b[2]"), nullptr);
    bus->disconnect(&likeX);
    EXPECT_EQ(bus->getBits(), (std::vector<kalnet*>{nullptr, nullptr, w}));
    EXPECT_EQ(x->getBus(), bus);
    bus->connect(2, x);
    bus->connect(1, y);
    z->unsetBus();

    // Deleting one bit net deletes the whole bus; its ports leave silently.
    kalcomponent* c = root("blk", {{"p", 1}});
    x->connect(port(c, "p"), false);
    kalrecorder::clear();
    delete x;
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(port(c, "p")->getNet(), nullptr);
    EXPECT_EQ(y->getBus(), nullptr);
    EXPECT_EQ(w->getBus(), nullptr);
    EXPECT_EQ(*y->getName(), "b[1]");
    delete y;
    delete z;
    delete w;
}

TEST_F(netmodel, large_nets_answer_like_a_scan) {
    kalcomponent* top = root("top", {{"clk", 1}});
    kaldesign* d = design(top);
    kalnet* n = net(d, "clk");
    n->connect(port(top, "clk"), false);
    portlist probes{port(top, "clk")};
    std::vector<kalcomponent*> us;
    for (int i = 0; i < 100; ++i) {
        us.push_back(
            place(d, "u" + std::to_string(100 + i).substr(1), make("blk", {{"clk", 1}, {"aux", 1}})));
        n->connect(port(us.back(), "clk"), false);
        probes.push_back(port(us.back(), "clk"));
        probes.push_back(port(us.back(), "aux"));
    }
    // Ports equal to listed ones: an instance in an equal twin tree, and equal roots.
    kaldesign* td = design(root("top", {}));
    kalport* twin50 = port(place(td, "u50", make("blk", {{"clk", 1}})), "clk");
    kalport* e1 = port(root("blk", {{"clk", 1}}), "clk");
    kalport* e2 = port(root("blk", {{"clk", 1}}), "clk");
    kalcomponent* r3 = root("blk", {{"late", 1}});
    kalport* e3 = port(r3, "late");
    kalcomponent* late = make("tmp", {{"clk", 1}});  // connected first, placed as u07 below
    late->setName(S("blk"));
    for (kalport* p : {e1, e2, e3, port(late, "clk")})
        n->connect(p, false);
    probes.insert(probes.end(), {twin50, e1, e2, e3, port(late, "clk")});
    EXPECT_EQ(n->getPorts().size(), 104u);
    EXPECT_EQ(e2->getNet(), nullptr);  // e1 is listed already
    EXPECT_TRUE(n->isConnectedTo(twin50));
    expectLikeScan(n, probes);
    expectLinked({n}, probes);

    place(td, "u07", late);
    EXPECT_TRUE(*port(late, "clk") == *port(us[7], "clk"));
    expectLikeScan(n, probes);
    disconnectLikeScan(n, port(us[7], "clk"));
    disconnectLikeScan(n, twin50);  // takes our u50's entry; put it back
    n->connect(port(us[50], "clk"), false);
    EXPECT_EQ(n->getPorts().back(), port(us[50], "clk"));
    disconnectLikeScan(n, port(us[0], "clk"));
    disconnectLikeScan(n, port(us[99], "aux"));

    // Renames re-key listed ports, and can make two listed ports equal.
    kalport* renamed = port(us[10], "clk");
    ASSERT_EQ(us[10]->changePortName(S("clk"), S("ck")), 1);
    EXPECT_TRUE(n->isConnectedTo(renamed));
    expectLikeScan(n, probes);
    ASSERT_EQ(r3->changePortName(S("late"), S("clk")), 1);
    EXPECT_TRUE(*e3 == *e1);
    expectLikeScan(n, probes);
    disconnectLikeScan(n, e2);  // e1's entry goes, e3's stays
    EXPECT_TRUE(n->isConnectedTo(e2));
    disconnectLikeScan(n, e3);
    ASSERT_EQ(us[10]->changePortName(S("ck"), S("clk")), 1);
    expectLikeScan(n, probes);
    disconnectLikeScan(n, renamed);
    EXPECT_FALSE(n->isConnectedTo(renamed));
    expectLinked({n}, {probes.begin(), probes.begin() + 201});

    // A port that moved to an equal net elsewhere stays listed here, under its new name too.
    kalport* moved = port(us[20], "clk");
    auto loose = std::make_unique<kalnet>(S("clk"), S("clk"), nullptr);
    loose->connect(moved, false);
    EXPECT_EQ(moved->getNet(), loose.get());
    ASSERT_EQ(us[20]->changePortName(S("clk"), S("c20")), 1);
    EXPECT_TRUE(n->isConnectedTo(moved));
    expectLikeScan(n, probes);
    disconnectLikeScan(n, moved);
    disconnectLikeScan(n, port(us[21], "clk"));
    loose.reset();
    expectLikeScan(n, probes);
}
