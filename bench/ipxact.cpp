// IP-XACT speed and memory on W1: builds W1 through the API, writes it as
// IP-XACT, reads it back, and compares. Not a test: prints figures, and exits
// non-zero when the read model's counts differ from the built one's.
//
//   kaldata-ipxact-bench N [FOLDER]
//
// Memory is the allocator's bytes in use (mallinfo2), so that a freed model
// does not count against the next phase the way a peak resident size would.
// The reader's intermediate description is sampled at its progress calls up
// to the moment the documents are worked out, before the model is made.
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "kaldata.h"
#include "kalipxact.h"
#include "kalrecorder.h"
#include "kalsupport.h"
#include "w1model.h"

namespace {

using clock_type = std::chrono::steady_clock;

double since(clock_type::time_point t) {
    return std::chrono::duration<double>(clock_type::now() - t).count();
}

std::size_t inUse() {
    struct mallinfo2 m = mallinfo2();
    return m.uordblks + m.hblkhd;
}

struct counts {
    std::size_t instances = 0, nets = 0, netbuses = 0, refs = 0;
    bool operator==(const counts& o) const {
        return instances == o.instances && nets == o.nets && netbuses == o.netbuses && refs == o.refs;
    }
};

counts measure(kalcomponent* top) {
    counts c;
    kaldesign* d = top->data->designs.begin()->second;
    c.instances = d->data->getInstanceMap()->size();
    c.nets = d->data->getNetMap()->size();
    c.netbuses = d->data->getNetbusMap()->size();
    for (auto& [name, n] : *d->data->getNetMap())
        c.refs += n->getPorts().size();
    return c;
}

double mb(std::size_t bytes) {
    return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: kaldata-ipxact-bench N [FOLDER]\n");
        return 2;
    }
    std::size_t n = std::strtoul(argv[1], nullptr, 10);
    std::string folder = argc > 2 ? argv[2] : "/tmp/kaldata-ipxact-bench";
    std::filesystem::remove_all(folder);
    kalrecorder::setNullObjects(true);

    std::size_t base = inUse();
    auto t = clock_type::now();
    kalcomponent* top = w1::build(n);
    double build = since(t);
    std::size_t model = inUse() - base;
    counts built = measure(top);

    t = clock_type::now();
    kalipxact::writeResult w = kalipxact::write(top, folder);
    double write = since(t);
    if (!w.ok) {
        std::fprintf(stderr, "write failed: %s\n", w.error.str().c_str());
        return 1;
    }
    std::uintmax_t bytes = 0;
    for (auto& f : w.files)
        bytes += std::filesystem::file_size(f);
    kalsupport::release(top);
    malloc_trim(0);

    base = inUse();
    std::size_t peak = 0;
    bool resolving = true;
    t = clock_type::now();
    kalipxact::loadResult r =
        kalipxact::load(folder, "acme:soc:top:1.0", [&](const char* phase, std::size_t, std::size_t) {
            if (!resolving) return;
            std::size_t now = inUse();
            if (now > base) peak = std::max(peak, now - base);
            if (std::string(phase) == "resolved") resolving = false;
        });
    double read = since(t);
    if (!r.ok) {
        std::fprintf(stderr, "read failed: %s\n", r.error.str().c_str());
        return 1;
    }
    std::size_t readModel = inUse() - base;
    counts back = measure(r.root);
    kalsupport::release(r.root);

    std::printf("N=%zu documents=%zu (%.1f MB)\n", n, w.files.size(), mb(bytes));
    std::printf("build %.3f s  write %.3f s (%.2fx build)  read %.3f s (%.2fx build)\n", build, write,
                write / build, read, read / build);
    std::printf("model %.1f MB  read model %.1f MB  reader intermediate peak %.1f MB (%.2fx model)\n",
                mb(model), mb(readModel), mb(peak), static_cast<double>(peak) / static_cast<double>(model));
    if (!(built == back)) {
        std::fprintf(stderr, "read model differs: nets %zu/%zu, buses %zu/%zu, refs %zu/%zu\n", built.nets,
                     back.nets, built.netbuses, back.netbuses, built.refs, back.refs);
        return 1;
    }
    std::filesystem::remove_all(folder);
    return 0;
}
