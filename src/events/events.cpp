// SPDX-License-Identifier: Apache-2.0
#include "events/events.h"

#include "vorn/event.h"

namespace kalevents {

namespace {
const std::string& source() {
    static const std::string s("KAL");
    return s;
}
const std::string& fourth() {
    static const std::string s;
    return s;
}
}  // namespace

record::record(const std::string& category, const std::string& action)
    : object(vorn::event::createObject(category, action, source(), fourth())) {}

record& record::set(const char* key, std::string value) {
    if (object) vorn::event::setData(object, key, std::move(value));
    return *this;
}

void record::send() {
    if (!object) return;
    // The service takes the object over; we must not touch it afterwards.
    vorn::event::sendEvent(object);
    object = nullptr;
}

}  // namespace kalevents
