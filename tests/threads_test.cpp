// Separate models on separate threads. Port and port bus names are shared
// process-wide (every instance of a block type repeats them), so the shared
// name table is the one place where two models meet; it takes a lock for
// that. Without the lock this test corrupts the table (a crash, or names that
// change under a live port).
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "kaldata.h"
#include "support/release.h"

namespace {

// Builds and destroys components whose port names the other thread uses too.
bool churn(int rounds) {
    std::string v = "v", l = "l", n = "blk", ver = "1", q = "q";
    std::vector<std::string> names;
    for (int k = 0; k < 40; ++k)
        names.push_back("p" + std::to_string(k));
    bool ok = true;
    for (int r = 0; r < rounds; ++r) {
        auto* c = new kalcomponent(&v, &l, &n, &ver);
        for (const std::string& name : names)
            c->addPort(&name, &name, 1, nullptr);
        c->addPortbus(&q, &q, 7, 0, 2, nullptr);
        for (const std::string& name : names) {
            kalport* p = c->getPort(&name, false);
            ok = ok && p && p->getName() && *p->getName() == name;
        }
        release(c);
    }
    return ok;
}

TEST(threads, separate_models_share_port_names_safely) {
    bool first = false, second = false;
    std::thread a([&] { first = churn(300); });
    std::thread b([&] { second = churn(300); });
    a.join();
    b.join();
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

}  // namespace
