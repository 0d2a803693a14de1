// Hands a netlist to tools no one here wrote (Icarus Verilog, Yosys) and
// compares Yosys's reading of it with the model.
#ifndef KALDATA_TESTS_VERILOG_TOOLCHECK_H
#define KALDATA_TESTS_VERILOG_TOOLCHECK_H

#include <map>
#include <set>
#include <string>

class kalcomponent;

namespace toolcheck {

// Empty when iverilog and yosys are both on the PATH; else what is missing.
std::string missingTools();

// For every bit of every instance port of a module, and every bit of the
// module's own ports ("top.port[i]"), the other such bits on the same net.
using groups = std::map<std::string, std::set<std::string>>;

// Read from the model: the first design of `def`, where instance ports sit on
// nets (their own, or their dual port's) and the module's own ports sit on
// nets or are exported to from an instance port.
groups fromModel(kalcomponent* def);

struct verdict {
    bool ok = false;
    std::string failure;  // what went wrong: a tool's output, or the first differences
};

// Writes root's netlist with leaf stubs into a scratch folder, compiles it
// with iverilog -g2005, has Yosys read it (hierarchy -check, check -assert)
// and write its JSON netlist, and compares each written module's
// connectivity there with fromModel.
verdict check(kalcomponent* root);

}  // namespace toolcheck

#endif
