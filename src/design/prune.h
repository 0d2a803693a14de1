// SPDX-License-Identifier: Apache-2.0
// The rule that decides whether a net still earns its place after a port has
// left it: it must join at least one driver to at least one receiver.
#ifndef KALDATA_SRC_DESIGN_PRUNE_H
#define KALDATA_SRC_DESIGN_PRUNE_H

class kalnet;

namespace kalprune {

// True when the net has at most one port left, no source, or no sink.
bool shouldPrune(kalnet* net);

}  // namespace kalprune

#endif
