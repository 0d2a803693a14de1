// Objects handed back to the caller (removeNetbus, removeDualPort,
// removeDualPortBus, removeParameter, deleteDesign, removeAllInstances) and
// destroyed in every order relative to their former owner; destructors that
// reach back into an owner being destroyed; port buses made without slots.
// Each case is meant to run clean under AddressSanitizer and valgrind.
#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {

using lines = std::vector<std::string>;

// A root "top" with design "rtl", instances u1 and u2 of a block with an
// input a, an output y and an output bus q[1:0], and nets w (u1/y -> u2/a)
// and bus b[1:0] (u1/q).
class lifetime : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1"));
        d = top->getDesign(const_cast<std::string*>(S("rtl")));
        for (const char* name : {"u1", "u2"}) {
            auto* c = new kalcomponent(S("v"), S("l"), S("blk"), S("1"));
            c->addPort(S("a"), S("a"), 1, nullptr);
            c->addPort(S("y"), S("y"), 2, nullptr);
            c->addPortbus(S("q"), S("q"), 1, 0, 2, nullptr);
            std::string key(name);
            d->addInstance(&key, c);
        }
        top->addPort(S("in"), S("in"), 1, nullptr);
        d->addNet(S("w"), S("w"), S(""), nullptr);
        d->connect(S("w"), S("y"), S("u1"));
        d->connect(S("w"), S("a"), S("u2"));
        d->addNetbus(S("b"), S(""), S("b"), 1, 0, nullptr);
        d->connect(S("b[1]"), S("q[1]"), S("u1"));
        d->connect(S("b[0]"), S("q[0]"), S("u1"));
        kalrecorder::clear();
    }
    void TearDown() override {
        if (top) {
            EXPECT_MODEL_OK(top);
            release(top);
        }
        recorded::TearDown();
    }
    kalport* port(const char* inst, const char* name) {
        return d->getInstance(S(inst))->getPort(S(name), false);
    }
    // Destroys the tree now, as the application would; the test goes on with
    // what it was handed.
    void dropTree() {
        release(top);
        top = nullptr;
        d = nullptr;
    }
    // Dual port "dp" over u1/a and u2/y, in dual port bus "dpb" with "dq".
    void dualPorts() {
        d->addPortsToDualPort("dp", {port("u1", "a"), port("u2", "y")});
        d->addPortsToDualPort("dq", {port("u1", "y"), port("u2", "a")});
        kaldualportbus* bus =
            kaldualportbus::createDualPortBus("dpb", 1, 0, {d->getDualPort("dp"), d->getDualPort("dq")});
        ASSERT_TRUE(d->insertDualPortBus("dpb", bus));
        kalrecorder::clear();
    }
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
};

// ---- net buses ----

TEST_F(lifetime, netbus_outlives_its_design) {
    kalnetbus* bus = d->getNetbus(S("b"));
    kalnet* bit = d->getNet(S("b[1]"));
    ASSERT_TRUE(d->removeNetbus(S("b")));
    EXPECT_EQ(records(), (lines{"netbus/rem netbus=top::rtl/b"}));
    // The bits stay in the design and keep their link while it lives.
    EXPECT_EQ(bit->getBus(), bus);
    EXPECT_EQ(bus->getDesign(), d);
    kalrecorder::clear();
    dropTree();
    // Dying bit nets leave the bus and neither call back into the dying design
    // nor destroy a bus that the caller owns.
    EXPECT_EQ(bus->getBits(), (std::vector<kalnet*>{nullptr, nullptr}));
    EXPECT_EQ(bus->getDesign(), nullptr);
    delete bus;
}

TEST_F(lifetime, netbus_destroyed_before_its_design) {
    kalnetbus* bus = d->getNetbus(S("b"));
    kalnet* bit = d->getNet(S("b[0]"));
    ASSERT_TRUE(d->removeNetbus(S("b")));
    delete bus;
    EXPECT_EQ(bit->getBus(), nullptr);
    EXPECT_TRUE(d->removeNet(S("b[0]")));
}

