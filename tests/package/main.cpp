// An outside application: includes the umbrella header, provides the event
// service itself, and uses a few classes of the installed library.
#include <kaldata.h>
#include <vorn/event.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace vorn {
namespace event {
class EVENT_OBJECT {};
static std::vector<std::unique_ptr<EVENT_OBJECT>> objects;
EVENT_OBJECT* createObject(const std::string&, const std::string&, const std::string&, const std::string&) {
    objects.push_back(std::make_unique<EVENT_OBJECT>());
    return objects.back().get();
}
void setData(EVENT_OBJECT*, const std::string&, std::string) {}
void sendEvent(EVENT_OBJECT*) {}
}  // namespace event
}  // namespace vorn

int main() {
    kalproject* p = kalproject::getInstance();
    p->messageQueue->addMessage(2, "hello");
    std::string name("data");
    std::unique_ptr<std::string> bit(kalutilities::constructBusBit(&name, 7));
    kalattributes a;
    std::string key("Name"), value("top"), vendor("SPIRIT");
    a.setAttribute(&key, &value, &vendor);
    bool ok = p->messageQueue->messageCount(2) == 1 && *bit == "data[7]" && *a.getName() == "top";
    kalproject::destoryInstance();
    std::printf("%s\n", ok ? "consumer ok" : "consumer FAILED");
    return ok ? 0 : 1;
}
