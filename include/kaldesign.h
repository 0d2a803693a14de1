// SPDX-License-Identifier: Apache-2.0
/// @file kaldesign.h
/// @brief The inside of a component: instances wired by nets and net buses, dual ports.
#ifndef KALDATA_KALDESIGN_H
#define KALDATA_KALDESIGN_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalport;
class kalportbus;
class kalnet;
class kalnetbus;
class kaldualport;
class kaldualportbus;
class kalelement;
class kaldesigndata;
struct kalinstanceorder;
struct kalnetindex;
struct kalinstanceindex;
struct kalhandedback;
struct kalhandback;

/// @brief The inside of a component: instances wired by nets and net buses, and
/// ports merged into dual ports.
///
/// A component makes and owns its designs (kalcomponent::createDesign()). A design
/// owns its instances, nets, net buses, dual ports and dual port buses and
/// destroys them with itself. removeNetbus(), removeDualPort(),
/// removeDualPortBus() and removeAllInstances() hand objects back instead: the
/// caller destroys them, at any time; a design destroyed first clears their link
/// to it. Records name things by their design path: the owner's instance name +
/// "::" + the design's "Name" + "/" + name ("top::rtl/n1"); a design without owner
/// sends them with an empty owner name, and sends no dual port records at all.
/// Do not copy or assign one: the copy would share the contents.
class kaldesign {
public:
    /// The identity, owned: "Vendor", "Library", "Name" and "Version", each with the vendor tag "SPIRIT".
    kalattributes* identity;
    /// The component that holds the design (not owned), or null: for a design made
    /// directly, or once a component that handed it back (kalcomponent::deleteDesign()) is destroyed.
    kalcomponent* owner;
    /// The contents, owned.
    kaldesigndata* data;

    /// An empty design without owner; the identity holds the four arguments (a null
    /// one leaves its attribute unset). kalcomponent::createDesign() is the usual way
    /// to make one; a design made directly is the caller's.
    KALDATA_API kaldesign(const std::string* vendor, const std::string* library, const std::string* name,
                          const std::string* version);
    /// Destroys the identity, then the dual port buses, dual ports, net buses, nets and
    /// instances (whole components); sends no records. What the design handed back
    /// loses its link to it. Destroy only a design that is yours (made directly, or
    /// handed back by kalcomponent::deleteDesign()); its owner destroys the others.
    KALDATA_API ~kaldesign();
    /// kalattributes::setAttribute() on the design's free attributes (not the identity).
    KALDATA_API void setAttribute(const std::string* key, const std::string* value,
                                  const std::string* vendor);
    /// kalattributes::removeAttribute() on the design's free attributes.
    KALDATA_API void removeAttribute(const std::string* key);

    /// @return the instance @p name, or null when missing; the owner for a null or empty name.
    KALDATA_API kalcomponent* getInstance(const std::string* name);
    /// @return port @p portName of instance @p instanceName (no paths), or of the
    ///         owner for a null or empty instance name; null when either is missing
    ///         or @p portName is null.
    KALDATA_API kalport* getComponentPort(const std::string* portName, const std::string* instanceName);
    /// @return the net bus @p name, or null (also for null).
    KALDATA_API kalnetbus* getNetbus(const std::string* name);
    /// @return the net @p name (bus bits included), or null (also for null).
    KALDATA_API kalnet* getNet(const std::string* name);
    /// Refills the design's own list with the catalogue elements of its instances that
    /// carry the attribute "UVCCIO" (any value), by instance name, then element name.
    /// @return that list, owned by the design and overwritten by the next call.
    KALDATA_API std::list<kalelement*>* getVirtualElements();
    /// The port's name preceded by one segment per level up to this design: the
    /// instance name, or the "Name" of a component that is no instance ("u1/a",
    /// "u1/u2/a"). A port outside this design's subtree is named up to its root.
    /// @return that name, or "" for null.
    KALDATA_API std::string getRelativeHierarchyName(kalport* port) const;
    /// @return whether @p port drives nets of this design: a port of the owner (or an
    ///         equal component) of direction 1 or 3, a port of an instance of this (or
    ///         an equal) design of direction 2 or 3; false otherwise and for null.
    KALDATA_API bool isSourcePort(kalport* port) const;
    /// As isSourcePort(kalport*), with the bus's component and direction.
    KALDATA_API bool isSourcePort(kalportbus* bus) const;
    /// Equal when the same object, or when the identities' four values are equal and
    /// the owners are the same or compare equal. Contents are not compared.
    KALDATA_API bool operator==(const kaldesign& other) const;
    /// The negation of operator==().
    KALDATA_API bool operator!=(const kaldesign& other) const;

