// Connection editing and net editing: connect, disconnect with pruning,
// net and net bus renames, range changes and removals, with their records.
#include <sstream>
#include <tuple>

#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using lines = std::vector<std::string>;
using endpoint = std::tuple<const char*, const char*, int>;  // instance ("" = top), port, direction

// Keys, names, bus links and bus slots of every net and net bus, for rollback checks.
lines state(kaldesign* d) {
    lines out;
    for (auto& [key, net] : *d->data->getNetMap()) {
        std::ostringstream s;
        s << key << "->" << net << ' ' << *net->getName() << '|' << *net->getSecondName() << '|'
          << net->getBus();
        out.push_back(s.str());
    }
    for (auto& [key, bus] : *d->data->getNetbusMap()) {
        std::ostringstream s;
        s << key << "=>" << bus << ' ' << *bus->getName() << '|' << *bus->getSecondName() << '|'
          << bus->getMsb() << ':' << bus->getLsb();
        for (kalnet* bit : bus->getBits())
            s << ' ' << bit;
        out.push_back(s.str());
    }
    return out;
}

// Every link in the design is mirrored by its partner and every name is its key.
void expectLinked(kaldesign* d) {
    for (auto& [key, net] : *d->data->getNetMap()) {
        EXPECT_EQ(*net->getName(), key);
        EXPECT_EQ(net->getDesign(), d) << key;
        for (kalport* p : net->getPorts())
            EXPECT_EQ(p->getNet(), net) << key;
    }
    for (auto& [key, bus] : *d->data->getNetbusMap()) {
        EXPECT_EQ(*bus->getName(), key);
        for (kalnet* bit : bus->getBits())
            if (bit) {
                EXPECT_EQ(bit->getBus(), bus) << key;
                EXPECT_EQ(d->getNet(bit->getName()), bit) << key;
            }
    }
    std::vector<kalcomponent*> owners{d->owner};
    for (auto& i : *d->data->getInstanceMap())
        owners.push_back(i.second);
    for (kalcomponent* c : owners)
        for (auto& [key, p] : c->data->ports) {
            EXPECT_EQ(*p->getName(), key);
            EXPECT_EQ(p->getComponent(), c) << key;
            if (kalnet* n = p->getNet()) {
                EXPECT_TRUE(n->isConnectedTo(p)) << key;
                EXPECT_EQ(n->getDesign()->getNet(n->getName()), n) << key;
            }
        }
}
}  // namespace

class editing : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1.0"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        d = top->getDesign(&rtl);
        ASSERT_NE(d, nullptr);
    }
    void TearDown() override {
        EXPECT_MODEL_OK(top);
        release(top);
        recorded::TearDown();
    }
    // Port of instance `inst` ("" = top), with the instance and the port made on first use.
    kalport* pin(const char* inst, const char* port, int direction) {
        kalcomponent* c = *inst ? d->getInstance(S(inst)) : top;
        if (!c) {
            c = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
            std::string name(inst);
            EXPECT_TRUE(d->addInstance(&name, c));
        }
        c->addPort(S(port), S(port), direction, nullptr);
        return c->getPort(S(port), false);
    }
    // Net `name` (made unless present) joining the ports in this order; the recorder is emptied after.
    kalnet* wire(const char* name, std::vector<endpoint> ports) {
        top->addNet(S(name), S(name), S(""), nullptr);
        for (auto& [inst, port, direction] : ports) {
            pin(inst, port, direction);
            EXPECT_TRUE(top->connect(S(name), S(port), S(inst))) << name << ' ' << port;
        }
        kalrecorder::clear();
        return d->getNet(S(name));
    }
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
};

