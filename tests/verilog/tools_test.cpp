// Netlists read by tools no one here wrote: iverilog compiles them and Yosys's
// own netlist of them joins the same port bits as the model does.
#include <gtest/gtest.h>

#include <string>

#include "kaldata.h"
#include "kalrecorder.h"
#include "models.h"
#include "support/release.h"
#include "toolcheck.h"
#include "w1model.h"

namespace {

class tools : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string missing = toolcheck::missingTools();
        if (!missing.empty()) GTEST_SKIP() << "not installed: " << missing << " (CI installs them)";
        kalrecorder::setNullObjects(true);
        kalrecorder::setKeepRecords(false);
    }
    void TearDown() override {
        kalrecorder::setNullObjects(false);
        kalrecorder::setKeepRecords(true);
        kalrecorder::clear();
    }
};

TEST_F(tools, demo_design_before_and_after_removing_u2) {
    for (bool removeU2 : {false, true}) {
        models::names N;
        kalcomponent* top = models::demo(N, removeU2);
        toolcheck::verdict v = toolcheck::check(top);
        EXPECT_TRUE(v.ok) << (removeU2 ? "after" : "before") << " removing u2:\n" << v.failure;
        release(top);
    }
}

TEST_F(tools, three_levels_with_buses_exports_and_dual_ports) {
    models::names N;
    kalcomponent* soc = models::hierarchy(N);
    // The model side of the comparison sees what the netlist must show.
    toolcheck::groups inside = toolcheck::fromModel(soc);
    EXPECT_EQ(inside["c1.cpu_clk"], (std::set<std::string>{"c0.cpu_clk", "pll.clk_out"}));  // by dual port
    EXPECT_EQ(inside["pll.lock"], (std::set<std::string>{"u-glue.b[2]"}));  // a dual port on no net
    EXPECT_EQ(inside["top.dout[1]"], (std::set<std::string>{"pll.phase[1]"}));
    EXPECT_TRUE(inside["c1.cpu_io"].empty());  // on a net inside c1 only
    toolcheck::verdict v = toolcheck::check(soc);
    EXPECT_TRUE(v.ok) << v.failure;
    release(soc);
}

TEST_F(tools, w1_at_1000_instances) {
    // After the edit phases too: renamed nets and removed instances.
    kalcomponent* top = w1::build(1000);
    w1::rename(w1::design(top), 1000);
    w1::remove(w1::design(top), 1000);
    toolcheck::verdict v = toolcheck::check(top);
    EXPECT_TRUE(v.ok) << v.failure;
    release(top);
}

}  // namespace
