// SPDX-License-Identifier: Apache-2.0
/// @file kalnet.h
/// @brief Nets, net buses and their free queries.
#ifndef KALDATA_KALNET_H
#define KALDATA_KALNET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kaldesign;
class kalport;
class kalnetbus;
struct kalaccess;

/// @brief A single-bit wire of a design: a name, a second name, an optional text,
/// attributes ("type" among them) and the ports it connects, in order of connection.
///
/// A design owns the nets added to it (kaldesign::addNet(), kaldesign::addNetbus()
/// for the bits of a bus) and destroys them (kaldesign::removeNet(), its
/// destructor). Ports are held, not owned. A port on the net is a top port when
/// its component is the design's owner (or equal to it), an instance port
/// otherwise. Use kaldesign::connect() and kaldesign::disconnect() rather than the
/// link operations below, which send fewer records. Do not copy or assign one:
/// the copy would share the port list.
class kalnet : public kalattributes {
private:
    // Large designs hold millions of nets, so the common net (named, second
    // name equal to the name, no text) is a single allocation.
    kaldesign* design;
    std::string name;  // getName() is null for a net made without names
    struct extras;     // a second name unlike the name, a text, or no names at all
    // The bus, or (lowest bit set) the side record, which then holds the bus:
    // one word for both takes a net from 72 to 64 bytes.
    std::uintptr_t link;
    kalport* ports;  // connected ports in order of connection: the port list's storage word
    extras* extra() const { return link & 1 ? reinterpret_cast<extras*>(link ^ 1) : nullptr; }

public:
    /// A net named @p name with @p secondName and a copy of @p text (may be null), in
    /// no design. A null name or second name gives a net without names that no port can join.
    KALDATA_API kalnet(const std::string* name, const std::string* secondName, const std::string* text);
    /// @return whether a listed port compares equal to @p port (false for null).
    KALDATA_API bool isConnectedTo(kalport* port);
    /// Appends @p port and sets its net link (kalport::connect(), which takes it off
    /// another net first, with that net's "connect"/"rem" record). When @p flag is set
    /// and the catalogue element named like the port has "CLK_SRC" = "true", the
    /// port's component's clock-source state becomes 1. A port already listed (or an
    /// equal one), null, or a net without names: nothing. Sends no record of its own.
    KALDATA_API void connect(kalport* port, bool flag);
    /// Takes the first listed port equal to @p port off the list, clears the net link of
    /// @p port and sends "connect"/"rem" with "net" (the net's design path, "top::rtl/n1")
    /// and "port" ("top/u1/a"; "top/a" for a port of a root component). With @p flag,
    /// as connect() but the clock-source state becomes 2. A port not listed, or null: nothing.
    KALDATA_API void disconnect(kalport* port, bool flag);
    /// Links the net to @p netbus; null changes nothing. The bus's slots are not changed.
    KALDATA_API void setBus(kalnetbus* netbus);
    /// Clears the bus link; the bus's slots are not changed.
    KALDATA_API void unsetBus();
    /// @return the top ports on the net, in list order.
    KALDATA_API std::vector<kalport*> getTop();
    /// @return the ports that drive the net, in list order: instance ports of
    ///         direction 2 or 3, top ports of direction 1 or 3.
    KALDATA_API std::vector<kalport*> getSources();
    /// @return the ports the net drives, in list order: instance ports of
    ///         direction 1 or 3, top ports of direction 2 or 3.
    KALDATA_API std::vector<kalport*> getSinks();
    /// Equal when the same object, or when names and second names are equal (both
    /// missing counts as equal) and the designs are the same, either is missing, or
    /// they compare equal (kaldesign::operator==()).
    KALDATA_API bool operator==(const kalnet& other) const;
    /// The negation of operator==().
    KALDATA_API bool operator!=(const kalnet& other) const;
    /// Unlinks every listed port (no records) and leaves every bus slot that holds it.
    /// A bit takes its whole bus with it: a design that holds the bus drops it
    /// (kaldesign::removeNetbus(), one "netbus"/"rem" record) and the bus is destroyed,
    /// as is a bus that no design ever held; the other bits survive without a bus
    /// link. A bus that kaldesign::removeNetbus() handed back only loses this bit.
    KALDATA_API ~kalnet();

    /// Nets come from slabs that the library keeps per thread (a model has
    /// millions of them, and a slab saves each its own allocation header); in
    /// sanitizer builds they come from the global allocator. Allocate and free
    /// them with plain new and delete; placement new works as usual.
    /// @return storage for one net (a derived type of another size gets the global allocator's).
    KALDATA_API static void* operator new(std::size_t size);
    /// Gives back what operator new() handed out; `size` tells a derived type apart.
    KALDATA_API static void operator delete(void* object, std::size_t size);
    /// Placement new, which the class allocation functions would otherwise hide.
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    /// The placement delete that a throwing constructor after placement new calls.
    static void operator delete(void*, void*) noexcept {}