TEST_F(lifetime, netbus_handed_back_loses_a_bit_to_removeNet) {
    kalnetbus* bus = d->getNetbus(S("b"));
    ASSERT_TRUE(d->removeNetbus(S("b")));
    // A bus the design no longer holds is not destroyed with one of its bits:
    // the caller owns it.
    EXPECT_TRUE(d->removeNet(S("b[1]")));
    EXPECT_EQ(bus->getBits()[0], nullptr);
    EXPECT_EQ(bus->getBits()[1], d->getNet(S("b[0]")));
    // A new bus under the old name is the design's, and stays so.
    ASSERT_TRUE(d->addNetbus(S("b"), S(""), S("b"), 1, 0, nullptr));
    kalnetbus* fresh = d->getNetbus(S("b"));
    EXPECT_EQ(d->getNet(S("b[0]"))->getBus(), fresh);
    delete bus;
    EXPECT_EQ(d->getNetbus(S("b")), fresh);
    EXPECT_EQ(fresh->getBits()[1], d->getNet(S("b[0]")));
}

TEST_F(lifetime, netbus_handed_back_leaves_its_name_to_a_new_bus) {
    kalnetbus* bus = d->getNetbus(S("b"));
    ASSERT_TRUE(d->removeNetbus(S("b")));
    ASSERT_TRUE(d->addNetbus(S("b"), S(""), S("b"), 3, 2, nullptr));
    kalnetbus* fresh = d->getNetbus(S("b"));
    kalrecorder::clear();
    // A bit of the old bus dies: the new bus keeps its name and its place.
    EXPECT_TRUE(d->removeNet(S("b[0]")));
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/b[0] port=top/u1/q[0]", "net/rem net=top::rtl/b[0]"}));
    EXPECT_EQ(d->getNetbus(S("b")), fresh);
    EXPECT_EQ(bus->getBits()[1], nullptr);
    delete bus;
}

TEST_F(lifetime, netbus_made_by_the_caller_over_design_nets) {
    std::vector<kalnet*> nets{d->getNet(S("w")), d->getNet(S("b[0]"))};
    // No design ever held it and none handed it back: like every such bus it
    // is destroyed with the first of its bits to die (a leak would show).
    kalnetbus::createNetBus(S("m"), S("m"), 1, 0, nets, nullptr);
    dropTree();
}

// ---- dual ports and dual port buses ----

TEST_F(lifetime, dual_port_handed_back_outlives_its_design) {
    dualPorts();
    kaldualport* dp = d->getDualPort("dp");
    d->removeDualPort("dp");
    EXPECT_EQ(dp->getDesign(), d);
    dropTree();
    EXPECT_EQ(dp->getPortsCount(), 0u);
    EXPECT_EQ(dp->getDesign(), nullptr);
    EXPECT_EQ(dp->getBus(), nullptr);
    delete dp;
}

TEST_F(lifetime, dual_port_handed_back_destroyed_first) {
    dualPorts();
    kaldualport* dp = d->getDualPort("dp");
    kaldualportbus* bus = d->getDualPortbus("dpb");
    d->removeDualPort("dp");
    delete dp;
    // Its bus left the design's map with it, as a dying member takes it; the
    // bus is the caller's now, and its other member keeps the link.
    EXPECT_EQ(records(), (lines{"dualpinbus/remove dualpinbus=dpb"}));
    EXPECT_EQ(d->getDualPortbus("dpb"), nullptr);
    EXPECT_EQ(port("u1", "a")->getDualPort(), nullptr);
    EXPECT_EQ(d->getDualPort("dq")->getBus(), bus);
    dropTree();
    EXPECT_EQ(bus->getSlots(), (std::vector<kaldualport*>{nullptr, nullptr}));
    delete bus;
}

TEST_F(lifetime, dual_port_bus_handed_back_outlives_its_design) {
    dualPorts();
    kaldualportbus* bus = d->getDualPortbus("dpb");
    d->removeDualPortBus("dpb");
    EXPECT_EQ(d->getDualPort("dp")->getBus(), bus);
    kalrecorder::clear();
    dropTree();
    EXPECT_EQ(records(), lines{});
    EXPECT_EQ(bus->getSlots(), (std::vector<kaldualport*>{nullptr, nullptr}));
    EXPECT_EQ(bus->getDesign(), nullptr);
    delete bus;
}

TEST_F(lifetime, dual_port_bus_handed_back_destroyed_first) {
    dualPorts();
    kaldualportbus* bus = d->getDualPortbus("dpb");
    d->removeDualPortBus("dpb");
    delete bus;
    EXPECT_EQ(d->getDualPort("dp")->getBus(), nullptr);
    d->deleteDualPort("dp");
}

