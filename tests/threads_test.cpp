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

namespace {

// A port type of the application's own: larger than the library's slots.
struct tagged : kalport {
    using kalport::kalport;
    long tag[3] = {1, 2, 3};
};

}  // namespace

// Ports and nets come from per-thread slabs. One made on a thread may die on
// another, and the slot it leaves is handed out again there; a derived type
// of another size goes to the global allocator and back.
TEST(threads, ports_and_nets_may_die_on_another_thread) {
    std::string a = "a", n = "n";
    std::vector<kalport*> ports;
    std::vector<kalnet*> nets;
    std::thread maker([&] {
        for (int k = 0; k < 5000; ++k) {
            ports.push_back(new kalport(&a, &a, 1, nullptr));
            nets.push_back(new kalnet(&n, &n, nullptr));
            nets.back()->connect(ports.back(), false);
        }
    });
    maker.join();
    for (kalnet* net : nets)
        delete net;
    for (kalport* port : ports) {
        EXPECT_EQ(port->getNet(), nullptr);
        delete port;
    }
    // The freed slots serve this thread now; every object is whole.
    std::vector<kalport*> again;
    for (int k = 0; k < 5000; ++k) {
        again.push_back(k % 2 ? new tagged(&n, &n, 2, nullptr) : new kalport(&n, &n, 2, nullptr));
        again.back()->setAttribute(&a, &n, &a);
    }
    for (kalport* p : again) {
        EXPECT_EQ(*p->getName(), "n");
        EXPECT_EQ(p->getDirection(), 2);
        EXPECT_EQ(*p->getAttributeValue(&a), "n");
    }
    for (std::size_t k = 0; k < again.size(); ++k) {
        if (k % 2)
            delete static_cast<tagged*>(again[k]);
        else
            delete again[k];
    }
}
