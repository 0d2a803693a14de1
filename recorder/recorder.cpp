// SPDX-License-Identifier: Apache-2.0
#include "kalrecorder.h"

#include <memory>

#include "vorn/event.h"

namespace vorn {
namespace event {
class EVENT_OBJECT {
public:
    kalrecorder::record rec;
};
}  // namespace event
}  // namespace vorn

namespace {

struct state {
    std::vector<std::unique_ptr<vorn::event::EVENT_OBJECT>> objects;
    std::vector<vorn::event::EVENT_OBJECT*> sentOrder;
    std::size_t calls = 0;
    bool nullObjects = false;
    bool keep = true;
};

state& st() {
    static state s;
    return s;
}

}  // namespace

namespace vorn {
namespace event {

KALRECORDER_API EVENT_OBJECT* createObject(const std::string& category, const std::string& action,
                                           const std::string& source, const std::string& fourth) {
    state& s = st();
    ++s.calls;
    if (s.nullObjects) return nullptr;
    auto obj = std::make_unique<EVENT_OBJECT>();
    obj->rec.category = category;
    obj->rec.action = action;
    obj->rec.source = source;
    obj->rec.fourth = fourth;
    s.objects.push_back(std::move(obj));
    return s.objects.back().get();
}

KALRECORDER_API void setData(EVENT_OBJECT* object, const std::string& key, std::string value) {
    if (!object) return;
    object->rec.data.emplace_back(key, std::move(value));
}

KALRECORDER_API void sendEvent(EVENT_OBJECT* object) {
    if (!object) return;
    state& s = st();
    object->rec.sent = true;
    if (s.keep) {
        s.sentOrder.push_back(object);
        return;
    }
    // Not keeping records: the object is the last one created, release it now.
    if (!s.objects.empty() && s.objects.back().get() == object) s.objects.pop_back();
}

}  // namespace event
}  // namespace vorn

namespace kalrecorder {

std::vector<record> sent() {
    std::vector<record> out;
    out.reserve(st().sentOrder.size());
    for (auto* o : st().sentOrder)
        out.push_back(o->rec);
    return out;
}

std::vector<record> created() {
    std::vector<record> out;
    out.reserve(st().objects.size());
    for (auto& o : st().objects)
        out.push_back(o->rec);
    return out;
}

std::size_t createCalls() {
    return st().calls;
}

void clear() {
    state& s = st();
    s.sentOrder.clear();
    s.objects.clear();
    s.calls = 0;
}

void setNullObjects(bool on) {
    st().nullObjects = on;
}

void setKeepRecords(bool on) {
    st().keep = on;
}

std::string format(const record& r) {
    std::string line = r.category + "/" + r.action;
    for (const auto& kv : r.data)
        line += " " + kv.first + "=" + kv.second;
    if (!r.sent) line += " (unsent)";
    return line;
}

std::vector<std::string> lines() {
    std::vector<std::string> out;
    for (auto* o : st().sentOrder)
        out.push_back(format(o->rec));
    return out;
}

}  // namespace kalrecorder
