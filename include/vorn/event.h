// SPDX-License-Identifier: Apache-2.0
// The application platform's event service. libkaldata calls these three
// functions and never defines them: the application (or a test recorder) does.
#ifndef VORN_EVENT_H
#define VORN_EVENT_H

#include <string>

namespace vorn {
namespace event {

class EVENT_OBJECT;

EVENT_OBJECT* createObject(const std::string& category, const std::string& action, const std::string& source,
                           const std::string& fourth);
void setData(EVENT_OBJECT* object, const std::string& key, std::string value);
void sendEvent(EVENT_OBJECT* object);

}  // namespace event
}  // namespace vorn

#endif
