// SPDX-License-Identifier: Apache-2.0
// The library's only door to the event service. A record is created, filled
// with keys in order and sent; when the service hands out no object the record
// is dropped silently and the change that caused it stands.
#ifndef KALDATA_SRC_EVENTS_EVENTS_H
#define KALDATA_SRC_EVENTS_EVENTS_H

#include <string>

namespace vorn {
namespace event {
class EVENT_OBJECT;
}
}  // namespace vorn

namespace kalevents {

class record {
public:
    record(const std::string& category, const std::string& action);
    record(const record&) = delete;
    record& operator=(const record&) = delete;

    // False when the service gave no object: callers may skip building values.
    explicit operator bool() const { return object != nullptr; }

    record& set(const char* key, std::string value);
    void send();

private:
    vorn::event::EVENT_OBJECT* object;
};

// Creates a record and, only when the service gave an object, lets fill set
// its keys and sends it: values are not built for a dropped record.
template <class Fill>
void emit(const std::string& category, const std::string& action, Fill fill) {
    record r(category, action);
    if (!r) return;
    fill(r);
    r.send();
}

// A record with a single key.
inline void emit(const std::string& category, const std::string& action, const char* key,
                 const std::string& value) {
    emit(category, action, [&](record& r) { r.set(key, value); });
}

}  // namespace kalevents

#endif
