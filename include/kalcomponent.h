// SPDX-License-Identifier: Apache-2.0
/// @file kalcomponent.h
/// @brief A block: identity, ports, parameters, files, catalogue, generators and the
/// designs that make up its inside.
#ifndef KALDATA_KALCOMPONENT_H
#define KALDATA_KALCOMPONENT_H

#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kaldesign;
class kalport;
class kalportbus;
class kalparameter;
class kalfile;
class kalfileset;
class kallpc;
class kalelements;
class kalgenerator;
class kalgenerators;
class kalcomponentdata;
struct kalaccess;
struct kalhandedback;
struct kalhandback;

/// @brief A block of a hierarchical design, used both as a definition (its
/// designs are its inside) and as an instance inside a design of another component.
///
/// The caller makes a component; kaldesign::addInstance() makes it an instance,
/// owned by that design from then on. A component owns its designs, ports, port
/// buses and parameters and destroys them with itself. It never frees its file
/// sets and their files, its generator registry with its generators and groups,
/// its LPC records or the groups of its element catalogue: the caller does
/// (kalsupport::release(), kalsupport::releaseLeftovers()). Every operation that
/// reaches inside (nets, connections, hierarchical paths, element counts) uses
/// the first design only, the one whose name sorts first. Ports in records are
/// named by their port path: the component's instance name + "/" + port name.
/// Do not copy or assign one: the copy would share the owned data.
class kalcomponent {
public:
    /// The identity, owned: "Vendor", "Library", "Name" and "Version", each with the vendor tag "SPIRIT".
    kalattributes* identity;

private:
    void* reserved1;

public:
    /// The design that holds the component as an instance (not owned), or null for a
    /// root. An instance that kaldesign::removeAllInstances() handed back keeps it
    /// until that design is destroyed, which clears it.
    kaldesign* parentDesign;
    /// The data record, owned: maps, catalogue, registry and the free attributes.
    kalcomponentdata* data;

private:
    void* reserved2;
    int clockSourceState;

public:
    /// A root component with an empty catalogue and generator registry; the identity
    /// holds the four arguments (a null one leaves its attribute unset), and the
    /// instance name is a copy of @p name (none for null).
    KALDATA_API kalcomponent(const std::string* vendor, const std::string* library, const std::string* name,
                             const std::string* version);
    /// Sets the identity attribute "Vendor" (vendor tag "SPIRIT"); null changes nothing.
    KALDATA_API void setVendor(const std::string* value);
    /// Sets the identity attribute "Library" (vendor tag "SPIRIT"); null changes nothing.
    KALDATA_API void setLibrary(const std::string* value);
    /// Sets the identity attribute "Name" (vendor tag "SPIRIT"); the instance name and
    /// map keys do not change. Null changes nothing.
    KALDATA_API void setName(const std::string* value);
    /// Sets the identity attribute "Version" (vendor tag "SPIRIT"); null changes nothing.
    KALDATA_API void setVersion(const std::string* value);
    /// Destroys the catalogue, the designs with their contents, the port buses, the
    /// ports (one still on a net leaves it with a "connect"/"rem" record) and the parameters;
    /// leaves file sets, generator registry, LPC records and catalogue groups to the
    /// caller. Destroy only a component that is yours: a root, or an instance that
    /// kaldesign::removeAllInstances() handed back (kaldesign::removeInstance() destroys the others).
    KALDATA_API ~kalcomponent();

