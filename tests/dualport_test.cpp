// Dual ports and dual port buses: membership links, removal by name, slot
// order, and what each side leaves behind when the other is destroyed.
#include <algorithm>
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {
using slots = std::vector<kaldualport*>;
using members = std::vector<kalport*>;
// A root component and what its tree leaves to the caller are freed together.
using root = std::unique_ptr<kalcomponent, decltype(&release)>;
}  // namespace

// ---- dualport: these need nothing beyond the dual port classes ----

TEST(dualport, slot_zero_is_the_msb_bit_either_way) {
    for (auto range : {std::make_pair(7u, 0u), std::make_pair(0u, 7u), std::make_pair(12u, 9u)}) {
        const unsigned msb = range.first, lo = std::min(range.first, range.second),
                       hi = std::max(range.first, range.second);
        kaldualportbus bus("b", msb, range.second);
        ASSERT_EQ(bus.getDualPortsCount(), hi - lo + 1);
        std::vector<std::unique_ptr<kaldualport>> bits;
        for (unsigned i = lo; i <= hi; ++i) {
            bits.emplace_back(new kaldualport("d"));
            bus.connect(i, bits.back().get());
            EXPECT_EQ(bus.getSlots().at(i > msb ? i - msb : msb - i), bits.back().get())
                << msb << " bit " << i;
            EXPECT_EQ(bits.back()->getBus(), &bus);
        }
        kaldualport outside("x");
        bus.connect(hi + 1, &outside);
        if (lo > 0) bus.connect(lo - 1, &outside);
        bus.disconnect(hi + 1);
        EXPECT_EQ(outside.getBus(), nullptr);
        const slots now = bus.getSlots();
        EXPECT_EQ(std::count(now.begin(), now.end(), nullptr), 0);
    }
}

TEST(dualport, created_bus_is_held_to_the_range_width) {
    kaldualport a("a"), b("b"), c("c");
    EXPECT_EQ(kaldualportbus::createDualPortBus("w", 3, 2, {&a, &b, &c}), nullptr);
    EXPECT_EQ(kaldualportbus::createDualPortBus("", 3, 2, {&a}), nullptr);
    EXPECT_EQ(a.getBus(), nullptr);  // a refused bus leaves no link behind

    EXPECT_EQ(kaldualportbus("", 7, 0).getDualPortsCount(), 0u);
    std::unique_ptr<kaldualportbus> unnamed(kaldualportbus::createDualPortBus("", 2, 3, {&a, &b}));
    ASSERT_NE(unnamed, nullptr);
    EXPECT_EQ(unnamed->getSlots(), (slots{&a, &b}));
    EXPECT_EQ(b.getBus(), unnamed.get());
    unnamed->disconnect(2u);  // bit 2 is the msb: slot 0
    EXPECT_EQ(unnamed->getSlots(), (slots{nullptr, &b}));
    EXPECT_EQ(a.getBus(), unnamed.get());
}

TEST(dualport, stale_links_are_cleared_by_whichever_side_dies_first) {
    auto a = std::make_unique<kaldualport>("a"), b = std::make_unique<kaldualport>("b"),
         c = std::make_unique<kaldualport>("c");
    auto bus = std::make_unique<kaldualportbus>("bus", 3, 0);
    bus->connect(2, a.get());
    bus->connect(2, b.get());  // overwrites without telling a
    EXPECT_EQ(bus->getSlots(), (slots{nullptr, b.get(), nullptr, nullptr}));
    EXPECT_EQ(a->getBus(), bus.get());
    bus->connect(3, c.get());
    bus->connect(0, c.get());
    bus->disconnect(c.get());  // the first slot holding it only
    EXPECT_EQ(bus->getSlots(), (slots{nullptr, b.get(), nullptr, c.get()}));

    kaldualportbus other("o", 0, 1);
    other.connect(1, c.get());  // c's link moves on while bus still lists it
    c.reset();
    EXPECT_EQ(bus->getSlots(), (slots{nullptr, b.get(), nullptr, nullptr}));
    EXPECT_EQ(other.getSlots(), (slots{nullptr, nullptr}));

    bus->disconnect(2u);
    EXPECT_EQ(b->getBus(), bus.get());
    bus.reset();
    EXPECT_EQ(a->getBus(), nullptr);
    EXPECT_EQ(b->getBus(), nullptr);
}

TEST(dualport, bus_attributes_reach_members_only_on_request) {
    strings S;
    kaldualport a("a"), b("b");
    std::unique_ptr<kaldualportbus> bus(kaldualportbus::createDualPortBus("p", 1, 0, {&a, &b}));
    bus->setAttributeValue(S("K"), S("bus"), false);
    EXPECT_FALSE(a.hasAttribute(S("K")));
    bus->setAttribute(S("K"), S("all"), S("V"), true);
    bus->setAttributeValue(S("L"), S("1"), true);
    EXPECT_EQ(b.getValueMap(), bus->getValueMap());
    EXPECT_EQ(a.getVendorMap().at("K"), "V");
    bus->removeAttribute(S("K"), true);
    EXPECT_FALSE(b.hasAttribute(S("K")));
    bus->removeAllAttributes(false);
    EXPECT_TRUE(a.hasAttribute(S("L")));
    bus->removeAllAttributes(true);
    EXPECT_TRUE(a.getValueMap().empty() && b.getValueMap().empty());
}

// ---- dualport_model: these need ports, nets, components and designs ----

class dualport_model : public recorded {};

