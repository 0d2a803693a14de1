// SPDX-License-Identifier: Apache-2.0
// The W1 "SoC build and edit" model, phase by phase, so that the benchmark can
// time each phase and tests of the companion libraries can build the same
// design. Every phase goes through the public API only and exits the process
// with a message on the first call that fails, since a W1 that deviates from
// its definition measures nothing.
#ifndef KALDATA_BENCH_W1MODEL_H
#define KALDATA_BENCH_W1MODEL_H

#include <cstddef>

class kalcomponent;
class kaldesign;

namespace w1 {

// The top block "top" (acme:soc:top:1.0) with its design "top_rtl" and its
// clock input; the design is found with top->getDesign.
kalcomponent* makeTop();
kaldesign* design(kalcomponent* top);

void create(kaldesign* d, std::size_t n);   // N instances of four block types, their nets and net buses
void drivers(kaldesign* d, std::size_t n);  // every output and bus bit onto its own net
void clk(kaldesign* d, std::size_t n);      // the top clock and every i0 onto "clk"
void random(kaldesign* d, std::size_t n);   // i1..i7 onto pseudo-random nets of other instances
void rename(kaldesign* d, std::size_t n);   // every tenth n<i>_0 to r<i>_0
void remove(kaldesign* d, std::size_t n);   // every tenth instance, from u5 on

// makeTop and the four building phases: the design as W1 has it after build.
kalcomponent* build(std::size_t n);

}  // namespace w1

#endif
