// SPDX-License-Identifier: Apache-2.0
// Connection and net editing: connect, disconnect with pruning, net and net
// bus renames, range changes and removals, with the records they send.
#include <tuple>

#include "support/model.h"

using lines = std::vector<std::string>;
using ptrs = std::vector<const void*>;

// The record of port `port` (a path below top) leaving net `net` of top's design.
static std::string unhooked(const std::string& net, const std::string& port) {
    return "connect/rem net=top::rtl/" + net + " port=top/" + port;
}

class editing : public modeltest {};

TEST_F(editing, connect_with_and_without_event_objects) {
    kalport* a = pin("", "a", 1);
    pin("u1", "o", 2);
    kalport* p = pin("u1", "p", 2);
    kalnet* n2 = wire("n2", {});
    wire("n1", {});
    EXPECT_TRUE(top->connect(S("n1"), S("a"), S("")));
    EXPECT_TRUE(top->connect(S("n1"), S("o"), S("u1")));
    EXPECT_FALSE(top->connect(S("n1"), S("o"), S("u1")));  // already on it
    EXPECT_FALSE(top->connect(nullptr, S("p"), S("u1")));
    // A path from the owner's own name reaches the instance, but only for connect.
    EXPECT_TRUE(top->connect(S("n2"), S("p"), S("top/u1")));
    EXPECT_FALSE(top->disconnect(S("n2"), S("p"), S("top/u1")));
    // The owner of this design is itself an instance: its port gets no "topport".
    inst("u1")->createDesign(S("v"), S("l"), S("inner"), S("1.0"));
    inst("u1")->addNet(S("m"), S("m"), S(""), nullptr);
    pin("u1", "q", 1);
    EXPECT_TRUE(inst("u1")->connect(S("m"), S("q"), S("")));

    // Without event objects every change still stands: a rename taking the top port along, a pruning.
    kalrecorder::setNullObjects(true);
    EXPECT_TRUE(d->changeNetName(S("n1"), S("n3")));
    EXPECT_EQ(*a->getName(), "n3");
    EXPECT_TRUE(top->disconnect(S("n3"), S("o"), S("u1")));
    EXPECT_EQ((ptrs{p->getNet(), d->getNet(S("n3")), top->getPort(S("n3"), false)}),
              (ptrs{n2, nullptr, nullptr}));
    EXPECT_EQ(records(), (lines{"net/add net=top::rtl/n1 topport=top/a", "net/add net=top::rtl/n1",
                                "net/add net=top::rtl/n2", "net/add net=u1::inner/m"}));
}

TEST_F(editing, disconnect_prunes_nets_without_driver_and_receiver) {
    // Each net loses its last port, u9's port named after the net. Pruned: a lone top inout port; two
    // receivers (a top output is driven from inside); two drivers. Kept: an output and an input; two
    // bidirectionals; a top input and an instance input.
    wire("one", {{"", "a", 3}, {"u9", "one", 1}});
    wire("snk", {{"", "ta", 2}, {"u1", "k", 1}, {"u9", "snk", 2}});
    wire("drv", {{"u1", "p", 2}, {"u2", "p", 2}, {"u9", "drv", 1}});
    wire("kept", {{"u1", "q", 2}, {"u2", "q", 1}, {"u9", "kept", 2}});
    wire("bidi", {{"u1", "b", 3}, {"u2", "b", 3}, {"u9", "bidi", 2}});
    wire("tin", {{"", "ti", 1}, {"u1", "r", 1}, {"u9", "tin", 2}});
    // An exported instance port; the export made its net u4_x and top port u4_x.
    pin("u4", "x", 3);
    ASSERT_EQ(top->addExport("top/u4/x", true, S(""), nullptr), 1);
    kalrecorder::clear();
    for (const char* net : {"one", "snk", "drv", "kept", "bidi", "tin"})
        EXPECT_TRUE(top->disconnect(S(net), S(net), S("u9"))) << net;
    EXPECT_TRUE(top->disconnect(S("u4_x"), S("x"), S("u4")));  // the export goes before the net
    EXPECT_EQ(records(), (lines{unhooked("one", "u9/one"),   unhooked("one", "a"),
                                "port/rem topport=top/a",    "net/rem net=top::rtl/one",
                                unhooked("snk", "u9/snk"),   unhooked("snk", "ta"),
                                "port/rem topport=top/ta",   unhooked("snk", "u1/k"),
                                "net/rem net=top::rtl/snk",  unhooked("drv", "u9/drv"),
                                unhooked("drv", "u1/p"),     unhooked("drv", "u2/p"),
                                "net/rem net=top::rtl/drv",  unhooked("kept", "u9/kept"),
                                unhooked("bidi", "u9/bidi"), unhooked("tin", "u9/tin"),
                                unhooked("u4_x", "u4/x"),    unhooked("u4_x", "u4_x"),
                                "port/rem topport=top/u4_x", "export/rem net= port=x topport=top/u4_x",
                                "net/rem net=top::rtl/u4_x"}));
    EXPECT_EQ(d->data->getNetMap()->size(), 3u);  // kept, bidi, tin
    EXPECT_EQ(top->data->ports.size(), 1u);       // ti
}

