// SPDX-License-Identifier: Apache-2.0
// Hot single operations against one net of fanout F, with complexity fits, so
// that a regression shows up as a changed complexity: a top port drives net
// "fan" with F instance loads u0..u(F-1), each a block with input "a".
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "kaldata.h"
#include "kalrecorder.h"
#include "release.h"

namespace {

struct fan {
    kalcomponent* top = nullptr;
    kaldesign* design = nullptr;
    std::string net = "fan", port = "a", empty;

    explicit fan(std::size_t f) {
        kalrecorder::setKeepRecords(false);
        std::string v("acme"), l("lib"), name("top"), ver("1.0"), rtl("rtl"), blk("blk"), drv("drv");
        top = new kalcomponent(&v, &l, &name, &ver);
        top->createDesign(&v, &l, &rtl, &ver);
        design = top->getDesign(&rtl);
        top->addPort(&drv, &drv, 1, nullptr);
        design->addNet(&net, &net, &empty, nullptr);
        design->connect(&net, &drv, &empty);
        // F loads plus 64 spares that the connect benchmark moves on and off.
        for (std::size_t i = 0; i < f + 64; ++i) {
            auto* c = new kalcomponent(&v, &l, &blk, &ver);
            c->addPort(&port, &port, 1, nullptr);
            std::string inst = instance(i);
            design->addInstance(&inst, c);
            if (i < f) design->connect(&net, &port, &inst);
        }
    }
    ~fan() { releaseRoot(top, design); }
    static std::string instance(std::size_t i) { return "u" + std::to_string(i); }
};

void fanouts(benchmark::internal::Benchmark* b) {
    b->Arg(10)->Arg(1000)->Arg(100000)->Complexity()->Unit(benchmark::kMicrosecond);
}

// A load joins the net (its equality check against F ports) and leaves again.
void BM_ConnectIntoFanout(benchmark::State& state) {
    const auto f = static_cast<std::size_t>(state.range(0));
    fan m(f);
    std::size_t i = 0;
    for (auto _ : state) {
        std::string inst = fan::instance(f + i++ % 64);
        m.design->connect(&m.net, &m.port, &inst);
        m.design->disconnect(&m.net, &m.port, &inst);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ConnectIntoFanout)->Apply(fanouts);

// A load from the middle of the list leaves and joins again at the end.
void BM_DisconnectFromMiddle(benchmark::State& state) {
    const auto f = static_cast<std::size_t>(state.range(0));
    fan m(f);
    std::size_t i = 0;
    for (auto _ : state) {
        std::string inst = fan::instance((f / 2 + i++) % f);
        m.design->disconnect(&m.net, &m.port, &inst);
        m.design->connect(&m.net, &m.port, &inst);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_DisconnectFromMiddle)->Apply(fanouts);

// The net of fanout F is renamed there and back.
void BM_RenameFanoutNet(benchmark::State& state) {
    fan m(static_cast<std::size_t>(state.range(0)));
    std::string other("renamed");
    for (auto _ : state) {
        m.design->changeNetName(&m.net, &other);
        m.design->changeNetName(&other, &m.net);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_RenameFanoutNet)->Apply(fanouts);

}  // namespace
