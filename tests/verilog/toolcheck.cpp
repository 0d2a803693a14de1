#include "toolcheck.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include <unistd.h>

#include "kaldata.h"
#include "kalverilog.h"

#if KALDATA_TESTS_HAVE_JSON
#include <nlohmann/json.hpp>
#endif

namespace toolcheck {

namespace {

bool onPath(const char* tool) {
    return std::system(("command -v " + std::string(tool) + " >/dev/null 2>&1").c_str()) == 0;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// Runs a shell command with its output in a log; answers the log on failure.
bool run(const std::string& command, const std::string& log, std::string& failure) {
    if (std::system((command + " >" + log + " 2>&1").c_str()) == 0) return true;
    failure = command + " failed:\n" + slurp(log);
    return false;
}

std::string bitKey(const std::string& owner, const std::string& port, bool bus, unsigned long long bit) {
    return owner + "." + port + (bus ? "[" + std::to_string(bit) + "]" : std::string());
}

unsigned long long bitOfSlot(kalportbus* b, std::size_t k) {
    return b->getMsb() >= b->getLsb() ? b->getMsb() - k : b->getMsb() + k;
}

// The thing that joins an instance port to others in design d: a net of d
// (its own, or the first of its dual port's), or the dual port itself.
const void* joinOf(kalport* p, kaldesign* d) {
    if (!p) return nullptr;
    kalnet* n = p->getNet();
    if (n && n->getDesign() == d) return n;
    kaldualport* dp = p->getDualPort();
    if (!dp || dp->getDesign() != d) return nullptr;
    for (kalport* q : dp->getPortList())
        if (q && q->getNet() && q->getNet()->getDesign() == d) return q->getNet();
    return dp;
}

const void* topJoinOf(kalport* t, kaldesign* d) {
    if (!t) return nullptr;
    if (t->getNet() && t->getNet()->getDesign() == d) return t->getNet();
    kalport* from = t->getExportedFrom();
    if (from && from->getComponent() && from->getComponent()->parentDesign == d) return joinOf(from, d);
    return nullptr;
}

// Calls f(key, port) for every bit of every port of c.
template <typename F>
void eachBit(kalcomponent* c, const std::string& owner, F f) {
    for (auto& p : c->data->ports)
        if (!p.second->getBus()) f(bitKey(owner, p.first, false, 0), p.second);
    for (auto& b : c->data->portbuses) {
        std::vector<kalport*> bits = b.second->getBits();
        for (std::size_t k = 0; k < bits.size(); ++k)
            f(bitKey(owner, b.first, true, bitOfSlot(b.second, k)), bits[k]);
    }
}

template <typename Key>
groups grouped(const std::map<std::string, Key>& joins, const std::map<Key, std::set<std::string>>& members) {
    groups g;
    for (auto& j : joins) {
        std::set<std::string>& others = g[j.first];
        auto m = members.find(j.second);
        if (m == members.end()) continue;
        others = m->second;
        others.erase(j.first);
    }
    return g;
}

std::string differences(const groups& model, const groups& tool, const std::string& module) {
    std::string out;
    int shown = 0;
    auto list = [](const std::set<std::string>& s) {
        std::string t;
        for (auto& e : s)
            t += " " + e;
        return t.empty() ? std::string(" (none)") : t;
    };
    for (auto& m : model) {
        auto t = tool.find(m.first);
        const std::set<std::string> none;
        const std::set<std::string>& seen = t == tool.end() ? none : t->second;
        if (seen == m.second) continue;
        if (shown++ < 5)
            out += "  module " + module + ", " + m.first + ": model" + list(m.second) + "; yosys" +
                   list(seen) + "\n";
    }
    for (auto& t : tool)
        if (!model.count(t.first) && shown++ < 10)
            out += "  module " + module + ": yosys has " + t.first + "\n";
    return out;
}

#if KALDATA_TESTS_HAVE_JSON

// The model's port bus of that name, or null for a scalar port.
kalportbus* busOf(kalcomponent* c, const std::string& name) {
    auto b = c->data->portbuses.find(name);
    return b == c->data->portbuses.end() ? nullptr : b->second;
}

// Yosys lists a port's bits from the right-hand bound of its range.
void addBits(const nlohmann::json& bits, kalcomponent* c, const std::string& owner, const std::string& port,
             std::map<std::string, long long>& joins) {
    kalportbus* bus = busOf(c, port);
    for (std::size_t j = 0; j < bits.size(); ++j) {
        if (!bits[j].is_number_integer()) continue;  // a constant: on no net
        unsigned long long bit = 0;
        if (bus) bit = bus->getMsb() >= bus->getLsb() ? bus->getLsb() + j : bus->getLsb() - j;
        joins[bitKey(owner, port, bus != nullptr, bit)] = bits[j].get<long long>();
    }
}

groups fromYosys(const nlohmann::json& module, kalcomponent* def) {
    std::map<std::string, long long> joins;
    kaldesign* d = def->data->designs.begin()->second;
    for (auto& cell : module["cells"].items()) {
        std::string name(cell.key());
        kalcomponent* inst = d->getInstance(&name);
        if (!inst) {
            joins["unknown cell " + name] = -1;
            continue;
        }
        for (auto& conn : cell.value()["connections"].items())
            addBits(conn.value(), inst, name, conn.key(), joins);
    }
    for (auto& port : module["ports"].items())
        addBits(port.value()["bits"], def, "top", port.key(), joins);
    std::map<long long, std::set<std::string>> members;
    for (auto& j : joins)
        members[j.second].insert(j.first);
    return grouped(joins, members);
}

#endif

std::string plainName(const std::string& written) {
    if (!written.empty() && written[0] == '\\') return written.substr(1, written.size() - 2);
    return written;
}

}  // namespace

std::string missingTools() {
    std::string missing;
    for (const char* tool : {"iverilog", "yosys"})
        if (!onPath(tool)) missing += std::string(missing.empty() ? "" : ", ") + tool;
#if !KALDATA_TESTS_HAVE_JSON
    missing += std::string(missing.empty() ? "" : ", ") + "nlohmann-json3-dev";
#endif
    return missing;
}

groups fromModel(kalcomponent* def) {
    kaldesign* d = def->data->designs.begin()->second;
    std::map<std::string, const void*> joins;
    for (auto& i : *d->data->getInstanceMap())
        eachBit(i.second, i.first, [&](const std::string& key, kalport* p) { joins[key] = joinOf(p, d); });
    eachBit(def, "top", [&](const std::string& key, kalport* p) { joins[key] = topJoinOf(p, d); });
    std::map<const void*, std::set<std::string>> members;
    for (auto& j : joins)
        if (j.second) members[j.second].insert(j.first);
    return grouped(joins, members);
}

verdict check(kalcomponent* root) {
    verdict v;
#if KALDATA_TESTS_HAVE_JSON
    char dirTemplate[] = "/tmp/kaldata-verilog-XXXXXX";
    if (!::mkdtemp(dirTemplate)) {
        v.failure = "no scratch folder";
        return v;
    }
    const std::string dir(dirTemplate), netlist = dir + "/netlist.v", json = dir + "/netlist.json";
    kalverilog::Options options;
    options.leafStubs = true;
    kalverilog::Result r = kalverilog::writeNetlistFile(root, netlist, options);
    if (!r) {
        v.failure = "writeNetlistFile: " + r.error;
        return v;
    }
    const std::string top = plainName(r.modules.at(0).name);
    if (!run("iverilog -g2005 -o " + dir + "/sim " + netlist, dir + "/iverilog.log", v.failure)) return v;
    if (!run("yosys -q -p 'read_verilog " + netlist + "; hierarchy -check -top " + top +
                 "; check -assert; write_json " + json + "'",
             dir + "/yosys.log", v.failure))
        return v;
    const nlohmann::json netlistJson = nlohmann::json::parse(slurp(json));
    for (const kalverilog::Module& m : r.modules) {
        if (m.leaf) continue;
        const std::string name = plainName(m.name);
        if (!netlistJson["modules"].contains(name)) {
            v.failure += "  yosys has no module " + name + "\n";
            continue;
        }
        v.failure +=
            differences(fromModel(m.component), fromYosys(netlistJson["modules"][name], m.component), name);
    }
    v.ok = v.failure.empty();
    if (!v.ok)
        v.failure += "(files kept in " + dir + ")\n";
    else if (std::system(("rm -rf " + dir).c_str()) != 0)
        v.failure = "cannot remove " + dir;
    v.ok = v.failure.empty();
#else
    (void)root;
    v.failure = "built without nlohmann-json3-dev";
#endif
    return v;
}

}  // namespace toolcheck
