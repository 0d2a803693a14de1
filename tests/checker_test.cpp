// SPDX-License-Identifier: Apache-2.0
// The model checker must report links that public calls can leave broken.
#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

TEST_F(recorded, checker_reports_broken_links_with_paths) {
    auto* top = new kalcomponent(S("v"), S("l"), S("top"), S("1"));
    top->createDesign(S("v"), S("l"), S("rtl"), S("1"));
    std::string rtl("rtl");
    kaldesign* d = top->getDesign(&rtl);
    auto* u1 = new kalcomponent(S("v"), S("l"), S("blk"), S("1"));
    u1->addPort(S("a"), S("a"), 2, nullptr);
    std::string inst("u1");
    d->addInstance(&inst, u1);
    top->addNet(S("n1"), S("n1"), S(""), nullptr);
    top->addNet(S("n2"), S("n2"), S(""), nullptr);
    ASSERT_TRUE(top->connect(S("n1"), S("a"), S("u1")));
    EXPECT_TRUE(checkModel(top).empty());

    // The port is pointed at another net, which does not list it: it leaves n1
    // properly, but n2 never learns of it.
    kalport* a = u1->getPort(S("a"), false);
    a->connect(d->getNet(S("n2")));
    const auto problems = checkModel(top);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0], "top::rtl/u1/a: its net n2 does not list it");

    d->getNet(S("n2"))->connect(a, false);
    EXPECT_TRUE(checkModel(top).empty());
    release(top);
}

// The library's own check must see what the public checker cannot: an
// instance name changed behind the library's back leaves a large net's port
// index holding its ports under stale keys, which the net's lookups would
// then miss. The bus moved onto taken names leaves unkeyed bits, which are
// accounted for and so not reported.
TEST_F(recorded, hidden_state_check_reports_a_stale_port_index) {
    auto* top = new kalcomponent(S("v"), S("l"), S("top"), S("1"));
    top->createDesign(S("v"), S("l"), S("rtl"), S("1"));
    std::string rtl("rtl");
    kaldesign* d = top->getDesign(&rtl);
    top->addNet(S("clk"), S("clk"), S(""), nullptr);
    kalcomponent* u7 = nullptr;
    for (int i = 0; i < 30; ++i) {  // past the size at which a net indexes its ports
        auto* u = new kalcomponent(S("v"), S("l"), S("blk"), S("1"));
        u->addPort(S("c"), S("c"), 1, nullptr);
        std::string name = "u" + std::to_string(i);
        d->addInstance(&name, u);
        ASSERT_TRUE(top->connect(S("clk"), S("c"), &name));
        if (i == 7) u7 = u;
    }
    top->addNetbus(S("e"), S(""), S("e"), 1, 0, nullptr);
    top->addNet(S("e[3]"), S("e[3]"), S(""), nullptr);
    top->addNet(S("e[2]"), S("e[2]"), S(""), nullptr);
    ASSERT_TRUE(d->changeNetBusRange(S("e"), 3, 2));
    EXPECT_TRUE(kalverify::model(top).empty());

    const std::string kept = *u7->data->instanceName;
    *u7->data->instanceName = "renamed";
    // From outside only the name is seen to differ from the key; the lookups
    // that the stale index now misses are seen from inside.
    EXPECT_EQ(checkModel(top),
              std::vector<std::string>{"top::rtl/u7: instanceName renamed differs from its key"});
    EXPECT_EQ(
        kalverify::model(top),
        (std::vector<std::string>{"net clk: port list: its index holds a port under a stale key",
                                  "port renamed.c: its net clk neither lists it nor knows it as a twin"}));
    *u7->data->instanceName = kept;
    EXPECT_TRUE(kalverify::model(top).empty());
    release(top);
}
