// SPDX-License-Identifier: Apache-2.0
// The project singleton: a blackboard of client-defined settings and the
// project's message queue. The library never reads these members itself.
#ifndef KALDATA_KALPROJECT_H
#define KALDATA_KALPROJECT_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "kalexport.h"

class kalmessages;

class kalproject {
public:
    KALDATA_API static kalproject* m_inst;

    void* projectWord1;
    kalmessages* messageQueue;
    void* projectWord2;
    void* projectWord3;
    void* projectWord4;
    std::map<std::string, std::string> stringTable1;
    std::map<std::string, std::list<std::string>> listTable;
    std::map<std::string, std::string> stringTable2;
    std::vector<std::string> stringList;
    bool projectFlag1;
    bool projectFlag2;
    bool projectFlag3;
    std::string projectString1, projectString2, projectString3, projectString4, projectString5,
        projectString6, projectString7, projectString8, projectString9, projectString10, projectString11,
        projectString12, projectString13, projectString14, projectString15, projectString16, projectString17,
        projectString18, projectString19, projectString20, projectString21, projectString22, projectString23,
        projectString24, projectString25, projectString26;
    std::map<int, std::string> numberedTable1;
    std::map<int, std::string> numberedTable2;
    std::map<int, std::string> numberedTable3;

    KALDATA_API static kalproject* getInstance();
    KALDATA_API static void destoryInstance();
    KALDATA_API kalproject();
    KALDATA_API ~kalproject();
};

#endif
