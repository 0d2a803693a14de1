// SPDX-License-Identifier: Apache-2.0
/// @file kalport.h
/// @brief Ports, port buses and the free port queries that look through dual ports.
#ifndef KALDATA_KALPORT_H
#define KALDATA_KALPORT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalnet;
class kalnetbus;
class kaldualport;
class kalportbus;
struct kalaccess;

/// @brief A single-bit pin of a component: a name, a second name, a direction
/// (1 input, 2 output, 3 bidirectional), an optional text and attributes.
///
/// A component owns the ports added to it (kalcomponent::addPort(),
/// kalcomponent::addPortbus() for the bits of a bus) and destroys them with
/// kalcomponent::removePort() or its destructor. A port is on at most one net,
/// is the bit of at most one port bus, may be merged into a dual port and may
/// be exported to a port of the enclosing component; all of these are held, not
/// owned. Use kaldesign::connect() and kalcomponent::addExport() rather than the
/// link operations below, which change one port and its partner only. Do not
/// copy or assign one: the copy would share the names and links.
class kalport : public kalattributes {
private:
    // The component, with the direction (0 to 3) in the pointer's two low bits:
    // millions of ports, and every word saved counts.
    std::uintptr_t owner;
    const std::string* name;  // shared with every equal port name
    kalnet* net;
    // The second name where it differs from the name, the text, the export
    // partners and the dual port: few ports have any, so they live apart.
    struct extras;
    // The bus, or (lowest bit set) the side record, which then holds the bus:
    // one word for both takes a port from 48 to 40 bytes.
    std::uintptr_t link;
    extras* extra() const { return link & 1 ? reinterpret_cast<extras*>(link ^ 1) : nullptr; }

public:
    /// A port named @p name with @p secondName, @p direction and a copy of @p text
    /// (may be null), in no component. A null name or second name, or a direction
    /// outside 1..3, gives an empty port: no name and direction 0.
    KALDATA_API kalport(const std::string* name, const std::string* secondName, int direction,
                        const std::string* text);
    /// Links the port to @p bus; null changes nothing. The bus's slots are not changed.
    KALDATA_API void setBus(kalportbus* bus);
    /// Clears the bus link; the bus's slots are not changed.
    KALDATA_API void unsetBus();
    /// @return the dual port the port is merged into, or null.
    KALDATA_API kaldualport* getDualPort();
    /// Sets the port's net link; the net's port list is not changed (kalnet::connect()
    /// appends the port and then calls this). A port on a net that compares unequal
    /// first leaves it (disconnect()); null only takes the port off its present net.
    KALDATA_API void connect(kalnet* net);
    /// When the port is on a net equal to @p net: takes it off the list of @p net, if
    /// listed there (kalnet::disconnect() with the clock-source flag, one "connect"/"rem"
    /// record), and clears the link. Otherwise nothing.
    KALDATA_API void disconnect(kalnet* net);
    /// Exports this port to @p port, which must be on the very same net: clears this
    /// port's former export and the former source of @p port, links the two, and sets
    /// the attribute "exportFrom" of @p port to this port's component instance name +
    /// "." + this port's name. Null unexports this port. Sends no record.
    /// @return false when this port is on no net or @p port is on another net; else true.
    KALDATA_API bool exportTo(kalport* port);
    /// Clears the export link of both partners; the target keeps its "exportFrom" attribute.
    KALDATA_API void unexport();
    /// @return the port that is exported to this one, or null.
    KALDATA_API kalport* getExportedFrom();
    /// @return the port this one is exported to, or null.
    KALDATA_API kalport* getExportedTo();
    /// @return the other ports on the port's net, in the net's order, leaving out
    ///         every port that compares equal to this one; empty when it is on no net.
    KALDATA_API std::vector<kalport*> getConnectedPorts();
    /// @return the members of the port's dual port without the first entry that is
    ///         this very port; empty when it is in no dual port.
    KALDATA_API std::vector<kalport*> getPortsOfDualPort();
    /// Equal when the same object, or when name and second name are equal and the
    /// components are the same, or both present and equal (kalcomponent::operator==()).
    KALDATA_API bool operator==(const kalport& other) const;
    /// The negation of operator==().
    KALDATA_API bool operator!=(const kalport& other) const;
    /// Leaves its net (one "connect"/"rem" record), every bus slot of its component
    /// and every dual port list that holds it, and clears its export partners'
    /// links. Sends no "port" record (kalcomponent::removePort() does).
    KALDATA_API ~kalport();

