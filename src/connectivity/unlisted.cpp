// SPDX-License-Identifier: Apache-2.0
#include "connectivity/unlisted.h"

#include "connectivity/access.h"
#include "connectivity/relation.h"
#include "kalnet.h"
#include "kalport.h"

namespace kalunlisted {

namespace {

// Nets and the ports they took off their list while the ports kept the link.
kalrelation<const kalnet*, kalport*>& noted() {
    // Never freed: model objects may still die during static destruction.
    static auto* table = new kalrelation<const kalnet*, kalport*>();
    return *table;
}

}  // namespace

void note(kalport* port, const kalnet* net) {
    auto& t = noted();
    auto hold = t.hold();
    t.add(net, port);
}

void netGone(const kalnet* net) {
    auto& t = noted();
    if (t.empty()) return;
    auto hold = t.hold();
    for (kalport* port : t.takeFirst(net))
        if (port->getNet() == net) kalaccess::dropNet(port);
}

void portGone(const kalport* port) {
    auto& t = noted();
    if (t.empty()) return;
    auto hold = t.hold();
    t.takeSecond(const_cast<kalport*>(port));
}

}  // namespace kalunlisted
