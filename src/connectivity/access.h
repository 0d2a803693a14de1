// SPDX-License-Identifier: Apache-2.0
// The library's own door to the private setters of ports, port buses, nets and
// net buses. Applications cannot reach these, so a link or a map key cannot be
// changed behind the model's back; inside the library every such change goes
// through here, which also keeps the nets' port indexes in step.
#ifndef KALDATA_SRC_CONNECTIVITY_ACCESS_H
#define KALDATA_SRC_CONNECTIVITY_ACCESS_H

#include <string>
#include <vector>

#include "kalcomponent.h"
#include "kaldualport.h"
#include "kalnet.h"
#include "kalport.h"

#include "connectivity/portlist.h"

class kalcomponent;

struct kalaccess {
    // Nets. Connects a port the caller found not to be on the net (one scan of its list, not two).
    static void join(kalnet* n, kalport* p, bool flag) { n->append(p, flag); }
    // Ports. Name and component are part of a net's lookup key.
    static void setComponent(kalport* p, kalcomponent* c);
    static void setName(kalport* p, const std::string* n);
    static void setSecondName(kalport* p, const std::string* n) { p->setSecondName(n); }
    static void setDualPort(kalport* p, kaldualport* d) { p->setDualPort(d); }
    // The port's net is being destroyed while the port is not on its list.
    static void dropNet(kalport* p) { p->net = nullptr; }
    // Takes every entry of a dying port out of a dual port's list.
    static void forgetPort(kaldualport* d, const kalport* p);
    // The dual ports that list the port, whatever its dual port link says: a
    // port can be in the lists of several (null without a side record unless make).
    static std::vector<kaldualport*>* listers(kalport* p, bool make);

    // A component's instance name is part of its connected ports' lookup keys.
    static void setInstanceName(kalcomponent* c, const std::string& name);

    // The port stopped pointing to `net`; if the net still lists it, the net
    // can no longer trust its index, and the port notes the net so that it
    // can take itself off that list when it dies.
    static void portLeft(kalnet* net, kalport* p);
    // The net took the port off its list (or is dying): the port forgets it.
    static void netUnlisted(kalport* p, const kalnet* net);
    // The net took `twin`, an equal port, off its list in place of another;
    // the twin keeps pointing to the net, which clears that link when it dies.
    static void twinUnlisted(kalnet* net, kalport* twin);
    // The port's link to the net ends: the net no longer clears it.
    static void linkEnded(kalnet* net, const kalport* p);
    // For kalverify: the nets that still list a port whose link moved on, and
    // the twins a net took off its list (null without a side record).
    static const std::vector<kalnet*>* listedBy(const kalport* p);
    static const std::vector<kalport*>* twins(const kalnet* n);

    static void setComponent(kalportbus* b, kalcomponent* c) { b->setComponent(c); }
    static void setName(kalportbus* b, const std::string* n) { b->setName(n); }
    static void setSecondName(kalportbus* b, const std::string* n) { b->setSecondName(n); }

    static void setDesign(kalnet* n, kaldesign* d) { n->setDesign(d); }
    static void setName(kalnet* n, const std::string* s) { n->setName(s); }
    static void setSecondName(kalnet* n, const std::string* s) { n->setSecondName(s); }
    static kalportlist portList(kalnet* n) { return kalportlist(n->ports); }
    // Whether the net is among its design's unkeyed nets (design/handedback.h).
    static bool unkeyed(const kalnet* n);
    static void setUnkeyed(kalnet* n, bool unkeyed);

    static void setDesign(kalnetbus* b, kaldesign* d) { b->setDesign(d); }
    static void setName(kalnetbus* b, const std::string* s) { b->setName(s); }
    static void setSecondName(kalnetbus* b, const std::string* s) { b->setSecondName(s); }
    static void setRange(kalnetbus* b, unsigned int msb, unsigned int lsb) { b->setRange(msb, lsb); }
    static void markHandedBack(kalnetbus* b) { b->markHandedBack(); }
    static bool handedBack(const kalnetbus* b) { return b->handedBack(); }

    // A design registers its dual ports and dual port buses.
    static void setDesign(kaldualport* p, kaldesign* d) { p->setDesign(d); }
    static void setDesign(kaldualportbus* b, kaldesign* d) { b->setDesign(d); }

    // Bus membership, for busties.h only: a bus's slots (null when it has
    // none), the ties of a member or a bus (null without a side record unless
    // make), and a member's bus link alone.
    static std::vector<kalport*>* slots(kalportbus* b) { return b->bits; }
    static std::vector<kalnet*>* slots(kalnetbus* b) { return b->bits; }
    static std::vector<kaldualport*>* slots(kaldualportbus* b) { return &b->slotVector; }
    static std::vector<kalportbus*>* ties(kalport* p, bool make);
    static std::vector<kalport*>* ties(kalportbus* b, bool make);
    static std::vector<kalnetbus*>* ties(kalnet* n, bool make);
    static std::vector<kalnet*>* ties(kalnetbus* b, bool make);
    static std::vector<kaldualportbus*>* ties(kaldualport* d, bool make);
    static std::vector<kaldualport*>* ties(kaldualportbus* b, bool make);
    static void setLink(kalport* p, kalportbus* b);
    static void setLink(kalnet* n, kalnetbus* b);
    static void setLink(kaldualport* d, kaldualportbus* b);

    // Nets record on the component whether a clock source joined or left.
    static void setClockSourceState(kalcomponent* c, int state) { c->setClockSourceState(state); }

private:
    template <class Change>
    static void rekeyAround(kalport* p, Change change);
};

#endif
