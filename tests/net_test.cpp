// SPDX-License-Identifier: Apache-2.0
// Nets and net buses: the records of moving a port between nets, the direction
// table, clock-source marks, bit-net destruction, and the port lookup of large
// nets, which must answer exactly like a scan of the list.
#include <algorithm>
#include <memory>
#include <stdexcept>

#include "support/model.h"

using portlist = std::vector<kalport*>;
using lines = std::vector<std::string>;
using ptrs = std::vector<const void*>;

class netmodel : public modeltest {
protected:
    // Roots outside top's tree go first, latest first, so later ones may sit on earlier ones' nets.
    void TearDown() override {
        std::for_each(roots.rbegin(), roots.rend(), release);
        modeltest::TearDown();
    }
    kalcomponent* make(const char* name, const char* input, bool isRoot = true) {
        auto* c = new kalcomponent(S("v"), S("l"), S(name), S("1.0"));
        if (*input) c->addPort(S(input), S(input), 1, nullptr);
        if (isRoot) roots.push_back(c);
        return c;
    }
    static kalport* port(kalcomponent* c, const std::string& name) { return c->getPort(&name, false); }
    void expectLikeScan(kalnet* n) {
        const portlist on = n->getPorts();
        for (kalport* p : probes)
            EXPECT_EQ(n->isConnectedTo(p),
                      std::any_of(on.begin(), on.end(), [p](auto q) { return *q == *p; }))
                << *p->getName();
    }
    // The first equal entry goes; when the port itself points to an equal net, its
    // own detach finds the net still listing an equal port and removes every one.
    void disconnectLikeScan(kalnet* n, kalport* p) {
        const bool every = p->getNet() && *p->getNet() == *n;
        portlist expected = n->getPorts();
        int taken = 0;
        for (auto it = expected.begin(); it != expected.end();)
            it = **it == *p && (every || !taken++) ? expected.erase(it) : it + 1;
        n->disconnect(p, false);
        EXPECT_EQ(n->getPorts(), expected) << *p->getName();
        expectLikeScan(n);
    }
    std::vector<kalcomponent*> roots;
    portlist probes;
};

TEST_F(netmodel, moves_directions_and_clock_marks) {
    kalnet* n = wire("n", {{"", "ti", 1}, {"u1", "a", 1}, {"u1", "b", 2}, {"", "to", 2}, {"", "tb", 3}});
    kalport *ti = pin("", "ti", 1), *to = pin("", "to", 2), *tb = pin("", "tb", 3), *a = pin("u1", "a", 1),
            *b = pin("u1", "b", 2), *tx = port(make("top", "tx"), "tx");
    n->connect(tx, false);  // tx's component equals top, so it is a top port too
    EXPECT_EQ(n->getTop(), (portlist{ti, to, tb, tx}));
    EXPECT_EQ(n->getSources(), (portlist{ti, b, tb, tx}));
    EXPECT_EQ(n->getSinks(), (portlist{a, to, tb}));

    // a is marked as a clock source in its component's catalogue.
    inst("u1")->getElements()->addElement(S("t"), S("a"), false)->setAttributeValue(S("CLK_SRC"), S("true"));
    kalnet* m = wire("m", {});
    m->connect(a, false);  // leaving n counts as a flagged disconnect
    m->connect(ti, true);
    EXPECT_EQ(inst("u1")->getClockSourceState(), 2);
    n->connect(a, true);
    EXPECT_EQ(inst("u1")->getClockSourceState(), 1);
    a->connect(nullptr);  // from the port side the net is told, once
    EXPECT_EQ(inst("u1")->getClockSourceState(), 2);
    const std::string fromN = "connect/rem net=top::rtl/n port=top/",
                      fromM = "connect/rem net=top::rtl/m port=top/";
    EXPECT_EQ(records(), (lines{fromN + "u1/a", fromN + "ti", fromM + "u1/a", fromN + "u1/a"}));
}

