// SPDX-License-Identifier: Apache-2.0
// The records themselves: a change given the name field of the very object it
// frees or renames still reports the name it was given; a dropped record
// creates the same objects in the same order as a sent one; dual port records
// of a design that no component holds are created and never sent.
#include "support/model.h"

namespace {
using lines = std::vector<std::string>;

std::vector<std::string> createdKinds() {
    std::vector<std::string> out;
    for (const auto& r : kalrecorder::created())
        out.push_back(r.category + "/" + r.action);
    return out;
}
}  // namespace

using records_of = modeltest;

// Each call below is handed a pointer into the object it removes or renames;
// a record built from it after the change would read freed or changed text.
TEST_F(records_of, own_names_as_arguments) {
    kalport* x = pin("u1", "x", 1);
    kalrecorder::clear();
    ASSERT_EQ(inst("u1")->removePort(x->getName()), 1);
    inst("u1")->addPortbus(S("xb"), S("xb"), 1, 0, 1, nullptr);
    kalportbus* xb = inst("u1")->getPortbus(S("xb"), false);
    ASSERT_NE(xb, nullptr);
    ASSERT_EQ(inst("u1")->removePortbus(xb->getName()), 1);
    kalport* y = pin("u1", "y", 1);
    ASSERT_EQ(inst("u1")->changePortName(y->getName(), S("z")), 1);
    EXPECT_EQ(records(), (lines{"port/rem topport=u1/x", "portbus/rem topportbus=u1/xb",
                                "port/rnm oname=u1/y nname=u1/z"}));

    kalrecorder::clear();
    kalnet* n = wire("n", {{"u2", "o", 1}, {"u3", "i", 2}});
    ASSERT_TRUE(d->changeNetName(n->getName(), S("m")));
    ASSERT_TRUE(d->removeNet(n->getName()));
    top->addNetbus(S("b"), S(""), S("b"), 1, 0, nullptr);
    kalnetbus* b = d->getNetbus(S("b"));
    ASSERT_NE(b, nullptr);
    ASSERT_TRUE(d->removeNetbus(b->getName()));
    EXPECT_EQ(records(),
              (lines{"net/rnm oname=top::rtl/n nname=top::rtl/m", "connect/rem net=top::rtl/m port=top/u2/o",
                     "connect/rem net=top::rtl/m port=top/u3/i", "net/rem net=top::rtl/m",
                     "netbus/rem netbus=top::rtl/b"}));
    delete b;  // removeNetbus hands the bus back
}

// The records a sequence of changes creates, whether the service hands out
// objects or not: a record kind that checked its state before creating its
// object would change the count when records are dropped.
TEST_F(records_of, dropped_records_create_as_many_objects) {
    auto run = [this](const char* suffix) {
        const std::string u = std::string("u") + suffix;
        kalnet* n = wire((std::string("n") + suffix).c_str(), {{u.c_str(), "o", 1}, {"", suffix, 2}});
        const std::string from = *n->getName(), to = from + "r";
        EXPECT_TRUE(d->changeNetName(&from, &to));
        EXPECT_EQ(top->addExport("top/" + u + "/q", true, S(""), nullptr), 0);
        pin(u.c_str(), "q", 2);
        EXPECT_EQ(top->addExport("top/" + u + "/q", true, S(""), nullptr), 1);
        EXPECT_EQ(top->removeExport("top/" + u + "/q", true), 1);
        d->addPortToDualPort("dp" + u, inst(u.c_str())->getPort(S("o"), false));
        d->addPortToDualPort("dp" + u, inst(u.c_str())->getPort(S("q"), false));
        d->removePortFromDualPort("dp" + u, inst(u.c_str())->getPort(S("q"), false));
        releaseLeftovers(inst(u.c_str()));
        EXPECT_TRUE(d->removeInstance(&u));
    };
    kalrecorder::clear();
    run("1");
    const std::size_t live = kalrecorder::createCalls();
    const std::vector<std::string> kinds = createdKinds();
    // The top port follows the net's rename; unexporting prunes the net it
    // made; removing the instance prunes its net and the top port on it.
    EXPECT_EQ(kinds, (lines{"port/rnm", "net/rnm", "export/add", "connect/rem", "port/rem", "connect/rem",
                            "net/rem", "export/rem", "dualpin/add", "dualpin/add", "dualpin/remove",
                            "connect/rem", "connect/rem", "port/rem", "net/rem", "design/remove"}));
    EXPECT_EQ(kinds.size(), live);
    EXPECT_EQ(records().size(), live);  // every one of them sent

    kalrecorder::clear();
    kalrecorder::setNullObjects(true);
    run("2");
    EXPECT_EQ(kalrecorder::createCalls(), live);
    EXPECT_TRUE(kalrecorder::created().empty());
    kalrecorder::setNullObjects(false);
    EXPECT_EQ(d->getInstance(S("u2")), nullptr);
    EXPECT_EQ(top->getPort(S("2"), false), nullptr);  // pruned with the instance's net
}

TEST_F(records_of, dual_ports_of_a_design_without_owner_stay_unsent) {
    auto* solo = new kaldesign(S("v"), S("l"), S("solo"), S("1.0"));
    kalport* a = pin("", "a", 1);
    kalport* b = pin("", "b", 1);
    kalrecorder::clear();
    solo->insertDualPort("p", new kaldualport("p"));
    solo->addPortToDualPort("q", a);
    solo->addPortsToDualPort("q", {b});
    kaldualportbus bus("B", 0, 0);
    EXPECT_TRUE(solo->insertDualPortBus("B", &bus));
    solo->removePortFromDualPort("q", a);
    solo->removeDualPortBus("B");
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(createdKinds(), (lines{"dualpin/add", "dualpin/add", "dualpin/add", "dualpinbus/add",
                                     "dualpin/remove", "dualpinbus/remove"}));
    delete solo;
}