    /// Places @p component as instance @p name: the design owns it from then on, sets
    /// its instance name to a copy of @p name and its parentDesign, appends it to the
    /// instance list and sends "design"/"add" with "instance" = its design path. A
    /// component handed back by removeAllInstances() may be placed again; do not add
    /// one that a design still holds.
    /// @return true when placed; false for null or a taken name (the component stays the caller's).
    KALDATA_API bool addInstance(std::string* name, kalcomponent* component);
    /// Makes a net (kalnet constructor) owned by the design, with the attribute "type"
    /// = @p type (vendor tag "SPIRIT") when @p type is non-empty. Sends no record.
    /// @return true when added; false when @p name or @p secondName is null or the name is taken.
    KALDATA_API bool addNet(const std::string* name, const std::string* secondName, const std::string* type,
                            const std::string* text);
    /// Makes a net bus over @p first..@p last and its bit nets name[i] (second name
    /// secondName[i], @p type and @p text as addNet()), i running from @p first to
    /// @p last; an existing net of a bit's name becomes the bit (another bus may hold it
    /// too). The bus gets the same "type". Bounds from 2^31 up are not supported. Sends no record.
    /// @return true when added; false when @p name or @p secondName is null or the bus name is taken.
    KALDATA_API bool addNetbus(const std::string* name, const std::string* type,
                               const std::string* secondName, unsigned int first, unsigned int last,
                               const std::string* text);
    /// Hands every instance back without destroying it: the instance map and list are
    /// emptied, and each component keeps its instance name, parentDesign, ports and
    /// connections. The caller destroys them or places them again (addInstance()).
    /// Sends no record.
    KALDATA_API void removeAllInstances();

    /// Connects a port to the existing net @p netName. The port is found on the component
    /// that the owner's kalcomponent::getComponent() finds at @p instanceName ("top/u1"),
    /// else on this design's instance @p instanceName, or on the owner for a null or
    /// empty instance name. kalnet::connect() with the clock-source flag (a port on
    /// another net leaves it: "connect"/"rem"), then "net"/"add" with "net" = the net's
    /// design path and, for a port of a root component, "topport" = its port path.
    /// @return true when connected; false for a null net or port name, an unknown net
    ///         or port, or a port already on the net.
    KALDATA_API bool connect(const std::string* netName, const std::string* portName,
                             const std::string* instanceName);
    /// Takes a port of this design's instance @p instanceName (of the owner for a null or
    /// empty name; paths are not understood here) off the net @p netName
    /// (kalnet::disconnect() with the clock-source flag: "connect"/"rem"), undoes the
    /// port's export (kalcomponent::removeExport()) and removes the net (removeNet())
    /// when fewer than two ports remain or it has no source or no sink.
    /// @return true when disconnected; false for a null net or port name, an unknown net
    ///         or port, or a port not on the net.
    KALDATA_API bool disconnect(const std::string* netName, const std::string* portName,
                                const std::string* instanceName);

