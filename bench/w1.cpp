// SPDX-License-Identifier: Apache-2.0
// W1, "SoC build and edit": builds a top block with N instances of four block
// types, wires them (a fanout-N clock net and pseudo-random inputs), renames
// N/10 nets, removes N/10 instances and tears everything down, through the
// public API only. Prints per-phase milliseconds on stderr and checks the
// expected counts.
//
//   kaldata-w1 N [--live] [--full]
//
// By default the recording event service answers every record with null, so
// records are built up to the service call only; --live keeps it answering
// (records are created, filled and sent, then released). The counts after
// the edit include the sum of all port lists; after the build that sum is
// counted only with --full (it reads every net, and the benchmark's own work
// should stay small next to the library's).
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kaldata.h"
#include "kalrecorder.h"
#include "w1model.h"

namespace {

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

// The counts; the port references only when `walk`: summing them reads every
// net of the design, which at N = 100,000 costs half a second.
counts measure(kaldesign* d, bool walk) {
    counts c;
    c.instances = d->data->getInstanceMap()->size();
    c.nets = d->data->getNetMap()->size();
    c.netbuses = d->data->getNetbusMap()->size();
    std::string clk("clk");
    kalnet* net = d->getNet(&clk);
    c.clkPorts = net ? net->getPorts().size() : 0;
    if (!walk) return c;
    // The walk asks for each net a few entries ahead, so that reading the
    // nets overlaps with walking the map (the check is the benchmark's own cost).
    auto& nets = *d->data->getNetMap();
    auto ahead = nets.begin();
    for (int k = 0; k < 8 && ahead != nets.end(); ++k)
        ++ahead;
    for (auto& n : nets) {
        if (ahead != nets.end()) __builtin_prefetch((ahead++)->second);
        c.portRefs += n.second->getPorts().size();
    }
    return c;
}

bool check(const char* when, const counts& got, counts want, bool walked) {
    if (!walked) want.portRefs = got.portRefs;  // not counted
    bool ok = got.instances == want.instances && got.nets == want.nets && got.netbuses == want.netbuses &&
              got.portRefs == want.portRefs && got.clkPorts == want.clkPorts;
    const std::string refs = walked ? std::to_string(got.portRefs) : "not counted";
    std::fprintf(stderr, "%s: instances %zu nets %zu netbuses %zu port refs %s clk ports %zu%s\n", when,
                 got.instances, got.nets, got.netbuses, refs.c_str(), got.clkPorts, ok ? "" : "  MISMATCH");
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

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: kaldata-w1 N [--live] [--full]\n");
        return 2;
    }
    const std::size_t n = std::strtoul(argv[1], nullptr, 10);
    if (n < 10 || n % 10) {
        std::fprintf(stderr, "W1 failed: N must be a positive multiple of 10: %s\n", argv[1]);
        return 1;
    }
    bool live = false, full = false;
    for (int k = 2; k < argc; ++k) {
        live = live || std::strcmp(argv[k], "--live") == 0;
        full = full || std::strcmp(argv[k], "--full") == 0;
    }
    kalrecorder::setNullObjects(!live);
    kalrecorder::setKeepRecords(false);

    kalcomponent* top = w1::makeTop();
    kaldesign* d = w1::design(top);
    {
        phase p{"create"};
        w1::create(d, n);
    }
    {
        phase p{"drivers"};
        w1::drivers(d, n);
    }
    {
        phase p{"clk"};
        w1::clk(d, n);
    }
    {
        phase p{"random"};
        w1::random(d, n);
    }
    bool ok;
    {
        phase p{"check"};  // the benchmark's own counting, not W1's work
        ok = check("after build", measure(d, full), counts{n, 40 * n + 1, n, 48 * n + 1, n + 1}, full);
    }
    {
        phase p{"rename"};
        w1::rename(d, n);
    }
    {
        phase p{"remove"};
        w1::remove(d, n);
    }
    {
        phase p{"check"};
        counts want;
        if (expectedAfterEdit(n, want))
            ok = check("after edit", measure(d, true), want, true) && ok;
        else
            check("after edit", measure(d, true), measure(d, true), true);
    }
    {
        phase p{"teardown"};
        // Components never free their generator registries; nothing reads them
        // while the model is destroyed, so they go first (a list of them to free
        // afterwards would make malloc consolidate every chunk the teardown freed).
        for (auto& inst : *d->data->getInstanceMap()) {
            delete inst.second->data->generators;
            inst.second->data->generators = nullptr;
        }
        delete top->data->generators;
        top->data->generators = nullptr;
        delete top;
    }
    std::fprintf(stderr, "W1 N=%zu %s: %s\n", n, live ? "live events" : "null events",
                 ok ? "counts ok" : "COUNTS DIFFER");
    return ok ? 0 : 1;
}
