// SPDX-License-Identifier: Apache-2.0
// Port management of a component: renaming and removing ports and port
// buses, with the records that announce the changes.
#include <tuple>

#include "support/model.h"

using lines = std::vector<std::string>;
using ints = std::vector<int>;
using ports = std::vector<kalport*>;
using ptrs = std::vector<const void*>;

class portmgmt : public modeltest {
protected:
    kalport* port(const char* name) { return top->getPort(S(name), false); }
};

TEST_F(portmgmt, port_and_port_bus_renames) {
    for (const char* name : {"a", "c", "g[2]"})
        pin("", name, 1);
    pin("u1", "x", 1);
    top->addPortbus(S("d"), S("d"), 3, 0, 1, nullptr);
    top->addPortbus(S("h"), S("h"), 0, 0, 1, nullptr);
    top->addPortbus(S("q"), S("q"), 0, 3, 1, nullptr);  // made low to high: slot 0 holds q[0]
    kalrecorder::clear();
    auto maps = [&] { return std::make_tuple(top->data->ports, top->data->portbuses); };
    const auto before = maps();
    const auto& [named, buses] = before;
    // A name taken, empty, unknown or missing; a bus name whose bit g[2] or whose bus h is taken.
    EXPECT_EQ((ints{top->changePortName(S("a"), S("c")), top->changePortName(S("a"), S("")),
                    top->changePortName(S("zz"), S("w")), top->changePortName(nullptr, S("w")),
                    top->changePortbusName(S("d"), S("g")), top->changePortbusName(S("d"), S("h")),
                    top->changePortbusName(S("d"), S("")), top->changePortbusName(nullptr, S("e"))}),
              ints(8));
    EXPECT_EQ(maps(), before);
    EXPECT_MODEL_OK(top);

    // Its own name is accepted without a record; a renamed bit keeps its slot; bits follow by slot.
    EXPECT_EQ((ints{top->changePortName(S("a"), S("a")), top->changePortbusName(S("d"), S("d")),
                    top->changePortName(S("a"), S("b")), top->changePortName(S("h[0]"), S("z")),
                    inst("u1")->changePortName(S("x"), S("y")), top->changePortbusName(S("d"), S("e")),
                    top->changePortbusName(S("q"), S("s"))}),
              ints(7, 1));
    EXPECT_EQ(records(), (lines{"port/rnm oname=top/a nname=top/b", "port/rnm oname=top/h[0] nname=top/z",
                                "port/rnm oname=u1/x nname=u1/y", "portbus/rnm oname=top/d nname=top/e",
                                "portbus/rnm oname=top/q nname=top/s"}));
    EXPECT_EQ(buses.at("h")->getBits(), (ports{named.at("h[0]")}));
    EXPECT_EQ(buses.at("d")->getBits(), (ports{port("e[3]"), port("e[2]"), port("e[1]"), port("e[0]")}));
    EXPECT_EQ(buses.at("q")->getBits(), (ports{port("s[0]"), port("s[1]"), port("s[2]"), port("s[3]")}));
    EXPECT_EQ((lines{*named.at("a")->getSecondName(), *port("e[2]")->getSecondName()}), (lines{"b", "e[2]"}));
}

TEST_F(portmgmt, removals) {
    pin("", "a", 1);
    top->addPortbus(S("d"), S("d"), 3, 0, 1, nullptr);
    for (const char* bus : {"p", "r"})
        top->addPortbus(S(bus), S(bus), 1, 0, 1, nullptr);
    inst("u1")->addPortbus(S("xb"), S("xb"), 1, 0, 2, nullptr);
    kalnet* n1 = wire("n1", {{"u1", "x", 1}, {"", "p[1]", 1}});
    wire("n0", {{"", "p[0]", 1}});
    wire("n2", {{"u1", "xb[0]", 2}});
    kalnet* m = wire("m", {{"", "r[0]", 1}});
    kalport* d3 = port("d[3]");
    EXPECT_EQ(top->removePort(S("a")), 1);
    EXPECT_EQ(top->removePort(S("d[1]")), 1);          // its whole bus goes first; the other bits stay
    EXPECT_EQ(top->removePortbus(S("p")), 1);          // the bits stay; each wired bit's net is announced
    EXPECT_EQ(inst("u1")->removePortbus(S("xb")), 1);  // no port of a root component is on its net
    EXPECT_EQ(top->deletePortbus(S("r")), 1);          // one record per bit in slot order, none for the bus
    EXPECT_EQ((ints{top->removePort(S("a")), top->removePortbus(S("zz")), top->deletePortbus(nullptr)}),
              ints(3));
    EXPECT_EQ(records(),
              (lines{"port/rem topport=top/a", "portbus/rem topportbus=top/d", "port/rem topport=top/d[1]",
                     "portbus/rem topportbus=top/p", "net/add net=top::rtl/n1 topport=top/p[1]",
                     "net/add net=top::rtl/n0 topport=top/p[0]", "portbus/rem topportbus=u1/xb",
                     "net/add net=top::rtl/n2", "port/rem topport=top/r[1]",
                     "connect/rem net=top::rtl/m port=top/r[0]", "port/rem topport=top/r[0]"}));
    // No port bus is left and m has lost its port; d[3], d[2], d[0], p[1] and p[0] stay.
    EXPECT_EQ(top->data->portbuses.size() + inst("u1")->data->portbuses.size() + m->getPorts().size(), 0u);
    EXPECT_EQ(top->data->ports.size(), 5u);
    EXPECT_EQ((ptrs{port("d[3]"), d3->getBus(), port("p[1]")->getBus(), port("p[1]")->getNet()}),
              (ptrs{d3, nullptr, nullptr, n1}));
}
