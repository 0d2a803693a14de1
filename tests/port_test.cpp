// SPDX-License-Identifier: Apache-2.0
// Ports and buses: the slot order of port buses and net buses, equality seen
// through connected ports, the records of a dying component, and export links.
#include <algorithm>
#include <utility>

#include "support/model.h"

using portlist = std::vector<kalport*>;

class portmodel : public modeltest {
protected:
    // Roots outside top's tree go first, latest first.
    void TearDown() override {
        std::for_each(roots.rbegin(), roots.rend(), release);
        modeltest::TearDown();
    }
    kalcomponent* make(const char* name, const char* input) {
        roots.push_back(new kalcomponent(S("v"), S("l"), S(name), S("1.0")));
        roots.back()->addPort(S(input), S(input), 1, nullptr);
        return roots.back();
    }
    static kalport* port(kalcomponent* c, const std::string& name) { return c->getPort(&name, false); }
    std::vector<kalcomponent*> roots;
};

TEST_F(portmodel, bus_slots_follow_the_first_bound) {
    const std::pair<unsigned, unsigned> ranges[] = {{3, 0}, {0, 3}, {9, 6}, {5, 5}};
    for (auto [msb, lsb] : ranges) {
        const unsigned lo = std::min(msb, lsb), hi = std::max(msb, lsb);
        const std::string name = "q" + std::to_string(msb) + "_" + std::to_string(lsb);
        ASSERT_EQ(inst("u1")->addPortbus(&name, &name, msb, lsb, 2, nullptr), 1);
        ASSERT_TRUE(d->addNetbus(&name, S(""), &name, msb, lsb, nullptr));
        kalportbus* pb = inst("u1")->getPortbus(&name, false);
        kalnetbus* nb = d->getNetbus(&name);
        ASSERT_EQ(pb->getBits().size(), hi - lo + 1);
        ASSERT_EQ(nb->getBits().size(), hi - lo + 1);
        for (unsigned i = lo; i <= hi; ++i) {
            const std::string bit = name + "[" + std::to_string(i) + "]";
            const std::size_t slot = i > msb ? i - msb : msb - i;  // slot 0 holds the first bound
            kalport* p = port(inst("u1"), bit);
            kalnet* n = d->getNet(&bit);
            ASSERT_TRUE(p && n) << bit;
            EXPECT_TRUE(pb->portAtIndex(i) == p && pb->getBits().at(slot) == p) << bit;
            EXPECT_TRUE(nb->netAtIndex(i) == n && nb->getBits().at(slot) == n) << bit;
        }
        for (unsigned outside : {hi + 1, lo - 1})
            EXPECT_TRUE(!pb->portAtIndex(outside) && !nb->netAtIndex(outside)) << name << ' ' << outside;
    }
}

TEST_F(portmodel, connected_ports_and_a_dying_component) {
    kalcomponent *r1 = make("blk", "p"), *r2 = make("blk", "p");
    r1->addPort(S("o"), S("o"), 2, nullptr);
    kalport *p1 = port(r1, "p"), *o1 = port(r1, "o"), *p2 = port(r2, "p"), *pu = pin("u1", "p", 1);
    kalnet* n = wire("n", {});
    for (kalport* p : {p1, pu, o1, p2})
        n->connect(p, false);
    EXPECT_EQ(n->getPorts(), (portlist{p1, pu, o1}));  // p2 equals p1
    // The port side alone leaves the list as it is.
    p2->connect(n);
    EXPECT_EQ(n->getPorts(), (portlist{p1, pu, o1}));
    EXPECT_EQ(p2->getConnectedPorts(), (portlist{pu, o1}));
    EXPECT_EQ(p1->getConnectedPorts(), (portlist{pu, o1}));
    EXPECT_EQ(pu->getConnectedPorts(), (portlist{p1, o1}));

    // A dying component's ports leave their nets one record each, in name order.
    roots.erase(roots.begin());
    release(r1);
    EXPECT_EQ(records(), (std::vector<std::string>{"connect/rem net=top::rtl/n port=blk/o",
                                                   "connect/rem net=top::rtl/n port=blk/p"}));
    EXPECT_EQ(n->getPorts(), portlist{pu});
}

TEST_F(portmodel, export_links) {
    wire("n", {{"u1", "a", 2}, {"u2", "a", 2}, {"", "ta", 2}, {"", "tc", 2}});
    kalnet elsewhere(S("n"), S("n"), nullptr);  // equal to n, but not n
    elsewhere.connect(pin("", "tb", 2), false);
    kalport *a1 = pin("u1", "a", 2), *a2 = pin("u2", "a", 2), *x1 = pin("u1", "x", 2);
    kalport *ta = pin("", "ta", 2), *tb = pin("", "tb", 2), *tc = pin("", "tc", 2);
    const struct {
        kalport *from, *to;
        bool ok;
        kalport *a1To, *a2To;
    } steps[] = {{x1, ta, false, nullptr, nullptr},  // not on a net
                 {a1, tb, false, nullptr, nullptr},  // on an equal net, not its own
                 {a1, ta, true, ta, nullptr},        // links both ways
                 {a2, ta, true, nullptr, ta},        // takes the target over
                 {a2, tc, true, nullptr, tc},        // and leaves it again
                 {a2, nullptr, true, nullptr, nullptr}};
    for (const auto& s : steps) {
        EXPECT_EQ(s.from->exportTo(s.to), s.ok);
        EXPECT_EQ(a1->getExportedTo(), s.a1To);
        EXPECT_EQ(a2->getExportedTo(), s.a2To);
        EXPECT_MODEL_OK(top);  // every target points back, and no former one still does
    }
    // The source is remembered where it was exported to, also after unexport.
    const std::string* exportFrom = S("exportFrom");
    EXPECT_FALSE(tb->hasAttribute(exportFrom));
    EXPECT_EQ(*ta->getAttributeValue(exportFrom), "u2.a");
    EXPECT_EQ(*tc->getAttributeValue(exportFrom), "u2.a");
}
