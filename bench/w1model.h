// The W1 model ("SoC build and edit"), phase by phase, through the public
// API only. kaldata-w1 times the phases; kaldata-w1-verilog and the netlist
// tests build the same model to write it out.
#ifndef KALDATA_BENCH_W1MODEL_H
#define KALDATA_BENCH_W1MODEL_H

#include <cstddef>
#include <string>

class kalcomponent;
class kaldesign;

namespace w1 {

struct model {
    kalcomponent* top = nullptr;
    kaldesign* design = nullptr;
    std::size_t n = 0;
};

struct counts {
    std::size_t instances = 0, nets = 0, netbuses = 0, portRefs = 0, clkPorts = 0;
};

// The root "top" with its design and its clock port; no instances yet.
model start(std::size_t n);

// Each phase answers true, or false with what failed ("connect n3_5") in
// `failure`; the model is then left as far as the phase got.
void create(model& m);  // instances, nets and net buses
bool drivers(model& m, std::string& failure);
bool clock(model& m, std::string& failure);
bool random(model& m, std::string& failure);
bool rename(model& m, std::string& failure);
bool remove(model& m, std::string& failure);

// Every phase from create to remove, in order.
bool build(model& m, std::string& failure);

counts measure(const model& m);
counts expectedAfterBuild(std::size_t n);
bool expectedAfterEdit(std::size_t n, counts& c);  // false: no figures for this N

// Destroys the root and the generator registries that no component frees.
void teardown(model& m);

}  // namespace w1

#endif
