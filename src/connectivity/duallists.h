// SPDX-License-Identifier: Apache-2.0
// Which dual ports list a port. A port can be listed by several dual ports at
// once (added to a second one; the first keeps it), while its dual port link
// names at most one of them, or none once a dual port that let it go cleared
// the link. Every listing is remembered, so that a port that is destroyed
// leaves every list it is in.
#ifndef KALDATA_SRC_CONNECTIVITY_DUALLISTS_H
#define KALDATA_SRC_CONNECTIVITY_DUALLISTS_H

class kalport;

namespace kalduallists {

// The port is being destroyed: every dual port that lists it drops it.
void portGone(const kalport* port);

}  // namespace kalduallists

#endif