    /// @return the value of the free attribute @p name (kept in the data record, not the identity), or null.
    KALDATA_API const std::string* getAttributeValue(const std::string* name) const;
    /// Returns the attribute's value, like kalattributes::getAttributeVendor().
    /// @return the value of the free attribute @p name, or null.
    KALDATA_API const std::string* getAttributeVendor(const std::string* name) const;
    /// kalattributes::setAttribute() on the free attributes.
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor);
    /// kalattributes::setAttributeValue() on the free attributes.
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value);
    /// kalattributes::removeAttribute() on the free attributes.
    KALDATA_API void removeAttribute(const std::string* name);
    /// Empties the free attributes; the identity is not touched.
    KALDATA_API void removeAllAttributes();

    /// Registers @p parameter under @p name; the component owns it from then on. When
    /// the name is taken, the present parameter stays, @p parameter remains the
    /// caller's, and a line "Parameter element NAME already existed with a value of
    /// ADDRESS" goes to standard output.
    /// @return 1 when registered; 0 for a taken or null name.
    KALDATA_API int addParameter(const std::string* name, kalparameter* parameter);
    /// @return the parameter registered under @p name, or null.
    KALDATA_API kalparameter* getParameter(const std::string* name);
    /// Unregisters the parameter @p name and hands it back: it is not destroyed and
    /// belongs to the caller.
    /// @return 1 when it was registered, else 0 (also for null).
    KALDATA_API int removeParameter(const std::string* name);

    /// Makes a design whose identity holds the four arguments, owned by the component
    /// and registered under @p name. A design already under that name is taken out and handed back, not
    /// destroyed (see deleteDesign()). Sends no record.
    /// @return 1, or 0 when any argument is null.
    KALDATA_API int createDesign(const std::string* vendor, const std::string* library,
                                 const std::string* name, const std::string* version);
    /// Despite its name, takes the design @p name out and hands it back: it is not
    /// destroyed and belongs to the caller, its contents intact; its owner link
    /// stays until the component is destroyed.
    /// @return 1, also for an unknown name; 0 for null.
    KALDATA_API int deleteDesign(const std::string* name);
    /// @return the design registered under @p name, or null.
    KALDATA_API kaldesign* getDesign(std::string* name);

    /// kaldesign::addNet() on the first design.
    /// @return 1 when the net was added; 0 when the name is taken, @p name or
    ///         @p secondName is null, or there is no design.
    KALDATA_API int addNet(const std::string* name, const std::string* secondName, const std::string* type,
                           const std::string* text);
    /// kaldesign::removeNet() on the first design: destroys the net, with its records.
    /// @return 1 when removed; 0 for an unknown or null name, or without design.
    KALDATA_API int removeNet(const std::string* name);
    /// kaldesign::addNetbus() on the first design (note the order: name, type, second name).
    /// @return 1 when the bus was added; 0 when the name is taken, @p name or
    ///         @p secondName is null, or there is no design.
    KALDATA_API int addNetbus(const std::string* name, const std::string* type, const std::string* secondName,
                              unsigned int msb, unsigned int lsb, const std::string* text);
    /// kaldesign::removeNetbus() on the first design: hands the bus back to the caller.
    /// @return 1, also for an unknown name; 0 for null or without design.
    KALDATA_API int removeNetbus(const std::string* name);
    /// kaldesign::connect() on the first design.
    /// @return its result; false without design.
    KALDATA_API bool connect(const std::string* netName, const std::string* portName,
                             const std::string* instanceName);
    /// kaldesign::disconnect() on the first design.
    /// @return its result; false without design.
    KALDATA_API bool disconnect(const std::string* netName, const std::string* portName,
                                const std::string* instanceName);

    /// Makes and registers a file set @p name (kalfileset constructor). The component
    /// never frees it; the caller does (kalsupport::release()).
    /// @return the new set, or the one already registered under @p name unchanged;
    ///         null when @p name or @p second is null.
    KALDATA_API kalfileset* addFileSet(const std::string* name, const std::string* second,
                                       const std::string* third);
    /// Makes a file @p fileName and appends it to the file set @p filesetName, which owns it.
    /// @return the new file, or null when an argument other than @p third is null, the
    ///         set is missing, or it already holds a file of that name.
    KALDATA_API kalfile* addFile(const std::string* filesetName, const std::string* fileName,
                                 const std::string* second, const std::string* third);

    /// Appends @p lpc (no null or duplicate check). The component never frees it;
    /// kalsupport::release() does, so it must come from `new`.
    /// @return 1.
    KALDATA_API int addLPC(kallpc* lpc);
    /// @return 1 when some LPC record has the attribute @p name, else 0 (also for null).
    KALDATA_API int hasLPC(std::string* name);
    /// @return the value of attribute @p name in the first LPC record, in order of
    ///         addition, that has it; null when none has or for null.
    KALDATA_API const std::string* getLPCValue(const std::string* name);

    /// @return the component's own element catalogue (owned by the component).
    KALDATA_API kalelements* getElements();
    /// @return the catalogue of the component getComponent() finds at @p path, or null.
    KALDATA_API kalelements* getElements(const std::string* path);
    /// Counts the catalogue elements of the leaves: a component without design
    /// answers its own count; one with designs the sum over the instances of its
    /// first design (its own catalogue is not counted; 0 for an empty design).
    KALDATA_API unsigned int elementCount();
    /// As elementCount(), with kalelements::elementCount() of group @p name in each leaf.
    KALDATA_API unsigned int elementCount(const std::string* name);
    /// Makes the component the owner of its generator registry.
    /// @return the registry, made with the component and never freed by it
    ///         (kalsupport::release() frees it).
    KALDATA_API kalgenerators* createGenerators();
    /// Makes a generator named @p name and registers it under @p name
    /// (kalgenerators::addGenerator(), which replaces without freeing).
    /// @return the new generator; nothing in the library frees it (kalsupport::release() does).
    KALDATA_API kalgenerator* createGenerator(std::string name);

    /// Resolves a "/"-separated path that starts with this component's own name (its
    /// instance name, or its "Name" when it has none) and names one instance of the
    /// first design per level: "top/u1/u2".
    /// @return this component for its own name alone, the component found, or null
    ///         (also for null, or a longer path on a component without design).
    KALDATA_API kalcomponent* getComponent(const std::string* path);
    /// Destroys the instance getComponent() finds at @p path with
    /// kaldesign::removeInstance() of its design, with that operation's records. Its
    /// leftovers (file sets, ...) are not freed: call kalsupport::releaseLeftovers() first.
    /// @return 1 when removed; 0 when nothing is found, the path names this component
    ///         (or an equal one), or the component found is no instance.
    KALDATA_API int removeComponent(const std::string* path);
    /// @return whether the free attribute "BBox" is exactly "true".
    KALDATA_API bool needBBox();
    /// Appends to @p names the names of the port buses, then of the ports, that carry
    /// the attribute "PadPin" (any value), each in name order; existing entries stay.
    /// @return 0.
    KALDATA_API int initBlackBoxPadPin(std::vector<std::string>& names);

    /// Equal when the same object, or when the instance names are equal (both missing
    /// counts as equal), the identities' four values are equal, and either both have
    /// no instance name or the parent designs are the same or compare equal. Ports,
    /// designs and free attributes are not compared.
    KALDATA_API bool operator==(const kalcomponent& other) const;
    /// The negation of operator==().
    KALDATA_API bool operator!=(const kalcomponent& other) const;

    /// Makes a port (kalport constructor) owned by the component. A direction
    /// outside 1..3 registers an empty port under @p name. Sends no record.
    /// @return 1 when added; 0 when @p name or @p second is null or a port @p name exists.
    KALDATA_API int addPort(const std::string* name, const std::string* second, int direction,
                            const std::string* fourth);
    /// Makes a port bus and its bits, ports named name[i] (second name second[i]) for
    /// every bit i of msb..lsb; an existing port of a bit's name becomes that bit. A
    /// direction outside 1..3 gives a bus without slots whose bits are empty ports
    /// linked to it. Sends no record.
    /// @return 1 when added; 0 when @p name or @p second is null or the bus name is taken.
    KALDATA_API int addPortbus(const std::string* name, const std::string* second, unsigned int msb,
                               unsigned int lsb, int direction, const std::string* fourth);
    /// Finds a port of this component by @p name or, when @p hierarchical, of the
    /// component that getComponent() finds at the path before the last "/" of @p name
    /// ("top/u1/a": port a of instance u1). A name containing "/" is taken as it is otherwise.
    /// @return the port, or null (also for null).
    KALDATA_API kalport* getPort(const std::string* name, bool hierarchical);
    /// As getPort(), for port buses.
    /// @return the port bus, or null.
    KALDATA_API kalportbus* getPortbus(const std::string* name, bool hierarchical);
    /// Renames port @p oldName, and sets its second name, to @p newName (a bus bit keeps
    /// its bus link) and sends "port"/"rnm" with "oname" and "nname", the old and new port paths.
    /// @return 1 when renamed, or without change or record when both names are equal;
    ///         0 for null or empty names, an unknown port or a taken new name.
    KALDATA_API int changePortName(const std::string* oldName, const std::string* newName);
    /// Renames port bus @p oldName and its bits (newName[i]), second names included,
    /// and sends "portbus"/"rnm" with "oname" and "nname", the old and new bus paths.
    /// @return 1 when renamed, or without change or record when both names are equal;
    ///         0 for null or empty names, an unknown bus, a taken bus name or a new
    ///         bit name held by a port (nothing changes then).
    KALDATA_API int changePortbusName(const std::string* oldName, const std::string* newName);
    /// Destroys port @p name (it leaves its net with a "connect"/"rem" record) and sends
    /// "port"/"rem" with "topport" = its port path. A bus bit first removes its whole
    /// bus with removePortbus(), whose records come first.
    /// @return 1 when removed; 0 for an unknown or null name.
    KALDATA_API int removePort(const std::string* name);
    /// Destroys port bus @p name; its bits stay as ordinary ports. Sends "portbus"/"rem"
    /// with "topportbus" = its bus path, then for each bit on a net "net"/"add" with
    /// "net" (the net's design path) and, when a port of a root component is on that
    /// net, "topport" (the first such port's path).
    /// @return 1 when removed; 0 for an unknown or null name.
    KALDATA_API int removePortbus(const std::string* name);
    /// Destroys port bus @p name together with its bits (removePort(), one "port"/"rem"
    /// record per bit); no "portbus" record.
    /// @return 1 when deleted; 0 for an unknown or null name.
    KALDATA_API int deletePortbus(const std::string* name);

    /// Exports the port, or else the port bus, at @p path (getPort(), getPortbus()) of
    /// an instance to the component that holds the instance's design, whichever
    /// component is asked. The top port is named @p topName, or when that is null or
    /// empty instance name + "_" + port name ("u1_a"), and gets the port's direction.
    /// A port keeps its net, else uses the design's net of the top port's name, else
    /// gets a new one of that name with "type" @p netArg. A port bus uses the net bus
    /// of the top port's name (made when the bus is not already on a net bus as a
    /// whole), even when the bus is on another one. Both are connected and exported,
    /// and "export"/"add" is sent with "port", "topport", "net" (for a bus "portbus",
    /// "topportbus", "netbus"): @p path as given, the top port path, and the design
    /// path ending in the top port's name even when the net has another name. A top
    /// port name already taken makes a port export connect nothing and send no record.
    /// The enclosing component always gets the attribute "ChangeConnect" = "true". A
    /// port of a component that is no instance is not exported.
    /// @return 1 when @p path names a port or port bus, whatever was done; else 0.
    KALDATA_API int addExport(std::string path, bool hierarchical, const std::string* netArg,
                              const std::string* topName);
    /// Undoes the export of the port, or else the port bus, at @p path: unexports it,
    /// takes the top port off the net ("connect"/"rem") and destroys it (removePort(),
    /// or deletePortbus() for a bus, with their records), removes each net left with
    /// fewer than two ports or without a source or a sink (kaldesign::removeNet()),
    /// sets "ChangeConnect" = "true" on the enclosing component, and sends
    /// "export"/"rem" with "net" (only when the net was removed; empty when there was
    /// none), "port" (the port's own name, not its path) and "topport"; for a bus
    /// "netbus" (only when every bit's net was removed), "portbus" (the bus's name)
    /// and "topportbus". The port itself can be destroyed when its net belongs to its
    /// own component's design (there it is a top port).
    /// @return 1 when undone; 0 for an unknown path, a port that is not exported, or a
    ///         bus whose bits are not all on nets of one net bus, each reaching one top
    ///         port, and exported to one top port bus.
    KALDATA_API int removeExport(std::string path, bool hierarchical);

    /// @return 0 at first; 1 after a port named like a catalogue element with
    ///         "CLK_SRC" = "true" joined a net with the clock-source flag
    ///         (kalnet::connect(), kaldesign::connect()), 2 after one left. Not read by the library.
    KALDATA_API int getClockSourceState() const;