    /// Renames net @p oldName to @p newName (its second name too), renames the first top
    /// port on the net likewise (kalcomponent::changePortName(), "port"/"rnm") and sends
    /// "net"/"rnm" with "oname" and "nname", the old and new design paths. Names are not
    /// checked for emptiness; equal names succeed and send the record.
    /// @return true when renamed; false for null, an unknown net or a taken new name.
    KALDATA_API bool changeNetName(const std::string* oldName, const std::string* newName);
    /// Renames net bus @p oldName and its bit nets (newName[i], second names too), then
    /// the port bus of the first top port on its first bit
    /// (kalcomponent::changePortbusName()), and sends "netbus"/"rnm" with "oname" and
    /// "nname". Kept quirks: when the first bit reaches no top port the rename stays,
    /// but false is returned and no record is sent; a bus without slots throws
    /// std::out_of_range after the rename.
    /// @return true when renamed; false for null, empty or equal names, an unknown bus,
    ///         a taken bus name or a new bit name held by a net (nothing changes then).
    KALDATA_API bool changeNetbusName(const std::string* oldName, const std::string* newName);
    /// Renumbers the bits of net bus @p name to @p first..@p last of the same width. A
    /// kept quirk: it goes ahead only when every new bit name is already held by another
    /// net; the bits then take the new names (second names unchanged) while the net map
    /// keeps the other nets under them, so the bits are no longer found by name (nor
    /// freed with the design). A shift onto free names is refused. Sends no record; the
    /// port bus is not touched.
    /// @return true when renumbered or the range is unchanged; false for an unknown bus,
    ///         another width, or a new bit name that no net holds.
    KALDATA_API bool changeNetBusRange(const std::string* name, unsigned int first, unsigned int last);
    /// Destroys net @p name. Each port is taken off it ("connect"/"rem"); a port of an
    /// instance of this design loses its export, any other port (a top port) is
    /// destroyed (kalcomponent::removePort(), "port"/"rem"). Then "net"/"rem" with "net"
    /// = its design path. A bit takes its net bus with it, unless removeNetbus() handed
    /// the bus back: "netbus"/"rem" is sent once, or twice (kept so) when exactly one
    /// bit of the bus still has ports.
    /// @return true when removed; false for an unknown or null name.
    KALDATA_API bool removeNet(const std::string* name);
    /// Unregisters net bus @p name and hands it back: it is not destroyed, its bit nets
    /// stay in the design with their bus link, and a dying bit no longer takes it along;
    /// the caller destroys it. Sends "netbus"/"rem" with "netbus" = its design path.
    /// @return true, also for an unknown name; false for null.
    KALDATA_API bool removeNetbus(const std::string* name);
    /// Destroys net bus @p name and its bit nets (removeNet() on each, with its records);
    /// sends no "netbus" record.
    /// @return true when deleted; false for an unknown or null name.
    KALDATA_API bool deleteNetbus(const std::string* name);

    /// Destroys instance @p name. For each of its ports, in name order: undoes its export
    /// (kalcomponent::removeExport()), takes it off its net ("connect"/"rem") and removes
    /// the net when fewer than two ports remain or it has no source or no sink
    /// (removeNet()). Then destroys the component with its designs and sends
    /// "design"/"remove" with "instance" = its design path. Its file sets, generators,
    /// LPC records and catalogue groups are not freed: call kalsupport::releaseLeftovers() first.
    /// @return true when removed; false for an unknown or null name.
    KALDATA_API bool removeInstance(const std::string* name);

