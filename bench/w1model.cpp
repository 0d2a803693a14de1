// SPDX-License-Identifier: Apache-2.0
#include "w1model.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "kaldata.h"

namespace {

struct lcg {
    std::uint64_t state = 1;
    std::uint32_t next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<std::uint32_t>(state >> 32);
    }
};

void fail(const char* what, const std::string& detail) {
    std::fprintf(stderr, "W1 failed: %s %s\n", what, detail.c_str());
    std::exit(1);
}

}  // namespace

namespace w1 {

kalcomponent* makeTop() {
    std::string acme("acme"), soc("soc"), top_("top"), v10("1.0"), rtl("top_rtl"), clk("clk");
    auto* top = new kalcomponent(&acme, &soc, &top_, &v10);
    top->createDesign(&acme, &soc, &rtl, &v10);
    top->addPort(&clk, &clk, 1, nullptr);
    return top;
}

kaldesign* design(kalcomponent* top) {
    std::string rtl("top_rtl");
    return top->getDesign(&rtl);
}

void create(kaldesign* d, std::size_t n) {
    std::string acme("acme"), ip("ip"), v10("1.0"), clk("clk"), empty;
    const std::string types[4] = {"blk0", "blk1", "blk2", "blk3"};
    for (std::size_t i = 0; i < n; ++i) {
        auto* c = new kalcomponent(&acme, &ip, &types[i % 4], &v10);
        for (int j = 0; j < 8; ++j) {
            std::string name = "i" + std::to_string(j);
            c->addPort(&name, &name, 1, nullptr);
        }
        for (int j = 0; j < 8; ++j) {
            std::string name = "o" + std::to_string(j);
            c->addPort(&name, &name, 2, nullptr);
        }
        std::string bus("d");
        c->addPortbus(&bus, &bus, 31, 0, 2, nullptr);
        std::string inst = "u" + std::to_string(i);
        d->addInstance(&inst, c);
    }
    d->addNet(&clk, &clk, &empty, nullptr);
    for (std::size_t i = 0; i < n; ++i) {
        for (int j = 0; j < 8; ++j) {
            std::string name = "n" + std::to_string(i) + "_" + std::to_string(j);
            d->addNet(&name, &name, &empty, nullptr);
        }
        std::string bus = "b" + std::to_string(i);
        d->addNetbus(&bus, &empty, &bus, 31, 0, nullptr);
    }
}

void drivers(kaldesign* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        std::string inst = "u" + std::to_string(i);
        for (int j = 0; j < 8; ++j) {
            std::string net = "n" + std::to_string(i) + "_" + std::to_string(j),
                        port = "o" + std::to_string(j);
            if (!d->connect(&net, &port, &inst)) fail("connect", net);
        }
        for (int k = 31; k >= 0; --k) {
            std::string net = "b" + std::to_string(i) + "[" + std::to_string(k) + "]";
            std::string port = "d[" + std::to_string(k) + "]";
            if (!d->connect(&net, &port, &inst)) fail("connect", net);
        }
    }
}

void clk(kaldesign* d, std::size_t n) {
    std::string clk("clk"), empty, i0("i0");
    if (!d->connect(&clk, &clk, &empty)) fail("connect", "clk top port");
    for (std::size_t i = 0; i < n; ++i) {
        std::string inst = "u" + std::to_string(i);
        if (!d->connect(&clk, &i0, &inst)) fail("connect clk", inst);
    }
}

void random(kaldesign* d, std::size_t n) {
    lcg rng;
    for (std::size_t i = 0; i < n; ++i) {
        std::string inst = "u" + std::to_string(i);
        for (int j = 1; j <= 7; ++j) {
            std::size_t s = rng.next() % (n - 1);
            if (s >= i) ++s;
            std::uint32_t b = rng.next() % 8;
            std::string net = "n" + std::to_string(s) + "_" + std::to_string(b),
                        port = "i" + std::to_string(j);
            if (!d->connect(&net, &port, &inst)) fail("connect", net);
        }
    }
}

void rename(kaldesign* d, std::size_t n) {
    for (std::size_t i = 0; i < n; i += 10) {
        std::string from = "n" + std::to_string(i) + "_0", to = "r" + std::to_string(i) + "_0";
        if (!d->changeNetName(&from, &to)) fail("rename", from);
    }
}

void remove(kaldesign* d, std::size_t n) {
    for (std::size_t i = 5; i < n; i += 10) {
        std::string inst = "u" + std::to_string(i);
        kalcomponent* c = d->getInstance(&inst);
        delete c->data->generators;  // a component never frees its generator registry
        c->data->generators = nullptr;
        if (!d->removeInstance(&inst)) fail("removeInstance", inst);
    }
}

kalcomponent* build(std::size_t n) {
    kalcomponent* top = makeTop();
    kaldesign* d = design(top);
    create(d, n);
    drivers(d, n);
    clk(d, n);
    random(d, n);
    return top;
}

}  // namespace w1
