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

class KALDATA_API kalgenerator : public kalattributes {
private:
    void* reserved;
    kalgenerators* registry;
    std::string name;
    std::string detail;

public:
    kalgenerator();
    bool operator==(kalgenerator& other);
    bool operator!=(kalgenerator& other);

    kalgenerators* getRegistry() const;
    const std::string& getName() const;
    const std::string& getDetail() const;
    void setRegistry(kalgenerators* registry);
    void setName(const std::string& name);
    void setDetail(const std::string& detail);
};

class KALDATA_API kalgeneratorgroup : public kalattributes {
private:
    std::string name;
    kalgenerators* registry;
    std::map<std::string, kalgenerator*> generators;

public:
    kalgeneratorgroup(std::string name);
    void addGenerator(kalgenerator* generator);
    bool hasGenerator(const std::string* name);
    void removeGenerator(const std::string* name);
    void removeFromGroup(const std::string* name);
    ~kalgeneratorgroup();

    const std::string& getName() const;
    kalgenerators* getRegistry() const;
    std::map<std::string, kalgenerator*> getGeneratorMap() const;
    void setRegistry(kalgenerators* registry);
};

class KALDATA_API kalgenerators : public kalattributes {
private:
    kalcomponent* owner;
    std::map<std::string, kalgenerator*> generators;
    std::map<std::string, kalgeneratorgroup*> groups;

public:
    kalgenerators();
    void addGenerator(std::string name, kalgenerator* generator);
    kalgenerator* generatorAtIndex(std::string name);
    void removeGenerator(std::string name);
    void removeGenerator(kalgenerator* generator);
    void createGroup(std::string name);
    bool hasGroup(const std::string* name);
    kalgeneratorgroup* getGroup(const std::string* name);
    std::vector<std::string>* getGroupNames();
    std::string getGroupNames(const std::string* generatorName);
    void addGeneratorToGroup(const kalgenerator* generator, std::string groupName);
    void removeGeneratorFromGroup(const std::string* groupName, const std::string* generatorName);
    void removeElementFromAllGroups(const std::string* generatorName);
    void removeGroup(const std::string* name);
    // A deep copy owned by the caller. Each copy is named after its key; groups
    // keep only members whose name still matches their key; group attributes
    // and the owner are not carried over.
    kalgenerators* clone();
    // Releases only the attributes: generators and groups belong to their creators.
    ~kalgenerators();

    kalcomponent* getOwner() const;
    std::map<std::string, kalgenerator*> getGeneratorMap() const;
    std::map<std::string, kalgeneratorgroup*> getGroupMap() const;
    void setOwner(kalcomponent* owner);
};

#endif
