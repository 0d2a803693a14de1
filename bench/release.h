// SPDX-License-Identifier: Apache-2.0
// Destroys a benchmark's root component and then the generator registries
// that neither it nor its instances free.
#ifndef KALDATA_BENCH_RELEASE_H
#define KALDATA_BENCH_RELEASE_H

#include <vector>

#include "kaldata.h"

inline void releaseRoot(kalcomponent* top, kaldesign* design) {
    std::vector<kalgenerators*> registries{top->data->generators};
    for (auto& inst : *design->data->getInstanceMap())
        registries.push_back(inst.second->data->generators);
    delete top;
    for (auto* r : registries)
        delete r;
}

#endif
