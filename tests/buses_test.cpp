// SPDX-License-Identifier: Apache-2.0
// What port buses and net buses share: a rename re-keys every bit in the
// owner's map or, refused, leaves every bit as it was; and what all bus kinds
// share: attributes that reach the filled slots only.
#include <map>
#include <tuple>

#include "support/model.h"

using lines = std::vector<std::string>;
using attrs = std::map<std::string, std::string>;

namespace {

// The same rename steps, run on a port bus of top (false) or a net bus of its design (true).
class busrename : public modeltest, public ::testing::WithParamInterface<bool> {
protected:
    bool nets() const { return GetParam(); }
    void bus(const char* name, unsigned int msb, unsigned int lsb) {
        if (nets())
            ASSERT_TRUE(top->addNetbus(S(name), S(""), S(name), msb, lsb, nullptr));
        else
            ASSERT_EQ(top->addPortbus(S(name), S(name), msb, lsb, 1, nullptr), 1);
    }
    void scalar(const char* name) {
        if (nets())
            top->addNet(S(name), S(name), S(""), nullptr);
        else
            top->addPort(S(name), S(name), 1, nullptr);
    }
    int rename(const char* from, const char* to) {
        return nets() ? d->changeNetbusName(S(from), S(to)) : top->changePortbusName(S(from), S(to));
    }
    int renameBit(const char* from, const char* to) {
        return nets() ? d->changeNetName(S(from), S(to)) : top->changePortName(S(from), S(to));
    }
    // Empties a slot; its former member becomes an ordinary scalar.
    void emptySlot(const char* name, unsigned int bit) {
        if (nets()) {
            kalnetbus* b = d->getNetbus(S(name));
            kalnet* former = b->netAtIndex(bit);
            b->disconnect(bit);
            former->unsetBus();
        } else {
            kalportbus* b = top->getPortbus(S(name), false);
            kalport* former = b->portAtIndex(bit);
            b->disconnect(bit);
            former->unsetBus();
        }
    }
    // The owner's bit map, and the bus map.
    using keymap = std::map<std::string, const void*>;
    template <class Map>
    static keymap keysOf(const Map& m) {
        return keymap(m.begin(), m.end());
    }
    keymap keys() { return nets() ? keysOf(*d->data->getNetMap()) : keysOf(top->data->ports); }
    keymap busKeys() { return nets() ? keysOf(*d->data->getNetbusMap()) : keysOf(top->data->portbuses); }
    // Name and second name of the bus, then of each filled slot in slot order ("-" for an empty one).
    template <class Bus>
    static lines namesOf(Bus* b) {
        lines out{*b->getName() + "/" + *b->getSecondName()};
        for (auto* bit : b->getBits())
            out.push_back(bit ? *bit->getName() + "/" + *bit->getSecondName() : "-");
        return out;
    }
    lines names(const char* name) {
        return nets() ? namesOf(d->data->getNetbusMap()->at(name)) : namesOf(top->data->portbuses.at(name));
    }
    std::string record(const char* from, const char* to) {
        return nets() ? std::string("netbus/rnm oname=top::rtl/") + from + " nname=top::rtl/" + to
                      : std::string("portbus/rnm oname=top/") + from + " nname=top/" + to;
    }
};

INSTANTIATE_TEST_SUITE_P(kinds, busrename, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "netbus" : "portbus"; });

// A clash on the last bit, or with one of the bus's own bits renamed ahead,
// is found before any bit is touched.
TEST_P(busrename, refusal_leaves_every_bit_with_its_name_and_key) {
    bus("b", 3, 0);
    scalar("c[0]");
    ASSERT_EQ(renameBit("b[1]", "e[1]"), 1);
    kalrecorder::clear();
    const auto before = std::make_tuple(keys(), busKeys(), names("b"));
    EXPECT_EQ(std::get<2>(before), (lines{"b/b", "b[3]/b[3]", "b[2]/b[2]", "e[1]/e[1]", "b[0]/b[0]"}));
    EXPECT_EQ((std::vector<int>{rename("b", "c"), rename("b", "e")}), (std::vector<int>{0, 0}));
    EXPECT_EQ(std::make_tuple(keys(), busKeys(), names("b")), before);
    EXPECT_TRUE(records().empty());
}

// Bit numbers advance over an empty slot, which keeps its former member
// under its old name; a port bus reports the rename, a net bus without a
// top port keeps it but answers false and sends nothing.
TEST_P(busrename, bits_follow_their_slots_over_an_empty_one) {
    bus("b", 0, 3);  // low to high: slot 0 holds b[0]
    emptySlot("b", 1);
    const auto before = keys();
    kalrecorder::clear();
    EXPECT_EQ(rename("b", "c"), nets() ? 0 : 1);
    EXPECT_EQ(names("c"), (lines{"c/c", "c[0]/c[0]", "-", "c[2]/c[2]", "c[3]/c[3]"}));
    const auto after = keys();
    EXPECT_EQ(after.size(), before.size());
    EXPECT_EQ(after.count("b[0]") + after.count("b[2]") + after.count("b[3]") + busKeys().count("b"), 0u);
    EXPECT_EQ(
        (std::vector<const void*>{after.at("c[0]"), after.at("c[2]"), after.at("c[3]"), after.at("b[1]")}),
        (std::vector<const void*>{before.at("b[0]"), before.at("b[2]"), before.at("b[3]"),
                                  before.at("b[1]")}));
    EXPECT_EQ(records(), nets() ? lines{} : lines{record("b", "c")});
}

class buses : public modeltest {};

