// SPDX-License-Identifier: Apache-2.0
// Dual port management of a design: merging ports, splitting them again,
// dual port buses, and the records each step sends.
#include "support/model.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;
}  // namespace

using dualpin = modeltest;

TEST_F(dualpin, merging_splitting_and_buses) {
    top->setName(S("Chip"));  // so that each path shows which of the root's names it uses
    const ports n = wire("n", {{"u1", "a", 2}, {"u2", "a", 2}})->getPorts();
    const ports k = wire("k", {{"u3", "b", 1}})->getPorts();
    kalport* u1b = pin("u1", "b", 1);
    kalport* u1c = pin("u1", "c", 1);
    d->addPortToDualPort("m", n[0]);
    d->addPortToDualPort("m", n[0]);  // reported again, but listed once
    d->addPortToDualPort("m", n[1]);
    EXPECT_EQ(d->getDualPort("m")->getPortList(), (ports{n[0], n[1]}));
    d->addPortsToDualPort("v", {u1b, k[0]});
    d->addPortsToDualPort("w", {u1c, pin("u2", "c", 1)});

    // A dual port left with one port is dissolved, and that port is free again.
    d->removePortFromDualPort("m", n[0]);
    EXPECT_EQ(n[1]->getDualPort(), nullptr);
    // The path is the port's net, else a net of another member, else the dual port's own.
    d->removePortFromDualPort("v", u1b);
    d->removePortFromDualPort("w", u1c);
    EXPECT_TRUE(d->data->getDualPortMap()->empty());

    // Deleting a bus deletes its dual ports by their own names.
    d->removeDualPortBus("nope");
    d->addPortsToDualPort("x0", {n[0], n[1]});
    auto* odd = new kaldualport("own");
    odd->addPort(k[0]);
    d->insertDualPort("alias", odd);  // registered under a key that is not its own name
    kaldualportbus* bus = kaldualportbus::createDualPortBus("B", 1, 0, {d->getDualPort("x0"), odd});
    EXPECT_TRUE(d->insertDualPortBus("B", bus));
    d->deleteDualPortBus("B");
    EXPECT_EQ(d->getDualPortbus("B"), nullptr);
    EXPECT_EQ(d->getDualPort("x0"), nullptr);
    // "own" is no key, so that one stays, without its bus.
    ASSERT_EQ(d->getDualPort("alias"), odd);
    EXPECT_EQ(odd->getBus(), nullptr);
    EXPECT_EQ(records(), (lines{"dualpin/add dualpin=top::Chip/m", "dualpin/add dualpin=top::Chip/m",
                                "dualpin/add dualpin=top::Chip/m", "dualpin/add dualpin=top::Chip/v",
                                "dualpin/add dualpin=top::Chip/w",
                                "dualpin/remove dualpin=top::rtl/n port=top::rtl/u1/a",
                                "dualpin/remove dualpin=top::rtl/k port=top::rtl/u1/b",
                                "dualpin/remove dualpin=top::Chip/w port=top::rtl/u1/c",
                                "dualpinbus/remove dualpinbus=nope", "dualpin/add dualpin=top::Chip/x0",
                                "dualpin/add dualpin=top::Chip/alias", "dualpinbus/add dualpinbus=B"}));
}

TEST_F(dualpin, design_without_owner_sends_nothing) {
    auto* solo = new kaldesign(S("v"), S("l"), S("solo"), S("1.0"));
    const ports p = {pin("", "a", 1), pin("", "b", 1)};
    kalrecorder::clear();
    solo->insertDualPort("p", new kaldualport("p"));
    solo->addPortToDualPort("q", p[0]);
    solo->addPortsToDualPort("q", {p[1]});
    kaldualportbus bus("B", 0, 0);
    EXPECT_TRUE(solo->insertDualPortBus("B", &bus));
    solo->removePortFromDualPort("q", p[0]);
    EXPECT_EQ(solo->getDualPort("q"), nullptr);
    solo->removeDualPortBus("B");
    EXPECT_TRUE(records().empty());
    delete solo;
}
