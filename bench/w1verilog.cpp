// Writes W1's model ("SoC build and edit", after the edit phase) as a Verilog
// netlist and prints, on standard error, the build time beside the time the
// netlist takes: into memory (a string stream) and into a file.
//
//   kaldata-w1-verilog N [FILE]
//
// Without FILE the netlist goes to a temporary file that is removed again.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>

#include <unistd.h>

#include "kaldata.h"
#include "kalrecorder.h"
#include "kalsupport.h"
#include "kalverilog.h"
#include "w1model.h"

namespace {

struct stopwatch {
    std::chrono::steady_clock::time_point wall = std::chrono::steady_clock::now();
    std::clock_t cpu = std::clock();
    void report(const char* what) const {
        const double ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wall).count();
        const double cpuMs = 1000.0 * static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC;
        std::fprintf(stderr, "%-16s %10.1f ms wall %10.1f ms cpu\n", what, ms, cpuMs);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: kaldata-w1-verilog N [FILE]\n");
        return 2;
    }
    const std::size_t n = std::strtoul(argv[1], nullptr, 10);
    if (n < 10 || n % 10) {
        std::fprintf(stderr, "N must be a positive multiple of 10: %s\n", argv[1]);
        return 2;
    }
    std::string path = argc > 2 ? argv[2] : std::string();
    const bool scratch = path.empty();
    if (scratch) path = "/tmp/kaldata-w1-" + std::to_string(::getpid()) + ".v";
    kalrecorder::setNullObjects(true);
    kalrecorder::setKeepRecords(false);

    kalcomponent* top = nullptr;
    {
        stopwatch t;
        top = w1::build(n);  // the phases exit with a message if a call fails
        w1::rename(w1::design(top), n);
        w1::remove(w1::design(top), n);
        t.report("W1 build + edit");
    }
    kaldesign* d = w1::design(top);
    std::fprintf(stderr, "model: %zu instances, %zu nets, %zu net buses\n", d->data->getInstanceMap()->size(),
                 d->data->getNetMap()->size(), d->data->getNetbusMap()->size());

    std::size_t bytes = 0;
    {
        std::ostringstream text;
        stopwatch t;
        kalverilog::Result r = kalverilog::writeNetlist(top, text, kalverilog::Options{});
        t.report("netlist, memory");
        if (!r) {
            std::fprintf(stderr, "netlist failed: %s\n", r.error.c_str());
            return 1;
        }
        bytes = text.str().size();
    }
    {
        stopwatch t;
        kalverilog::Result r = kalverilog::writeNetlistFile(top, path, kalverilog::Options{});
        t.report("netlist, file");
        if (!r) {
            std::fprintf(stderr, "netlist failed: %s\n", r.error.c_str());
            return 1;
        }
    }
    std::fprintf(stderr, "netlist: %zu bytes%s%s\n", bytes, scratch ? "" : " in ",
                 scratch ? "" : path.c_str());
    if (scratch) std::remove(path.c_str());
    kalsupport::release(top);
    return 0;
}
