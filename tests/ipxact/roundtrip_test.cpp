// Write then read gives the same model, compared through the canonical dump:
// for the demo's design, a model that uses every kind of extension, W1 at
// N = 1,000 and every hierarchical design of the example library. Everything
// written here stays under KALDATA_WRITE_DIR for the schema validation test.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "kaldata.h"
#include "kalipxact.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"
#include "w1model.h"

namespace {

namespace fs = std::filesystem;

const std::string written = KALDATA_WRITE_DIR;
const std::string shared = KALDATA_SHARED_DIR;

class roundTrip : public recorded {
protected:
    void SetUp() override {
        recorded::SetUp();
        kalrecorder::setNullObjects(true);  // records are the reader's test's business
    }
    // Writes `root` into a fresh folder, reads it back as `top` and compares the dumps.
    void check(kalcomponent* root, const std::string& top, const std::string& folder) {
        std::string before = kalsupport::dumpModel(root);
        fs::path dir = fs::path(written) / folder;
        fs::remove_all(dir);
        kalipxact::writeResult w = kalipxact::write(root, dir.string());
        ASSERT_TRUE(w.ok) << w.error.str();
        for (auto& m : w.warnings)
            ADD_FAILURE() << "writer: " << m.str();
        kalipxact::loadResult r = kalipxact::load(dir.string(), top);
        ASSERT_TRUE(r.ok) << r.error.str();
        for (auto& m : r.warnings)
            ADD_FAILURE() << "reader: " << m.str();
        EXPECT_MODEL_OK(r.root);
        std::string after = kalsupport::dumpModel(r.root);
        EXPECT_EQ(before, after);
        if (before != after) {  // the first differing line, for the log
            std::size_t i = 0;
            while (i < before.size() && i < after.size() && before[i] == after[i])
                ++i;
            std::size_t start = before.rfind('\n', i) + 1;
            ADD_FAILURE() << "first difference:\n  " << before.substr(start, before.find('\n', i) - start)
                          << "\n  " << after.substr(start, after.find('\n', i) - start);
        }
        // Writing what was read gives the same documents again.
        std::vector<std::pair<std::string, std::string>> first, second;
        kalipxact::writeDocuments(root, first);
        kalipxact::writeDocuments(r.root, second);
        EXPECT_TRUE(first == second) << "the second writing differs from the first";
        release(r.root);
    }
};

kalcomponent* block(strings& S, const char* type, unsigned qmsb) {
    auto* c = new kalcomponent(S("acme"), S("ip"), S(type), S("1.0"));
    c->addPort(S("clk"), S("clk"), 1, nullptr);
    c->addPort(S("din"), S("din"), 1, nullptr);
    c->addPort(S("dout"), S("dout"), 2, nullptr);
    c->addPortbus(S("q"), S("q"), qmsb, 0, 2, nullptr);
    return c;
}

// The demo's model, built again through the same calls; `whole` runs it to
// the end (the dual port split and u2 removed), otherwise it stops with the
// dual port and both exports alive.
kalcomponent* demo(strings& S, bool whole) {
    auto* top = new kalcomponent(S("acme"), S("soc"), S("top"), S("1.0"));
    top->createDesign(S("acme"), S("soc"), S("rtl"), S("1.0"));
    kaldesign* rtl = top->getDesign(const_cast<std::string*>(S("rtl")));
    top->addPort(S("clk"), S("clk"), 1, nullptr);
    auto* sub = new kalcomponent(S("acme"), S("ip"), S("cluster"), S("1.0"));
    sub->createDesign(S("acme"), S("ip"), S("impl"), S("1.0"));
    sub->getDesign(const_cast<std::string*>(S("impl")))
        ->addInstance(const_cast<std::string*>(S("core")), block(S, "cpu", 3));
    rtl->addInstance(const_cast<std::string*>(S("u1")), block(S, "dma", 3));
    rtl->addInstance(const_cast<std::string*>(S("u2")), block(S, "uart", 3));
    rtl->addInstance(const_cast<std::string*>(S("c0")), sub);
    top->addNet(S("clk"), S("clk"), S(""), nullptr);
    top->addNet(S("data"), S("data"), S(""), nullptr);
    top->addNetbus(S("bus"), S(""), S("bus"), 3, 0, nullptr);
    top->connect(S("clk"), S("clk"), S(""));
    top->connect(S("clk"), S("clk"), S("u1"));
    top->connect(S("clk"), S("clk"), S("top/u2"));
    top->connect(S("data"), S("dout"), S("u1"));
    top->connect(S("data"), S("din"), S("u2"));
    top->disconnect(S("data"), S("din"), S("u2"));
    top->addExport("top/u1/din", true, S(""), nullptr);
    top->addExport("top/u2/q", true, S(""), nullptr);
    top->changePortName(S("u1_din"), S("irq"));
    rtl->changeNetbusName(S("u2_q"), S("result"));
    rtl->addPortToDualPort("dp0", top->getPort(S("top/u1/clk"), true));
    rtl->addPortToDualPort("dp0", top->getPort(S("top/u2/clk"), true));
    if (whole) {
        rtl->removePortFromDualPort("dp0", top->getPort(S("top/u2/clk"), true));
        kalcomponent* u2 = rtl->getInstance(S("u2"));
        delete u2->data->generators;
        u2->data->generators = nullptr;
        rtl->removeInstance(S("u2"));
    }
    return top;
}

TEST_F(roundTrip, demoDesign) {
    kalcomponent* whole = demo(S, true);
    check(whole, "acme:soc:top:1.0", "demo");
    release(whole);
    kalcomponent* partway = demo(S, false);
    kaldesign* rtl = partway->getDesign(const_cast<std::string*>(S("rtl")));
    ASSERT_NE(rtl->getDualPort("dp0"), nullptr);
    ASSERT_NE(partway->getPortbus(S("result"), false), nullptr);
    check(partway, "acme:soc:top:1.0", "demo-partway");
    release(partway);
}

// Every kind of content the writer must carry in extensions.
TEST_F(roundTrip, everythingIpXactHasNoElementFor) {
    auto* top = new kalcomponent(S("acme"), S("soc"), S("rich"), S("2.1"));
    top->createDesign(S("acme"), S("soc"), S("rich_d"), S("2.1"));
    kaldesign* d = top->getDesign(const_cast<std::string*>(S("rich_d")));
    top->setAttribute(S("BBox"), S("true"), S("KAL"));
    top->setAttribute(S("note"), S("a \"quoted\" <text> & more"), S("user"));
    top->addPort(S("x[3]"), S("x[3]"), 3, S("a scalar named like a bit"));
    top->addPort(S("9lives"), S("second name"), 2, nullptr);
    top->getPort(S("9lives"), false)->setAttribute(S("PadPin"), S("true"), S("KAL"));
    top->addPortbus(S("wide"), S("wide"), 0, 5, 1, S("ascending range"));
    top->getPortbus(S("wide"), false)->setAttribute(S("PadPin"), S("true"), S("KAL"), false);
    top->getPort(S("wide[2]"), false)->setAttribute(S("CLK_SRC"), S("true"), S("KAL"));
    top->addParameter(S("DEPTH"), new kalparameter(S("DEPTH"), S("uuid_depth"), S("16"), S("int")));
    top->addParameter(S("MODE"), new kalparameter(S("MODE"), S("m"), S("fast mode"), S("string")));
    top->addFileSet(S("rtl"), S("RTL sources"), nullptr)->setAttribute(S("k"), S("v"), S("KAL"));
    top->addFile(S("rtl"), S("src/top.v"), S("verilogSource"), S("main"));
    top->addFile(S("rtl"), S("src/defs.vh"), S("verilogSource"), nullptr);
    kalgenerators* reg = top->createGenerators();
    kalgenerator* g = top->createGenerator("lint");
    g->setDetail("lint.sh --all");
    g->setAttribute(S("phase"), S("2"), S("KAL"));
    reg->createGroup("checks");
    reg->addGeneratorToGroup(g, "checks");
    top->createGenerator("docs")->setDetail("doc.sh");
    auto* lpc = new kallpc("LPC1");
    lpc->setAttribute(S("IOSTANDARD"), S("LVCMOS33"), S("KAL"));
    top->addLPC(lpc);

    // An element catalogue: a group of its own that nests the type group made
    // by addElement, changed flags, an element taken out of its type group.
    kalelements* cat = top->getElements();
    cat->createGroup(2, S("pads"), S("io"), true);
    kalelement* pin = cat->addElement(S("pin"), S("x[3]"), false);
    pin->setAttribute(S("CLK_SRC"), S("true"), S("KAL"));
    cat->addElementToGroup(pin, S("io"));
    cat->setElementHideAttribute(S("x[3]"), true);
    cat->addElement(S("pin"), S("9lives"), false);
    cat->getGroup(S("io"))->addGroup(cat->getGroup(S("pin")));
    cat->removeElementFromGroup(S("pin"), S("9lives"));
    cat->setGroupDragAttribute(S("io"), false);

    // Two instances of one VLNV that differ in attributes, a parameter value and a range.
    kalcomponent* u1 = block(S, "blk", 3);
    kalcomponent* u2 = block(S, "blk", 7);
    u1->addParameter(S("W"), new kalparameter(S("W"), S("uuid_w"), S("4"), S("")));
    u2->addParameter(S("W"), new kalparameter(S("W"), S("uuid_w"), S("8"), S("")));
    u2->setAttribute(S("BBox"), S("true"), S("KAL"));
    d->addInstance(const_cast<std::string*>(S("u1")), u1);
    d->addInstance(const_cast<std::string*>(S("u2")), u2);
    d->setAttribute(S("layout"), S("grid"), S("KAL"));

    d->addNet(S("clk"), S("clk"), S("internal"), S("the clock"));
    d->getNet(S("clk"))->setAttribute(S("CLK_SRC"), S("true"), S("KAL"));
    d->addNet(S("n/1"), S("n/1"), S(""), nullptr);
    d->addNet(S("unused"), S("unused"), S(""), nullptr);  // a net without ports
    d->addNetbus(S("b"), S(""), S("b"), 3, 0, nullptr);
    d->getNetbus(S("b"))->setAttribute(S("kind"), S("data"), S("KAL"), false);
    d->getNet(S("b[1]"))->setAttribute(S("probe"), S("yes"), S("KAL"));
    d->connect(S("clk"), S("clk"), S("u1"));
    d->connect(S("clk"), S("clk"), S("u2"));
    d->connect(S("clk"), S("x[3]"), S(""));
    d->connect(S("n/1"), S("dout"), S("u1"));
    d->connect(S("n/1"), S("wide[5]"), S(""));
    d->connect(S("n/1"), S("q[6]"), S("u2"));  // a single bit of a bus
    for (int k = 0; k < 4; ++k) {              // u1.q [3:0] wholly on b; u2.q[3] also on b[3]
        std::string net = "b[" + std::to_string(k) + "]", port = "q[" + std::to_string(k) + "]";
        d->connect(&net, &port, S("u1"));
    }
    d->connect(S("b[3]"), S("q[3]"), S("u2"));
    top->addExport("rich/u1/din", true, S(""), nullptr);
    top->addExport("rich/u2/dout", true, S(""), S("out9"));
    d->addPortToDualPort("dp", u1->getPort(S("din"), false));
    d->addPortToDualPort("dp", u2->getPort(S("din"), false));
    d->addPortToDualPort("dp2", u1->getPort(S("clk"), false));
    d->addPortToDualPort("dp2", u2->getPort(S("clk"), false));
    kaldualportbus* dpb = kaldualportbus::createDualPortBus(
        "dpb", 2, 0, {d->getDualPort("dp"), nullptr, d->getDualPort("dp2")});
    ASSERT_NE(dpb, nullptr);
    ASSERT_TRUE(d->insertDualPortBus("dpb", dpb));
    EXPECT_MODEL_OK(top);
    check(top, "acme:soc:rich:2.1", "rich");
    EXPECT_EQ(top->getClockSourceState(), 1) << "x[3] is a clock source of the catalogue";
    release(top);
}

TEST_F(roundTrip, w1AtAThousandInstances) {
    kalcomponent* top = w1::build(1000);
    w1::rename(w1::design(top), 1000);
    w1::remove(w1::design(top), 1000);
    check(top, "acme:soc:top:1.0", "w1");
    // One component document per block type and the top, one design document.
    std::size_t documents = 0;
    for (auto& e : fs::recursive_directory_iterator(fs::path(written) / "w1"))
        documents += e.path().extension() == ".xml";
    EXPECT_EQ(documents, 6u);
    release(top);
}

TEST_F(roundTrip, everyHierarchicalExampleReadWrittenAndReadAgain) {
    std::string folder = shared + "/ipxact/examples";
    if (!fs::is_directory(folder)) GTEST_SKIP() << folder << " is absent";
    const char* tops[] = {"tut.fi:cpu.subsystem:core_example:1.0",
                          "tut.fi:other.subsystem:generation_sample:1.0",
                          "tut.fi:other.subsystem:wb_example:1.0",
                          "tut.fi:other.subsystem:spi_example:1.0",
                          "tut.fi:cpu.subsystem.test:core_example.setup:1.0",
                          "tut.fi:peripheral.subsystem:hierarchical_wb_slave:1.0",
                          "tut.fi:communication.bridge.test:wb_cpu.setup:1.0",
                          "tut.fi:communication.template.test:spi.setup:1.0",
                          "tut.fi:communication.template.test:wb_slave.setup:1.0",
                          "tut.fi:other.subsystem.test:wb_example.setup:1.0"};
    for (const char* top : tops) {
        SCOPED_TRACE(top);
        kalipxact::loadResult r = kalipxact::load(folder, top);
        ASSERT_TRUE(r.ok) << r.error.str();
        std::string name = top;
        for (char& c : name)
            if (c == ':') c = '_';
        check(r.root, top, "examples/" + name);
        release(r.root);
    }
}

}  // namespace
