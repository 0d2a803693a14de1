// SPDX-License-Identifier: Apache-2.0
// How a port on a net is classified: a top port belongs to the component that
// owns the net's design; instance ports drive on 2/3 and receive on 1/3, top
// ports the other way round.
#ifndef KALDATA_SRC_CONNECTIVITY_ROLES_H
#define KALDATA_SRC_CONNECTIVITY_ROLES_H

class kaldesign;
class kalnet;
class kalport;

namespace kalroles {

bool isTopPort(const kalport* port, const kaldesign* design);
bool drives(const kalport* port, const kaldesign* design);
bool receives(const kalport* port, const kaldesign* design);
// The first entry of the net's getTop(), without scanning past it.
kalport* firstTopPort(kalnet* net);

}  // namespace kalroles

#endif
