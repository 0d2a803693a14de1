// W1, "SoC build and edit": builds a top block with N instances of four block
// types, wires them (a fanout-N clock net and pseudo-random inputs), renames
// N/10 nets, removes N/10 instances and tears everything down, through the
// public API only. Prints per-phase milliseconds on stderr and checks the
// expected counts.
//
//   kaldata-w1 N [--live]
//
// By default the recording event service answers every record with null, so
// records are built up to the service call only; --live keeps it answering
// (records are created, filled and sent, then released).
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kaldata.h"
#include "kalrecorder.h"

namespace {

struct lcg {
    std::uint64_t state = 1;
    std::uint32_t next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<std::uint32_t>(state >> 32);
    }
};

using clock_type = std::chrono::steady_clock;

struct phase {
    const char* name;
    clock_type::time_point start = clock_type::now();
    ~phase() {
        auto ms = std::chrono::duration<double, std::milli>(clock_type::now() - start).count();
        std::fprintf(stderr, "%-9s %10.1f ms\n", name, ms);
    }
};

struct counts {
    std::size_t instances = 0, nets = 0, netbuses = 0, portRefs = 0, clkPorts = 0;
};

counts measure(kaldesign* d) {
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

bool check(const char* when, const counts& got, const counts& want) {
    bool ok = got.instances == want.instances && got.nets == want.nets && got.netbuses == want.netbuses &&
              got.portRefs == want.portRefs && got.clkPorts == want.clkPorts;
    std::fprintf(stderr, "%s: instances %zu nets %zu netbuses %zu port refs %zu clk ports %zu%s\n", when,
                 got.instances, got.nets, got.netbuses, got.portRefs, got.clkPorts, ok ? "" : "  MISMATCH");
    if (!ok)
        std::fprintf(stderr, "  expected: instances %zu nets %zu netbuses %zu port refs %zu clk ports %zu\n",
                     want.instances, want.nets, want.netbuses, want.portRefs, want.clkPorts);
    return ok;
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

void fail(const char* what, const std::string& detail) {
    std::fprintf(stderr, "W1 failed: %s %s\n", what, detail.c_str());
    std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: kaldata-w1 N [--live]\n");
        return 2;
    }
    const std::size_t n = std::strtoul(argv[1], nullptr, 10);
    if (n < 10 || n % 10) fail("N must be a positive multiple of 10:", argv[1]);
    const bool live = argc > 2 && std::strcmp(argv[2], "--live") == 0;
    kalrecorder::setNullObjects(!live);
    kalrecorder::setKeepRecords(false);

    std::string acme("acme"), soc("soc"), top_("top"), v10("1.0"), rtl("top_rtl"), ip("ip"), empty;
    auto* top = new kalcomponent(&acme, &soc, &top_, &v10);
    top->createDesign(&acme, &soc, &rtl, &v10);
    kaldesign* d = top->getDesign(&rtl);
    std::string clk("clk");
    top->addPort(&clk, &clk, 1, nullptr);
    {
        phase p{"create"};
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
    {
        phase p{"drivers"};
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
    {
        phase p{"clk"};
        if (!d->connect(&clk, &clk, &empty)) fail("connect", "clk top port");
        std::string i0("i0");
        for (std::size_t i = 0; i < n; ++i) {
            std::string inst = "u" + std::to_string(i);
            if (!d->connect(&clk, &i0, &inst)) fail("connect clk", inst);
        }
    }
    {
        phase p{"random"};
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
    bool ok = check("after build", measure(d), counts{n, 40 * n + 1, n, 48 * n + 1, n + 1});
    {
        phase p{"rename"};
        for (std::size_t i = 0; i < n; i += 10) {
            std::string from = "n" + std::to_string(i) + "_0", to = "r" + std::to_string(i) + "_0";
            if (!d->changeNetName(&from, &to)) fail("rename", from);
        }
    }
    {
        phase p{"remove"};
        for (std::size_t i = 5; i < n; i += 10) {
            std::string inst = "u" + std::to_string(i);
            kalcomponent* c = d->getInstance(&inst);
            delete c->data->generators;  // a component never frees its generator registry
            c->data->generators = nullptr;
            if (!d->removeInstance(&inst)) fail("removeInstance", inst);
        }
    }
    counts want;
    if (expectedAfterEdit(n, want))
        ok = check("after edit", measure(d), want) && ok;
    else
        check("after edit", measure(d), measure(d));
    {
        phase p{"teardown"};
        std::vector<kalgenerators*> registries;
        for (auto& inst : *d->data->getInstanceMap())
            registries.push_back(inst.second->data->generators);
        registries.push_back(top->data->generators);
        delete top;
        for (auto* r : registries)
            delete r;
    }
    std::fprintf(stderr, "W1 N=%zu %s: %s\n", n, live ? "live events" : "null events",
                 ok ? "counts ok" : "COUNTS DIFFER");
    return ok ? 0 : 1;
}
