// SPDX-License-Identifier: Apache-2.0
// app.cpp: a top block with one instance and one net, checked and torn down.
#include <kaldata.h>
#include <kalsupport.h>
#include <vorn/event.h>

#include <cstdio>
#include <string>

// The event service. libkaldata calls these three functions and defines none
// of them: the application does (or links its platform's event library).
namespace vorn {
namespace event {
class EVENT_OBJECT {
public:
    std::string text;
};
EVENT_OBJECT* createObject(const std::string& category, const std::string& action, const std::string&,
                           const std::string&) {
    return new EVENT_OBJECT{category + "/" + action};  // null would drop the record
}
void setData(EVENT_OBJECT* object, const std::string& key, std::string value) {
    object->text += " " + key + "=" + value;
}
void sendEvent(EVENT_OBJECT* object) {  // takes the object over
    std::printf("%s\n", object->text.c_str());
    delete object;
}
}  // namespace event
}  // namespace vorn

int main() {
    std::printf("libkaldata %s (headers %s)\n", kaldataVersion(), KALDATA_VERSION_STRING);
    // Names are passed by pointer; the library copies what it keeps.
    std::string acme("acme"), ip("ip"), v1("1.0"), top("top"), rtl("rtl"), blk("blk");
    std::string u1("u1"), clk("clk"), empty("");
    auto* chip = new kalcomponent(&acme, &ip, &top, &v1);  // a root component: ours to free
    chip->createDesign(&acme, &ip, &rtl, &v1);
    chip->addPort(&clk, &clk, 1, nullptr);
    auto* block = new kalcomponent(&acme, &ip, &blk, &v1);
    block->addPort(&clk, &clk, 1, nullptr);
    chip->getDesign(&rtl)->addInstance(&u1, block);  // the design owns block from now on
    chip->addNet(&clk, &clk, &empty, nullptr);
    chip->connect(&clk, &clk, &empty);  // the top port
    chip->connect(&clk, &clk, &u1);     // port clk of instance u1

    // The model checker answers every broken link; an empty answer means consistent.
    const std::vector<std::string> problems = kalsupport::checkModel(chip);
    for (const std::string& p : problems)
        std::printf("problem: %s\n", p.c_str());
    // Destroys chip and everything below it, and frees what the components
    // leave to their caller (generator registries, file sets, LPC records,
    // catalogue groups). A plain `delete chip` would leak those.
    kalsupport::release(chip);
    return problems.empty() ? 0 : 1;
}
