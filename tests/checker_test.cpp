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
