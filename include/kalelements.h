// SPDX-License-Identifier: Apache-2.0
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

class kalelement : public kalattributes {
private:
    kalelements* catalogue;
    std::string* name;

public:
    KALDATA_API kalelement(const std::string* name);
    KALDATA_API bool operator==(kalelement& other);
    KALDATA_API bool operator!=(kalelement& other);
    KALDATA_API std::string* hierarchicalName();
    KALDATA_API ~kalelement();

    KALDATA_API kalelements* getCatalogue() const;
    KALDATA_API const std::string* getName() const;

private:
    // The catalogue link is the catalogue's to set.
    friend class kalelements;
    void setCatalogue(kalelements* catalogue);
};

class kalelementgroup : public kalattributes {
private:
    kalelements* catalogue;
    unsigned int category;
    std::string* name;
    std::map<std::string, kalelement*> elements;
    std::map<std::string, kalelementgroup*> subgroups;

public:
    KALDATA_API kalelementgroup(unsigned int category, const std::string* name);
    KALDATA_API void addElement(kalelement* element);
    KALDATA_API void addGroup(kalelementgroup* group);
    KALDATA_API bool hasElement(const std::string* name);
    KALDATA_API bool hasGroup(const std::string* name);
    KALDATA_API std::map<std::string, kalelement*>* getElementList();
    KALDATA_API void removeElement(const std::string* name);
    KALDATA_API void removeGroup(const std::string* name);
    KALDATA_API ~kalelementgroup();

    KALDATA_API kalelements* getCatalogue() const;
    KALDATA_API unsigned int getCategory() const;
    KALDATA_API const std::string* getName() const;
    KALDATA_API std::map<std::string, kalelement*> getElementMap() const;
    KALDATA_API std::map<std::string, kalelementgroup*> getSubgroupMap() const;

private:
    friend class kalelements;
    void setCatalogue(kalelements* catalogue);
};

class kalelements {
private:
    kalcomponent* owner;
    std::map<std::string, kalelementgroup*> groups;
    std::map<std::string, kalelement*> elements;

public:
    KALDATA_API kalelements();
    KALDATA_API void createGroup(unsigned int category, const std::string* type, const std::string* name,
                                 bool hide);
    KALDATA_API kalelement* addElement(const std::string* type, const std::string* name, bool hide);
    KALDATA_API void addElementToGroup(const kalelement* element, const std::string* groupName);
    KALDATA_API bool hasGroup(const std::string* name);
    KALDATA_API kalelementgroup* getGroup(const std::string* name);
    KALDATA_API unsigned int getGroupCategory(const std::string* name);
    KALDATA_API bool hasElement(const std::string* name);
    KALDATA_API bool hasElement(const std::string* name, std::map<std::string, kalelement*>* list);
    KALDATA_API bool hasElement(const std::string* name, const std::string* groupName);
    KALDATA_API kalelement* getElement(const std::string* name);
    KALDATA_API std::map<std::string, kalelement*>* getElementList(const std::string* groupName);
    KALDATA_API unsigned int elementCount(const std::string* groupName);
    KALDATA_API std::vector<std::string>* getGroupNames();
    KALDATA_API std::vector<std::string>* getGroupNames(unsigned int category);
    KALDATA_API std::vector<std::string>* getGroupNames(unsigned int category,
                                                        const std::string* elementName);
    KALDATA_API void setGroupHideAttribute(const std::string* name, bool flag);
    KALDATA_API void setGroupDragAttribute(const std::string* name, bool flag);
    KALDATA_API bool getGroupHideAttribute(const std::string* name);
    KALDATA_API bool getGroupDragAttribute(const std::string* name);
    KALDATA_API void setElementHideAttribute(const std::string* name, bool flag);
    KALDATA_API void setElementDragAttribute(const std::string* name, bool flag);
    KALDATA_API bool getElementHideAttribute(const std::string* name);
    KALDATA_API bool getElementDragAttribute(const std::string* name);
    KALDATA_API void removeElementFromGroup(const std::string* groupName, const std::string* elementName);
    KALDATA_API void removeElementFromAllGroups(const std::string* name);
    KALDATA_API void removeElement(const std::string* name);
    KALDATA_API void removeGroup(const std::string* name);
    KALDATA_API int getBridgeDDRDLLName(std::string& out);
    KALDATA_API int getEclkBridgeCSName(std::string& out);
    KALDATA_API ~kalelements();

    KALDATA_API kalcomponent* getOwner() const;
    KALDATA_API std::map<std::string, kalelementgroup*> getGroupMap() const;
    KALDATA_API std::map<std::string, kalelement*> getElementMap() const;

private:
    friend class kalcomponent;
    void setOwner(kalcomponent* owner);
};

KALDATA_API bool operator==(kalelements& a, kalelements& b);
KALDATA_API bool operator!=(kalelements& a, kalelements& b);

#endif
