// Bus membership changed one end at a time, for all three kinds of bus:
// a member held by a bus it does not link to, a link to a bus that holds the
// member in no slot, a member that left its slot with its link kept, a member
// in two slots. Whichever of member and bus is destroyed first, the survivor
// must not keep a pointer to it (AddressSanitizer sees the reads below).
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kaldata.h"
#include "support/checker.h"
#include "support/release.h"

namespace {

struct portKind {
    using member = kalport;
    using bus = kalportbus;
    static member* make(const std::string& n) { return new kalport(&n, &n, 1, nullptr); }
    static bus* makeBus(const std::string& n) { return new kalportbus(&n, &n, 1, 0, 1, nullptr); }
    static std::vector<member*> slots(bus* b) { return b->getBits(); }
    static constexpr bool takesItsBus = false;
};

struct netKind {
    using member = kalnet;
    using bus = kalnetbus;
    static member* make(const std::string& n) { return new kalnet(&n, &n, nullptr); }
    static bus* makeBus(const std::string& n) { return new kalnetbus(&n, &n, 1, 0, nullptr); }
    static std::vector<member*> slots(bus* b) { return b->getBits(); }
    static constexpr bool takesItsBus = true;  // a dying net destroys the bus it links to
};

struct dualKind {
    using member = kaldualport;
    using bus = kaldualportbus;
    static member* make(const std::string& n) { return new kaldualport(n); }
    static bus* makeBus(const std::string& n) { return new kaldualportbus(n, 1, 0); }
    static std::vector<member*> slots(bus* b) { return b->getSlots(); }
    static constexpr bool takesItsBus = false;
};

template <class Kind>
class busties : public ::testing::Test {
protected:
    using M = typename Kind::member;
    using B = typename Kind::bus;
    M* m = Kind::make("m");
    B* b = Kind::makeBus("b");
    B* other = Kind::makeBus("o");
    void TearDown() override {
        delete m;
        delete b;
        delete other;
    }
    bool held(B* bus) {
        auto s = Kind::slots(bus);
        return std::find(s.begin(), s.end(), m) != s.end();
    }
    void destroy(B*& bus) {
        delete bus;
        bus = nullptr;
    }
    void destroyMember() {
        B* link = m->getBus();
        delete m;
        m = nullptr;
        if (!Kind::takesItsBus || !link) return;
        if (link == b) b = nullptr;
        if (link == other) other = nullptr;
    }
};

using kinds = ::testing::Types<portKind, netKind, dualKind>;
TYPED_TEST_SUITE(busties, kinds);

TYPED_TEST(busties, held_by_a_bus_it_does_not_link_to) {
    this->b->connect(1, this->m);
    this->m->setBus(this->other);
    ASSERT_TRUE(this->held(this->b));
    ASSERT_EQ(this->m->getBus(), this->other);
    this->destroy(this->b);  // the member's link to the other bus stays
    EXPECT_EQ(this->m->getBus(), this->other);
    this->b = TypeParam::makeBus("b2");
    this->b->connect(0, this->m);
    this->m->setBus(this->other);
    this->destroyMember();  // no slot keeps it
    EXPECT_EQ(TypeParam::slots(this->b), (std::vector<typename TypeParam::member*>{nullptr, nullptr}));
}

TYPED_TEST(busties, links_to_a_bus_that_holds_it_in_no_slot) {
    this->m->setBus(this->b);
    ASSERT_FALSE(this->held(this->b));
    this->destroy(this->b);
    EXPECT_EQ(this->m->getBus(), nullptr);
    this->m->setBus(this->other);
    this->destroyMember();  // and the bus dies after it without touching it
    this->destroy(this->other);
}

TYPED_TEST(busties, left_its_slot_with_the_link_kept) {
    this->b->connect(1, this->m);
    this->m->setBus(this->b);  // a port bus slot does not set the link by itself
    this->b->disconnect(1u);
    ASSERT_EQ(this->m->getBus(), this->b);
    ASSERT_FALSE(this->held(this->b));
    this->destroy(this->b);
    EXPECT_EQ(this->m->getBus(), nullptr);
}

TYPED_TEST(busties, overwritten_slot_then_either_order) {
    auto* second = TypeParam::make("s");
    this->b->connect(1, this->m);
    this->m->setBus(this->b);
    this->b->connect(1, second);  // the former occupant is not told
    ASSERT_EQ(this->m->getBus(), this->b);
    this->destroy(this->b);
    EXPECT_EQ(this->m->getBus(), nullptr);
    EXPECT_EQ(second->getBus(), nullptr);
    delete second;
}

TYPED_TEST(busties, two_slots_and_an_unset_link) {
    this->b->connect(1, this->m);
    this->b->connect(0, this->m);
    this->m->unsetBus();  // still in both slots
    this->other->connect(1, this->m);
    this->destroyMember();
    EXPECT_EQ(TypeParam::slots(this->b), (std::vector<typename TypeParam::member*>{nullptr, nullptr}));
    if (this->other) {  // a dying net took the bus it linked to along
        EXPECT_EQ(TypeParam::slots(this->other),
                  (std::vector<typename TypeParam::member*>{nullptr, nullptr}));
    }
}

// A port of one component in a port bus of another: deleting the component
// that owns the port empties the slot of the other's bus.
TEST(busties_components, port_in_a_bus_of_another_component) {
    std::string v = "v", l = "l", ver = "1", a = "a", bn = "b", q = "q", p = "p";
    auto* owner = new kalcomponent(&v, &l, &a, &ver);
    auto* lender = new kalcomponent(&v, &l, &bn, &ver);
    owner->addPortbus(&q, &q, 1, 0, 2, nullptr);
    lender->addPort(&p, &p, 2, nullptr);
    kalportbus* bus = owner->getPortbus(&q, false);
    kalport* lent = lender->getPort(&p, false);
    bus->connect(1, lent);
    lent->setBus(bus);
    release(lender);
    const std::vector<kalport*> slots = bus->getBits();
    EXPECT_EQ(slots[0], nullptr);
    EXPECT_NE(slots[1], nullptr);  // the owner's own bit q[0]
    release(owner);
}

}  // namespace

