// SPDX-License-Identifier: Apache-2.0
// The project's message queue: typed text messages in order of addition.
#ifndef KALDATA_KALMESSAGES_H
#define KALDATA_KALMESSAGES_H

#include <string>
#include <vector>

#include "kalexport.h"

class kalmessage {
private:
    unsigned int type;
    std::string* text;

public:
    KALDATA_API kalmessage(unsigned int type, const char* text);
    KALDATA_API ~kalmessage();

    KALDATA_API unsigned int getType() const;
    KALDATA_API const std::string* getText() const;
};

class kalmessages {
private:
    std::vector<kalmessage*>* messages;

public:
    KALDATA_API kalmessages();
    KALDATA_API void addMessage(unsigned int type, const char* text);
    KALDATA_API unsigned int messageCount(unsigned int type);
    KALDATA_API void clearMessageQueue();
    KALDATA_API ~kalmessages();

    KALDATA_API std::vector<kalmessage*> getMessages() const;
};

#endif
