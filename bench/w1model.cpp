#include "w1model.h"

#include <cstdint>
#include <vector>

#include "kaldata.h"

namespace w1 {

namespace {

struct lcg {
    std::uint64_t state = 1;
    std::uint32_t next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<std::uint32_t>(state >> 32);
    }
};

}  // namespace

model start(std::size_t n) {
    std::string acme("acme"), soc("soc"), top_("top"), v10("1.0"), rtl("top_rtl");
    model m;
    m.n = n;
    m.top = new kalcomponent(&acme, &soc, &top_, &v10);
    m.top->createDesign(&acme, &soc, &rtl, &v10);
    m.design = m.top->getDesign(&rtl);
    std::string clk("clk");
    m.top->addPort(&clk, &clk, 1, nullptr);
    return m;
}

void create(model& m) {
    kaldesign* d = m.design;
    std::string acme("acme"), ip("ip"), v10("1.0"), empty, clk("clk");
    const std::string types[4] = {"blk0", "blk1", "blk2", "blk3"};
    for (std::size_t i = 0; i < m.n; ++i) {
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
    for (std::size_t i = 0; i < m.n; ++i) {
        for (int j = 0; j < 8; ++j) {
            std::string name = "n" + std::to_string(i) + "_" + std::to_string(j);
            d->addNet(&name, &name, &empty, nullptr);
        }
        std::string bus = "b" + std::to_string(i);
        d->addNetbus(&bus, &empty, &bus, 31, 0, nullptr);
    }
}

bool drivers(model& m, std::string& failure) {
    kaldesign* d = m.design;
    for (std::size_t i = 0; i < m.n; ++i) {
        std::string inst = "u" + std::to_string(i);
        for (int j = 0; j < 8; ++j) {
            std::string net = "n" + std::to_string(i) + "_" + std::to_string(j),
                        port = "o" + std::to_string(j);
            if (!d->connect(&net, &port, &inst)) return failure = "connect " + net, false;
        }
        for (int k = 31; k >= 0; --k) {
            std::string net = "b" + std::to_string(i) + "[" + std::to_string(k) + "]";
            std::string port = "d[" + std::to_string(k) + "]";
            if (!d->connect(&net, &port, &inst)) return failure = "connect " + net, false;
        }
    }
    return true;
}

bool clock(model& m, std::string& failure) {
    kaldesign* d = m.design;
    std::string clk("clk"), empty, i0("i0");
    if (!d->connect(&clk, &clk, &empty)) return failure = "connect clk top port", false;
    for (std::size_t i = 0; i < m.n; ++i) {
        std::string inst = "u" + std::to_string(i);
        if (!d->connect(&clk, &i0, &inst)) return failure = "connect clk " + inst, false;
    }
    return true;
}

bool random(model& m, std::string& failure) {
    kaldesign* d = m.design;
    const std::size_t n = m.n;
    lcg rng;
    for (std::size_t i = 0; i < n; ++i) {
        std::string inst = "u" + std::to_string(i);
        for (int j = 1; j <= 7; ++j) {
            std::size_t s = rng.next() % (n - 1);
            if (s >= i) ++s;
            std::uint32_t b = rng.next() % 8;
            std::string net = "n" + std::to_string(s) + "_" + std::to_string(b),
                        port = "i" + std::to_string(j);
            if (!d->connect(&net, &port, &inst)) return failure = "connect " + net, false;
        }
    }
    return true;
}

bool rename(model& m, std::string& failure) {
    for (std::size_t i = 0; i < m.n; i += 10) {
        std::string from = "n" + std::to_string(i) + "_0", to = "r" + std::to_string(i) + "_0";
        if (!m.design->changeNetName(&from, &to)) return failure = "rename " + from, false;
    }
    return true;
}

bool remove(model& m, std::string& failure) {
    for (std::size_t i = 5; i < m.n; i += 10) {
        std::string inst = "u" + std::to_string(i);
        kalcomponent* c = m.design->getInstance(&inst);
        delete c->data->generators;  // a component never frees its generator registry
        c->data->generators = nullptr;
        if (!m.design->removeInstance(&inst)) return failure = "removeInstance " + inst, false;
    }
    return true;
}

bool build(model& m, std::string& failure) {
    create(m);
    return drivers(m, failure) && clock(m, failure) && random(m, failure) && rename(m, failure) &&
           remove(m, failure);
}

counts measure(const model& m) {
    kaldesign* d = m.design;
    counts c;
    c.instances = d->data->getInstanceMap()->size();
    c.nets = d->data->getNetMap()->size();
    c.netbuses = d->data->getNetbusMap()->size();
    for (auto& n : *d->data->getNetMap())
        c.portRefs += n.second->getPorts().size();
    std::string clk("clk");
    kalnet* net = d->getNet(&clk);
    c.clkPorts = net ? net->getPorts().size() : 0;
    return c;
}

counts expectedAfterBuild(std::size_t n) {
    return counts{n, 40 * n + 1, n, 48 * n + 1, n + 1};
}

bool expectedAfterEdit(std::size_t n, counts& c) {
    switch (n) {
        case 1000:
            c = {900, 35725, 900, 42278, 901};
            return true;
        case 10000:
            c = {9000, 357262, 9000, 422904, 9001};
            return true;
        case 100000:
            c = {90000, 3572362, 90000, 4229694, 90001};
            return true;
        default:
            return false;
    }
}

void teardown(model& m) {
    std::vector<kalgenerators*> registries;
    for (auto& inst : *m.design->data->getInstanceMap())
        registries.push_back(inst.second->data->generators);
    registries.push_back(m.top->data->generators);
    delete m.top;
    for (auto* r : registries)
        delete r;
    m.top = nullptr;
    m.design = nullptr;
}

}  // namespace w1
