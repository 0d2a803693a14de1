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
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

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

bool check(const char* when, const w1::counts& got, const w1::counts& want) {
    bool ok = got.instances == want.instances && got.nets == want.nets && got.netbuses == want.netbuses &&
              got.portRefs == want.portRefs && got.clkPorts == want.clkPorts;
    std::fprintf(stderr, "%s: instances %zu nets %zu netbuses %zu port refs %zu clk ports %zu%s\n", when,
                 got.instances, got.nets, got.netbuses, got.portRefs, got.clkPorts, ok ? "" : "  MISMATCH");
    if (!ok)
        std::fprintf(stderr, "  expected: instances %zu nets %zu netbuses %zu port refs %zu clk ports %zu\n",
                     want.instances, want.nets, want.netbuses, want.portRefs, want.clkPorts);
    return ok;
}

void fail(const std::string& failure) {
    std::fprintf(stderr, "W1 failed: %s\n", failure.c_str());
    std::exit(1);
}

void fail(const char* what, const std::string& detail) {
    fail(std::string(what) + " " + detail);
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

    w1::model m = w1::start(n);
    std::string failure;
    {
        phase p{"create"};
        w1::create(m);
    }
    {
        phase p{"drivers"};
        if (!w1::drivers(m, failure)) fail(failure);
    }
    {
        phase p{"clk"};
        if (!w1::clock(m, failure)) fail(failure);
    }
    {
        phase p{"random"};
        if (!w1::random(m, failure)) fail(failure);
    }
    bool ok = check("after build", w1::measure(m), w1::expectedAfterBuild(n));
    {
        phase p{"rename"};
        if (!w1::rename(m, failure)) fail(failure);
    }
    {
        phase p{"remove"};
        if (!w1::remove(m, failure)) fail(failure);
    }
    w1::counts want;
    if (w1::expectedAfterEdit(n, want))
        ok = check("after edit", w1::measure(m), want) && ok;
    else
        check("after edit", w1::measure(m), w1::measure(m));
    {
        phase p{"teardown"};
        w1::teardown(m);
    }
    std::fprintf(stderr, "W1 N=%zu %s: %s\n", n, live ? "live events" : "null events",
                 ok ? "counts ok" : "COUNTS DIFFER");
    return ok ? 0 : 1;
}
