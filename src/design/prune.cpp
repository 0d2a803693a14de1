#include "design/prune.h"

#include "kalnet.h"

namespace kalprune {

bool shouldPrune(kalnet* net) {
    if (net->getPorts().size() <= 1) return true;
    if (net->getSources().empty()) return true;
    return net->getSinks().empty();
}

}  // namespace kalprune