TEST_F(lifetime, dual_port_and_its_bus_both_handed_back) {
    dualPorts();
    kaldualportbus* bus = d->getDualPortbus("dpb");
    kaldualport* dp = d->getDualPort("dp");
    d->removeDualPortBus("dpb");
    d->removeDualPort("dp");
    dropTree();
    delete dp;
    EXPECT_EQ(bus->getSlots(), (std::vector<kaldualport*>{nullptr, nullptr}));
    delete bus;
}

TEST_F(lifetime, dual_port_member_deleted_while_its_bus_is_handed_back) {
    dualPorts();
    kaldualportbus* bus = d->getDualPortbus("dpb");
    d->removeDualPortBus("dpb");
    // A new bus takes the name. The old bus's dying member still calls the
    // design's removeDualPortBus with its bus's name, which takes the new bus
    // out of the map: the caller owns both then, and may free them in any order.
    kaldualportbus* fresh = new kaldualportbus("dpb", 0, 0);
    ASSERT_TRUE(d->insertDualPortBus("dpb", fresh));
    kalrecorder::clear();
    d->deleteDualPort("dq");
    EXPECT_EQ(records(), (lines{"dualpinbus/remove dualpinbus=dpb"}));
    EXPECT_EQ(d->getDualPortbus("dpb"), nullptr);
    EXPECT_EQ(bus->getSlots()[1], nullptr);
    delete bus;
    dropTree();
    EXPECT_EQ(fresh->getDesign(), nullptr);
    delete fresh;
}

// ---- designs, instances, parameters ----

TEST_F(lifetime, design_handed_back_outlives_its_component) {
    top->createDesign(S("v"), S("l"), S("zz"), S("1"));
    kaldesign* other = top->getDesign(const_cast<std::string*>(S("zz")));
    ASSERT_EQ(top->deleteDesign(S("rtl")), 1);
    // The top port reaches a net of the handed-back design.
    d->addNet(S("t"), S("t"), S(""), nullptr);
    ASSERT_TRUE(d->connect(S("t"), S("in"), S("")));
    kaldesign* mine = d;
    kalrecorder::clear();
    release(top);
    top = nullptr;
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/t port=top/in"}));
    EXPECT_EQ(mine->owner, nullptr);
    EXPECT_EQ(mine->getNet(S("t"))->getPorts().size(), 0u);
    (void)other;
    // Queries on it answer as for a design without owner.
    EXPECT_EQ(mine->getInstance(S("")), nullptr);
    kalcomponent* u1 = mine->getInstance(S("u1"));
    EXPECT_FALSE(mine->isSourcePort(u1->getPort(S("a"), false)));
    kalsupport::releaseLeftovers(u1);
    kalsupport::releaseLeftovers(mine->getInstance(S("u2")));
    EXPECT_TRUE(mine->removeInstance(S("u1")));
    delete mine;
}

TEST_F(lifetime, design_handed_back_destroyed_first) {
    ASSERT_EQ(top->deleteDesign(S("rtl")), 1);
    kalsupport::releaseLeftovers(d->getInstance(S("u1")));
    kalsupport::releaseLeftovers(d->getInstance(S("u2")));
    delete d;
    d = nullptr;
}

TEST_F(lifetime, design_replaced_by_createDesign_outlives_its_component) {
    kaldesign* old = d;
    top->createDesign(S("v"), S("l"), S("rtl"), S("2"));
    release(top);
    top = nullptr;
    EXPECT_EQ(old->owner, nullptr);
    kalsupport::releaseLeftovers(old->getInstance(S("u1")));
    kalsupport::releaseLeftovers(old->getInstance(S("u2")));
    delete old;
}

TEST_F(lifetime, instances_handed_back_outlive_their_design) {
    kalcomponent* u1 = d->getInstance(S("u1"));
    kalcomponent* u2 = d->getInstance(S("u2"));
    dualPorts();
    d->removeAllInstances();
    EXPECT_EQ(u1->parentDesign, d);
    dropTree();
    EXPECT_EQ(u1->parentDesign, nullptr);
    EXPECT_EQ(u1->getPort(S("y"), false)->getNet(), nullptr);
    EXPECT_EQ(u1->getPort(S("a"), false)->getDualPort(), nullptr);
    EXPECT_EQ(*u1->data->instanceName, "u1");
    EXPECT_TRUE(*u1 == *u1);
    EXPECT_FALSE(*u1 == *u2);
    release(u1);
    release(u2);
}