    /// Ports come from slabs that the library keeps per thread (a model has
    /// millions of them, and a slab saves each its own allocation header); in
    /// sanitizer builds they come from the global allocator. Allocate and free
    /// them with plain new and delete; placement new works as usual.
    /// @return storage for one port (a derived type of another size gets the global allocator's).
    KALDATA_API static void* operator new(std::size_t size);
    /// Gives back what operator new() handed out; `size` tells a derived type apart.
    KALDATA_API static void operator delete(void* object, std::size_t size);
    /// Placement new, which the class allocation functions would otherwise hide.
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    /// The placement delete that a throwing constructor after placement new calls.
    static void operator delete(void*, void*) noexcept {}

    /// @return the component that added it, or null.
    KALDATA_API kalcomponent* getComponent() const;
    /// @return the name (for a bus bit, the bus name + "[" + bit + "]"), or null for an empty port.
    KALDATA_API const std::string* getName() const;
    /// @return the second name (the name itself when both are equal), or null for an empty port.
    KALDATA_API const std::string* getSecondName() const;
    /// @return the optional text, or null when none was given.
    KALDATA_API const std::string* getText() const;
    /// @return the bus it is linked to as a bit, or null.
    KALDATA_API kalportbus* getBus() const;
    /// @return the net it is on, or null.
    KALDATA_API kalnet* getNet() const;
    /// @return 1 input, 2 output, 3 bidirectional, or 0 for an empty port.
    KALDATA_API int getDirection() const;

private:
    // Link and key updates belong to the library so that both ends stay in step.
    friend struct kalaccess;
    void setComponent(kalcomponent* component);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    void setDualPort(kaldualport* dualPort);
    extras& more();
    void storeNames(const std::string* name, const std::string* secondName);
};

/// @brief A multi-bit pin: a name, a range msb..lsb, a direction and one slot per bit.
///
/// Slot 0 holds bit msb and slots run toward lsb, whichever way the range goes;
/// the bits are ordinary ports of the same component named name[i]
/// (kalcomponent::addPortbus() makes them). A component owns its port buses;
/// slots hold ports without owning them. A bus made with a null name or a
/// direction outside 1..3 has no name and no slots, and answers as an empty
/// bus. Do not copy or assign one: the copy would free the same slots.
class kalportbus : public kalattributes {
private:
    kalcomponent* component;
    const std::string* name;  // shared with every equal port name
    const std::string* secondName;
    struct extras;  // the text and the ports tied to the bus: few buses have either
    extras* extra;
    std::vector<kalport*>* bits;
    int direction;
    unsigned int msb;
    unsigned int lsb;

public:
    /// A bus named @p name over msb..lsb (either way round) with |msb - lsb| + 1
    /// empty slots, in no component. A null name or second name, or a direction
    /// outside 1..3, gives an empty bus without slots.
    KALDATA_API kalportbus(const std::string* name, const std::string* secondName, unsigned int msb,
                           unsigned int lsb, int direction, const std::string* text);
    /// @return the port in the slot of bit @p i, or null when the slot is empty or @p i is outside the range.
    KALDATA_API kalport* portAtIndex(unsigned int i);
    /// Puts @p port in the slot of bit @p i; the former occupant is not told, and the
    /// port's bus link is not set. Null or a bit outside the range changes nothing.
    KALDATA_API void connect(unsigned int i, kalport* port);
    /// Empties the slot of bit @p i (the port keeps its bus link); outside the range: nothing.
    KALDATA_API void disconnect(unsigned int i);
    /// Empties the first slot whose port compares equal to @p port (its bus link stays). Null: nothing.
    KALDATA_API void disconnect(kalport* port);
    /// @return whether the port of some slot is on a net.
    KALDATA_API bool hasConnectedPort();
    /// The net bus that carries the whole bus bit for bit: the bus of slot 0's net,
    /// of the same width, whose slot k holds a net equal to the net of this bus's slot k for every k.
    /// @return that net bus, or null when any bit is missing, on no net or on another bus.
    KALDATA_API kalnetbus* getConnectedNetbus();
    /// Connects the port in each slot to the net in the same slot of @p netbus
    /// (kalnet::connect() without the clock-source flag; a port on another net
    /// leaves it with a "connect"/"rem" record). Sends no "net"/"add" record.
    /// @return false for null or a net bus of another width, else true.
    KALDATA_API bool connectToNetbus(kalnetbus* netbus);
    /// Exports the port in each slot to the port in the same slot of @p portbus
    /// (kalport::exportTo(); a bit without a target port is unexported), then sets
    /// the target bus's attribute "exportFrom" to this bus's component instance name +
    /// "." + this bus's name. Null or a bus without slots: nothing.
    KALDATA_API void exportTo(kalportbus* portbus);
    /// kalport::unexport() on the port of every filled slot; the target bus keeps its "exportFrom".
    KALDATA_API void unexport();
    /// @return the bus of the port that slot 0's port is exported to, when it has this
    ///         bus's width; else null.
    KALDATA_API kalportbus* getExportedToBus();
    /// kalattributes::setAttribute() on the bus and, when @p propagate, on the port of every filled slot.
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor, bool propagate);
    /// kalattributes::setAttributeValue() on the bus and, when @p propagate, on every filled slot's port.
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    /// kalattributes::removeAttribute() on the bus and, when @p propagate, on every filled slot's port.
    KALDATA_API void removeAttribute(const std::string* name, bool propagate);
    /// kalattributes::removeAllAttributes() on the bus and, when @p propagate, on every filled slot's port.
    KALDATA_API void removeAllAttributes(bool propagate);
    /// Clears the bus link of the ports in its slots and of every port of its
    /// component still linked to it; the ports are not destroyed (the component owns them).
    KALDATA_API ~kalportbus();

    /// @return the component that added it, or null.
    KALDATA_API kalcomponent* getComponent() const;
    /// @return the name, or null for an empty bus.
    KALDATA_API const std::string* getName() const;
    /// @return the second name, or null for an empty bus.
    KALDATA_API const std::string* getSecondName() const;
    /// @return the optional text, or null when none was given.
    KALDATA_API const std::string* getText() const;
    /// @return a copy of the slots, empty ones (null) included; slot 0 holds bit msb. Empty without slots.
    KALDATA_API std::vector<kalport*> getBits() const;
    /// @return 1 input, 2 output, 3 bidirectional, or 0 for an empty bus.
    KALDATA_API int getDirection() const;
    /// @return the first bound of the range, as given (0 for an empty bus).
    KALDATA_API unsigned int getMsb() const;
    /// @return the second bound of the range, as given (0 for an empty bus).
    KALDATA_API unsigned int getLsb() const;