    /// @return the dual port registered under @p name, or null (also for "").
    KALDATA_API kaldualport* getDualPort(const std::string& name);
    /// @return the dual port bus registered under @p name, or null (also for "").
    KALDATA_API kaldualportbus* getDualPortbus(const std::string& name);
    /// Registers @p dualPort under @p name (its own name is not compared); the design
    /// owns it and sets its design link. Sends "dualpin"/"add" with "dualpin" = the dual
    /// port path: the owner's instance name + "::" + the owner's "Name" + "/" + @p name.
    /// An empty name, null or a taken name: nothing (the dual port stays the caller's).
    KALDATA_API void insertDualPort(const std::string& name, kaldualport* dualPort);
    /// Adds @p port to the dual port @p name, made and registered when missing; a port
    /// already there stays once. Sends "dualpin"/"add", also when nothing was added. The
    /// port keeps its net and export, and a dual port that held it before still lists
    /// it. An empty name or null: nothing.
    KALDATA_API void addPortToDualPort(const std::string& name, kalport* port);
    /// As addPortToDualPort(), appending every port of @p ports in order, duplicates
    /// included; one record for the call. An empty name or vector: nothing.
    KALDATA_API void addPortsToDualPort(const std::string& name, const std::vector<kalport*>& ports);
    /// Registers @p bus under @p name; the design owns it and sets its design link.
    /// Sends "dualpinbus"/"add" with "dualpinbus" = @p name (not a path).
    /// @return true when registered; false for an empty name, null or a taken name.
    KALDATA_API bool insertDualPortBus(const std::string& name, kaldualportbus* bus);
    /// Takes the member named @p portName (instance name + "/" + port name) out of the
    /// dual port @p dualPortName, and destroys the dual port when at most one member is
    /// left. Sends no record. An empty or unknown dual port name: nothing.
    KALDATA_API void removePortFromDualPort(const std::string& dualPortName, const std::string& portName);
    /// Takes the member named getRelativeHierarchyName() of @p port out of the dual port
    /// @p dualPortName (the port keeps its net and export) and sends "dualpin"/"remove"
    /// with "dualpin" = the design path of the net of the port or its dual port, taken
    /// first (the dual port path when there is none), and "port" = the port's path in
    /// its design ("top::rtl/u1/a"), also when the port was no member. Then a dual port
    /// left with fewer than two members is destroyed. An empty or unknown dual port name: nothing.
    KALDATA_API void removePortFromDualPort(const std::string& dualPortName, kalport* port);
    /// Unregisters dual port @p name and hands it back: it is not destroyed and keeps
    /// its members, design link and bus link; the caller destroys it. Sends no record.
    /// An empty or unknown name: nothing.
    KALDATA_API void removeDualPort(const std::string& name);
    /// Unregisters and destroys dual port @p name: its members lose their link, and a
    /// bus holding it leaves its design through removeDualPortBus() (handed back, with its record).
    /// An empty or unknown name: nothing.
    KALDATA_API void deleteDualPort(const std::string& name);
    /// Unregisters dual port bus @p name and hands it back (not destroyed; its members
    /// keep their bus link; the caller destroys it), then sends "dualpinbus"/"remove"
    /// with "dualpinbus" = @p name, also when no bus had that name. A dying member dual
    /// port calls this on its bus's design with the bus's name, also when the bus was
    /// handed back: a bus registered under that name by then is taken out and is the
    /// caller's as well. An empty name: nothing.
    KALDATA_API void removeDualPortBus(const std::string& name);
    /// Destroys dual port bus @p name and every member registered under its own name
    /// (deleteDualPort(); one registered under another key survives, unlinked from the
    /// bus). Sends no record. An empty or unknown name: nothing.
    KALDATA_API void deleteDualPortBus(const std::string& name);

private:
    // addNet's work; answers the net the name maps to, new or not.
    kalnet* placeNet(const std::string& name, const std::string& secondName, const std::string* type,
                     const std::string* text, bool& added);
};

/// @brief A design's contents; its own attributes are the design's free attributes.
///
/// Each accessor returns the live container (not a copy), owned by the record.
/// They are for reading: the design indexes the instance map, net map and instance
/// list, and a container changed from outside can leave that index stale.
class kaldesigndata : public kalattributes {
private:
    std::map<std::string, kalcomponent*>* instanceMap;
    std::list<kalcomponent*>* instanceList;
    std::map<std::string, kalnetbus*>* netbusMap;
    std::map<std::string, kalnet*>* netMap;
    std::map<std::string, kaldualport*>* dualPortMap;
    std::map<std::string, kaldualportbus*>* dualPortbusMap;
    std::list<kalelement*>* virtualElementList;
    kalinstanceorder* instanceOrder;  // finds an instance's place in the list without walking it
    kalnetindex* netIndex;            // finds a net by name without walking the net map
    kalinstanceindex* instanceIndex;  // the same for instances
    kalhandedback* handedBack;        // what the design let go of that still points to it

    friend class kaldesign;
    friend struct kalhandback;
    friend class kalverify;

public:
    /// Empty containers.
    KALDATA_API kaldesigndata();
    /// Destroys the dual port buses, dual ports, net buses, nets and instances, in that order.
    KALDATA_API ~kaldesigndata();

    /// @return the instances by instance name (owned by the design).
    KALDATA_API std::map<std::string, kalcomponent*>* getInstanceMap() const;
    /// @return the same instances in order of addition.
    KALDATA_API std::list<kalcomponent*>* getInstanceList() const;
    /// @return the net buses by name (owned by the design).
    KALDATA_API std::map<std::string, kalnetbus*>* getNetbusMap() const;
    /// @return the nets by name, bus bits included (owned by the design).
    KALDATA_API std::map<std::string, kalnet*>* getNetMap() const;
    /// @return the dual ports by the name they were registered under (owned by the design).
    KALDATA_API std::map<std::string, kaldualport*>* getDualPortMap() const;
    /// @return the dual port buses by name (owned by the design).
    KALDATA_API std::map<std::string, kaldualportbus*>* getDualPortbusMap() const;
    /// @return the list that kaldesign::getVirtualElements() refills (elements not owned).
    KALDATA_API std::list<kalelement*>* getVirtualElementList() const;
};

#endif