TEST_F(lifetime, instances_handed_back_destroyed_first) {
    kalcomponent* u1 = d->getInstance(S("u1"));
    kalcomponent* u2 = d->getInstance(S("u2"));
    d->removeAllInstances();
    release(u1);
    // Its ports left the design's nets, each with its record.
    EXPECT_EQ(d->getNet(S("w"))->getPorts(), (std::vector<kalport*>{u2->getPort(S("a"), false)}));
    EXPECT_EQ(records(), (lines{"connect/rem net=top::rtl/b[0] port=top/u1/q[0]",
                                "connect/rem net=top::rtl/b[1] port=top/u1/q[1]",
                                "connect/rem net=top::rtl/w port=top/u1/y"}));
    release(u2);
}

TEST_F(lifetime, instance_handed_back_placed_in_another_design) {
    kalcomponent* u1 = d->getInstance(S("u1"));
    kalcomponent* u2 = d->getInstance(S("u2"));
    d->removeAllInstances();
    auto* other = new kalcomponent(S("v"), S("l"), S("other"), S("1"));
    other->createDesign(S("v"), S("l"), S("impl"), S("1"));
    kaldesign* od = other->getDesign(const_cast<std::string*>(S("impl")));
    std::string name("x1");
    ASSERT_TRUE(od->addInstance(&name, u1));
    dropTree();
    // The first design's death leaves the instance where it is now.
    EXPECT_EQ(u1->parentDesign, od);
    EXPECT_TRUE(checkModel(other).empty());
    release(other);
    release(u2);
}

TEST_F(lifetime, parameter_handed_back_outlives_its_component) {
    auto* p = new kalparameter(S("p"), S("p"), S("1"), nullptr);
    ASSERT_EQ(top->addParameter(S("p"), p), 1);
    ASSERT_EQ(top->removeParameter(S("p")), 1);
    dropTree();
    delete p;
}

// ---- port buses made without slots ----

TEST_F(lifetime, portbus_with_a_direction_outside_the_range) {
    kalcomponent* u1 = d->getInstance(S("u1"));
    for (int direction : {0, 4, -1}) {
        u1->addPortbus(S("z"), S("z"), 3, 0, direction, nullptr);
        kalportbus* bus = u1->getPortbus(S("z"), false);
        if (!bus) continue;
        EXPECT_EQ(bus->portAtIndex(0), nullptr);
        bus->connect(1, port("u1", "a"));
        bus->disconnect(1);
        bus->disconnect(port("u1", "a"));
        EXPECT_FALSE(bus->hasConnectedPort());
        EXPECT_EQ(bus->getConnectedNetbus(), nullptr);
        EXPECT_EQ(bus->getExportedToBus(), nullptr);
        EXPECT_FALSE(bus->connectToNetbus(d->getNetbus(S("b"))));
        bus->exportTo(u1->getPortbus(S("q"), false));
        bus->unexport();
        bus->setAttribute(S("k"), S("v"), S("x"), true);
        bus->removeAllAttributes(true);
        EXPECT_FALSE(isPadPinBus(bus));
        EXPECT_EQ(getNetbusConnectedToPortbusOrDualPortbus(bus), nullptr);
        EXPECT_FALSE(hasPortBitConnectedToPortbusOrDualPortbus(bus));
        EXPECT_FALSE(isDualPortbus(bus));
        u1->changePortbusName(S("z"), S("z2"));
        EXPECT_EQ(u1->deletePortbus(S("z2")) + u1->deletePortbus(S("z")), 1);
    }
    u1->addPortbus(S("z"), S("z"), 1, 0, 7, nullptr);
}

}  // namespace

namespace {

// ---- links kept by a bus after a member left its slot ----

TEST_F(lifetime, members_that_left_a_slot_with_their_link_kept) {
    // A net bus slot emptied by index: the net keeps its link, and loses it
    // when the bus dies first.
    kalnet* bit = d->getNet(S("b[1]"));
    kalnetbus* bus = d->getNetbus(S("b"));
    bus->disconnect(1u);
    EXPECT_EQ(bit->getBus(), bus);
    ASSERT_TRUE(d->deleteNetbus(S("b")));
    EXPECT_EQ(bit->getBus(), nullptr);
    EXPECT_TRUE(d->removeNet(S("b[1]")));

    // A port bus slot given to another port: the first keeps its link until
    // the bus dies.
    kalcomponent* u1 = d->getInstance(S("u1"));
    kalportbus* q = u1->getPortbus(S("q"), false);
    kalport* first = u1->getPort(S("q[1]"), false);
    q->connect(1, u1->getPort(S("a"), false));
    EXPECT_EQ(first->getBus(), q);
    ASSERT_EQ(u1->deletePortbus(S("q")), 1);
    // Whatever of the bits survived reads no bus (the checker reads every link).
    if (u1->getPort(S("q[1]"), false)) {
        EXPECT_EQ(first->getBus(), nullptr);
    }
}

}  // namespace