TEST_F(editing, connect_records_and_refusals) {
    kalport* a = pin("", "a", 1);
    kalport* o = pin("u1", "o", 2);
    kalport* p = pin("u1", "p", 2);
    kalnet* n1 = wire("n1", {});
    kalnet* n2 = wire("n2", {});
    EXPECT_TRUE(top->connect(S("n1"), S("a"), S("")));
    EXPECT_TRUE(top->connect(S("n1"), S("o"), S("u1")));
    EXPECT_FALSE(top->connect(S("n1"), S("o"), S("u1")));  // already on it
    EXPECT_FALSE(top->connect(S("nx"), S("o"), S("u1")));
    EXPECT_FALSE(top->connect(S("n1"), S("zz"), S("u1")));
    EXPECT_FALSE(top->connect(S("n1"), S("p"), S("u9")));
    EXPECT_FALSE(top->connect(nullptr, S("p"), S("u1")));
    EXPECT_EQ(records(), (lines{"net/add net=top::rtl/n1 topport=top/a", "net/add net=top::rtl/n1"}));
    EXPECT_EQ(n1->getPorts(), (std::vector<kalport*>{a, o}));
    expectLinked(d);

    // A path from the owner's own name reaches the instance, but only for connect.
    kalrecorder::clear();
    EXPECT_TRUE(top->connect(S("n2"), S("p"), S("top/u1")));
    EXPECT_FALSE(top->disconnect(S("n2"), S("p"), S("top/u1")));
    pin("", "b", 2);
    EXPECT_TRUE(top->connect(S("n2"), S("b"), S("top")));  // the owner's own name selects its port
    EXPECT_EQ(records(), (lines{"net/add net=top::rtl/n2", "net/add net=top::rtl/n2 topport=top/b"}));
    EXPECT_EQ(p->getNet(), n2);

    // The owner of this design is itself an instance: its port gets no "topport".
    kalcomponent* u1 = d->getInstance(S("u1"));
    u1->createDesign(S("v"), S("l"), S("inner"), S("1.0"));
    u1->addPort(S("q"), S("q"), 1, nullptr);
    u1->addNet(S("m"), S("m"), S(""), nullptr);
    kalrecorder::clear();
    EXPECT_TRUE(u1->connect(S("m"), S("q"), S("")));
    EXPECT_EQ(records(), (lines{"net/add net=u1::inner/m"}));
    expectLinked(d);
}

TEST_F(editing, disconnect_prunes_nets_without_driver_and_receiver) {
    // One port left: it is detached, and being a top port it is removed, before the net goes.
    kalport* i = wire("one", {{"", "a", 1}, {"u1", "i", 1}})->getPorts()[1];
    EXPECT_TRUE(top->disconnect(S("one"), S("i"), S("u1")));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/one port=top/u1/i", "connect/rem net=top::rtl/one port=top/a",
                     "port/rem topport=top/a", "net/rem net=top::rtl/one"}));
    EXPECT_EQ(d->getNet(S("one")), nullptr);
    EXPECT_EQ(top->getPort(S("a"), false), nullptr);
    EXPECT_EQ(i->getNet(), nullptr);

    // Two receivers left (a top output is driven from inside): pruned, ports in connection order.
    wire("sinks", {{"", "ta", 2}, {"u2", "o", 2}, {"u1", "k", 1}});
    EXPECT_TRUE(top->disconnect(S("sinks"), S("o"), S("u2")));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/sinks port=top/u2/o",
                     "connect/rem net=top::rtl/sinks port=top/ta", "port/rem topport=top/ta",
                     "connect/rem net=top::rtl/sinks port=top/u1/k", "net/rem net=top::rtl/sinks"}));

    wire("drivers", {{"u1", "p", 2}, {"u2", "p", 2}, {"u3", "i", 1}});
    EXPECT_TRUE(top->disconnect(S("drivers"), S("i"), S("u3")));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/drivers port=top/u3/i",
                     "connect/rem net=top::rtl/drivers port=top/u1/p",
                     "connect/rem net=top::rtl/drivers port=top/u2/p", "net/rem net=top::rtl/drivers"}));
    expectLinked(d);

    // A driver and a receiver stay: instance output + input, two bidirectionals, top input + instance input.
    for (auto [net, left] : std::vector<std::pair<const char*, std::vector<endpoint>>>{
             {"kept", {{"u1", "q", 2}, {"u2", "q", 1}}},
             {"bidi", {{"u1", "b", 3}, {"u2", "b", 3}}},
             {"topin", {{"", "ti", 1}, {"u1", "r", 1}}}}) {
        left.emplace_back("u3", net, 2);
        kalnet* n = wire(net, left);
        EXPECT_TRUE(top->disconnect(S(net), S(net), S("u3")));
        EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/" + std::string(net) + " port=top/u3/" + net}));
        EXPECT_EQ(d->getNet(S(net)), n);
        EXPECT_EQ(n->getPorts().size(), 2u) << net;
    }
    kalrecorder::clear();
    EXPECT_FALSE(top->disconnect(S("kept"), S("kept"), S("u3")));  // no longer on it
    EXPECT_FALSE(top->disconnect(S("kept"), S("q"), S("u9")));
    EXPECT_FALSE(top->disconnect(S("one"), S("i"), S("u1")));
    EXPECT_FALSE(top->disconnect(S("kept"), nullptr, S("u1")));
    EXPECT_TRUE(records().empty());
    expectLinked(d);
}

