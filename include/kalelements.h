// SPDX-License-Identifier: Apache-2.0
/// @file kalelements.h
/// @brief The element catalogue: named elements in categorised, nestable groups.
#ifndef KALDATA_KALELEMENTS_H
#define KALDATA_KALELEMENTS_H

#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalelements;

/// @brief A palette element of a catalogue: a name and attributes
/// ("ElementType", "ElementHide", "ElementDrag" among them).
///
/// The catalogue owns the elements registered in it. Do not copy or assign
/// one: the copy shares the owned name, which is then freed twice.
class kalelement : public kalattributes {
private:
    kalelements* catalogue;
    std::string* name;

public:
    /// An element named after @p name (empty for null), in no catalogue.
    KALDATA_API kalelement(const std::string* name);
    /// Equal when both are in equal catalogues (both in none counts as equal;
    /// catalogues compare their owner components) and the names are equal.
    KALDATA_API bool operator==(kalelement& other);
    /// The negation of operator==().
    KALDATA_API bool operator!=(kalelement& other);
    /// The element's name preceded by the instance names of its catalogue's
    /// component and of every enclosing component that sits in a design,
    /// joined by "/" ("u1/u2/e"); the root contributes nothing.
    /// @return a new string, owned by the caller.
    KALDATA_API std::string* hierarchicalName();
    /// Frees the name.
    KALDATA_API ~kalelement();

    /// @return the catalogue that registered it, or null.
    KALDATA_API kalelements* getCatalogue() const;
    /// @return the name; never null.
    KALDATA_API const std::string* getName() const;

private:
    // The catalogue link is the catalogue's to set.
    friend class kalelements;
    void setCatalogue(kalelements* catalogue);
};

/// @brief A group of elements with a category number, and nested subgroups
/// ("GroupType", "GroupHide", "GroupDrag" among its attributes).
///
/// Holds its elements and subgroups without owning them. The catalogue that
/// made a group (kalelements::createGroup()) never frees it: the caller does
/// (kalsupport::release() frees those of a tree's catalogues). Do not copy or
/// assign one: the copy shares the owned name, which is then freed twice.
class kalelementgroup : public kalattributes {
private:
    kalelements* catalogue;
    unsigned int category;
    std::string* name;
    std::map<std::string, kalelement*> elements;
    std::map<std::string, kalelementgroup*> subgroups;

public:
    /// A group named after @p name (empty for null) with @p category, in no catalogue.
    KALDATA_API kalelementgroup(unsigned int category, const std::string* name);
    /// Adds @p element under its name; an element already under that name stays. Null: nothing.
    KALDATA_API void addElement(kalelement* element);
    /// Adds @p group as a subgroup under its name; one already under that name stays. Null: nothing.
    KALDATA_API void addGroup(kalelementgroup* group);
    /// @return whether the group's own elements include @p name (subgroups not searched; false for null).
    KALDATA_API bool hasElement(const std::string* name);
    /// @return whether a subgroup is held under @p name (false for null).
    KALDATA_API bool hasGroup(const std::string* name);
    /// The group's elements merged with those of its subgroups, depth first;
    /// a name already collected wins. A group that nests itself is visited once.
    /// @return a new map, owned by the caller (the elements are not).
    KALDATA_API std::map<std::string, kalelement*>* getElementList();
    /// Drops the element held under @p name (not freed). Null: nothing.
    KALDATA_API void removeElement(const std::string* name);
    /// Drops the subgroup held under @p name (not freed). Null: nothing.
    KALDATA_API void removeGroup(const std::string* name);
    /// Frees the name; elements and subgroups are not the group's.
    KALDATA_API ~kalelementgroup();

    /// @return the catalogue that made it, or null.
    KALDATA_API kalelements* getCatalogue() const;
    /// @return the category number given at construction.
    KALDATA_API unsigned int getCategory() const;
    /// @return the name; never null.
    KALDATA_API const std::string* getName() const;
    /// @return a copy of the group's own elements by name.
    KALDATA_API std::map<std::string, kalelement*> getElementMap() const;
    /// @return a copy of the subgroups by name.
    KALDATA_API std::map<std::string, kalelementgroup*> getSubgroupMap() const;

private:
    friend class kalelements;
    void setCatalogue(kalelements* catalogue);
};

