// SPDX-License-Identifier: Apache-2.0
/// @file kalproject.h
/// @brief The project singleton: a blackboard of client-defined settings and
/// the project's message queue.
#ifndef KALDATA_KALPROJECT_H
#define KALDATA_KALPROJECT_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "kalexport.h"

class kalmessages;

/// @brief The project blackboard: settings that the application defines and
/// reads, and the project's message queue.
///
/// The library never reads or writes these members itself (apart from making
/// and freeing the queue) and holds no model objects here. The singleton is
/// made lazily by getInstance() without a lock: call it from one thread.
/// Do not copy or assign a project: the copy would share the queue, which is
/// then freed twice.
class kalproject {
public:
    /// The singleton; null until the first getInstance() and after destoryInstance().
    KALDATA_API static kalproject* m_inst;

    // Public data for the application: the library only initialises these
    // (words null, flags false, strings and tables empty) and never reads them.
    void* projectWord1;  ///< Application-defined word; null at construction.
    /// The project's message queue; owned by the project, made by its constructor.
    kalmessages* messageQueue;
    void* projectWord2;                                       ///< Application-defined word; null.
    void* projectWord3;                                       ///< Application-defined word; null.
    void* projectWord4;                                       ///< Application-defined word; null.
    std::map<std::string, std::string> stringTable1;          ///< Application-defined table; empty.
    std::map<std::string, std::list<std::string>> listTable;  ///< Application-defined table of lists; empty.
    std::map<std::string, std::string> stringTable2;          ///< Application-defined table; empty.
    std::vector<std::string> stringList;                      ///< Application-defined list; empty.
    bool projectFlag1;                                        ///< Application-defined flag; false.
    bool projectFlag2;                                        ///< Application-defined flag; false.
    bool projectFlag3;                                        ///< Application-defined flag; false.
    std::string projectString1;                               ///< Application-defined string; empty.
    std::string projectString2;                               ///< Application-defined string; empty.
    std::string projectString3;                               ///< Application-defined string; empty.
    std::string projectString4;                               ///< Application-defined string; empty.
    std::string projectString5;                               ///< Application-defined string; empty.
    std::string projectString6;                               ///< Application-defined string; empty.
    std::string projectString7;                               ///< Application-defined string; empty.
    std::string projectString8;                               ///< Application-defined string; empty.
    std::string projectString9;                               ///< Application-defined string; empty.
    std::string projectString10;                              ///< Application-defined string; empty.
    std::string projectString11;                              ///< Application-defined string; empty.
    std::string projectString12;                              ///< Application-defined string; empty.
    std::string projectString13;                              ///< Application-defined string; empty.
    std::string projectString14;                              ///< Application-defined string; empty.
    std::string projectString15;                              ///< Application-defined string; empty.
    std::string projectString16;                              ///< Application-defined string; empty.
    std::string projectString17;                              ///< Application-defined string; empty.
    std::string projectString18;                              ///< Application-defined string; empty.
    std::string projectString19;                              ///< Application-defined string; empty.
    std::string projectString20;                              ///< Application-defined string; empty.
    std::string projectString21;                              ///< Application-defined string; empty.
    std::string projectString22;                              ///< Application-defined string; empty.
    std::string projectString23;                              ///< Application-defined string; empty.
    std::string projectString24;                              ///< Application-defined string; empty.
    std::string projectString25;                              ///< Application-defined string; empty.
    std::string projectString26;                              ///< Application-defined string; empty.
    std::map<int, std::string> numberedTable1;                ///< Application-defined numbered table; empty.
    std::map<int, std::string> numberedTable2;                ///< Application-defined numbered table; empty.
    std::map<int, std::string> numberedTable3;                ///< Application-defined numbered table; empty.

    /// @return the singleton, made on the first call (not thread-safe); owned by
    /// the library until destoryInstance().
    KALDATA_API static kalproject* getInstance();
    /// Destroys the singleton (spelled so); the next getInstance() makes a new
    /// one. Does nothing when there is none.
    KALDATA_API static void destoryInstance();
    /// A project with an empty message queue; other fields zero or empty. The
    /// constructor does not register the object as the singleton.
    KALDATA_API kalproject();
    /// Frees the message queue and its messages.
    KALDATA_API ~kalproject();
};

#endif
