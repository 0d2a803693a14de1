// kaldata: the command-line tool over libkaldata and its IP-XACT interchange.
// Exit status: 0 success, 1 a document (or model) error, 2 a usage error.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "kaldata.h"
#include "kalipxact.h"
#include "kalrecorder.h"
#include "kalsupport.h"
#include "kalverilog.h"

namespace {

const char* const usageText =
    "usage: kaldata COMMAND [ARGS]\n"
    "\n"
    "Commands (a VLNV is written vendor:library:name:version):\n"
    "  stat DIR VLNV                     load, print counts per hierarchy level\n"
    "  check DIR VLNV                    load, print the reader's warnings, run the model checker\n"
    "  convert DIR VLNV --to FORMAT OUT  load and write the design as ipxact or verilog into OUT\n"
    "  records DIR VLNV                  print the records the load sends, one per line\n"
    "\n"
    "DIR is a folder of IP-XACT 2014 documents (searched recursively, found by VLNV).\n"
    "'kaldata COMMAND --help' describes one command. Exit status: 0 success,\n"
    "1 document error, 2 usage error.\n";

struct command {
    const char* name;
    const char* help;
    int (*run)(const std::vector<std::string>& args);
};

int usage(const char* what) {
    std::fprintf(stderr, "kaldata: %s\n\n%s", what, usageText);
    return 2;
}

// Progress on standard error, only once a load has taken more than a second.
struct progress {
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    bool shown = false;
    std::string last;
    void operator()(const char* phase, std::size_t done, std::size_t total) {
        double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (s < 1.0) return;
        std::string line = std::string(phase) + " " + std::to_string(done) +
                           (total ? "/" + std::to_string(total) : std::string());
        if (line == last) return;
        last = line;
        std::fprintf(stderr, "\rkaldata: %-40s", line.c_str());
        shown = true;
    }
    void end() {
        if (shown) std::fprintf(stderr, "\n");
    }
};

kalipxact::loadResult loadOrReport(const std::string& dir, const std::string& top) {
    progress p;
    kalipxact::loadResult r = kalipxact::load(
        dir, top, [&p](const char* phase, std::size_t done, std::size_t total) { p(phase, done, total); });
    p.end();
    if (!r.ok) std::fprintf(stderr, "kaldata: error: %s\n", r.error.str().c_str());
    return r;
}

bool wantsHelp(const std::vector<std::string>& args) {
    for (auto& a : args)
        if (a == "--help" || a == "-h") return true;
    return false;
}

bool checkVlnv(const std::string& text) {
    kalipxact::vlnv v;
    return kalipxact::vlnv::parse(text, v);
}

// ---- stat

struct counts {
    std::size_t instances = 0, ports = 0, nets = 0, connections = 0;
};

void statLevel(kalcomponent* c, const std::string& path, int depth,
               std::vector<std::pair<std::string, counts>>& rows, std::map<int, counts>& levels) {
    for (auto& [key, d] : c->data->designs) {
        if (!d) continue;
        counts n;
        n.instances = d->data->getInstanceMap()->size();
        n.ports = c->data->ports.size();
        for (auto& [name, inst] : *d->data->getInstanceMap())
            n.ports += inst->data->ports.size();
        n.nets = d->data->getNetMap()->size();
        for (auto& [name, net] : *d->data->getNetMap())
            n.connections += net->getPorts().size();
        rows.push_back({std::to_string(depth) + " " + path + "::" + key, n});
        counts& l = levels[depth];
        l.instances += n.instances;
        l.ports += n.ports;
        l.nets += n.nets;
        l.connections += n.connections;
        for (auto& [name, inst] : *d->data->getInstanceMap())
            statLevel(inst, path + "/" + name, depth + 1, rows, levels);
    }
}

int runStat(const std::vector<std::string>& args) {
    if (args.size() != 2) return usage("stat takes DIR and VLNV");
    if (!checkVlnv(args[1])) return usage(("not a VLNV: " + args[1]).c_str());
    kalrecorder::setNullObjects(true);
    kalipxact::loadResult r = loadOrReport(args[0], args[1]);
    if (!r.ok) return 1;
    std::vector<std::pair<std::string, counts>> rows;
    std::map<int, counts> levels;
    statLevel(r.root, *r.root->data->instanceName, 0, rows, levels);
    std::printf("%-60s %10s %10s %10s %12s\n", "level design", "instances", "ports", "nets", "connections");
    for (auto& [name, n] : rows)
        std::printf("%-60s %10zu %10zu %10zu %12zu\n", name.c_str(), n.instances, n.ports, n.nets,
                    n.connections);
    for (auto& [depth, n] : levels)
        std::printf("%-60s %10zu %10zu %10zu %12zu\n", ("level " + std::to_string(depth) + " total").c_str(),
                    n.instances, n.ports, n.nets, n.connections);
    std::printf("%zu warnings\n", r.warnings.size());
    kalsupport::release(r.root);
    return 0;
}

// ---- check

int runCheck(const std::vector<std::string>& args) {
    if (args.size() != 2) return usage("check takes DIR and VLNV");
    if (!checkVlnv(args[1])) return usage(("not a VLNV: " + args[1]).c_str());
    kalrecorder::setNullObjects(true);
    kalipxact::loadResult r = loadOrReport(args[0], args[1]);
    for (auto& w : r.warnings)
        std::printf("warning: %s\n", w.str().c_str());
    if (!r.ok) return 1;
    std::vector<std::string> problems = kalsupport::checkModel(r.root);
    for (auto& p : problems)
        std::printf("model: %s\n", p.c_str());
    std::printf("%zu warnings, %zu model problems\n", r.warnings.size(), problems.size());
    kalsupport::release(r.root);
    return problems.empty() ? 0 : 1;
}

// ---- convert: one branch per output format

int runConvert(const std::vector<std::string>& args) {
    std::vector<std::string> plain;
    std::string format;
    kalverilog::Options verilog;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--to") {
            if (i + 1 >= args.size()) return usage("--to needs a FORMAT");
            format = args[++i];
        } else if (args[i] == "--leaf-stubs") {
            verilog.leafStubs = true;
        } else {
            plain.push_back(args[i]);
        }
    }
    if (plain.size() != 3) return usage("convert takes DIR, VLNV, --to FORMAT and OUT");
    if (format.empty()) return usage("convert needs --to FORMAT");
    if (format != "ipxact" && format != "verilog")
        return usage(("unknown format: " + format + " (known: ipxact, verilog)").c_str());
    if (verilog.leafStubs && format != "verilog") return usage("--leaf-stubs is for --to verilog");
    if (!checkVlnv(plain[1])) return usage(("not a VLNV: " + plain[1]).c_str());
    kalrecorder::setNullObjects(true);
    kalipxact::loadResult r = loadOrReport(plain[0], plain[1]);
    if (!r.ok) return 1;
    int status = 0;
    if (format == "ipxact") {
        kalipxact::writeResult w = kalipxact::write(r.root, plain[2]);
        for (auto& m : w.warnings)
            std::fprintf(stderr, "kaldata: warning: %s\n", m.str().c_str());
        if (!w.ok) {
            std::fprintf(stderr, "kaldata: error: %s\n", w.error.str().c_str());
            status = 1;
        } else {
            for (auto& f : w.files)
                std::printf("%s\n", f.c_str());
        }
    } else {
        kalverilog::Result v = kalverilog::writeNetlistFile(r.root, plain[2], verilog);
        if (!v) {
            std::fprintf(stderr, "kaldata: error: %s\n", v.error.c_str());
            status = 1;
        } else {
            std::printf("%s\n", plain[2].c_str());
        }
    }
    kalsupport::release(r.root);
    return status;
}

