// SPDX-License-Identifier: Apache-2.0
// The machine's latency of dependent random memory reads over a working set of
// a given size: one pointer chase through a random cycle of 64-byte lines.
// W1's random wiring and lookups are chains of such reads, so their cost per
// operation follows this curve as the design grows.
//   kaldata-memlat MB [MB ...]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: kaldata-memlat MB [MB ...]\n");
        return 2;
    }
    for (int a = 1; a < argc; ++a) {
        const std::size_t lines = std::strtoull(argv[a], nullptr, 10) * (1u << 20) / 64;
        if (lines < 2) continue;
        std::vector<std::size_t> order(lines);
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::shuffle(order.begin(), order.end(), std::mt19937_64(1));
        std::vector<std::size_t> next(lines * 8);  // one 64-byte line per entry
        for (std::size_t i = 0; i < lines; ++i)
            next[order[i] * 8] = order[(i + 1) % lines] * 8;
        const long steps = 20000000;
        std::size_t at = 0;
        const auto start = std::chrono::steady_clock::now();
        for (long i = 0; i < steps; ++i)
            at = next[at];
        const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
        std::printf("%6s MB: %6.1f ns per read (%zu)\n", argv[a], took.count() / steps, at % 10);
    }
    return 0;
}
