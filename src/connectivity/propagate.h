// SPDX-License-Identifier: Apache-2.0
// The attribute operations of buses that also reach every member bit.
#ifndef KALDATA_SRC_CONNECTIVITY_PROPAGATE_H
#define KALDATA_SRC_CONNECTIVITY_PROPAGATE_H

#include "kalattributes.h"

namespace kalpropagate {

// Applies op to the bus's own attributes and, when asked, to each member in
// slot order. Empty slots are skipped.
template <class Members, class Op>
void apply(kalattributes& bus, const Members* members, bool propagate, Op op) {
    op(bus);
    if (!propagate || !members) return;
    for (auto* m : *members)
        if (m) op(static_cast<kalattributes&>(*m));
}

}  // namespace kalpropagate

#endif