namespace {

// ---- a port whose link moved on while a net still lists it ----

// A replaced design keeps its nets; the top port moves to the equal net of the
// new design, and the old net still lists it.
class movedOn : public lifetime {
protected:
    void SetUp() override {
        lifetime::SetUp();
        d->addNet(S("t"), S("t"), S(""), nullptr);
        ASSERT_TRUE(d->connect(S("t"), S("in"), S("")));
        old = d;
        top->createDesign(S("v"), S("l"), S("rtl"), S("1"));
        d = top->getDesign(const_cast<std::string*>(S("rtl")));
        ASSERT_NE(d, old);
        d->addNet(S("t"), S("t"), S(""), nullptr);
        ASSERT_TRUE(d->connect(S("t"), S("in"), S("")));
        in = top->getPort(S("in"), false);
        ASSERT_EQ(in->getNet(), d->getNet(S("t")));
        kalrecorder::clear();
    }
    void dropOld() {
        kalsupport::releaseLeftovers(old->getInstance(S("u1")));
        kalsupport::releaseLeftovers(old->getInstance(S("u2")));
        delete old;
        old = nullptr;
    }
    kaldesign* old = nullptr;
    kalport* in = nullptr;
};

TEST_F(movedOn, port_removed_then_the_old_net_dies) {
    ASSERT_EQ(top->removePort(S("in")), 1);
    EXPECT_EQ(old->getNet(S("t"))->getPorts().size(), 0u);
    dropOld();
}

TEST_F(movedOn, component_released_then_the_old_net_dies) {
    dropTree();
    EXPECT_EQ(old->getNet(S("t"))->getPorts().size(), 0u);
    dropOld();
}

TEST_F(movedOn, old_net_removed_first) {
    EXPECT_EQ(old->getNet(S("t"))->getPorts(), (std::vector<kalport*>{in}));
    // Removing a net removes the top ports on it, here the port the new
    // design's net now holds; that net must not keep it.
    EXPECT_TRUE(old->removeNet(S("t")));
    EXPECT_EQ(top->getPort(S("in"), false), nullptr);
    EXPECT_EQ(d->getNet(S("t"))->getPorts().size(), 0u);
    dropOld();
}

}  // namespace

namespace {

// ---- twins: two listed ports that compare equal ----

// removeAllInstances hands the instances back with their names and their
// ports still on the nets; one added again under the other's name makes two
// equal ports on one net. A net takes the first equal entry off its list, so
// destroying the net while it lists both must still leave neither pointing
// at it.
TEST_F(lifetime, twins_on_a_net_that_dies) {
    d->addNet(S("t"), S("t"), S(""), nullptr);
    ASSERT_TRUE(d->connect(S("t"), S("a"), S("u1")));
    ASSERT_TRUE(d->connect(S("t"), S("a"), S("u2")));
    kalcomponent* u1 = d->getInstance(S("u1"));
    kalcomponent* u2 = d->getInstance(S("u2"));
    d->removeAllInstances();
    std::string again("u2");
    ASSERT_TRUE(d->addInstance(&again, u1));
    kalport* a1 = u1->getPort(S("a"), false);
    kalport* a2 = u2->getPort(S("a"), false);
    ASSERT_TRUE(*a1 == *a2);
    ASSERT_EQ(d->getNet(S("t"))->getPorts().size(), 2u);
    d->removeAllInstances();  // both are ours now, and still listed
    ASSERT_EQ(d->getNet(S("t"))->getPorts().size(), 2u);
    ASSERT_EQ(top->deleteDesign(S("rtl")), 1);
    delete d;
    d = nullptr;
    EXPECT_EQ(a1->getNet(), nullptr);
    EXPECT_EQ(a2->getNet(), nullptr);
    release(u1);
    release(u2);
}

}  // namespace
