// SPDX-License-Identifier: Apache-2.0
#include "w1model.h"

#include <charconv>
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

// Names are formatted in a local buffer and written over a reused string in
// one step (prefix + i, optionally + sep + j + close): the benchmark's own
// share of the time is meant to stay small.
char* put(char* at, std::size_t n) {
    return std::to_chars(at, at + 20, n).ptr;
}
std::string& name(std::string& out, const char* prefix, std::size_t i) {
    char buffer[48];
    char* at = buffer;
    while (*prefix)
        *at++ = *prefix++;
    at = put(at, i);
    return out.assign(buffer, static_cast<std::size_t>(at - buffer));
}
std::string& name(std::string& out, const char* prefix, std::size_t i, char sep, std::size_t j,
                  const char* close = "") {
    char buffer[48];
    char* at = buffer;
    while (*prefix)
        *at++ = *prefix++;
    at = put(at, i);
    *at++ = sep;
    at = put(at, j);
    while (*close)
        *at++ = *close++;
    return out.assign(buffer, static_cast<std::size_t>(at - buffer));
}

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
    std::string acme("acme"), ip("ip"), v10("1.0"), clk("clk"), empty, bus("d"), a;
    const std::string types[4] = {"blk0", "blk1", "blk2", "blk3"};
    std::string in[8], out[8];
    for (int j = 0; j < 8; ++j) {
        name(in[j], "i", j);
        name(out[j], "o", j);
    }
    for (std::size_t i = 0; i < n; ++i) {
        auto* c = new kalcomponent(&acme, &ip, &types[i % 4], &v10);
        for (int j = 0; j < 8; ++j)
            c->addPort(&in[j], &in[j], 1, nullptr);
        for (int j = 0; j < 8; ++j)
            c->addPort(&out[j], &out[j], 2, nullptr);
        c->addPortbus(&bus, &bus, 31, 0, 2, nullptr);
        d->addInstance(&name(a, "u", i), c);
    }
    d->addNet(&clk, &clk, &empty, nullptr);
    for (std::size_t i = 0; i < n; ++i) {
        for (int j = 0; j < 8; ++j) {
            name(a, "n", i, '_', j);
            d->addNet(&a, &a, &empty, nullptr);
        }
        name(a, "b", i);
        d->addNetbus(&a, &empty, &a, 31, 0, nullptr);
    }
}

void drivers(kaldesign* d, std::size_t n) {
    std::string inst, net, out[8], bit[32];
    for (int j = 0; j < 8; ++j)
        name(out[j], "o", j);
    for (int k = 0; k < 32; ++k)
        bit[k] = "d[" + std::to_string(k) + "]";
    for (std::size_t i = 0; i < n; ++i) {
        name(inst, "u", i);
        for (int j = 0; j < 8; ++j)
            if (!d->connect(&name(net, "n", i, '_', j), &out[j], &inst)) fail("connect", net);
        for (int k = 31; k >= 0; --k)
            if (!d->connect(&name(net, "b", i, '[', k, "]"), &bit[k], &inst)) fail("connect", net);
    }
}

void clk(kaldesign* d, std::size_t n) {
    std::string clk("clk"), empty, i0("i0"), inst;
    if (!d->connect(&clk, &clk, &empty)) fail("connect", "clk top port");
    for (std::size_t i = 0; i < n; ++i)
        if (!d->connect(&clk, &i0, &name(inst, "u", i))) fail("connect clk", inst);
}

void random(kaldesign* d, std::size_t n) {
    lcg rng;
    std::string inst, net, in[8];
    for (int j = 0; j < 8; ++j)
        name(in[j], "i", j);
    for (std::size_t i = 0; i < n; ++i) {
        name(inst, "u", i);
        for (int j = 1; j <= 7; ++j) {
            std::size_t s = rng.next() % (n - 1);
            if (s >= i) ++s;
            std::uint32_t b = rng.next() % 8;
            if (!d->connect(&name(net, "n", s, '_', b), &in[j], &inst)) fail("connect", net);
        }
    }
}

void rename(kaldesign* d, std::size_t n) {
    std::string from, to;
    for (std::size_t i = 0; i < n; i += 10) {
        name(from, "n", i, '_', 0);
        if (!d->changeNetName(&from, &name(to, "r", i, '_', 0))) fail("rename", from);
    }
}

void remove(kaldesign* d, std::size_t n) {
    std::string inst;
    for (std::size_t i = 5; i < n; i += 10) {
        name(inst, "u", i);
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