TEST_F(editing, disconnect_of_exported_port_removes_export_first) {
    kalport* a = pin("u1", "a", 2);
    ASSERT_EQ(top->addExport("top/u1/a", true, S(""), nullptr), 1);
    ASSERT_NE(top->getPort(S("u1_a"), false), nullptr);
    ASSERT_EQ(a->getExportedTo(), top->getPort(S("u1_a"), false));
    kalrecorder::clear();
    EXPECT_TRUE(top->disconnect(S("u1_a"), S("a"), S("u1")));
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/u1_a port=top/u1/a",
                                "connect/rem net=top::rtl/u1_a port=top/u1_a", "port/rem topport=top/u1_a",
                                "export/rem net= port=a topport=top/u1_a", "net/rem net=top::rtl/u1_a"}));
    EXPECT_EQ(a->getExportedTo(), nullptr);
    EXPECT_EQ(top->getPort(S("u1_a"), false), nullptr);
    EXPECT_EQ(d->getNet(S("u1_a")), nullptr);
    expectLinked(d);
}

TEST_F(editing, net_rename_takes_the_top_port_along) {
    kalnet* n = wire("n1", {{"u1", "i", 1}, {"", "a", 1}});
    kalport* a = top->getPort(S("a"), false);
    wire("m", {});
    const lines before = state(d);
    EXPECT_FALSE(d->changeNetName(S("n1"), S("m")));
    EXPECT_FALSE(d->changeNetName(S("zz"), S("q")));
    EXPECT_FALSE(d->changeNetName(nullptr, S("q")));
    EXPECT_FALSE(d->changeNetName(S("n1"), nullptr));
    EXPECT_EQ(state(d), before);
    EXPECT_EQ(*a->getName(), "a");
    EXPECT_TRUE(records().empty());

    EXPECT_TRUE(d->changeNetName(S("n1"), S("n2")));
    EXPECT_EQ(records(),
              (lines{"port/rnm oname=top/a nname=top/n2", "net/rnm oname=top::rtl/n1 nname=top::rtl/n2"}));
    EXPECT_EQ(d->getNet(S("n2")), n);
    EXPECT_EQ(d->getNet(S("n1")), nullptr);
    EXPECT_EQ(*n->getSecondName(), "n2");
    EXPECT_EQ(top->getPort(S("n2"), false), a);
    EXPECT_EQ(top->getPort(S("a"), false), nullptr);
    EXPECT_EQ(a->getNet(), n);
    expectLinked(d);

    kalrecorder::clear();
    EXPECT_TRUE(d->changeNetName(S("n2"), S("n2")));  // re-keyed and announced; the port already matches
    EXPECT_TRUE(d->changeNetName(S("m"), S("k")));    // no top port: the net record only
    EXPECT_EQ(records(), (lines{"net/rnm oname=top::rtl/n2 nname=top::rtl/n2",
                                "net/rnm oname=top::rtl/m nname=top::rtl/k"}));
    EXPECT_EQ(d->getNet(S("n2")), n);
    expectLinked(d);
}

