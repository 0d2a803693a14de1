// Models the netlist tests write: the demo's design, and a three-level
// hierarchy with buses, exports and dual ports. Each is built through the
// public API; release() in tests/support frees them.
#ifndef KALDATA_TESTS_VERILOG_MODELS_H
#define KALDATA_TESTS_VERILOG_MODELS_H

#include <deque>
#include <string>

class kalcomponent;

namespace models {

// Names handed to the API by pointer, alive as long as the holder.
class names {
public:
    std::string* operator()(const char* s) { return &store.emplace_back(s); }
    std::string* operator()(const std::string& s) { return &store.emplace_back(s); }

private:
    std::deque<std::string> store;
};

// examples/demo.cpp's design, up to and including the dual port split; with
// removeU2 also after its last step, the removal of instance u2.
kalcomponent* demo(names& N, bool removeU2);

// soc (design rtl) holds two clusters c0 and c1, a pll and a glue block; each
// cluster (design impl) holds a cpu (leaf "core") and a ram (leaf "mem",
// module name "sram_wrapper"). The cluster ports come from exports of cpu and
// ram ports; the root wires them. The glue block's kind shares the name
// "core" with the cpu's. Net buses of both orders, a bus bit net made before
// its bus, dual ports with and without a net, an inout top port.
kalcomponent* hierarchy(names& N);

}  // namespace models

#endif
