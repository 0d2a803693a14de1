// What a design or a component handed back to its caller while the object
// still points back to it: a net bus (removeNetbus), a dual port
// (removeDualPort), a dual port bus (removeDualPortBus, or one that a dying
// member took out of the map), the instances of removeAllInstances, and a
// design taken out of its component (deleteDesign, or replaced by
// createDesign). The former owner lists them, so that when it dies it clears
// their links to it instead of leaving them dangling; an object that dies
// first, or is placed anew, leaves the list. Each pair is updated here only,
// so the two ends cannot drift.
//
// The same record keeps the design's unkeyed nets: bit nets that a bus
// rename or range change moved onto names other nets hold, and nets whose
// key such a move erased. No name reaches them, yet the design owns them and
// frees them with itself. The record exists only while it has entries.
#ifndef KALDATA_SRC_DESIGN_HANDEDBACK_H
#define KALDATA_SRC_DESIGN_HANDEDBACK_H

#include <string>
#include <vector>

class kalcomponent;
class kalcomponentdata;
class kaldesigndata;
class kaldesign;
class kalnet;
class kalnetbus;
class kaldualport;
class kaldualportbus;
struct kalhandedback;

struct kalhandback {
    // The owner let the object go; its link to the owner stays.
    static void note(kaldesign* from, kalnetbus* bus);
    static void note(kaldesign* from, kaldualport* dualPort);
    static void note(kaldesign* from, kaldualportbus* bus);
    static void note(kaldesign* from, kalcomponent* instance);
    static void note(kalcomponent* from, kaldesign* design);

    // The object dies, or an owner takes it in: it leaves its former owner's
    // list (the owner its link names, if any).
    static void forget(kalnetbus* bus);
    static void forget(kaldualport* dualPort);
    static void forget(kaldualportbus* bus);
    static void forget(kalcomponent* instance);
    static void forget(kaldesign* design);

    // The owner dies: every object it handed back loses its link to it.
    static void ownerGone(kaldesign* design);
    static void ownerGone(kalcomponentdata* data);

    // After a re-keying of the design's net map: each of `touched` (nulls and
    // nets of other designs are passed over) joins the unkeyed nets when no
    // key names it, and leaves them when one does.
    static void settleKeys(kaldesign* design, const std::vector<kalnet*>& touched);
    // An unkeyed net dies before its design.
    static void forget(kalnet* net);
    // The design's contents are being destroyed, its net map already gone:
    // frees the unkeyed nets.
    static void freeUnkeyed(kaldesigndata* data);

    // Appends what is wrong with the design's record (for kalverify): an
    // entry whose link no longer names the design, an unkeyed net that a key
    // reaches or that lacks its mark.
    static void verify(kaldesign* design, std::vector<std::string>& out);

private:
    // The owner's record; null for an owner being torn down.
    static kalhandedback** slotOf(kaldesign* design);
    static kalhandedback** slotOf(kalcomponent* component);
};

#endif
