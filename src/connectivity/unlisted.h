// SPDX-License-Identifier: Apache-2.0
// Ports that point to a net which no longer lists them. Two distinct ports can
// compare equal (a component that removeAllInstances handed back keeps its
// instance name and parent design, and another instance may be added under
// that name); a net takes out the first equal entry, so disconnecting one port
// can take its twin off the list while the twin keeps its link to the net.
// Such links are noted here and cleared when the net is destroyed, so that no
// port is left pointing at a freed net. Nothing is noted without twins.
#ifndef KALDATA_SRC_CONNECTIVITY_UNLISTED_H
#define KALDATA_SRC_CONNECTIVITY_UNLISTED_H

class kalnet;
class kalport;

namespace kalunlisted {

// The net took the port off its list, but the port still points to the net.
void note(kalport* port, const kalnet* net);
// The net is being destroyed: noted ports that still point to it lose the link.
void netGone(const kalnet* net);
// The port is being destroyed.
void portGone(const kalport* port);

}  // namespace kalunlisted

#endif
