// SPDX-License-Identifier: Apache-2.0
/// @file kalgenerators.h
/// @brief A component's registry of generators, sorted into named groups.
#ifndef KALDATA_KALGENERATORS_H
#define KALDATA_KALGENERATORS_H

#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalgenerators;

/// @brief A generator: a name, a detail text and attributes.
///
/// Made by kalcomponent::createGenerator() or kalgenerators::clone(); nothing
/// in the library frees one (kalsupport::release() frees those of a tree's
/// registries). Copy construction is safe (the copy keeps the registry link,
/// but no registry lists it); assignment is not.
class kalgenerator : public kalattributes {
private:
    void* reserved;
    kalgenerators* registry;
    std::string name;
    std::string detail;

public:
    /// A generator with an empty name and detail, in no registry.
    KALDATA_API kalgenerator();
    /// Equal when the name fields are; nothing else is compared.
    KALDATA_API bool operator==(kalgenerator& other);
    /// The negation of operator==().
    KALDATA_API bool operator!=(kalgenerator& other);

    /// @return the registry that last registered it (kalgenerators::addGenerator()), or null.
    ///         Removal from the registry does not clear it.
    KALDATA_API kalgenerators* getRegistry() const;
    /// @return the name field (set by kalcomponent::createGenerator() and clone()); it may differ
    ///         from the key the registry holds it under.
    KALDATA_API const std::string& getName() const;
    /// @return the detail text; empty until setDetail().
    KALDATA_API const std::string& getDetail() const;
    /// Sets the detail text, which is the application's.
    KALDATA_API void setDetail(const std::string& detail);

private:
    // The registry link and the name are the registry's and the component's to set.
    friend class kalgenerators;
    friend class kalcomponent;
    void setRegistry(kalgenerators* registry);
    void setName(const std::string& name);
};

/// @brief A named group of generators, made by kalgenerators::createGroup().
///
/// Members are held, not owned, keyed by their name field at the time they
/// joined. Nothing in the library frees a group (kalsupport::release() frees
/// the groups of a tree's registries). Do not copy or assign one: a copy is
/// listed nowhere and its assignment shares the attributes.
class kalgeneratorgroup : public kalattributes {
private:
    std::string name;
    kalgenerators* registry;
    std::map<std::string, kalgenerator*> generators;

public:
    /// An empty group named @p name, in no registry.
    KALDATA_API kalgeneratorgroup(std::string name);
    /// Adds @p generator under its current name; a member already under that
    /// name stays. Null adds nothing. The group does not own it.
    KALDATA_API void addGenerator(kalgenerator* generator);
    /// @return whether a member is held under @p name (false for null).
    KALDATA_API bool hasGenerator(const std::string* name);
    /// Drops the member held under @p name (not freed). Null: nothing.
    KALDATA_API void removeGenerator(const std::string* name);
    /// Same as removeGenerator().
    KALDATA_API void removeFromGroup(const std::string* name);
    /// Frees the attributes only; members belong to their makers.
    KALDATA_API ~kalgeneratorgroup();

    /// @return the group's name.
    KALDATA_API const std::string& getName() const;
    /// @return the registry that made it, or null.
    KALDATA_API kalgenerators* getRegistry() const;
    /// @return a copy of the members by name.
    KALDATA_API std::map<std::string, kalgenerator*> getGeneratorMap() const;

private:
    friend class kalgenerators;
    void setRegistry(kalgenerators* registry);
};

/// @brief A registry of generators by key, and of generator groups by name.
///
/// Every component makes one in its constructor (kalcomponent::createGenerators()
/// returns it) and never frees it, nor the generators and groups in it: the
/// caller does (kalsupport::release()). The registry holds generators and
/// groups without owning them. Do not copy or assign one (use clone()): the
/// copy would share nothing but the pointers.
class kalgenerators : public kalattributes {
private:
    kalcomponent* owner;
    std::map<std::string, kalgenerator*> generators;
    std::map<std::string, kalgeneratorgroup*> groups;

public:
    /// An empty registry with no owner.
    KALDATA_API kalgenerators();
    /// Registers @p generator under the key @p name, replacing (not freeing)
    /// what the key held, and sets the generator's registry link. The key need
    /// not be the generator's name. Null adds nothing.
    KALDATA_API void addGenerator(std::string name, kalgenerator* generator);
    /// @return the generator held under the key @p name, or null.
    KALDATA_API kalgenerator* generatorAtIndex(std::string name);
    /// Drops the key @p name (the generator is not freed).
    KALDATA_API void removeGenerator(std::string name);
    /// Drops every key whose generator has the same name field as @p generator,
    /// whichever object it holds (not freed). Null: nothing.
    KALDATA_API void removeGenerator(kalgenerator* generator);
    /// Makes a new empty group named @p name, owned by the caller, unless one exists.
    KALDATA_API void createGroup(std::string name);
    /// @return whether a group named @p name exists (false for null).
    KALDATA_API bool hasGroup(const std::string* name);
    /// @return the group named @p name, or null.
    KALDATA_API kalgeneratorgroup* getGroup(const std::string* name);
    /// @return a new vector, owned by the caller, of the group names in ascending order.
    KALDATA_API std::vector<std::string>* getGroupNames();
    /// @return the name of the **last** group (in name order) holding a member
    ///         named @p generatorName, or "" when none does or the name is null.
    KALDATA_API std::string getGroupNames(const std::string* generatorName);
    /// Adds @p generator to the group @p groupName (kalgeneratorgroup::addGenerator());
    /// a missing group or a null generator adds nothing.
    KALDATA_API void addGeneratorToGroup(const kalgenerator* generator, std::string groupName);
    /// Drops the member @p generatorName from the group @p groupName. Null: nothing.
    KALDATA_API void removeGeneratorFromGroup(const std::string* groupName, const std::string* generatorName);
    /// Drops the member @p generatorName from every group. Null: nothing.
    KALDATA_API void removeElementFromAllGroups(const std::string* generatorName);
    /// Forgets the group @p name; the group object is not freed and belongs to the caller. Null: nothing.
    KALDATA_API void removeGroup(const std::string* name);
    /// A deep copy, owned by the caller together with its new generators and
    /// groups. Each copied generator is named after its key (not its name)
    /// and keeps detail and attributes. The registry's attributes are copied
    /// only when it has at least one generator. A group is made in the copy
    /// only for members whose copy under the member's name compares equal, so
    /// groups without such members are dropped; group attributes and the
    /// owner are not carried over.
    /// @return a new registry, never null.
    KALDATA_API kalgenerators* clone();
    /// Frees the attributes only: generators and groups belong to their makers.
    KALDATA_API ~kalgenerators();

    /// @return the component whose createGenerators() was called, or null.
    KALDATA_API kalcomponent* getOwner() const;
    /// @return a copy of the registered generators by key.
    KALDATA_API std::map<std::string, kalgenerator*> getGeneratorMap() const;
    /// @return a copy of the groups by name.
    KALDATA_API std::map<std::string, kalgeneratorgroup*> getGroupMap() const;

private:
    friend class kalcomponent;
    void setOwner(kalcomponent* owner);
};

#endif
