// SPDX-License-Identifier: Apache-2.0
// Exports: instance ports and port buses made ports of the enclosing
// component, and taken back.
#include "support/model.h"

namespace {
using lines = std::vector<std::string>;
using ports = std::vector<kalport*>;
}  // namespace

using exports = modeltest;

TEST_F(exports, scalar_export_and_removal) {
    kalport* busy = pin("", "busy", 1);
    kalport* a = pin("u1", "a", 2);
    // n keeps a driver and a receiver once its export is gone.
    kalnet* n = wire("n", {{"u1", "o", 2}, {"u2", "i", 1}});
    const ports kept = n->getPorts();
    EXPECT_EQ(top->addExport("top/u1/zz", true, S(""), nullptr), 0);
    EXPECT_EQ(top->removeExport("top/u1/a", true), 0);  // never exported
    EXPECT_EQ(top->data->getValueMap()["ChangeConnect"], "");
    ASSERT_EQ(top->addExport("top/u1/a", true, S(""), nullptr), 1);
    ASSERT_EQ(top->addExport("top/u1/o", true, S(""), S("")), 1);  // empty top name: as if none
    EXPECT_EQ(d->getNet(S("u1_a"))->getPorts(), (ports{a, top->getPort(S("u1_a"), false)}));
    // A connected port keeps its net, yet the record names the net after the top port.
    ASSERT_EQ(n->getPorts(), (ports{kept[0], kept[1], top->getPort(S("u1_o"), false)}));
    EXPECT_EQ(n->getPorts()[2]->getDirection(), 2);
    EXPECT_EQ(top->data->getValueMap()["ChangeConnect"], "true");

    // A taken top name: reported as done, but nothing is wired and nothing sent.
    top->removeAttribute(S("ChangeConnect"));
    EXPECT_EQ(top->addExport("top/u2/i", true, S(""), S("busy")), 1);
    EXPECT_EQ(kept[1]->getExportedTo(), nullptr);
    EXPECT_EQ(busy->getNet(), nullptr);
    EXPECT_EQ(top->data->getValueMap()["ChangeConnect"], "true");

    EXPECT_EQ(top->removeExport("top/u1/a", true), 1);
    EXPECT_EQ(top->removeExport("top/u1/o", true), 1);
    EXPECT_EQ(records(), (lines{"export/add port=top/u1/a topport=top/u1_a net=top::rtl/u1_a",
                                "export/add port=top/u1/o topport=top/u1_o net=top::rtl/u1_o",
                                "connect/rem net=top::rtl/u1_a port=top/u1_a", "port/rem topport=top/u1_a",
                                "connect/rem net=top::rtl/u1_a port=top/u1/a", "net/rem net=top::rtl/u1_a",
                                "export/rem net=top::rtl/u1_a port=a topport=top/u1_a",
                                "connect/rem net=top::rtl/n port=top/u1_o", "port/rem topport=top/u1_o",
                                "export/rem port=o topport=top/u1_o"}));
    EXPECT_EQ(top->data->ports.size(), 1u);  // busy
    EXPECT_EQ(d->data->getNetMap()->size(), 1u);
    EXPECT_EQ(n->getPorts(), kept);
}

TEST_F(exports, bus_export_and_its_removal) {
    inst("u1")->addPortbus(S("q"), S("q"), 1, 0, 2, nullptr);
    kalportbus* q = inst("u1")->getPortbus(S("q"), false);
    kalrecorder::clear();
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    EXPECT_EQ(records(), lines{"export/add portbus=top/u1/q topportbus=top/u1_q netbus=top::rtl/u1_q"});

    kalrecorder::clear();
    EXPECT_EQ(top->removeExport("top/u1/q", true), 1);
    // Each bit net holds the bits of one position; the last bit net to go takes
    // its net bus along, which is reported twice.
    EXPECT_EQ(records(),
              (lines{"connect/rem net=top::rtl/u1_q[1] port=top/u1_q[1]",
                     "connect/rem net=top::rtl/u1_q[1] port=top/u1/q[1]", "net/rem net=top::rtl/u1_q[1]",
                     "netbus/rem netbus=top::rtl/u1_q", "netbus/rem netbus=top::rtl/u1_q",
                     "connect/rem net=top::rtl/u1_q[0] port=top/u1_q[0]",
                     "connect/rem net=top::rtl/u1_q[0] port=top/u1/q[0]", "net/rem net=top::rtl/u1_q[0]",
                     "port/rem topport=top/u1_q[1]", "port/rem topport=top/u1_q[0]",
                     "export/rem netbus=top::rtl/u1_q portbus=q topportbus=top/u1_q"}));

    // Exported again, with bit 0 driving a receiver: its net stays, so the record carries no net bus.
    ASSERT_EQ(top->addExport("top/u1/q", true, S(""), nullptr), 1);
    kalport* b = wire("u1_q[0]", {{"u2", "b", 1}})->getPorts().back();
    // A second top port on one bit net breaks the export apart: refused, nothing touched.
    wire("u1_q[1]", {{"", "extra", 1}});
    EXPECT_EQ(top->removeExport("top/u1/q", true), 0);
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(q->getExportedToBus(), top->getPortbus(S("u1_q"), false));
    ASSERT_TRUE(top->disconnect(S("u1_q[1]"), S("extra"), S("")));
    EXPECT_EQ(top->removeExport("top/u1/q", true), 1);
    EXPECT_EQ(records().back(), "export/rem portbus=q topportbus=top/u1_q");
    EXPECT_EQ(d->getNet(S("u1_q[0]"))->getPorts(), (ports{q->portAtIndex(0), b}));
}