    /// @return the design that added it, or null.
    KALDATA_API kaldesign* getDesign() const;
    /// @return the name (for a bus bit, the bus name + "[" + bit + "]"), or null for a
    ///         net made without names.
    KALDATA_API const std::string* getName() const;
    /// @return the second name (the name itself when both are equal), or null for a net made without names.
    KALDATA_API const std::string* getSecondName() const;
    /// @return the optional text, or null when none was given.
    KALDATA_API const std::string* getText() const;
    /// @return the net bus it is linked to as a bit, or null.
    KALDATA_API kalnetbus* getBus() const;
    /// @return a copy of the listed ports in order of connection (not owned).
    KALDATA_API std::vector<kalport*> getPorts() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    extras& more();
    // connect()'s work once the port is known not to be on the list.
    void append(kalport* port, bool flag);
    void tidy();  // drops the side record once the net is common again
};

/// @brief A bus of nets: a name, a second name, a range msb..lsb and one slot per bit.
///
/// Slot 0 holds bit msb and slots run toward lsb, whichever way the range goes;
/// the bits are ordinary nets of the design named name[i]
/// (kaldesign::addNetbus() makes them). A design owns the buses registered in it;
/// slots hold nets without owning them. kaldesign::removeNetbus() hands a bus
/// back to the caller, who then destroys it. Do not copy or assign one: the copy
/// would free the same slots.
class kalnetbus : public kalattributes {
private:
    kaldesign* design;
    std::string* name;
    std::string* secondName;
    struct extras;  // the text and the nets tied to the bus: few buses have either
    extras* extra;  // its lowest bit marks a bus that removeNetbus handed to the caller
    std::vector<kalnet*>* bits;
    unsigned int msb;
    unsigned int lsb;

public:
    /// A bus named @p name over msb..lsb (either way round) with |msb - lsb| + 1 empty
    /// slots and a copy of @p text, in no design. A null name or second name gives a
    /// bus without names and slots.
    KALDATA_API kalnetbus(const std::string* name, const std::string* secondName, unsigned int msb,
                          unsigned int lsb, const std::string* text);
    /// A bus whose slots are a copy of @p nets (slot 0 for bit msb; the length is not
    /// checked against the range); every non-null net is linked to the bus.
    /// @return a new bus, owned by the caller.
    KALDATA_API static kalnetbus* createNetBus(const std::string* name, const std::string* secondName,
                                               unsigned int msb, unsigned int lsb,
                                               const std::vector<kalnet*>& nets, const std::string* text);
    /// @return the net in the slot of bit @p i, or null when @p i is outside the range
    ///         or the slot is empty. A slot vector shorter than the range
    ///         (createNetBus()) throws std::out_of_range.
    KALDATA_API kalnet* netAtIndex(unsigned int i);
    /// Empties the slot of bit @p i (disconnect()), puts @p net there and links it to
    /// the bus. Null or a bit outside the range changes nothing.
    KALDATA_API void connect(unsigned int i, kalnet* net);
    /// Empties the slot of bit @p i; the net keeps its bus link. Outside the range: nothing.
    KALDATA_API void disconnect(unsigned int i);
    /// Empties the first slot whose net compares equal to @p net; both keep their bus links. Null: nothing.
    KALDATA_API void disconnect(kalnet* net);
    /// A kept quirk: only slot 0 is examined, and the call does not return while
    /// that slot is empty or its net has no source (kalnet::getSources()).
    /// @return true when slot 0's net has a source; false for a bus without slots.
    KALDATA_API bool hasSoucePortsInNetBus();
    /// kalattributes::setAttribute() on the bus and, when @p propagate, on the net of every filled slot.
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor, bool propagate);
    /// kalattributes::setAttributeValue() on the bus and, when @p propagate, on every filled slot's net.
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    /// kalattributes::removeAttribute() on the bus and, when @p propagate, on every filled slot's net.
    KALDATA_API void removeAttribute(const std::string* name, bool propagate);
    /// kalattributes::removeAllAttributes() on the bus and, when @p propagate, on every filled slot's net.
    KALDATA_API void removeAllAttributes(bool propagate);
    /// Clears the bus link of the nets in its slots and of those that left a slot
    /// keeping it; the nets are not destroyed. Destroy only a bus that is yours
    /// (createNetBus(), or handed back by kaldesign::removeNetbus()).
    KALDATA_API ~kalnetbus();

    /// @return the design that registered it, or null (also once a design that
    ///         handed it back is destroyed).
    KALDATA_API kaldesign* getDesign() const;
    /// @return the name, or null for a bus made without names.
    KALDATA_API const std::string* getName() const;
    /// @return the second name, or null for a bus made without names.
    KALDATA_API const std::string* getSecondName() const;
    /// @return the optional text, or null when none was given.
    KALDATA_API const std::string* getText() const;
    /// @return a copy of the slots, empty ones (null) included; slot 0 holds bit msb. Empty without slots.
    KALDATA_API std::vector<kalnet*> getBits() const;
    /// @return the first bound of the range, as given (0 for a bus made without names).
    KALDATA_API unsigned int getMsb() const;
    /// @return the second bound of the range, as given (0 for a bus made without names).
    KALDATA_API unsigned int getLsb() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    void setRange(unsigned int msb, unsigned int lsb);
    void markHandedBack();
    bool handedBack() const;
    extras* side() const;
    extras& more();
};

/// @return whether the net's attribute "type" is exactly "internal" (false for null).
KALDATA_API bool isInternalConnection(kalnet* net);
/// @return whether the net bus's own attribute "type" is exactly "internal" (false for null).
KALDATA_API bool isInternalConnection(kalnetbus* netbus);

#endif