// Renaming a bus, or moving its range, re-keys only its owner's members: a
// port of another component, or a net of another design, given a slot keeps
// its name and its key at home, and both owners free what is theirs.
TEST(busties_components, renames_leave_members_of_another_owner_alone) {
    std::string v = "v", l = "l", ver = "1", a = "a", bn = "b", q = "q", r = "r", p = "p", rtl = "rtl",
                n = "n", w = "w", w2 = "w2", empty = "";
    auto* owner = new kalcomponent(&v, &l, &a, &ver);
    auto* lender = new kalcomponent(&v, &l, &bn, &ver);
    owner->addPortbus(&q, &q, 1, 0, 2, nullptr);
    lender->addPort(&p, &p, 2, nullptr);
    kalport* lent = lender->getPort(&p, false);
    owner->getPortbus(&q, false)->connect(1, lent);
    EXPECT_EQ(owner->changePortbusName(&q, &r), 1);
    EXPECT_EQ(*lent->getName(), "p");
    EXPECT_EQ(lender->getPort(&p, false), lent);
    std::string r1 = "r[1]";
    EXPECT_EQ(owner->getPort(&r1, false), nullptr);
    std::string r0 = "r[0]";
    EXPECT_NE(owner->getPort(&r0, false), nullptr);  // bit 0 is the owner's own

    owner->createDesign(&v, &l, &rtl, &ver);
    lender->createDesign(&v, &l, &rtl, &ver);
    kaldesign* mine = owner->getDesign(&rtl);
    kaldesign* theirs = lender->getDesign(&rtl);
    mine->addNetbus(&w, &empty, &w, 1, 0, nullptr);
    theirs->addNet(&n, &n, &empty, nullptr);
    kalnet* borrowed = theirs->getNet(&n);
    mine->getNetbus(&w)->connect(0, borrowed);
    mine->changeNetbusName(&w, &w2);
    mine->changeNetBusRange(&w2, 3, 2);
    EXPECT_EQ(*borrowed->getName(), "n");
    EXPECT_EQ(theirs->getNet(&n), borrowed);
    release(lender);
    release(owner);
}

// Deleting a bus removes each member by its name, and that name may reach a
// different member that still links to the bus without a slot (a foreign
// namesake took its slot): removing that one removes the bus as well, which
// ends the deletion instead of reading the freed bus.
TEST(busties_components, delete_stops_when_a_namesake_takes_the_bus_along) {
    std::string v = "v", l = "l", ver = "1", a = "a", bn = "b", q = "q", q1 = "q[1]", q0 = "q[0]",
                rtl = "rtl", empty = "";
    auto* owner = new kalcomponent(&v, &l, &a, &ver);
    auto* lender = new kalcomponent(&v, &l, &bn, &ver);
    owner->addPortbus(&q, &q, 1, 0, 2, nullptr);
    lender->addPort(&q1, &q1, 2, nullptr);
    owner->getPortbus(&q, false)->connect(1, lender->getPort(&q1, false));  // owner's q[1] keeps its link
    EXPECT_EQ(owner->deletePortbus(&q), 1);
    EXPECT_EQ(owner->getPortbus(&q, false), nullptr);
    EXPECT_EQ(owner->getPort(&q1, false), nullptr);
    ASSERT_NE(owner->getPort(&q0, false), nullptr);  // left as a scalar port by the bus's removal
    EXPECT_EQ(owner->getPort(&q0, false)->getBus(), nullptr);
    EXPECT_NE(lender->getPort(&q1, false), nullptr);

    owner->createDesign(&v, &l, &rtl, &ver);
    lender->createDesign(&v, &l, &rtl, &ver);
    kaldesign* mine = owner->getDesign(&rtl);
    kaldesign* theirs = lender->getDesign(&rtl);
    mine->addNetbus(&q, &empty, &q, 1, 0, nullptr);
    theirs->addNet(&q1, &q1, &empty, nullptr);
    mine->getNetbus(&q)->connect(1, theirs->getNet(&q1));  // bit 1: mine keeps its link
    EXPECT_TRUE(mine->deleteNetbus(&q));
    EXPECT_EQ(mine->getNetbus(&q), nullptr);
    EXPECT_EQ(mine->getNet(&q1), nullptr);
    EXPECT_NE(theirs->getNet(&q1), nullptr);
    EXPECT_MODEL_OK(owner);
    EXPECT_MODEL_OK(lender);
    release(lender);
    release(owner);
}