private:
    // Written by nets as ports join and leave them.
    friend struct kalaccess;
    void setClockSourceState(int state);
};

/// @brief A component's data record; its own attributes are the component's free
/// attributes.
///
/// The maps are the component's registries, ordered by name. The owned ones are
/// for reading: change them through kalcomponent, which keeps links and records
/// in step. File sets, generator registry and LPC records are the caller's to
/// free; one that frees them clears the entries (kalsupport::releaseLeftovers()).
class kalcomponentdata : public kalattributes {
public:
    /// The name under which the component is an instance, owned: a copy of the
    /// constructor's name, replaced by kaldesign::addInstance(); null when none was
    /// given. The library's to change: nets index their ports by it.
    std::string* instanceName;
    /// The element catalogue, owned (the groups it makes are not freed).
    kalelements* elements;
    /// The designs by name, owned; the first is the one whose name sorts first.
    std::map<std::string, kaldesign*> designs;
    /// The port buses by name, owned.
    std::map<std::string, kalportbus*> portbuses;
    /// The ports by name, owned; the bits of the port buses included.
    std::map<std::string, kalport*> ports;
    /// The file sets by name, not freed by the component.
    std::map<std::string, kalfileset*> filesets;
    /// The generator registry, made with the record and not freed by it.
    kalgenerators* generators;
    /// The parameters by the name they were added under, owned.
    std::map<std::string, kalparameter*> parameters;
    /// The LPC records in order of addition, not freed by the component.
    std::vector<kallpc*> lpcs;

    /// Empty maps, a new catalogue and a new generator registry, no instance name.
    KALDATA_API kalcomponentdata();
    /// Destroys the catalogue, the designs, the port buses, the ports, the parameters
    /// and the instance name; leaves file sets, generator registry and LPC records.
    KALDATA_API ~kalcomponentdata();

private:
    kalhandedback* handedBack;  // designs it let go of that still point to it
    friend struct kalhandback;
};

#endif
