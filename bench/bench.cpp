// SPDX-License-Identifier: Apache-2.0
// Single-operation benchmarks. The design model: a root component "top" with
// N instances of a 16-port block (clk, seven inputs, eight outputs), one net
// per output, each input on a pseudo-random other instance's output net, and
// a clock net driven by a top port with fanout N.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kaldata.h"
#include "kalrecorder.h"
#include "release.h"

namespace {

struct model {
    kalcomponent* top = nullptr;
    kaldesign* design = nullptr;
    std::size_t connections = 0;

    explicit model(std::size_t n) {
        kalrecorder::setKeepRecords(false);
        std::string v("acme"), l("lib"), name("top"), ver("1.0"), rtl("rtl"), blk("blk"), empty, clk("clk");
        top = new kalcomponent(&v, &l, &name, &ver);
        top->createDesign(&v, &l, &rtl, &ver);
        design = top->getDesign(&rtl);
        top->addPort(&clk, &clk, 1, nullptr);
        design->addNet(&clk, &clk, &empty, nullptr);
        for (std::size_t i = 0; i < n; ++i) {
            auto* c = new kalcomponent(&v, &l, &blk, &ver);
            c->addPort(&clk, &clk, 1, nullptr);
            for (int j = 0; j < 7; ++j) {
                std::string p = "i" + std::to_string(j);
                c->addPort(&p, &p, 1, nullptr);
            }
            for (int j = 0; j < 8; ++j) {
                std::string p = "o" + std::to_string(j);
                c->addPort(&p, &p, 2, nullptr);
            }
            std::string inst = "u" + std::to_string(i);
            design->addInstance(&inst, c);
            for (int j = 0; j < 8; ++j) {
                std::string net = net_name(i, j);
                design->addNet(&net, &net, &empty, nullptr);
            }
        }
        connect("clk", "clk", "");
        std::uint64_t state = 1;
        for (std::size_t i = 0; i < n; ++i) {
            std::string inst = "u" + std::to_string(i);
            connect("clk", "clk", inst);
            for (int j = 0; j < 8; ++j)
                connect(net_name(i, j), "o" + std::to_string(j), inst);
            for (int j = 0; j < 7; ++j) {
                state = state * 6364136223846793005ull + 1442695040888963407ull;
                std::size_t s = (state >> 32) % n;
                connect(net_name(s == i ? (s + 1) % n : s, j), "i" + std::to_string(j), inst);
            }
        }
    }

    ~model() { releaseRoot(top, design); }

    static std::string net_name(std::size_t i, int j) {
        return "n" + std::to_string(i) + "_" + std::to_string(j);
    }

    void connect(const std::string& net, const std::string& port, const std::string& inst) {
        if (design->connect(&net, &port, &inst)) ++connections;
    }
};

// Whole build of N instances x 16 ports; reports the time per connection.
void BM_Build(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    std::size_t connections = 0;
    for (auto _ : state) {
        auto m = std::make_unique<model>(n);
        connections = m->connections;
        state.PauseTiming();
        m.reset();
        state.ResumeTiming();
    }
    state.counters["connections"] = static_cast<double>(connections);
    state.counters["per_connection"] =
        benchmark::Counter(static_cast<double>(connections),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Build)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Taking one clock sink off the fanout-N clock net and putting it back.
void BM_ClockDisconnectConnect(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    model m(n);
    std::string clk("clk");
    std::size_t i = 0;
    for (auto _ : state) {
        std::string inst = "u" + std::to_string(i++ % n);
        m.design->disconnect(&clk, &clk, &inst);
        m.design->connect(&clk, &clk, &inst);
    }
}
BENCHMARK(BM_ClockDisconnectConnect)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Renaming a net there and back.
void BM_RenameNet(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    model m(n);
    std::string tmp("renamed");
    std::size_t i = 0;
    for (auto _ : state) {
        std::string net = model::net_name(i++ % n, 3);
        m.design->changeNetName(&net, &tmp);
        m.design->changeNetName(&tmp, &net);
    }
}
BENCHMARK(BM_RenameNet)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Runs one destructive step per iteration on a model of N instances, building
// a fresh model (untimed) once all N objects have been used up.
template <class Step>
void destructive(benchmark::State& state, Step step) {
    const auto n = static_cast<std::size_t>(state.range(0));
    auto m = std::make_unique<model>(n);
    std::size_t i = 0;
    for (auto _ : state) {
        if (i == n) {
            state.PauseTiming();
            m = std::make_unique<model>(n);
            i = 0;
            state.ResumeTiming();
        }
        step(*m, i++);
    }
}

// Removing nets from a design of N instances, one per iteration.
void BM_RemoveNet(benchmark::State& state) {
    destructive(state, [](model& m, std::size_t i) {
        std::string net = model::net_name(i, 5);
        m.design->removeNet(&net);
    });
}
BENCHMARK(BM_RemoveNet)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Removing instances from a design of N instances, one per iteration.
void BM_RemoveInstance(benchmark::State& state) {
    destructive(state, [](model& m, std::size_t i) {
        std::string inst = "u" + std::to_string(i);
        kalcomponent* c = m.design->getInstance(&inst);
        delete c->data->generators;  // a component never frees its generator registry
        c->data->generators = nullptr;
        m.design->removeInstance(&inst);
    });
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_RemoveInstance)->Arg(1000)->Arg(10000)->Arg(100000)->Complexity()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
