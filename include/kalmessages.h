// The project's message queue: typed text messages in order of addition.
#ifndef KALDATA_KALMESSAGES_H
#define KALDATA_KALMESSAGES_H

#include <string>
#include <vector>

#include "kalexport.h"

class KALDATA_API kalmessage {
private:
    unsigned int type;
    std::string* text;

public:
    kalmessage(unsigned int type, const char* text);
    ~kalmessage();

    unsigned int getType() const;
    const std::string* getText() const;
};

class KALDATA_API kalmessages {
private:
    std::vector<kalmessage*>* messages;

public:
    kalmessages();
    void addMessage(unsigned int type, const char* text);
    unsigned int messageCount(unsigned int type);
    void clearMessageQueue();
    ~kalmessages();

    std::vector<kalmessage*> getMessages() const;
};

#endif