TEST_F(dualport_model, members_point_back_while_listed) {
    kalport p(S("p"), S("p"), 1, nullptr), q(S("q"), S("q"), 2, nullptr);
    {
        kaldualport dp("dp");
        EXPECT_EQ(dp.direction(), 0);
        EXPECT_FALSE(dp.addPort(static_cast<kalport*>(nullptr)));
        EXPECT_FALSE(dp.addPort(members{}));
        EXPECT_TRUE(dp.addPort(&q));
        EXPECT_TRUE(dp.addPort(&q));
        EXPECT_EQ(dp.getPortList(), members{&q});
        EXPECT_TRUE(dp.addPort(members{&p, &q}));  // appended as given, duplicates kept
        EXPECT_EQ(dp.getPortList(), (members{&q, &p, &q}));
        EXPECT_EQ(p.getDualPort(), &dp);
        EXPECT_EQ(dp.direction(), 2);  // the first member decides
    }
    EXPECT_EQ(p.getDualPort(), nullptr);
    EXPECT_EQ(q.getDualPort(), nullptr);

    kaldualport dp("dp");
    auto r = std::make_unique<kalport>(S("r"), S("r"), 1, nullptr);
    dp.addPort(members{&p, r.get()});
    r.reset();  // a dying member takes itself out
    EXPECT_EQ(dp.getPortList(), members{&p});
}

TEST_F(dualport_model, removal_key_is_instance_or_component_name) {
    root top(new kalcomponent(S("v"), S("l"), S("top"), S("1")), &release);
    ASSERT_EQ(top->createDesign(S("v"), S("l"), S("rtl"), S("1")), 1);
    std::string rtlName("rtl"), u1("u1");
    kaldesign* rtl = top->getDesign(&rtlName);
    ASSERT_NE(rtl, nullptr);
    auto* leaf = new kalcomponent(S("v"), S("l"), S("leaf"), S("1"));
    leaf->addPort(S("A"), S("A"), 1, nullptr);
    ASSERT_TRUE(rtl->addInstance(&u1, leaf));
    top->addPort(S("A"), S("A"), 2, nullptr);
    top->setName(S("Top"));  // a root is named by its "Name", which no longer equals its instance name
    kalport* inner = leaf->getPort(S("A"), false);
    kalport* outer = top->getPort(S("A"), false);
    ASSERT_TRUE(inner && outer);

    kaldualport dp("dp");
    dp.setDesign(rtl);
    dp.addPort(members{outer, inner});
    for (const char* miss : {"", "A", "leaf/A", "top/A", "u1/a", "top/u1/A"}) {
        EXPECT_EQ(dp.removePort(miss), nullptr) << miss;
    }
    EXPECT_EQ(dp.removePort("u1/A"), inner);
    EXPECT_EQ(inner->getDualPort(), nullptr);
    EXPECT_EQ(dp.getPortList(), members{outer});
    EXPECT_EQ(dp.removePort("Top/A"), outer);
    EXPECT_EQ(dp.getPortsCount(), 0u);
}

TEST_F(dualport_model, connection_and_export_come_from_the_first_member_that_has_one) {
    kalnet n(S("n"), S("n"), nullptr);
    kalport t(S("t"), S("t"), 2, nullptr), p(S("p"), S("p"), 1, nullptr), q(S("q"), S("q"), 1, nullptr),
        r(S("r"), S("r"), 1, nullptr);
    kaldualport dp("dp");
    dp.addPort(members{&p, &q, &r});
    EXPECT_FALSE(dp.isConnected());
    EXPECT_EQ(dp.getConnectedNet(), nullptr);
    n.connect(&r, false);
    n.connect(&q, false);
    n.connect(&t, false);
    EXPECT_EQ(dp.getConnectedPort(), &q);  // list order, not connection order
    EXPECT_EQ(dp.getConnectedNet(), &n);
    EXPECT_EQ(dp.getExportedTo(), nullptr);
    ASSERT_TRUE(r.exportTo(&t));
    EXPECT_EQ(dp.getExportedTo(), &t);
}

TEST_F(dualport_model, member_death_takes_its_bus_out_of_the_design) {
    root top(new kalcomponent(S("v"), S("l"), S("top"), S("1")), &release);
    ASSERT_EQ(top->createDesign(S("v"), S("l"), S("rtl"), S("1")), 1);
    std::string rtlName("rtl");
    kaldesign* rtl = top->getDesign(&rtlName);
    kaldualport b("b");
    auto* a = new kaldualport("a");
    kaldualportbus* bus = kaldualportbus::createDualPortBus("bus", 1, 0, {a, &b});
    ASSERT_TRUE(rtl->insertDualPortBus("bus", bus));
    kalrecorder::clear();
    delete a;
    EXPECT_EQ(rtl->getDualPortbus("bus"), nullptr);
    EXPECT_EQ(records(), std::vector<std::string>{"dualpinbus/remove dualpinbus=bus"});
    EXPECT_EQ(bus->getSlots(), (slots{nullptr, &b}));
    EXPECT_EQ(b.getBus(), bus);
    delete bus;  // out of the design's map, so ours now
    EXPECT_EQ(b.getBus(), nullptr);
}

// A dying port leaves every dual port list it is in, also when its removal key
// (instance name + "/" + port name) does not match how the dual port names it.
TEST_F(dualport_model, dying_member_never_stays_listed) {
    root r(new kalcomponent(S("v"), S("l"), S("blk"), S("1")), &release);
    r->addPort(S("a"), S("a"), 1, nullptr);
    r->addPort(S("b"), S("b"), 1, nullptr);
    r->setName(S("renamed"));  // the dual port names root ports by "Name", the port by its instance name
    kaldualport dp("dp");
    kalport* a = r->getPort(S("a"), false);
    ASSERT_TRUE(dp.addPort(std::vector<kalport*>{a, a, r->getPort(S("b"), false)}));
    r->removePort(S("a"));
    ASSERT_EQ(dp.getPortsCount(), 1u);
    EXPECT_EQ(*dp.getPortList()[0]->getName(), "b");
}