// ---- records

int runRecords(const std::vector<std::string>& args) {
    if (args.size() != 2) return usage("records takes DIR and VLNV");
    if (!checkVlnv(args[1])) return usage(("not a VLNV: " + args[1]).c_str());
    kalrecorder::clear();
    kalipxact::loadResult r = loadOrReport(args[0], args[1]);
    if (!r.ok) return 1;
    for (auto& line : kalrecorder::lines())
        std::printf("%s\n", line.c_str());
    kalrecorder::clear();
    kalrecorder::setNullObjects(true);  // teardown records are not the load's
    kalsupport::release(r.root);
    return 0;
}

const command commands[] = {
    {"stat",
     "usage: kaldata stat DIR VLNV\n\nLoads VLNV (a component, design or design configuration) from the "
     "IP-XACT\n"
     "documents below DIR and prints, per design of the hierarchy (depth, path::design)\n"
     "and per depth, the number of instances, ports (the owner's and its instances'),\n"
     "nets and connections (ports on nets).\n",
     runStat},
    {"check",
     "usage: kaldata check DIR VLNV\n\nLoads VLNV from the IP-XACT documents below DIR, prints every warning "
     "of\n"
     "the reader (what it skipped, with file and line) and every problem the model\n"
     "checker finds. Exit status 1 when the load fails or the model has problems.\n",
     runCheck},
    {"convert",
     "usage: kaldata convert DIR VLNV --to FORMAT OUT [--leaf-stubs]\n\nLoads VLNV from the IP-XACT documents "
     "below DIR and writes it into OUT.\n"
     "Formats:\n"
     "  ipxact   OUT is a folder: one component document per VLNV and one design\n"
     "           document per design, laid out vendor/library/name/version/\n"
     "  verilog  OUT is a file: a structural Verilog-2005 netlist, one module per\n"
     "           component with a design; --leaf-stubs adds an empty (* blackbox *)\n"
     "           module for every component without one\n"
     "Prints the files written. Exit status 1 when the model cannot be written.\n",
     runConvert},
    {"records",
     "usage: kaldata records DIR VLNV\n\nLoads VLNV from the IP-XACT documents below DIR and prints every "
     "record the\n"
     "load sends to the event service, one per line, in order.\n",
     runRecords},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage("no command given");
    std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        std::printf("%s", usageText);
        return 0;
    }
    std::vector<std::string> args(argv + 2, argv + argc);
    for (const command& c : commands)
        if (name == c.name) {
            if (wantsHelp(args)) {
                std::printf("%s", c.help);
                return 0;
            }
            return c.run(args);
        }
    return usage(("unknown command: " + name).c_str());
}
