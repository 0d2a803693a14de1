// SPDX-License-Identifier: Apache-2.0
#include "design/prune.h"

#include "connectivity/access.h"
#include "connectivity/portlist.h"
#include "connectivity/roles.h"
#include "kalnet.h"

namespace kalprune {

// One pass that stops as soon as a source and a sink have been seen: the same
// answer as building the full source and sink lists, without the cost on
// large nets.
bool shouldPrune(kalnet* net) {
    const kalportlist list = kalaccess::portList(net);
    if (list.size() <= 1) return true;
    bool source = false, sink = false;
    return !list.anyOf([&](const kalport* p) {
        source = source || kalroles::drives(p, net->getDesign());
        sink = sink || kalroles::receives(p, net->getDesign());
        return source && sink;
    });
}

}  // namespace kalprune