private:
    friend struct kalaccess;
    void setComponent(kalcomponent* component);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    extras& more();
};

/// @return false for null; for a bus bit, isPadPinBus() of its bus (the port's own
///         attribute is not read); otherwise whether the attribute "PadPin" is exactly "true".
KALDATA_API bool isPadPin(kalport* port);
/// @return whether the bus's attribute "PadPin" is exactly "true" (false for null).
KALDATA_API bool isPadPinBus(kalportbus* portbus);
/// @return whether the port, or some member of its dual port, is on a net (false for null).
KALDATA_API bool isPortOrDualPortConnected(kalport* port);
/// @return the port's net, else the net of the first connected member of its dual
///         port (kaldualport::getConnectedNet()), else null (also for null).
KALDATA_API kalnet* getNetConnectedToPortOrDualPort(kalport* port);
/// @return the port's export target, else that of its dual port
///         (kaldualport::getExportedTo()), else null (also for null).
KALDATA_API kalport* getExportedToOfPortOrDualPort(kalport* port);
/// @return whether the port is merged into a dual port (false for null).
KALDATA_API bool isDualPort(kalport* port);
/// @return isDualPort() of the port in the bus's bit msb slot (false for null).
KALDATA_API bool isDualPortbus(kalportbus* portbus);
/// The bus's own kalportbus::getConnectedNetbus(); failing that, and only when no bit
/// of the bus is on a net, the first such net bus of the buses of the msb bit's
/// dual port partners, in order. A partner bus with only some bits on nets ends the search.
/// @return the net bus, or null (also for null).
KALDATA_API kalnetbus* getNetbusConnectedToPortbusOrDualPortbus(kalportbus* portbus);
/// @return whether some bit of the bus, or of the bus of a dual port partner of its
///         msb bit, is on a net (false for null).
KALDATA_API bool hasPortBitConnectedToPortbusOrDualPortbus(kalportbus* portbus);

#endif
