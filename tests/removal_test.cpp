// SPDX-License-Identifier: Apache-2.0
// Instance removal: detaching ports, pruning nets, dropping exports, and
// leaving no link to the destroyed instance behind.
#include <list>

#include "support/model.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;
}  // namespace

// A component never frees its generator registry, so each removal below first
// frees what the instance leaves to its caller.
using removal = modeltest;

TEST_F(removal, nets_keep_only_a_driver_with_a_receiver) {
    const ports keep = wire("keep", {{"u1", "a", 2}, {"u2", "b", 1}, {"u3", "c", 2}})->getPorts();
    wire("lone", {{"u1", "o", 2}, {"u2", "e", 1}, {"u3", "f", 1}});
    EXPECT_FALSE(d->removeInstance(nullptr));
    releaseLeftovers(inst("u1"));
    EXPECT_TRUE(d->removeInstance(S("u1")));
    EXPECT_EQ(d->getNet(S("keep"))->getPorts(), (ports{keep[1], keep[2]}));
    EXPECT_FALSE(d->removeInstance(S("u1")));
    // The instance's own name may be what is passed; keep is left with a receiver alone.
    releaseLeftovers(inst("u3"));
    EXPECT_TRUE(d->removeInstance(inst("u3")->data->instanceName));
    EXPECT_EQ(
        records(),
        (lines{"connect/rem net=top::rtl/keep port=top/u1/a", "connect/rem net=top::rtl/lone port=top/u1/o",
               "connect/rem net=top::rtl/lone port=top/u2/e", "connect/rem net=top::rtl/lone port=top/u3/f",
               "net/rem net=top::rtl/lone", "design/remove instance=top::rtl/u1",
               "connect/rem net=top::rtl/keep port=top/u3/c", "connect/rem net=top::rtl/keep port=top/u2/b",
               "net/rem net=top::rtl/keep", "design/remove instance=top::rtl/u3"}));
    EXPECT_TRUE(d->data->getNetMap()->empty());
}

TEST_F(removal, exports_go_first_and_dual_ports_lose_dead_members) {
    pin("u1", "a", 2);
    ASSERT_EQ(top->addExport("top/u1/a", true, S(""), nullptr), 1);
    // Without u1/y, net w still has drivers (in, u2/z) and a receiver (out).
    const ports w = wire("w", {{"", "in", 1}, {"u1", "y", 1}, {"u2", "z", 2}, {"", "out", 2}})->getPorts();
    wire("m", {{"u1", "x", 2}, {"u2", "b", 1}});
    d->addPortsToDualPort("dp", {w[1], pin("u2", "b", 1), pin("u3", "c", 1)});
    d->addPortsToDualPort("pair", {pin("u1", "x", 2), w[2]});
    kalrecorder::clear();
    releaseLeftovers(inst("u1"));
    EXPECT_TRUE(d->removeInstance(S("u1")));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/u1_a port=top/u1_a", "port/rem topport=top/u1_a",
                     "connect/rem net=top::rtl/u1_a port=top/u1/a", "net/rem net=top::rtl/u1_a",
                     "export/rem net=top::rtl/u1_a port=a topport=top/u1_a",
                     "connect/rem net=top::rtl/m port=top/u1/x", "connect/rem net=top::rtl/m port=top/u2/b",
                     "net/rem net=top::rtl/m", "connect/rem net=top::rtl/w port=top/u1/y",
                     "design/remove instance=top::rtl/u1"}));
    EXPECT_EQ(d->getNet(S("w"))->getPorts(), (ports{w[0], w[2], w[3]}));
    EXPECT_EQ(d->data->getNetMap()->size(), 1u);
    EXPECT_EQ(top->data->ports.size(), 2u);  // in, out
    // The dual ports are not reworked, but a dying port takes itself out of them.
    EXPECT_EQ(d->getDualPort("dp")->getPortList(), (ports{pin("u2", "b", 1), pin("u3", "c", 1)}));
    EXPECT_EQ(d->getDualPort("pair")->getPortList(), ports{w[2]});
}

TEST_F(removal, exported_bus_goes_with_its_instance) {
    inst("u1")->addPortbus(S("q"), S("q"), 1, 0, 2, nullptr);
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    releaseLeftovers(inst("u1"));
    EXPECT_TRUE(d->removeInstance(S("u1")));
    EXPECT_EQ(records().back(), "design/remove instance=top::rtl/u1");
    EXPECT_TRUE(top->data->portbuses.empty());
    EXPECT_TRUE(top->data->ports.empty());
    EXPECT_TRUE(d->data->getNetbusMap()->empty());
    EXPECT_TRUE(d->data->getNetMap()->empty());
}

// The instance list keeps placement order through removals; a list changed
// from outside is still answered like std::list::remove.
TEST_F(removal, instance_list_order_matches_a_plain_list) {
    std::list<kalcomponent*> expected;
    for (const char* u : {"a", "b", "c", "d", "e"})
        expected.push_back(inst(u));
    std::list<kalcomponent*>* list = d->data->getInstanceList();
    for (const char* u : {"c", "a"}) {
        expected.remove(inst(u));
        releaseLeftovers(inst(u));
        ASSERT_TRUE(d->removeInstance(S(u)));
        EXPECT_EQ(*list, expected);
    }
    list->push_back(inst("b"));  // an outside edit: b listed twice
    expected.push_back(inst("b"));
    expected.remove(inst("b"));
    releaseLeftovers(inst("b"));
    ASSERT_TRUE(d->removeInstance(S("b")));
    EXPECT_EQ(*list, expected);
    inst("f");
    expected.push_back(inst("f"));
    releaseLeftovers(inst("d"));
    ASSERT_TRUE(d->removeInstance(S("d")));
    expected.remove(expected.front());
    EXPECT_EQ(*list, expected);

    // Lookups by instance name answer as the instance map does, also after outside edits of its size.
    std::map<std::string, kalcomponent*>* map = d->data->getInstanceMap();
    auto agree = [&] {
        for (std::string n : {"a", "b", "c", "d", "e", "f", "g"}) {
            auto it = map->find(n);
            EXPECT_EQ(d->getInstance(&n), it == map->end() ? nullptr : it->second) << n;
        }
    };
    (*map)["g"] = inst("e");
    agree();
    map->erase("g");
    agree();
}
