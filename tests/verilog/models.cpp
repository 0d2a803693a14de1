#include "models.h"

#include <string>

#include "kaldata.h"
#include "support/release.h"

namespace models {

namespace {

kalcomponent* block(names& N, const char* type) {
    auto* c = new kalcomponent(N("acme"), N("ip"), N(type), N("1.0"));
    c->addPort(N("clk"), N("clk"), 1, nullptr);
    c->addPort(N("din"), N("din"), 1, nullptr);
    c->addPort(N("dout"), N("dout"), 2, nullptr);
    c->addPortbus(N("q"), N("q"), 3, 0, 2, nullptr);
    return c;
}

kalcomponent* leaf(names& N, const char* library, const char* type) {
    return new kalcomponent(N("acme"), N(library), N(type), N("1.0"));
}

kalcomponent* cluster(names& N) {
    auto* cpu = leaf(N, "ip", "core");
    cpu->addPort(N("clk"), N("clk"), 1, nullptr);
    cpu->addPort(N("irq"), N("irq"), 2, nullptr);
    cpu->addPort(N("io"), N("io"), 3, nullptr);
    cpu->addPortbus(N("addr"), N("addr"), 15, 0, 2, nullptr);
    cpu->addPortbus(N("rdata"), N("rdata"), 0, 7, 1, nullptr);
    auto* ram = leaf(N, "ip", "mem");
    ram->setAttributeValue(N("moduleName"), N("sram_wrapper"));
    ram->addPort(N("clk"), N("clk"), 1, nullptr);
    ram->addPortbus(N("addr"), N("addr"), 15, 0, 1, nullptr);
    ram->addPortbus(N("dout"), N("dout"), 0, 7, 2, nullptr);

    auto* c = new kalcomponent(N("acme"), N("ip"), N("cluster"), N("1.0"));
    c->createDesign(N("acme"), N("ip"), N("impl"), N("1.0"));
    kaldesign* impl = c->getDesign(N("impl"));
    impl->addInstance(N("cpu"), cpu);
    impl->addInstance(N("ram"), ram);
    impl->addNetbus(N("a"), N(""), N("a"), 15, 0, nullptr);
    for (int i = 0; i < 16; ++i) {
        const std::string bit = "[" + std::to_string(i) + "]";
        impl->connect(N("a" + bit), N("addr" + bit), N("cpu"));
        impl->connect(N("a" + bit), N("addr" + bit), N("ram"));
    }
    return c;
}

// The cluster's ports come from its inner ports, exported from the root.
void exportCluster(names& N, kalcomponent* soc, const std::string& name) {
    kalcomponent* c = soc->getComponent(N("soc/" + name));
    soc->addExport("soc/" + name + "/ram/dout", true, N(""), nullptr);
    for (int i = 0; i < 8; ++i) {
        const std::string bit = "[" + std::to_string(i) + "]";
        c->connect(N("ram_dout" + bit), N("rdata" + bit), N("cpu"));
    }
    soc->addExport("soc/" + name + "/cpu/clk", true, N(""), nullptr);
    c->connect(N("cpu_clk"), N("clk"), N("ram"));
    soc->addExport("soc/" + name + "/cpu/irq", true, N(""), nullptr);
    soc->addExport("soc/" + name + "/cpu/io", true, N(""), nullptr);
}

}  // namespace

kalcomponent* demo(names& N, bool removeU2) {
    auto* top = new kalcomponent(N("acme"), N("soc"), N("top"), N("1.0"));
    top->createDesign(N("acme"), N("soc"), N("rtl"), N("1.0"));
    kaldesign* rtl = top->getDesign(N("rtl"));
    top->addPort(N("clk"), N("clk"), 1, nullptr);

    auto* sub = new kalcomponent(N("acme"), N("ip"), N("cluster"), N("1.0"));
    sub->createDesign(N("acme"), N("ip"), N("impl"), N("1.0"));
    sub->getDesign(N("impl"))->addInstance(N("core"), block(N, "cpu"));
    rtl->addInstance(N("u1"), block(N, "dma"));
    rtl->addInstance(N("u2"), block(N, "uart"));
    rtl->addInstance(N("c0"), sub);

    top->addNet(N("clk"), N("clk"), N(""), nullptr);
    top->addNet(N("data"), N("data"), N(""), nullptr);
    top->addNetbus(N("bus"), N(""), N("bus"), 3, 0, nullptr);
    top->connect(N("clk"), N("clk"), N(""));
    top->connect(N("clk"), N("clk"), N("u1"));
    top->connect(N("clk"), N("clk"), N("top/u2"));
    top->connect(N("data"), N("dout"), N("u1"));
    top->connect(N("data"), N("din"), N("u2"));
    top->disconnect(N("data"), N("din"), N("u2"));
    top->addExport("top/u1/din", true, N(""), nullptr);
    top->addExport("top/u2/q", true, N(""), nullptr);
    top->changePortName(N("u1_din"), N("irq"));
    rtl->changeNetbusName(N("u2_q"), N("result"));
    rtl->addPortToDualPort("dp0", top->getPort(N("top/u1/clk"), true));
    rtl->addPortToDualPort("dp0", top->getPort(N("top/u2/clk"), true));
    rtl->removePortFromDualPort("dp0", top->getPort(N("top/u2/clk"), true));
    if (removeU2) {
        releaseLeftovers(rtl->getInstance(N("u2")));  // what the design's removal will not free
        rtl->removeInstance(N("u2"));
    }
    return top;
}

kalcomponent* hierarchy(names& N) {
    auto* soc = new kalcomponent(N("acme"), N("soc"), N("soc"), N("1.0"));
    soc->createDesign(N("acme"), N("soc"), N("rtl"), N("1.0"));
    kaldesign* rtl = soc->getDesign(N("rtl"));
    soc->addPort(N("clk"), N("clk"), 1, nullptr);
    soc->addPort(N("pad"), N("pad"), 3, nullptr);
    soc->addPortbus(N("dout"), N("dout"), 3, 0, 2, nullptr);

    auto* pll = leaf(N, "ip", "pll");
    pll->addPort(N("clk_in"), N("clk_in"), 1, nullptr);
    pll->addPort(N("clk_out"), N("clk_out"), 2, nullptr);
    pll->addPort(N("lock"), N("lock"), 2, nullptr);
    pll->addPortbus(N("phase"), N("phase"), 3, 0, 2, nullptr);
    auto* glue = leaf(N, "lib2", "core");  // another kind named "core"
    glue->addPort(N("a"), N("a"), 1, nullptr);
    glue->addPort(N("y"), N("y"), 2, nullptr);
    glue->addPortbus(N("b"), N("b"), 3, 0, 1, nullptr);

    rtl->addInstance(N("c0"), cluster(N));
    rtl->addInstance(N("c1"), cluster(N));
    rtl->addInstance(N("pll"), pll);
    rtl->addInstance(N("u-glue"), glue);
    exportCluster(N, soc, "c0");
    exportCluster(N, soc, "c1");

    auto net = [&](const char* name) { rtl->addNet(N(name), N(name), N(""), nullptr); };
    auto wire = [&](const std::string& net, const std::string& port, const char* inst) {
        rtl->connect(N(net), N(port), N(inst));
    };
    net("clk");
    wire("clk", "clk", "");
    wire("clk", "clk_in", "pll");
    net("gclk");
    wire("gclk", "clk_out", "pll");
    wire("gclk", "cpu_clk", "c0");  // leaves the net inside c0, which it was exported to
    rtl->addPortToDualPort("dpclk", soc->getPort(N("soc/c0/cpu_clk"), true));
    rtl->addPortToDualPort("dpclk", soc->getPort(N("soc/c1/cpu_clk"), true));
    net("irq0");
    wire("irq0", "cpu_irq", "c0");
    wire("irq0", "a", "u-glue");
    net("irq1");
    wire("irq1", "cpu_irq", "c1");
    wire("irq1", "b[3]", "u-glue");
    rtl->addPortToDualPort("dpb", soc->getPort(N("soc/pll/lock"), true));
    rtl->addPortToDualPort("dpb", soc->getPort(N("soc/u-glue/b[2]"), true));
    net("x[1]");  // a net that a bus made later takes as its bit
    rtl->addNetbus(N("x"), N(""), N("x"), 3, 0, nullptr);
    for (int i = 0; i < 4; ++i) {
        const std::string bit = "[" + std::to_string(i) + "]";
        wire("x" + bit, "phase" + bit, "pll");
        wire("x" + bit, "dout" + bit, "");
    }
    net("pad");
    wire("pad", "pad", "");
    wire("pad", "cpu_io", "c0");
    rtl->addNetbus(N("rdata0"), N(""), N("rdata0"), 7, 0, nullptr);
    for (int i = 0; i < 8; ++i) {
        const std::string bit = "[" + std::to_string(i) + "]";
        wire("rdata0" + bit, "ram_dout" + bit, "c0");
    }
    soc->addExport("soc/u-glue/y", true, N(""), N("irq"));
    return soc;
}

}  // namespace models
