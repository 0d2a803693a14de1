// SPDX-License-Identifier: Apache-2.0
/// @file kaldualport.h
/// @brief Dual ports (several ports merged into one) and dual port buses.
#ifndef KALDATA_KALDUALPORT_H
#define KALDATA_KALDUALPORT_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kaldesign;
class kalport;
class kalnet;
class kaldualportbus;
struct kalaccess;

/// @brief Several ports merged into one: a name and the list of member ports.
///
/// A design owns the dual ports registered in it (kaldesign::insertDualPort(),
/// kaldesign::addPortToDualPort()); kaldesign::removeDualPort() hands one back.
/// Member ports are held, not owned; each member points back to the dual port.
/// Do not copy or assign one: the copy would hold the members without their
/// links, and its destruction would unlink them.
class kaldualport : public kalattributes {
private:
    std::string name;
    kaldesign* design;
    struct extras;  // its bus link and the buses it is tied to: only dual ports in a bus have one
    extras* extra;
    std::vector<kalport*> ports;

public:
    /// A dual port named @p name with no ports, in no design and no bus.
    KALDATA_API kaldualport(const std::string& name);
    /// @return the member ports in order of addition (not owned).
    KALDATA_API std::vector<kalport*> getPortList() const;
    /// Appends @p port and links it to this dual port; a port already listed is not added again.
    /// @return false for null, else true.
    KALDATA_API bool addPort(kalport* port);
    /// Appends every port of @p ports and links it, duplicates included.
    /// @return false for an empty vector, else true.
    KALDATA_API bool addPort(std::vector<kalport*> ports);
    /// Takes out the first member whose hierarchical name (component instance
    /// name + "/" + port name) is @p hierarchicalName and clears its link.
    /// @return the port (still owned by its component), or null when none matches or the name is empty.
    KALDATA_API kalport* removePort(const std::string& hierarchicalName);
    /// @return the direction of the first member (the others are not consulted), or 0 when there is none.
    KALDATA_API int direction() const;
    /// @return the net of the first member that is on a net, or null.
    KALDATA_API kalnet* getConnectedNet() const;
    /// @return the first member that is on a net, or null.
    KALDATA_API kalport* getConnectedPort() const;
    /// @return whether some member is on a net.
    KALDATA_API bool isConnected() const;
    /// @return the export target of the first member that has one, or null.
    KALDATA_API kalport* getExportedTo() const;
    /// @return the number of members (a port listed twice counts twice).
    KALDATA_API unsigned int getPortsCount() const;
    /// Links the dual port to @p bus; null changes nothing. The bus's slots are not changed.
    KALDATA_API void setBus(kaldualportbus* bus);
    /// Clears the bus link; the bus's slots are not changed.
    KALDATA_API void unsetBus();
    /// Unlinks every member, leaves its bus (which its design then removes with
    /// kaldesign::removeDualPortBus(), handing it back) and empties every slot of
    /// any bus that still holds it.
    KALDATA_API ~kaldualport();

    /// @return the name given at construction.
    KALDATA_API const std::string& getName() const;
    /// @return the design that registered it, or null.
    KALDATA_API kaldesign* getDesign() const;
    /// @return the bus it is linked to, or null.
    KALDATA_API kaldualportbus* getBus() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    extras& more();
};

/// @brief A bus of dual ports: a name, a range msb..lsb and one slot per bit.
///
/// Slot 0 holds bit msb. A design owns the buses registered in it
/// (kaldesign::insertDualPortBus()); slots hold dual ports without owning
/// them. A dual port bus and a dual port that are linked clear each other's
/// reference when either is destroyed. Do not copy or assign one: the copy's
/// destruction would unlink the members.
class kaldualportbus : public kalattributes {
private:
    std::string name;
    struct extras;  // its design and the dual ports tied to it
    extras* extra;
    std::vector<kaldualport*> slotVector;
    unsigned int msb;
    unsigned int lsb;

public:
    /// A bus named @p name over msb..lsb (either way round) with |msb - lsb| + 1
    /// empty slots; a bus with an empty name has no slots, whatever its range.
    KALDATA_API kaldualportbus(const std::string& name, unsigned int msb, unsigned int lsb);
    /// A new bus whose slots are @p dualPorts in order (slot 0 for bit msb); each
    /// non-null member is linked to the bus.
    /// @return a new bus, owned by the caller, or null when the vector's size is not the range's width.
    KALDATA_API static kaldualportbus* createDualPortBus(std::string name, unsigned int msb, unsigned int lsb,
                                                         std::vector<kaldualport*> dualPorts);
    /// @return the number of slots, empty ones included.
    KALDATA_API unsigned int getDualPortsCount() const;
    /// Puts @p dualPort in the slot of bit @p index and links it to the bus. A
    /// former occupant is not told and keeps its link. A null dual port or a bit
    /// outside the range changes nothing.
    KALDATA_API void connect(unsigned int index, kaldualport* dualPort);
    /// Empties the slot of bit @p index (the dual port keeps its bus link); outside the range: nothing.
    KALDATA_API void disconnect(unsigned int index);
    /// Empties the first slot holding @p dualPort (its bus link stays). Null: nothing.
    KALDATA_API void disconnect(kaldualport* dualPort);
    /// @return the direction of the dual port in slot 0, or 0 when that slot is empty.
    KALDATA_API int direction() const;
    /// kalattributes::setAttribute() on the bus and, when @p propagate, on every filled slot.
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor, bool propagate);
    /// kalattributes::setAttributeValue() on the bus and, when @p propagate, on every filled slot.
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    /// kalattributes::removeAttribute() on the bus and, when @p propagate, on every filled slot.
    KALDATA_API void removeAttribute(const std::string* name, bool propagate);
    /// kalattributes::removeAllAttributes() on the bus and, when @p propagate, on every filled slot.
    KALDATA_API void removeAllAttributes(bool propagate);
    /// Clears the bus link of every member, also of former members that kept it; members are not destroyed.
    KALDATA_API ~kaldualportbus();

    /// @return the name given at construction.
    KALDATA_API const std::string& getName() const;
    /// @return the design that registered it, or null.
    KALDATA_API kaldesign* getDesign() const;
    /// @return a copy of the slots, empty ones (null) included; slot 0 holds bit msb.
    KALDATA_API std::vector<kaldualport*> getSlots() const;
    /// @return the first bound of the range.
    KALDATA_API unsigned int getMsb() const;
    /// @return the second bound of the range.
    KALDATA_API unsigned int getLsb() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    extras& more();
};

#endif
