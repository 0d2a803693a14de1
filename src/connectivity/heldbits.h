// SPDX-License-Identifier: Apache-2.0
// Bit nets that more than one net bus holds. addNetbus (an existing net of a
// bit's name becomes the bit) and kalnetbus::connect take a net over while
// another bus keeps it in a slot. The net's bus link names one of them at
// most, and any of them may clear it (a destroyed bus, deleteNetbus), so once
// a net is shared every bus that takes it is noted here, and a net that is
// destroyed leaves every slot it is in. A net only ever in one bus is not
// noted: then the table stays empty. Likewise a net that left a slot while
// keeping its link (kalnetbus::disconnect) is noted, so that the link is
// cleared when the bus dies first.
#ifndef KALDATA_SRC_CONNECTIVITY_HELDBITS_H
#define KALDATA_SRC_CONNECTIVITY_HELDBITS_H

class kalnet;
class kalnetbus;

namespace kalheldbits {

// The net goes into a slot of the bus; called before the net's link is set to it.
void joined(kalnet* net, kalnetbus* bus);
// The net left a slot of the bus but keeps its link to it (kalnetbus::disconnect).
void left(kalnet* net, kalnetbus* bus);
// The net is being destroyed: every noted holder's slots that hold it are
// emptied, and no bus remembers it as having left.
void netGone(const kalnet* net);
// The bus is being destroyed: it is no longer a holder, and nets that left it
// with their link kept lose the link.
void busGone(const kalnetbus* bus);

}  // namespace kalheldbits

#endif
