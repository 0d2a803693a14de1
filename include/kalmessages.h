// SPDX-License-Identifier: Apache-2.0
/// @file kalmessages.h
/// @brief The project's message queue: typed text messages in order of addition.
#ifndef KALDATA_KALMESSAGES_H
#define KALDATA_KALMESSAGES_H

#include <string>
#include <vector>

#include "kalexport.h"

/// @brief One message: a type number and a text.
///
/// Do not copy or assign one: the copy shares the owned text, which is then freed twice.
class kalmessage {
private:
    unsigned int type;
    std::string* text;

public:
    /// Copies @p text. A null text makes an empty message: no text, and type 0
    /// whatever @p type says.
    KALDATA_API kalmessage(unsigned int type, const char* text);
    /// Frees the text.
    KALDATA_API ~kalmessage();

    /// @return the type (0 for a message made with a null text).
    KALDATA_API unsigned int getType() const;
    /// @return the text, or null for a message made with a null text.
    KALDATA_API const std::string* getText() const;
};

/// @brief A queue of messages in order of addition; the project holds one.
///
/// Do not copy or assign one: the copy shares the owned messages, which are then freed twice.
class kalmessages {
private:
    std::vector<kalmessage*>* messages;

public:
    /// An empty queue.
    KALDATA_API kalmessages();
    /// Appends a message of @p type with a copy of @p text; a null text adds nothing.
    KALDATA_API void addMessage(unsigned int type, const char* text);
    /// @return the number of queued messages of @p type.
    KALDATA_API unsigned int messageCount(unsigned int type);
    /// Frees every message; the queue stays usable.
    KALDATA_API void clearMessageQueue();
    /// Frees every message.
    KALDATA_API ~kalmessages();

    /// @return the messages in order of addition; they stay owned by the queue.
    KALDATA_API std::vector<kalmessage*> getMessages() const;
};

#endif
