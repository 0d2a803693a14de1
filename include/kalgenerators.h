// SPDX-License-Identifier: Apache-2.0
// A component's registry of generators, sorted into named groups.
#ifndef KALDATA_KALGENERATORS_H
#define KALDATA_KALGENERATORS_H

#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalgenerators;

class kalgenerator : public kalattributes {
private:
    void* reserved;
    kalgenerators* registry;
    std::string name;
    std::string detail;

public:
    KALDATA_API kalgenerator();
    KALDATA_API bool operator==(kalgenerator& other);
    KALDATA_API bool operator!=(kalgenerator& other);

    KALDATA_API kalgenerators* getRegistry() const;
    KALDATA_API const std::string& getName() const;
    KALDATA_API const std::string& getDetail() const;
    KALDATA_API void setDetail(const std::string& detail);

private:
    // The registry link and the name are the registry's and the component's to set.
    friend class kalgenerators;
    friend class kalcomponent;
    void setRegistry(kalgenerators* registry);
    void setName(const std::string& name);
};

class kalgeneratorgroup : public kalattributes {
private:
    std::string name;
    kalgenerators* registry;
    std::map<std::string, kalgenerator*> generators;

public:
    KALDATA_API kalgeneratorgroup(std::string name);
    KALDATA_API void addGenerator(kalgenerator* generator);
    KALDATA_API bool hasGenerator(const std::string* name);
    KALDATA_API void removeGenerator(const std::string* name);
    KALDATA_API void removeFromGroup(const std::string* name);
    KALDATA_API ~kalgeneratorgroup();

    KALDATA_API const std::string& getName() const;
    KALDATA_API kalgenerators* getRegistry() const;
    KALDATA_API std::map<std::string, kalgenerator*> getGeneratorMap() const;

private:
    friend class kalgenerators;
    void setRegistry(kalgenerators* registry);
};

class kalgenerators : public kalattributes {
private:
    kalcomponent* owner;
    std::map<std::string, kalgenerator*> generators;
    std::map<std::string, kalgeneratorgroup*> groups;

public:
    KALDATA_API kalgenerators();
    KALDATA_API void addGenerator(std::string name, kalgenerator* generator);
    KALDATA_API kalgenerator* generatorAtIndex(std::string name);
    KALDATA_API void removeGenerator(std::string name);
    KALDATA_API void removeGenerator(kalgenerator* generator);
    KALDATA_API void createGroup(std::string name);
    KALDATA_API bool hasGroup(const std::string* name);
    KALDATA_API kalgeneratorgroup* getGroup(const std::string* name);
    KALDATA_API std::vector<std::string>* getGroupNames();
    KALDATA_API std::string getGroupNames(const std::string* generatorName);
    KALDATA_API void addGeneratorToGroup(const kalgenerator* generator, std::string groupName);
    KALDATA_API void removeGeneratorFromGroup(const std::string* groupName, const std::string* generatorName);
    KALDATA_API void removeElementFromAllGroups(const std::string* generatorName);
    KALDATA_API void removeGroup(const std::string* name);
    // A deep copy owned by the caller. Each copy is named after its key; groups
    // keep only members whose name still matches their key; group attributes
    // and the owner are not carried over.
    KALDATA_API kalgenerators* clone();
    // Releases only the attributes: generators and groups belong to their creators.
    KALDATA_API ~kalgenerators();

    KALDATA_API kalcomponent* getOwner() const;
    KALDATA_API std::map<std::string, kalgenerator*> getGeneratorMap() const;
    KALDATA_API std::map<std::string, kalgeneratorgroup*> getGroupMap() const;

private:
    friend class kalcomponent;
    void setOwner(kalcomponent* owner);
};

#endif
