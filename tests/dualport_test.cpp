// SPDX-License-Identifier: Apache-2.0
// Dual ports and dual port buses: slot order, member links, removal by name,
// and what a dying member takes with it.
#include <algorithm>
#include <deque>
#include <memory>
#include <utility>

#include "support/model.h"

// A root component and what its tree leaves to the caller are freed together.
using root = std::unique_ptr<kalcomponent, decltype(&release)>;

TEST(dualport, slot_zero_is_the_first_bound_and_width_must_match) {
    for (auto [msb, lsb] : std::initializer_list<std::pair<unsigned, unsigned>>{{7, 0}, {0, 7}, {12, 9}}) {
        const unsigned lo = std::min(msb, lsb), hi = std::max(msb, lsb);
        kaldualportbus bus("b", msb, lsb);
        std::deque<kaldualport> bits;
        for (unsigned i = lo; i <= hi + 1; ++i)  // one past the range, which is ignored
            bus.connect(i, &bits.emplace_back("d"));
        EXPECT_EQ(bits.back().getBus(), nullptr);
        for (unsigned i = lo; i <= hi; ++i)
            EXPECT_TRUE(bus.getSlots().at(i > msb ? i - msb : msb - i) == &bits[i - lo] &&
                        bits[i - lo].getBus() == &bus)
                << msb << ':' << lsb << " bit " << i;
    }

    // A bus built from dual ports must fit its range, also an unnamed one (it has
    // no slots to compare with); a refused one leaves no link behind.
    kaldualport a("a"), b("b"), c("c");
    EXPECT_EQ(kaldualportbus::createDualPortBus("w", 3, 2, {&a, &b, &c}), nullptr);
    EXPECT_EQ(kaldualportbus::createDualPortBus("", 3, 2, {&a}), nullptr);
    EXPECT_EQ(a.getBus(), nullptr);
    std::unique_ptr<kaldualportbus> made(kaldualportbus::createDualPortBus("", 2, 3, {&a, &b}));
    ASSERT_TRUE(made && made->getSlots() == (std::vector<kaldualport*>{&a, &b}));
    EXPECT_TRUE(a.getBus() == made.get() && b.getBus() == made.get());
}

class dualport_design : public modeltest {};

TEST_F(dualport_design, member_links_removal_names_and_a_dying_bus_member) {
    kalport *inner = pin("u1", "A", 1), *outer = pin("", "A", 2), *q = pin("u1", "q", 1);
    top->setName(S("Top"));  // a root is named by its "Name", which no longer equals its instance name
    {
        kaldualport dp("dp");
        EXPECT_TRUE(dp.addPort(outer) && dp.addPort(std::vector<kalport*>{inner, q, pin("u1", "r", 1)}));
        EXPECT_TRUE(outer->getDualPort() == &dp && inner->getDualPort() == &dp);
        inst("u1")->removePort(S("r"));  // a dying member takes itself out
        EXPECT_EQ(dp.getPortList(), (std::vector<kalport*>{outer, inner, q}));
        for (const char* miss : {"", "A", "blk/A", "top/A", "u1/a", "top/u1/A"})
            EXPECT_EQ(dp.removePort(miss), nullptr) << miss;
        EXPECT_EQ(dp.removePort("u1/A"), inner);
        EXPECT_EQ(dp.removePort("Top/A"), outer);
        EXPECT_TRUE(!inner->getDualPort() && !outer->getDualPort());
        EXPECT_EQ(dp.getPortList(), std::vector<kalport*>{q});
    }
    EXPECT_EQ(q->getDualPort(), nullptr);  // cleared by the dual port's destructor

    // A dying member of a dual port bus takes the bus out of its design.
    kaldualport b("b");
    auto* a = new kaldualport("a");
    kaldualportbus* bus = kaldualportbus::createDualPortBus("bus", 1, 0, {a, &b});
    ASSERT_TRUE(d->insertDualPortBus("bus", bus));
    kalrecorder::clear();
    delete a;
    EXPECT_EQ(d->getDualPortbus("bus"), nullptr);
    EXPECT_EQ(records(), std::vector<std::string>{"dualpinbus/remove dualpinbus=bus"});
    EXPECT_EQ(bus->getSlots(), (std::vector<kaldualport*>{nullptr, &b}));
    delete bus;  // out of the design's map, so ours now
    EXPECT_EQ(b.getBus(), nullptr);
}

class dualport_model : public recorded {};

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
