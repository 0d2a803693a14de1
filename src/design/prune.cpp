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
    const kalportlist* list = kalaccess::portList(net);
    if (!list || list->order.size() <= 1) return true;
    bool source = false, sink = false;
    for (const kalport* p : list->order) {
        source = source || kalroles::drives(p, net->getDesign());
        sink = sink || kalroles::receives(p, net->getDesign());
        if (source && sink) return false;
    }
    return true;
}

}  // namespace kalprune