TEST_F(editing, net_bus_rename_renames_bits_and_port_bus) {
    top->addNetbus(S("d"), S(""), S("d"), 1, 0, nullptr);
    top->addNetbus(S("e"), S(""), S("e"), 0, 0, nullptr);
    kalnetbus* bus = d->getNetbus(S("d"));
    kalnet* b1 = d->getNet(S("d[1]"));
    kalnet* b0 = d->getNet(S("d[0]"));
    wire("r[0]", {});
    lines before = state(d);
    EXPECT_FALSE(d->changeNetbusName(S("d"), S("")));
    EXPECT_FALSE(d->changeNetbusName(S("d"), S("d")));
    EXPECT_FALSE(d->changeNetbusName(S("d"), S("e")));
    EXPECT_FALSE(d->changeNetbusName(S("zz"), S("q")));
    EXPECT_FALSE(d->changeNetbusName(nullptr, S("q")));
    EXPECT_FALSE(d->changeNetbusName(S("d"), S("r")));  // r[0] is a net of its own
    EXPECT_EQ(state(d), before);

    // No top port: false, yet the rename stands.
    EXPECT_FALSE(d->changeNetbusName(S("d"), S("q")));
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(d->getNetbus(S("q")), bus);
    EXPECT_EQ(d->getNetbus(S("d")), nullptr);
    EXPECT_EQ(*bus->getSecondName(), "q");
    EXPECT_EQ(d->getNet(S("q[1]")), b1);
    EXPECT_EQ(d->getNet(S("q[0]")), b0);
    EXPECT_EQ(*b1->getSecondName(), "q[1]");
    EXPECT_EQ(d->data->getNetMap()->size(), 4u);  // d[1] and d[0] are gone
    expectLinked(d);

    // Only the first slot (bit 1) is asked for a top port.
    top->addPortbus(S("p"), S("p"), 1, 0, 1, nullptr);
    kalportbus* pb = top->getPortbus(S("p"), false);
    top->connect(S("q[0]"), S("p[0]"), S(""));
    kalrecorder::clear();
    EXPECT_FALSE(d->changeNetbusName(S("q"), S("s")));
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(d->getNetbus(S("s")), bus);
    EXPECT_EQ(top->getPortbus(S("p"), false), pb);

    top->connect(S("s[1]"), S("p[1]"), S(""));
    kalrecorder::clear();
    EXPECT_TRUE(d->changeNetbusName(S("s"), S("t")));
    EXPECT_EQ(records(),
              (lines{"portbus/rnm oname=top/p nname=top/t", "netbus/rnm oname=top::rtl/s nname=top::rtl/t"}));
    EXPECT_EQ(top->getPortbus(S("t"), false), pb);
    EXPECT_EQ(top->getPort(S("t[1]"), false)->getNet(), b1);
    EXPECT_EQ(top->getPort(S("t[0]"), false)->getNet(), b0);
    EXPECT_EQ(d->getNet(S("t[1]")), b1);
    expectLinked(d);
}

TEST_F(editing, net_bus_range_moves_only_onto_names_held_elsewhere) {
    top->addNetbus(S("d"), S(""), S("d"), 3, 0, nullptr);
    const lines before = state(d);
    EXPECT_FALSE(d->changeNetBusRange(S("d"), 2, 0));  // another width
    EXPECT_FALSE(d->changeNetBusRange(S("zz"), 3, 0));
    EXPECT_TRUE(d->changeNetBusRange(S("d"), 3, 0));
    EXPECT_FALSE(d->changeNetBusRange(S("d"), 4, 1));  // d[4] is not a key
    EXPECT_FALSE(d->changeNetBusRange(S("d"), 0, 3));  // the bits' own names are dropped before the check
    EXPECT_EQ(state(d), before);
    expectLinked(d);

    top->addNetbus(S("e"), S(""), S("e"), 1, 0, nullptr);
    kalnet* e1 = d->getNet(S("e[1]"));
    kalnet* e0 = d->getNet(S("e[0]"));
    kalnet* x3 = wire("e[3]", {});
    kalnet* x2 = wire("e[2]", {});
    kalnetbus* bus = d->getNetbus(S("e"));
    EXPECT_TRUE(d->changeNetBusRange(S("e"), 3, 2));
    EXPECT_EQ(*e1->getName(), "e[3]");
    EXPECT_EQ(*e0->getName(), "e[2]");
    EXPECT_EQ(*e1->getSecondName(), "e[1]");
    EXPECT_EQ(bus->getMsb(), 3u);
    EXPECT_EQ(bus->getLsb(), 2u);
    EXPECT_EQ(bus->getBits(), (std::vector<kalnet*>{e1, e0}));
    EXPECT_EQ(d->getNet(S("e[3]")), x3);
    EXPECT_EQ(d->getNet(S("e[2]")), x2);
    EXPECT_EQ(d->getNet(S("e[1]")), nullptr);
    EXPECT_EQ(d->getNet(S("e[0]")), nullptr);
    EXPECT_TRUE(records().empty());
    // Unreachable by name, so the design cannot free them; the first takes the bus along.
    delete e1;
    delete e0;
    EXPECT_EQ(d->getNetbus(S("e")), nullptr);
}