// A port made with no valid direction has no name; taken over as a bit, it
// is found by its entry when the bus is renamed, and only that entry moves.
TEST_F(buses, nameless_port_taken_over_as_a_bit_is_rekeyed) {
    top->addPort(S("b[1]"), S("b[1]"), 0, nullptr);
    top->addPort(S("a"), S("a"), 1, nullptr);
    kalport* empty = top->data->ports.at("b[1]");
    ASSERT_EQ(empty->getName(), nullptr);
    ASSERT_EQ(top->addPortbus(S("b"), S("b"), 1, 0, 1, nullptr), 1);
    ASSERT_EQ(top->data->portbuses.at("b")->getBits().at(0), empty);
    EXPECT_EQ(top->changePortbusName(S("b"), S("c")), 1);
    auto& ports = top->data->ports;
    EXPECT_EQ(ports.size(), 3u);
    EXPECT_EQ((std::vector<size_t>{ports.count("a"), ports.count("b[1]"), ports.count("b[0]")}),
              (std::vector<size_t>{1, 0, 0}));
    EXPECT_EQ(ports.at("c[1]"), empty);
    ASSERT_NE(empty->getName(), nullptr);
    EXPECT_EQ(*empty->getName(), "c[1]");
}

// The bus first, then each filled slot; an emptied slot's former member and,
// without propagation, every member are left alone.
TEST_F(buses, attributes_reach_only_filled_slots) {
    top->addPortbus(S("p"), S("p"), 1, 0, 1, nullptr);
    top->addNetbus(S("n"), S(""), S("n"), 1, 0, nullptr);
    kaldualport held("h"), left("l");
    kaldualportbus dual("x", 1, 0);
    dual.connect(1, &held);
    dual.connect(0, &left);
    kalportbus* pb = top->getPortbus(S("p"), false);
    kalnetbus* nb = d->getNetbus(S("n"));
    kalport* pleft = pb->portAtIndex(0);
    kalnet* nleft = nb->netAtIndex(0);
    pb->disconnect(0u);
    nb->disconnect(0u);
    dual.disconnect(0u);
    pleft->unsetBus();
    nleft->unsetBus();
    left.unsetBus();
    // Each kind: the bus, its filled member, the member that left bit 0.
    auto check = [&](auto* bus, kalattributes& member, kalattributes& former, const char* kind) {
        SCOPED_TRACE(kind);
        auto maps = [&] {
            return std::make_tuple(bus->getValueMap(), member.getValueMap(), former.getValueMap());
        };
        const attrs none, one{{"k", "v"}}, two{{"k", "v"}, {"m", "w"}};
        bus->setAttribute(S("k"), S("v"), S("x"), true);
        bus->setAttributeValue(S("m"), S("w"), true);
        EXPECT_EQ(maps(), std::make_tuple(two, two, none));
        bus->removeAttribute(S("m"), false);
        EXPECT_EQ(maps(), std::make_tuple(one, two, none));
        bus->removeAttribute(S("m"), true);
        bus->setAttribute(S("z"), S("1"), S("x"), false);
        EXPECT_EQ(member.getValueMap(), one);
        EXPECT_EQ(member.getVendorMap(), (attrs{{"k", "x"}}));
        former.setAttributeValue(S("q"), S("1"));
        bus->removeAllAttributes(true);
        EXPECT_EQ(maps(), std::make_tuple(none, none, attrs{{"q", "1"}}));
    };
    check(pb, *pb->portAtIndex(1), *pleft, "port bus");
    check(nb, *nb->netAtIndex(1), *nleft, "net bus");
    check(&dual, held, left, "dual port bus");
}

}  // namespace

// A bit's bus link and its rare fields share one word: the link must outlast
// the side record's coming and going. Nets: a range change onto names other
// nets hold leaves the bits unkeyed (a side record); the design's teardown
// keys them again (the record goes) before each bit takes its bus down.
TEST_F(buses, bits_keep_their_bus_while_a_side_record_comes_and_goes) {
    ASSERT_TRUE(top->addNetbus(S("b"), S(""), S("b"), 1, 0, nullptr));
    top->addNet(S("b[3]"), S("b[3]"), S(""), nullptr);
    top->addNet(S("b[2]"), S("b[2]"), S(""), nullptr);
    kalnetbus* nb = d->getNetbus(S("b"));
    const std::vector<kalnet*> bits = nb->getBits();
    auto linked = [&] {
        for (kalnet* bit : bits)
            if (bit->getBus() != nb) return false;
        return nb->getBits() == bits;
    };
    ASSERT_TRUE(d->changeNetBusRange(S("b"), 3, 2));
    ASSERT_EQ(*bits[0]->getName(), "b[3]");
    EXPECT_NE(d->getNet(S("b[3]")), bits[0]);  // the other net kept the name
    EXPECT_TRUE(linked());
    EXPECT_MODEL_OK(top);

    // Ports: a side record made while in a bus (an export), and one made
    // before the bus (a text).
    kalportbus pb(S("p"), S("p"), 1, 0, 1, nullptr);
    kalport a(S("a"), S("a"), 1, nullptr), b(S("b"), S("b"), 2, nullptr), t(S("t"), S("t"), 1, S("text"));
    kalnet n(S("n"), S("n"), nullptr);
    for (kalport* bit : {&a, &t}) {
        pb.connect(bit == &a ? 0 : 1, bit);
        bit->setBus(&pb);
    }
    a.connect(&n);
    b.connect(&n);
    ASSERT_TRUE(a.exportTo(&b));
    EXPECT_EQ(a.getBus(), &pb);
    EXPECT_EQ(t.getBus(), &pb);
    EXPECT_EQ(b.getExportedFrom(), &a);
    pb.disconnect(0u);
    a.unsetBus();
    EXPECT_EQ(a.getBus(), nullptr);
    EXPECT_EQ(a.getExportedTo(), &b);
    EXPECT_EQ(pb.portAtIndex(1), &t);
}