TEST_F(netmodel, net_bus_short_slots_and_bit_deletion) {
    // A bus made from fewer nets than its range: the missing slots are out of range.
    kalnet keep(S("b[2]"), S("b[2]"), nullptr);
    auto* gone = new kalnet(S("b[3]"), S("b[3]"), nullptr);
    kalnetbus* bus = kalnetbus::createNetBus(S("b"), S("b"), 3, 0, {gone, &keep}, nullptr);
    EXPECT_EQ(bus->netAtIndex(2), &keep);
    EXPECT_THROW(bus->netAtIndex(0), std::out_of_range);

    // Deleting one bit net deletes its whole bus (else a leak is reported); its
    // ports leave silently, and the other bits survive without the link.
    gone->connect(pin("u1", "p", 1), false);
    kalrecorder::clear();
    delete gone;
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(pin("u1", "p", 1)->getNet(), nullptr);
    EXPECT_EQ(keep.getBus(), nullptr);
}

// A net keeps its names, text and ports compactly; every state must read back
// exactly, through renames that split the shared second name and join it again.
TEST_F(netmodel, names_texts_and_small_lists_in_every_state) {
    const std::string* none = nullptr;
    kalnet plain(S("p"), S("p"), nullptr), odd(S("o"), S("o2"), S("t"));
    EXPECT_EQ((lines{*plain.getName(), *plain.getSecondName(), *odd.getName(), *odd.getSecondName(),
                     *odd.getText()}),
              (lines{"p", "p", "o", "o2", "t"}));
    EXPECT_EQ(plain.getText(), none);
    kalnet nameless(nullptr, S("x"), S("t"));
    EXPECT_EQ(
        (std::vector<const std::string*>{nameless.getName(), nameless.getSecondName(), nameless.getText()}),
        (std::vector<const std::string*>{none, none, none}));
    nameless.connect(pin("u1", "a", 1), false);  // a net without names has no list
    EXPECT_TRUE(nameless.getPorts().empty());
    EXPECT_EQ(pin("u1", "a", 1)->getNet(), nullptr);

    // A range change renames bit nets by name only (onto names other nets hold);
    // a net rename sets both names, here to the net's own second name.
    top->addNetbus(S("e"), S(""), S("e"), 1, 0, nullptr);
    top->addNet(S("e[3]"), S("e[3]"), S(""), nullptr);
    top->addNet(S("e[2]"), S("e[2]"), S(""), nullptr);
    kalnet *hi = d->getNet(S("e[1]")), *lo = d->getNet(S("e[0]"));
    kalnet* held = d->getNet(S("e[3]"));
    ASSERT_TRUE(d->changeNetBusRange(S("e"), 3, 2));
    EXPECT_EQ((lines{*hi->getName(), *hi->getSecondName()}), (lines{"e[3]", "e[1]"}));
    EXPECT_EQ(d->getNet(S("e[3]")), held);
    // A move onto fresh names is refused, and its roll-back keys the bits under
    // the names they carry: the nets that held those keys lose them. The design
    // frees all four with itself, keyed or not (leak-checked under ASan).
    EXPECT_FALSE(d->changeNetBusRange(S("e"), 5, 4));
    EXPECT_EQ((ptrs{d->getNet(S("e[3]")), d->getNet(S("e[2]"))}), (ptrs{hi, lo}));
    EXPECT_EQ(*held->getName(), "e[3]");
    EXPECT_MODEL_OK(top);
    top->addNet(S("s"), S("s2"), S(""), S("t"));
    kalnet* s = d->getNet(S("s"));
    ASSERT_TRUE(d->changeNetName(S("s"), s->getSecondName()));
    EXPECT_EQ((lines{*s->getName(), *s->getSecondName(), *s->getText()}), (lines{"s2", "s2", "t"}));

    // One port, two, back to none, then the same port again.
    kalnet* n = wire("n", {});
    kalport *a = pin("u1", "a", 1), *b = pin("u2", "b", 2);
    n->connect(a, false);
    n->connect(b, false);
    n->connect(a, false);  // already there
    EXPECT_EQ(n->getPorts(), (portlist{a, b}));
    n->disconnect(a, false);
    EXPECT_EQ(n->getPorts(), (portlist{b}));
    n->disconnect(b, false);
    EXPECT_TRUE(n->getPorts().empty());
    n->connect(b, false);
    EXPECT_EQ(n->getPorts(), (portlist{b}));
    EXPECT_EQ(b->getNet(), n);
}

