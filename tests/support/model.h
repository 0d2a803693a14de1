// SPDX-License-Identifier: Apache-2.0
// A fixture with a root component "top" and its design "rtl", and helpers
// that make instances, ports and nets on first use. Every test ends with the
// model checker and a leak-free teardown.
#ifndef KALDATA_TESTS_SUPPORT_MODEL_H
#define KALDATA_TESTS_SUPPORT_MODEL_H

#include <vector>

#include "kaldata.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

struct endpoint {
    const char* inst;  // "" for a port of top
    const char* port;
    int direction;
};

class modeltest : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        top = new kalcomponent(S("v"), S("l"), S("top"), S("1.0"));
        top->createDesign(S("v"), S("l"), S("rtl"), S("1.0"));
        std::string rtl("rtl");
        d = top->getDesign(&rtl);
    }
    void TearDown() override {
        EXPECT_MODEL_OK(top);
        release(top);
        recorded::TearDown();
    }
    // The instance `name` of type "blk", made on first use ("" is top itself).
    kalcomponent* inst(const char* name) {
        if (!*name) return top;
        kalcomponent* c = d->getInstance(S(name));
        if (c) return c;
        c = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
        std::string key(name);
        EXPECT_TRUE(d->addInstance(&key, c));
        return c;
    }
    // Port `port` of instance `name`, made on first use.
    kalport* pin(const char* name, const char* port, int direction) {
        kalcomponent* c = inst(name);
        c->addPort(S(port), S(port), direction, nullptr);
        return c->getPort(S(port), false);
    }
    // Net `name` (made unless present) joining the ports in order; the recorder is emptied after.
    kalnet* wire(const char* name, std::vector<endpoint> ends) {
        top->addNet(S(name), S(name), S(""), nullptr);
        for (const endpoint& e : ends) {
            pin(e.inst, e.port, e.direction);
            EXPECT_TRUE(top->connect(S(name), S(e.port), S(e.inst))) << name << ' ' << e.port;
        }
        kalrecorder::clear();
        return d->getNet(S(name));
    }
    kalcomponent* top = nullptr;
    kaldesign* d = nullptr;
};

#endif