TEST_F(editing, net_and_net_bus_renames_and_ranges) {
    kalport* a = pin("", "a", 1);
    wire("n1", {{"u1", "i", 1}, {"", "a", 1}});
    for (const char* net : {"m", "r[0]", "e[3]", "e[2]"})
        wire(net, {});
    top->addNetbus(S("d"), S(""), S("d"), 1, 0, nullptr);
    top->addNetbus(S("e"), S(""), S("e"), 1, 0, nullptr);
    top->addPortbus(S("p"), S("p"), 1, 0, 1, nullptr);
    top->connect(S("d[0]"), S("p[0]"), S(""));
    kalrecorder::clear();
    auto maps = [&] { return std::make_tuple(*d->data->getNetMap(), *d->data->getNetbusMap()); };
    const auto before = maps();
    const auto& [nets, buses] = before;
    // A name taken or missing; for a bus also empty, unchanged, another bus's, or a bit name held by a net.
    // Ranges of another width, onto d[2] that is no key, and onto the bits' own names (dropped first).
    EXPECT_EQ((std::vector<bool>{d->changeNetName(S("n1"), S("m")), d->changeNetName(nullptr, S("q")),
                                 d->changeNetbusName(S("d"), S("")), d->changeNetbusName(S("d"), S("d")),
                                 d->changeNetbusName(S("d"), S("e")), d->changeNetbusName(S("d"), S("r")),
                                 d->changeNetbusName(nullptr, S("q")), d->changeNetBusRange(S("d"), 2, 0),
                                 d->changeNetBusRange(S("d"), 2, 1), d->changeNetBusRange(S("d"), 0, 1)}),
              std::vector<bool>(10));
    EXPECT_EQ(maps(), before);
    EXPECT_MODEL_OK(top);

    EXPECT_TRUE(d->changeNetName(S("n1"), S("n2")));    // the top port first
    EXPECT_TRUE(d->changeNetName(S("m"), S("k")));      // no top port: the net record only
    EXPECT_FALSE(d->changeNetbusName(S("d"), S("q")));  // no top port on bit 1, yet the rename stands
    top->connect(S("q[1]"), S("p[1]"), S(""));
    EXPECT_TRUE(d->changeNetbusName(S("q"), S("t")));
    // A range moves only onto names held by other nets, which keep their entries; nothing is sent.
    EXPECT_TRUE(d->changeNetBusRange(S("e"), 3, 2));
    EXPECT_EQ(
        records(),
        (lines{"port/rnm oname=top/a nname=top/n2", "net/rnm oname=top::rtl/n1 nname=top::rtl/n2",
               "net/rnm oname=top::rtl/m nname=top::rtl/k", "net/add net=top::rtl/q[1] topport=top/p[1]",
               "portbus/rnm oname=top/p nname=top/t", "netbus/rnm oname=top::rtl/q nname=top::rtl/t"}));
    EXPECT_EQ((ptrs{top->getPort(S("n2"), false), d->getNet(S("e[3]"))}), (ptrs{a, nets.at("e[3]")}));
    EXPECT_EQ((lines{*nets.at("n1")->getSecondName(), *nets.at("d[1]")->getSecondName(),
                     *nets.at("e[1]")->getName(), *nets.at("e[0]")->getName()}),
              (lines{"n2", "t[1]", "e[3]", "e[2]"}));
    EXPECT_EQ(std::make_pair(buses.at("e")->getMsb(), buses.at("e")->getLsb()), std::make_pair(3u, 2u));
    // Unreachable by name, yet still the design's: freed with it (leak-checked under ASan).
    EXPECT_MODEL_OK(top);
}