TEST_F(netmodel, large_net_lookup_answers_like_a_scan) {
    kalnet* n = wire("clk", {{"", "clk", 1}});
    probes = {pin("", "clk", 1)};
    for (int i = 0; i < 100; ++i) {
        const std::string u = "u" + std::to_string(100 + i).substr(1);
        n->connect(pin(u.c_str(), "clk", 1), false);
        probes.insert(probes.end(), {pin(u.c_str(), "clk", 1), pin(u.c_str(), "aux", 1)});
    }
    auto clk = [this](int i) { return probes[1 + 2 * i]; };
    // Ports equal to listed ones: an instance in an equal twin tree, and equal roots.
    kalcomponent *twin = make("top", ""), *t50 = make("blk", "clk", false), *late = make("tmp", "clk", false);
    twin->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
    std::string rtl("rtl"), u50("u50"), u07("u07");
    ASSERT_TRUE(twin->getDesign(&rtl)->addInstance(&u50, t50));
    kalport *twin50 = port(t50, "clk"), *e1 = port(make("blk", "clk"), "clk"), *lateClk = port(late, "clk");
    kalport *e2 = port(make("blk", "clk"), "clk"), *e3 = port(make("blk", "late"), "late");
    late->setName(S("blk"));  // connected first, placed as u07 below
    for (kalport* p : {e1, e2, e3, lateClk})
        n->connect(p, false);
    probes.insert(probes.end(), {twin50, e1, e2, e3, lateClk});
    EXPECT_EQ(n->getPorts().size(), 104u);  // e2 is equal to e1
    expectLikeScan(n);

    ASSERT_TRUE(twin->getDesign(&rtl)->addInstance(&u07, late));
    EXPECT_TRUE(*lateClk == *clk(7));
    expectLikeScan(n);
    // u99/aux is on no net; twin50 takes our u50's entry.
    for (kalport* p : {clk(7), clk(0), probes[200], twin50})
        disconnectLikeScan(n, p);
    n->connect(clk(50), false);  // u50 still points here, so it is only listed again

    // Renames re-key listed ports, and can make two listed ports equal.
    ASSERT_EQ(inst("u10")->changePortName(S("clk"), S("ck")), 1);
    expectLikeScan(n);
    ASSERT_EQ(e3->getComponent()->changePortName(S("late"), S("clk")), 1);
    EXPECT_TRUE(*e3 == *e1);
    expectLikeScan(n);
    disconnectLikeScan(n, e2);  // e1's entry goes, e3's stays
    disconnectLikeScan(n, e3);
    ASSERT_EQ(inst("u10")->changePortName(S("ck"), S("clk")), 1);
    disconnectLikeScan(n, clk(10));

    // A port that moved to an equal net elsewhere stays listed here, under its new name too.
    auto loose = std::make_unique<kalnet>(S("clk"), S("clk"), nullptr);
    loose->connect(clk(20), false);
    ASSERT_EQ(inst("u20")->changePortName(S("clk"), S("c20")), 1);
    disconnectLikeScan(n, clk(20));
    disconnectLikeScan(n, clk(21));
    loose.reset();
    expectLikeScan(n);
}

// Taking ports out of the middle of a large net leaves holes that are later
// squeezed out; order, lookups and renames must stay exactly as with a scan.
TEST_F(netmodel, large_net_order_survives_middle_removals_and_squeezing) {
    kalnet* n = wire("clk", {});
    for (int i = 0; i < 120; ++i) {
        const std::string u = "u" + std::to_string(1000 + i).substr(1);
        n->connect(pin(u.c_str(), "clk", 1), false);
        probes.push_back(pin(u.c_str(), "clk", 1));
    }
    for (int i = 1; i < 120; i += 2) {
        disconnectLikeScan(n, probes[i]);
        if (i % 20 == 1) {  // a rename while holes are in the list
            ASSERT_EQ(probes[i + 1]->getComponent()->changePortName(S("clk"), S("ck")), 1);
            expectLikeScan(n);
        }
    }
    n->connect(probes[1], false);  // back in, at the end
    disconnectLikeScan(n, probes[0]);
    disconnectLikeScan(n, probes[118]);  // the last one before the re-added port
    expectLikeScan(n);
    EXPECT_EQ(n->getPorts().size(), 59u);
    EXPECT_EQ(n->getPorts().back(), probes[1]);
}