/// @brief A component's element catalogue: elements and groups by name.
///
/// Each component owns one (kalcomponent::getElements()). The catalogue owns
/// its registered elements and frees them; it never frees the groups it makes
/// (kalsupport::release() does). Hide and drag flags are attributes holding
/// "true" or "false", and read as set only when the value is exactly "true".
/// Do not copy or assign one: the copy would free the same elements.
class kalelements {
private:
    kalcomponent* owner;
    std::map<std::string, kalelementgroup*> groups;
    std::map<std::string, kalelement*> elements;

public:
    /// An empty catalogue without owner (a component sets itself as owner).
    KALDATA_API kalelements();
    /// Makes and registers a group @p name of @p category with "GroupType"
    /// @p type, drag flag "true" and hide flag @p hide. Does nothing when the
    /// name is taken or @p type or @p name is null. The catalogue never frees the group.
    KALDATA_API void createGroup(unsigned int category, const std::string* type, const std::string* name,
                                 bool hide);
    /// Makes an element @p name with "ElementType" @p type, hide "false" and
    /// drag "true", registers it, and adds it to the group named @p type,
    /// creating that group (category 1, hide flag @p hide) when missing.
    /// When the name is taken, the earlier element stays registered and in its
    /// groups; the new one is still returned and then belongs to the caller.
    /// @return the new element, or null when @p type or @p name is null.
    KALDATA_API kalelement* addElement(const std::string* type, const std::string* name, bool hide);
    /// Adds @p element to the registered group @p groupName (kalelementgroup::addElement()).
    /// A missing group or a null argument adds nothing.
    KALDATA_API void addElementToGroup(const kalelement* element, const std::string* groupName);
    /// @return whether a group named @p name is registered (false for null).
    KALDATA_API bool hasGroup(const std::string* name);
    /// @return the registered group @p name, or null.
    KALDATA_API kalelementgroup* getGroup(const std::string* name);
    /// @return the category of group @p name, or 0xFFFFFFFF (all bits set) when it is missing.
    KALDATA_API unsigned int getGroupCategory(const std::string* name);
    /// @return whether an element @p name is registered (false for null).
    KALDATA_API bool hasElement(const std::string* name);
    /// @return whether @p list holds @p name (false when either is null).
    KALDATA_API bool hasElement(const std::string* name, std::map<std::string, kalelement*>* list);
    /// @return whether group @p groupName, subgroups included, holds @p name (false for a missing group or
    /// null).
    KALDATA_API bool hasElement(const std::string* name, const std::string* groupName);
    /// @return the registered element @p name, or null.
    KALDATA_API kalelement* getElement(const std::string* name);
    /// @return kalelementgroup::getElementList() of group @p groupName (a new map owned by the
    ///         caller), or null when the group is missing.
    KALDATA_API std::map<std::string, kalelement*>* getElementList(const std::string* groupName);
    /// @return the number of elements of group @p groupName, subgroups included; 0 when missing.
    KALDATA_API unsigned int elementCount(const std::string* groupName);
    /// @return a new vector, owned by the caller, of all group names in ascending order.
    KALDATA_API std::vector<std::string>* getGroupNames();
    /// @return a new vector, owned by the caller, of the names of the groups of @p category.
    KALDATA_API std::vector<std::string>* getGroupNames(unsigned int category);
    /// @return a new vector, owned by the caller, of the names of the groups of @p category
    ///         that hold @p elementName, subgroups included; empty for a null name.
    KALDATA_API std::vector<std::string>* getGroupNames(unsigned int category,
                                                        const std::string* elementName);
    /// Sets the hide flag of group @p name; a missing group or null changes nothing.
    KALDATA_API void setGroupHideAttribute(const std::string* name, bool flag);
    /// Sets the drag flag of group @p name; a missing group or null changes nothing.
    KALDATA_API void setGroupDragAttribute(const std::string* name, bool flag);
    /// @return whether group @p name has its hide flag set (false when missing).
    KALDATA_API bool getGroupHideAttribute(const std::string* name);
    /// @return whether group @p name has its drag flag set (false when missing).
    KALDATA_API bool getGroupDragAttribute(const std::string* name);
    /// Sets the hide flag of element @p name; a missing element or null changes nothing.
    KALDATA_API void setElementHideAttribute(const std::string* name, bool flag);
    /// Sets the drag flag of element @p name; a missing element or null changes nothing.
    KALDATA_API void setElementDragAttribute(const std::string* name, bool flag);
    /// @return whether element @p name has its hide flag set (false when missing).
    KALDATA_API bool getElementHideAttribute(const std::string* name);
    /// @return whether element @p name has its drag flag set (false when missing).
    KALDATA_API bool getElementDragAttribute(const std::string* name);
    /// Drops @p elementName from group @p groupName's own elements. Null: nothing.
    KALDATA_API void removeElementFromGroup(const std::string* groupName, const std::string* elementName);
    /// Drops @p name from the own elements of every registered group; a
    /// subgroup that is not registered keeps it. Null: nothing.
    KALDATA_API void removeElementFromAllGroups(const std::string* name);
    /// Drops @p name from every registered group, unregisters the element and frees it. Null: nothing.
    KALDATA_API void removeElement(const std::string* name);
    /// Unregisters group @p name; the group is not freed and belongs to the caller. Null: nothing.
    KALDATA_API void removeGroup(const std::string* name);
    /// Finds the first element, in name order, carrying the attribute "bridged_DDRDLLA".
    /// @param out set to that element's name, or to "bridged_DDRDLLA" itself when none has it.
    /// @return 0 when found, 1 when not.
    KALDATA_API int getBridgeDDRDLLName(std::string& out);
    /// Finds the first element, in name order, carrying the attribute "Inst_ECLKBRIDGECS".
    /// @param out set to that element's name, or to "Inst_ECLKBRIDGECS" itself when none has it.
    /// @return 0 when found, 1 when not.
    KALDATA_API int getEclkBridgeCSName(std::string& out);
    /// Frees the registered elements; groups are left to the caller.
    KALDATA_API ~kalelements();

    /// @return the component that owns the catalogue, or null.
    KALDATA_API kalcomponent* getOwner() const;
    /// @return a copy of the registered groups by name.
    KALDATA_API std::map<std::string, kalelementgroup*> getGroupMap() const;
    /// @return a copy of the registered elements by name.
    KALDATA_API std::map<std::string, kalelement*> getElementMap() const;

private:
    friend class kalcomponent;
    void setOwner(kalcomponent* owner);
};

/// Catalogues are equal when their owner components are (kalcomponent::operator==());
/// two catalogues without owner are equal, one without is unequal to one with.
KALDATA_API bool operator==(kalelements& a, kalelements& b);
/// The negation of operator==(kalelements&, kalelements&).
KALDATA_API bool operator!=(kalelements& a, kalelements& b);

#endif