TEST_F(editing, net_and_bus_removal) {
    // A bit net whose bus keeps exactly one wired bit: the bus goes and is reported twice.
    top->addNetbus(S("b"), S(""), S("b"), 1, 0, nullptr);
    wire("b[1]", {{"u1", "x", 1}});
    kalnet* b0 = wire("b[0]", {{"u1", "y", 1}});
    EXPECT_TRUE(d->removeNet(S("b[1]")));
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/b[1] port=top/u1/x", "net/rem net=top::rtl/b[1]",
                                "netbus/rem netbus=top::rtl/b", "netbus/rem netbus=top::rtl/b"}));
    EXPECT_EQ(d->getNetbus(S("b")), nullptr);
    EXPECT_EQ(d->getNet(S("b[1]")), nullptr);
    EXPECT_EQ(b0->getBus(), nullptr);
    EXPECT_EQ(b0->getPorts().size(), 1u);
    expectLinked(d);

    // Two wired bits left: the bus is kept by the net removal, but the bit's own teardown drops it.
    top->addNetbus(S("c"), S(""), S("c"), 2, 0, nullptr);
    for (const char* bit : {"c[2]", "c[1]", "c[0]"})
        wire(bit, {{"u2", bit, 1}});
    EXPECT_TRUE(d->removeNet(S("c[2]")));
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/c[2] port=top/u2/c[2]", "net/rem net=top::rtl/c[2]",
                                "netbus/rem netbus=top::rtl/c"}));
    EXPECT_EQ(d->getNet(S("c[1]"))->getBus(), nullptr);
    expectLinked(d);

    // A top port on the net is removed; an instance port loses its export.
    kalport* z = pin("u1", "z", 2);
    top->addExport("top/u1/z", true, S(""), S("t"));
    ASSERT_NE(z->getExportedTo(), nullptr);
    kalrecorder::clear();
    EXPECT_TRUE(d->removeNet(S("t")));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/t port=top/u1/z", "connect/rem net=top::rtl/t port=top/t",
                     "port/rem topport=top/t", "net/rem net=top::rtl/t"}));
    EXPECT_EQ(top->getPort(S("t"), false), nullptr);
    EXPECT_EQ(z->getExportedTo(), nullptr);
    EXPECT_EQ(z->getNet(), nullptr);
    EXPECT_FALSE(d->removeNet(S("t")));
    EXPECT_FALSE(d->removeNet(nullptr));

    // removeNetbus only unregisters; the bus and its bits live on.
    top->addNetbus(S("r"), S(""), S("r"), 1, 0, nullptr);
    kalnetbus* r = d->getNetbus(S("r"));
    kalrecorder::clear();
    EXPECT_TRUE(d->removeNetbus(S("nope")));
    EXPECT_FALSE(d->removeNetbus(nullptr));
    EXPECT_TRUE(d->removeNetbus(S("r")));
    EXPECT_EQ(records(), (lines{"netbus/rem netbus=top::rtl/r"}));
    EXPECT_EQ(d->getNetbus(S("r")), nullptr);
    EXPECT_EQ(d->getNet(S("r[1]"))->getBus(), r);
    delete r;  // the caller's now

    // deleteNetbus: one net record per bit, none for the bus.
    top->addNetbus(S("w"), S(""), S("w"), 1, 0, nullptr);
    kalport* wx = wire("w[1]", {{"u3", "x", 1}})->getPorts()[0];
    EXPECT_TRUE(d->deleteNetbus(S("w")));
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/w[1] port=top/u3/x", "net/rem net=top::rtl/w[1]",
                                "net/rem net=top::rtl/w[0]"}));
    EXPECT_EQ(d->getNetbus(S("w")), nullptr);
    EXPECT_EQ(d->getNet(S("w[0]")), nullptr);
    EXPECT_EQ(wx->getNet(), nullptr);
    EXPECT_FALSE(d->deleteNetbus(S("w")));
    expectLinked(d);
}

TEST_F(editing, changes_stand_without_event_objects) {
    kalport* o = pin("u2", "o", 2);
    wire("n", {{"", "a", 1}, {"u1", "i", 1}});
    wire("k", {});
    kalrecorder::setNullObjects(true);
    EXPECT_TRUE(top->connect(S("k"), S("o"), S("u2")));
    EXPECT_EQ(o->getNet(), d->getNet(S("k")));
    EXPECT_TRUE(d->changeNetName(S("n"), S("m")));
    EXPECT_NE(top->getPort(S("m"), false), nullptr);
    EXPECT_TRUE(top->disconnect(S("m"), S("i"), S("u1")));
    EXPECT_EQ(d->getNet(S("m")), nullptr);
    EXPECT_EQ(top->getPort(S("m"), false), nullptr);
    EXPECT_GT(kalrecorder::createCalls(), 0u);
    EXPECT_TRUE(records().empty());
    expectLinked(d);
}