TEST_F(editing, net_and_net_bus_removal) {
    // b: a bit whose bus keeps exactly one wired bit; c: two wired bits are left.
    for (const char* bus : {"b", "r", "w"})
        top->addNetbus(S(bus), S(""), S(bus), 1, 0, nullptr);
    top->addNetbus(S("c"), S(""), S("c"), 2, 0, nullptr);
    wire("b[1]", {{"u1", "x", 1}});
    kalnet* b0 = wire("b[0]", {{"u1", "y", 1}});
    for (const char* bit : {"c[2]", "c[1]", "c[0]"})
        wire(bit, {{"u2", bit, 1}});
    wire("w[1]", {{"u3", "x", 1}});
    kalport* z = pin("u1", "z", 2);
    top->addExport("top/u1/z", true, S(""), S("t"));
    kalnetbus* r = d->getNetbus(S("r"));
    kalrecorder::clear();
    EXPECT_TRUE(d->removeNet(S("b[1]")));
    EXPECT_TRUE(d->removeNet(S("c[2]")));
    EXPECT_TRUE(d->removeNet(S("t")));     // its top port goes, the instance port loses its export
    EXPECT_TRUE(d->removeNetbus(S("r")));  // only unregisters: the bus and its bits live on
    EXPECT_TRUE(d->deleteNetbus(S("w")));  // one net record per bit, none for the bus
    EXPECT_EQ(records(),
              (lines{unhooked("b[1]", "u1/x"), "net/rem net=top::rtl/b[1]", "netbus/rem netbus=top::rtl/b",
                     "netbus/rem netbus=top::rtl/b", unhooked("c[2]", "u2/c[2]"), "net/rem net=top::rtl/c[2]",
                     "netbus/rem netbus=top::rtl/c", unhooked("t", "u1/z"), unhooked("t", "t"),
                     "port/rem topport=top/t", "net/rem net=top::rtl/t", "netbus/rem netbus=top::rtl/r",
                     unhooked("w[1]", "u3/x"), "net/rem net=top::rtl/w[1]", "net/rem net=top::rtl/w[0]"}));
    EXPECT_EQ((ptrs{b0->getBus(), d->getNet(S("c[1]"))->getBus(), z->getExportedTo(),
                    top->getPort(S("t"), false), d->getNet(S("r[1]"))->getBus()}),
              (ptrs{nullptr, nullptr, nullptr, nullptr, r}));
    delete r;  // the caller's now
}

// Lookups by net name go through an index over the net map; after every kind
// of change, and after an edit of the map from outside, they answer as the map does.
TEST_F(editing, net_lookup_answers_like_the_net_map) {
    std::map<std::string, kalnet*>* nets = d->data->getNetMap();
    std::vector<std::string> names;
    for (int i = 0; i < 60; ++i) {
        names.push_back("n" + std::to_string(i));
        top->addNet(&names.back(), &names.back(), S(""), nullptr);
    }
    top->addNetbus(S("b"), S(""), S("b"), 3, 0, nullptr);
    names.insert(names.end(), {"b[0]", "b[3]", "c[0]", "c[3]", "m", "gone", "x"});
    auto agree = [&](const char* step) {
        for (const std::string& n : names) {
            auto it = nets->find(n);
            EXPECT_EQ(d->getNet(&n), it == nets->end() ? nullptr : it->second) << step << ' ' << n;
        }
    };
    agree("built");
    for (int i = 0; i < 60; i += 3)  // the first of each new name wins, the rest are refused
        d->changeNetName(&names[i], S(i % 2 ? "m" : "x"));
    agree("renamed");
    for (int i = 1; i < 60; i += 4)
        ASSERT_TRUE(d->removeNet(&names[i]));
    d->changeNetbusName(S("b"), S("c"));  // renamed although refused: no top port
    agree("removed and bus renamed");
    kalnet outside(S("gone"), S("gone"), nullptr);
    nets->emplace("gone", &outside);  // an edit from outside
    agree("outside insert");
    nets->erase("gone");
    agree("outside erase");
}
