// SPDX-License-Identifier: Apache-2.0
// A walk through a small block design with libkaldata. The recording event
// service stands in for the application platform; every record the library
// sends is printed under the step that caused it.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "kaldata.h"
#include "kalrecorder.h"
#include "kalsupport.h"

namespace {

void step(const char* what) {
    std::printf("-- %s\n", what);
    for (const auto& line : kalrecorder::lines())
        std::printf("     %s\n", line.c_str());
    kalrecorder::clear();
}

// Keeps the strings that the API takes by pointer alive for the whole demo.
struct names {
    std::vector<std::unique_ptr<std::string>> store;
    std::string* operator()(const char* s) {
        store.push_back(std::make_unique<std::string>(s));
        return store.back().get();
    }
};

kalcomponent* makeBlock(names& S, const char* type) {
    auto* c = new kalcomponent(S("acme"), S("ip"), S(type), S("1.0"));
    c->addPort(S("clk"), S("clk"), 1, nullptr);
    c->addPort(S("din"), S("din"), 1, nullptr);
    c->addPort(S("dout"), S("dout"), 2, nullptr);
    c->addPortbus(S("q"), S("q"), 3, 0, 2, nullptr);
    return c;
}

}  // namespace

int main() {
    names S;
    kalrecorder::clear();

    // The project blackboard and its message queue.
    kalproject* project = kalproject::getInstance();
    project->messageQueue->addMessage(1, "design opened");
    std::printf("project messages of type 1: %u\n", project->messageQueue->messageCount(1));

    // A root block "top" with one design, and a sub-block with a design of its own.
    auto* top = new kalcomponent(S("acme"), S("soc"), S("top"), S("1.0"));
    top->createDesign(S("acme"), S("soc"), S("rtl"), S("1.0"));
    kaldesign* rtl = top->getDesign(S("rtl"));
    top->addPort(S("clk"), S("clk"), 1, nullptr);

    auto* sub = new kalcomponent(S("acme"), S("ip"), S("cluster"), S("1.0"));
    sub->createDesign(S("acme"), S("ip"), S("impl"), S("1.0"));
    sub->getDesign(S("impl"))->addInstance(S("core"), makeBlock(S, "cpu"));
    rtl->addInstance(S("u1"), makeBlock(S, "dma"));
    rtl->addInstance(S("u2"), makeBlock(S, "uart"));
    rtl->addInstance(S("c0"), sub);
    step("two-level hierarchy: instances u1, u2 and c0 (which holds core)");
    kalcomponent* core = top->getComponent(S("top/c0/core"));
    std::printf("   top/c0/core resolves to a %s block\n", core->identity->getName()->c_str());

    top->addNet(S("clk"), S("clk"), S(""), nullptr);
    top->addNet(S("data"), S("data"), S(""), nullptr);
    top->addNetbus(S("bus"), S(""), S("bus"), 3, 0, nullptr);
    top->connect(S("clk"), S("clk"), S(""));
    top->connect(S("clk"), S("clk"), S("u1"));
    top->connect(S("clk"), S("clk"), S("top/u2"));  // a hierarchical path works for connect
    top->connect(S("data"), S("dout"), S("u1"));
    top->connect(S("data"), S("din"), S("u2"));
    step("connect: clock from the top port, data from u1 to u2");

    top->disconnect(S("data"), S("din"), S("u2"));
    step("disconnect u2/din: the data net has a driver but no receiver, so it is pruned");

    top->addExport("top/u1/din", true, S(""), nullptr);
    top->addExport("top/u2/q", true, S(""), nullptr);
    step("export u1/din as a top port and u2/q as a top port bus");

    top->changePortName(S("u1_din"), S("irq"));
    rtl->changeNetbusName(S("u2_q"), S("result"));
    step("rename the exported top port, and the exported net bus (its port bus follows)");

    rtl->addPortToDualPort("dp0", top->getPort(S("top/u1/clk"), true));
    rtl->addPortToDualPort("dp0", top->getPort(S("top/u2/clk"), true));
    step("merge u1/clk and u2/clk into dual port dp0");
    rtl->removePortFromDualPort("dp0", top->getPort(S("top/u2/clk"), true));
    step("split u2/clk out of dp0 (a dual port never survives with one port)");
    std::printf("   dp0 after the split: %s\n", rtl->getDualPort("dp0") ? "still there" : "dissolved");

    // removeInstance destroys the instance, but not what it leaves to its
    // caller (its generator registry, say): free that first.
    kalsupport::releaseLeftovers(rtl->getInstance(S("u2")));
    rtl->removeInstance(S("u2"));
    step("remove instance u2: its export goes, nets that lose their point are pruned");

    // Check the model link by link, then tear it down: release destroys top
    // with everything below it, and frees what the components leave to their
    // caller (generator registries, file sets, LPC records, catalogue groups).
    const std::vector<std::string> problems = kalsupport::checkModel(top);
    std::printf("model check: %zu problems\n", problems.size());
    kalsupport::release(top);
    step("teardown sends nothing");
    kalproject::destoryInstance();
    return 0;
}
