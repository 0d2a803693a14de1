// SPDX-License-Identifier: Apache-2.0
#include "kalmessages.h"

kalmessage::kalmessage(unsigned int type_, const char* text_) : type(0), text(nullptr) {
    if (!text_) return;  // a message without text drops its type too
    type = type_;
    text = new std::string(text_);
}

kalmessage::~kalmessage() {
    delete text;
}

unsigned int kalmessage::getType() const {
    return type;
}
const std::string* kalmessage::getText() const {
    return text;
}

kalmessages::kalmessages() : messages(new std::vector<kalmessage*>()) {}

void kalmessages::addMessage(unsigned int type, const char* text) {
    if (!text) return;
    messages->push_back(new kalmessage(type, text));
}

unsigned int kalmessages::messageCount(unsigned int type) {
    unsigned int n = 0;
    for (auto* m : *messages)
        if (m->getType() == type) ++n;
    return n;
}

void kalmessages::clearMessageQueue() {
    while (!messages->empty()) {
        delete messages->back();
        messages->pop_back();
    }
}

kalmessages::~kalmessages() {
    clearMessageQueue();
    delete messages;
}

std::vector<kalmessage*> kalmessages::getMessages() const {
    return *messages;
}
