// The element catalogue: named elements in categorised, nestable groups.
#ifndef KALDATA_KALELEMENTS_H
#define KALDATA_KALELEMENTS_H

#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalelements;

class KALDATA_API kalelement : public kalattributes {
private:
    kalelements* catalogue;
    std::string* name;

public:
    kalelement(const std::string* name);
    bool operator==(kalelement& other);
    bool operator!=(kalelement& other);
    std::string* hierarchicalName();
    ~kalelement();

    kalelements* getCatalogue() const;
    const std::string* getName() const;
    void setCatalogue(kalelements* catalogue);
};

class KALDATA_API kalelementgroup : public kalattributes {
private:
    kalelements* catalogue;
    unsigned int category;
    std::string* name;
    std::map<std::string, kalelement*> elements;
    std::map<std::string, kalelementgroup*> subgroups;

public:
    kalelementgroup(unsigned int category, const std::string* name);
    void addElement(kalelement* element);
    void addGroup(kalelementgroup* group);
    bool hasElement(const std::string* name);
    bool hasGroup(const std::string* name);
    std::map<std::string, kalelement*>* getElementList();
    void removeElement(const std::string* name);
    void removeGroup(const std::string* name);
    ~kalelementgroup();

    kalelements* getCatalogue() const;
    unsigned int getCategory() const;
    const std::string* getName() const;
    std::map<std::string, kalelement*> getElementMap() const;
    std::map<std::string, kalelementgroup*> getSubgroupMap() const;
    void setCatalogue(kalelements* catalogue);
};

class KALDATA_API kalelements {
private:
    kalcomponent* owner;
    std::map<std::string, kalelementgroup*> groups;
    std::map<std::string, kalelement*> elements;

public:
    kalelements();
    void createGroup(unsigned int category, const std::string* type, const std::string* name, bool hide);
    kalelement* addElement(const std::string* type, const std::string* name, bool hide);
    void addElementToGroup(const kalelement* element, const std::string* groupName);
    bool hasGroup(const std::string* name);
    kalelementgroup* getGroup(const std::string* name);
    unsigned int getGroupCategory(const std::string* name);
    bool hasElement(const std::string* name);
    bool hasElement(const std::string* name, std::map<std::string, kalelement*>* list);
    bool hasElement(const std::string* name, const std::string* groupName);
    kalelement* getElement(const std::string* name);
    std::map<std::string, kalelement*>* getElementList(const std::string* groupName);
    unsigned int elementCount(const std::string* groupName);
    std::vector<std::string>* getGroupNames();
    std::vector<std::string>* getGroupNames(unsigned int category);
    std::vector<std::string>* getGroupNames(unsigned int category, const std::string* elementName);
    void setGroupHideAttribute(const std::string* name, bool flag);
    void setGroupDragAttribute(const std::string* name, bool flag);
    bool getGroupHideAttribute(const std::string* name);
    bool getGroupDragAttribute(const std::string* name);
    void setElementHideAttribute(const std::string* name, bool flag);
    void setElementDragAttribute(const std::string* name, bool flag);
    bool getElementHideAttribute(const std::string* name);
    bool getElementDragAttribute(const std::string* name);
    void removeElementFromGroup(const std::string* groupName, const std::string* elementName);
    void removeElementFromAllGroups(const std::string* name);
    void removeElement(const std::string* name);
    void removeGroup(const std::string* name);
    int getBridgeDDRDLLName(std::string& out);
    int getEclkBridgeCSName(std::string& out);
    ~kalelements();

    kalcomponent* getOwner() const;
    std::map<std::string, kalelementgroup*> getGroupMap() const;
    std::map<std::string, kalelement*> getElementMap() const;
    void setOwner(kalcomponent* owner);
};

KALDATA_API bool operator==(kalelements& a, kalelements& b);
KALDATA_API bool operator!=(kalelements& a, kalelements& b);

#endif
