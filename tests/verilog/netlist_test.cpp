// The netlist text: names, ports and connections, top ports, determinism,
// refused models and files that are replaced whole or not at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "kaldata.h"
#include "kalrecorder.h"
#include "kalverilog.h"
#include "models.h"
#include "support/release.h"

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class netlist : public ::testing::Test {
protected:
    void SetUp() override {
        kalrecorder::setNullObjects(false);
        kalrecorder::setKeepRecords(true);
        kalrecorder::clear();
    }
    void TearDown() override { kalrecorder::clear(); }

    kalcomponent* component(const char* library, const char* name) {
        return new kalcomponent(N("acme"), N(library), N(name), N("1.0"));
    }
    kalcomponent* root(const char* name) {
        kalcomponent* c = component("soc", name);
        c->createDesign(N("acme"), N("soc"), N("rtl"), N("1.0"));
        return c;
    }
    static kaldesign* design(kalcomponent* c) { return c->data->designs.begin()->second; }
    void nets(kalcomponent* c, std::initializer_list<const char*> names) {
        for (const char* name : names)
            c->addNet(N(name), N(name), N(""), nullptr);
    }
    // Connects each "net=instance/port", or "net=port" for a port of the top itself.
    void wires(kalcomponent* c, std::initializer_list<std::string> links) {
        for (const std::string& link : links) {
            std::size_t eq = link.find('='), slash = link.rfind('/');
            std::string inst = slash == std::string::npos ? "" : link.substr(eq + 1, slash - eq - 1);
            std::string port = link.substr(slash == std::string::npos ? eq + 1 : slash + 1);
            EXPECT_TRUE(c->connect(N(link.substr(0, eq)), N(port), N(inst))) << link;
        }
    }

    // Net bus b [1:0] with bit 1 empty: its net, which a second bus took over,
    // was removed (the library empties every slot that held it).
    void emptySlot(kalcomponent* top) {
        kaldesign* d = design(top);
        top->addNetbus(N("b"), N(""), N("b"), 1, 0, nullptr);
        d->changeNetName(N("b[1]"), N("c[1]"));
        top->addNetbus(N("c"), N(""), N("c"), 1, 0, nullptr);
        d->removeNet(N("c[1]"));
    }

    static std::string text(kalcomponent* top, bool stubs = false) {
        std::ostringstream out;
        kalverilog::Options options;
        options.leafStubs = stubs;
        kalverilog::Result r = kalverilog::writeNetlist(top, out, options);
        EXPECT_TRUE(r.ok) << r.error;
        return out.str();
    }

    static std::string refused(kalcomponent* top) {
        std::ostringstream out;
        kalverilog::Result r = kalverilog::writeNetlist(top, out, kalverilog::Options{});
        EXPECT_FALSE(r.ok);
        EXPECT_TRUE(out.str().empty()) << "written although refused";
        EXPECT_TRUE(r.modules.empty());
        return r.error;
    }

    // Writes the netlist of `top`, expects every text of `has` in it and none
    // of `lacks`, and releases `top`.
    static void expectText(kalcomponent* top, bool stubs, std::initializer_list<const char*> has,
                           std::initializer_list<const char*> lacks = {}) {
        const std::string v = text(top, stubs);
        for (const char* piece : has)
            EXPECT_THAT(v, HasSubstr(piece));
        for (const char* piece : lacks)
            EXPECT_THAT(v, Not(HasSubstr(piece)));
        release(top);
    }

    models::names N;
};

// A leaf with a port of each direction and two buses, one of each order.
kalcomponent* leafBlock(models::names& N, const char* type) {
    auto* c = new kalcomponent(N("acme"), N("ip"), N(type), N("1.0"));
    c->addPort(N("a"), N("a"), 1, nullptr);
    c->addPort(N("y"), N("y"), 2, nullptr);
    c->addPort(N("io"), N("io"), 3, nullptr);
    c->addPortbus(N("d"), N("d"), 0, 3, 1, nullptr);
    c->addPortbus(N("q"), N("q"), 7, 4, 2, nullptr);
    return c;
}

TEST_F(netlist, ports_buses_and_connections) {
    kalcomponent* top = root("top");
    kaldesign* rtl = design(top);
    rtl->addInstance(N("u1"), leafBlock(N, "blk"));
    rtl->addInstance(N("u2"), leafBlock(N, "blk"));
    top->addNetbus(N("down"), N(""), N("down"), 3, 0, nullptr);
    top->addNetbus(N("up"), N(""), N("up"), 0, 3, nullptr);
    nets(top, {"s"});
    wires(top,
          {"down[0]=u1/d[0]", "up[0]=u2/d[0]", "down[1]=u1/d[1]", "up[1]=u2/d[1]", "down[2]=u1/d[2]",
           "up[2]=u2/d[2]", "down[3]=u1/d[3]", "up[3]=u2/d[3]", "s=u1/q[6]", "s=u2/a", "down[1]=u2/q[5]"});

    EXPECT_THAT(text(top), Not(HasSubstr("module blk")));
    // slot order from the first bound: u1's d[0:3] sits on down[3:0] reversed;
    // an output bit on no net gets a bit of a wire of its own, an input bit
    // on no net is left floating; a bus on a whole net bus of its order is
    // connected by name
    expectText(top, true,
               {"    blk u1 (\n        .a(),\n        .d({down[0], down[1], down[2], down[3]}),\n"
                "        .io(),\n        .q({nc[0], s, nc[1], nc[2]}),\n        .y()\n    );\n",
                "        .d(up),\n", "        .q({nc[3], nc[4], down[1], nc[5]}),\n",
                "    wire [3:0] down;\n    wire [0:3] up;\n    wire s;\n    wire [5:0] nc;",
                "// acme:ip:blk:1.0, defined elsewhere\n(* blackbox *)\nmodule blk (\n"
                "    input wire a,\n    input wire [0:3] d,\n    inout wire io,\n"
                "    output wire [7:4] q,\n    output wire y\n);\nendmodule\n"});
}

TEST_F(netlist, input_bits_on_no_net_float_output_bits_get_a_wire) {
    kalcomponent* top = root("top");
    design(top)->addInstance(N("u"), leafBlock(N, "blk"));
    nets(top, {"s"});
    wires(top, {"s=u/q[4]", "s=u/d[3]"});
    expectText(top, false, {".q({nc[0], nc[1], nc[2], s})", ".d({1'bz, 1'bz, 1'bz, s})"});
}

TEST_F(netlist, names_kept_escaped_or_made_unique) {
    kalcomponent* top = root("top");
    kaldesign* rtl = design(top);
    top->addPort(N("clk"), N("clk"), 1, nullptr);
    top->addPort(N("wire"), N("wire"), 1, nullptr);  // a keyword
    top->addPort(N("a b"), N("a b"), 2, nullptr);    // a space: no identifier can hold it
    auto* b1 = component("ip", "blk");
    auto* b2 = component("other", "blk");  // another kind of the same name
    auto* ram = component("ip", "ram");
    ram->setAttributeValue(N("moduleName"), N("vendor_ram_2p"));
    rtl->addInstance(N("u/1"), b1);
    rtl->addInstance(N("clk"), b2);  // an instance named like a port
    rtl->addInstance(N("m"), ram);
    // "if" and "tri0": keywords of two letters and with digits; "tri0x" a near miss
    nets(top, {"clk", "n.1", "if", "tri0", "tri0x"});
    wires(top, {"clk=clk"});
    // instances in name order meet acme:other:blk first, so it keeps the name
    expectText(top, true,
               {"    output wire a_b,\n    input wire clk,\n    input wire \\wire \n);",
                "    wire clk_1;  // net clk\n", "    wire \\n.1 ;\n", "    wire \\if ;\n",
                "    wire \\tri0 ;\n    wire tri0x;\n", "    assign clk_1 = clk;\n",
                "    blk clk_2 ();  // instance clk\n", "    blk_1 \\u/1  ();\n", "    vendor_ram_2p m ();\n",
                "module blk;\n", "module blk_1;\n"});
}

TEST_F(netlist, top_ports_are_joined_by_assignments_in_their_direction) {
    kalcomponent* top = root("top");
    top->addPort(N("i"), N("i"), 1, nullptr);
    top->addPort(N("o"), N("o"), 2, nullptr);
    top->addPort(N("io"), N("io"), 3, nullptr);
    top->addPortbus(N("bus"), N("bus"), 1, 0, 2, nullptr);
    top->addPortbus(N("whole"), N("whole"), 2, 1, 1, nullptr);
    nets(top, {"n", "m"});
    top->addNetbus(N("w"), N(""), N("w"), 2, 1, nullptr);
    // i and o on n make a feed-through: two top ports on one net
    wires(top, {"n=i", "n=o", "m=io", "m=bus[0]", "n=bus[1]", "w[2]=whole[2]", "w[1]=whole[1]"});
    expectText(top, false,
               {"    assign bus[1] = n;\n    assign bus[0] = m;\n    assign n = i;\n"
                "    assign io = m;\n    assign o = n;\n    assign w = whole;\n"});
}

TEST_F(netlist, a_net_in_two_net_buses_stays_one_net) {
    kalcomponent* top = root("top");
    kaldesign* rtl = design(top);
    rtl->addInstance(N("u"), leafBlock(N, "blk"));
    top->addNetbus(N("p"), N(""), N("p"), 1, 0, nullptr);
    rtl->changeNetName(N("p[1]"), N("r[1]"));
    top->addNetbus(N("r"), N(""), N("r"), 1, 0, nullptr);  // takes the net r[1], still p's bit 1
    wires(top, {"r[1]=u/a"});
    expectText(top, false, {"    assign p[1] = r[1];  // one net in two net bus slots\n", ".a(r[1])"},
               {"wire \\r[1]"});
}

TEST_F(netlist, a_net_named_like_a_bit_outside_its_bus_is_a_net_of_its_own) {
    kalcomponent* top = root("top");
    design(top)->addInstance(N("u"), leafBlock(N, "blk"));
    top->addNetbus(N("b"), N(""), N("b"), 1, 0, nullptr);
    // "a b" comes before the bus in the net map and is renamed; "b[7]" among its bit names
    nets(top, {"a b", "b[7]", "c"});
    wires(top, {"b[7]=u/a", "b[0]=u/y"});
    // the writer steps over b's run of bit names, finds one name too many and
    // walks the net map again: each net is declared once, under one name
    expectText(top, false,
               {"    wire [1:0] b;\n    wire a_b;  // net a b\n    wire \\b[7] ;\n    wire c;\n\n    blk u (",
                ".a(\\b[7] )", ".y(b[0])"},
               {"a_b_1"});
}

TEST_F(netlist, the_same_model_gives_the_same_bytes) {
    kalcomponent* a = models::hierarchy(N);
    kalcomponent* b = models::hierarchy(N);
    const std::string first = text(a);
    EXPECT_EQ(first, text(a));
    EXPECT_EQ(first, text(b));
    // modules in order: the root's first, designs before leaves
    std::ostringstream out;
    kalverilog::Result r = kalverilog::writeNetlist(a, out, kalverilog::Options{});
    std::vector<std::string> order;
    for (auto& m : r.modules)
        order.push_back(m.name + (m.leaf ? " leaf" : ""));
    EXPECT_EQ(order, (std::vector<std::string>{"soc", "cluster", "pll leaf", "core leaf", "core_1 leaf",
                                               "sram_wrapper leaf"}));
    release(a);
    release(b);
}

TEST_F(netlist, models_a_netlist_cannot_express_are_refused_by_name) {
    // Each model with the words its refusal must hold.
    const std::vector<std::pair<std::function<kalcomponent*()>, std::string>> cases = {
        {[&] {  // a port whose direction the library refused
             kalcomponent* top = root("top");
             auto* bad = component("ip", "odd");
             bad->addPort(N("strange"), N("strange"), 7, nullptr);
             design(top)->addInstance(N("u"), bad);
             return top;
         },
         "port \"strange\" of acme:ip:odd:1.0 at top/u has direction 0"},
        {[&] {  // two components of one kind with different ports
             kalcomponent* top = root("top");
             design(top)->addInstance(N("u1"), leafBlock(N, "blk"));
             auto* other = leafBlock(N, "blk");
             other->removePort(N("y"));
             design(top)->addInstance(N("u2"), other);
             return top;
         },
         "acme:ip:blk:1.0 at top/u2 has other ports than acme:ip:blk:1.0 at top/u1, which defines the "
         "module of that kind: it lacks port \"y\""},
        {[&] {  // a net bus slot without a net
             kalcomponent* top = root("top");
             emptySlot(top);
             return top;
         },
         "net bus \"b\" of the design \"rtl\" of acme:soc:top:1.0 at top has no net at bit 1"},
        {[&] {  // two kinds asking for one module name
             kalcomponent* top = root("top");
             auto* x = component("ip", "x");
             auto* y = component("ip", "y");
             x->setAttributeValue(N("moduleName"), N("shared"));
             y->setAttributeValue(N("moduleName"), N("shared"));
             design(top)->addInstance(N("ux"), x);
             design(top)->addInstance(N("uy"), y);
             return top;
         },
         "acme:ip:x:1.0 and acme:ip:y:1.0 both ask for the module name \"shared\""},
        {[&] {  // a module that contains itself
             kalcomponent* top = root("top");
             design(top)->addInstance(N("again"), root("top"));
             return top;
         },
         "the module of acme:soc:top:1.0 contains itself: acme:soc:top:1.0 -> acme:soc:top:1.0"},
        {[&] { return component("ip", "alone"); }, "acme:ip:alone:1.0 at alone has no design"},
        {[] { return static_cast<kalcomponent*>(nullptr); }, "no component"},
    };
    for (auto& [build, words] : cases) {
        kalcomponent* top = build();
        EXPECT_THAT(refused(top), HasSubstr(words));
        release(top);
    }
}

std::set<std::string> folder(const std::string& dir) {
    std::set<std::string> names;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (dirent* e = ::readdir(d))
            names.insert(e->d_name);
        ::closedir(d);
    }
    return names;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST_F(netlist, a_file_is_replaced_whole_or_left_alone) {
    char dirTemplate[] = "/tmp/kaldata-verilog-file-XXXXXX";
    ASSERT_NE(::mkdtemp(dirTemplate), nullptr);
    const std::string dir(dirTemplate), path = dir + "/top.v";
    kalcomponent* good = models::hierarchy(N);
    kalverilog::Result r = kalverilog::writeNetlistFile(good, path, kalverilog::Options{});
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(slurp(path), text(good));
    const std::set<std::string> before = folder(dir);

    kalcomponent* bad = root("top");
    emptySlot(bad);
    r = kalverilog::writeNetlistFile(bad, path, kalverilog::Options{});
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(slurp(path), text(good)) << "the old netlist must stay";
    EXPECT_EQ(folder(dir), before) << "nothing left behind";

    r = kalverilog::writeNetlistFile(good, dir + "/missing/top.v", kalverilog::Options{});
    EXPECT_FALSE(r.ok);
    EXPECT_THAT(r.error, HasSubstr(dir + "/missing/top.v"));
    EXPECT_EQ(folder(dir), before);

    ::unlink(path.c_str());
    ::rmdir(dir.c_str());
    release(good);
    release(bad);
}

TEST_F(netlist, a_failing_stream_is_an_error) {
    kalcomponent* top = root("top");
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    kalverilog::Result r = kalverilog::writeNetlist(top, out, kalverilog::Options{});
    EXPECT_FALSE(r.ok);
    EXPECT_THAT(r.error, HasSubstr("stream"));
    release(top);
}

}  // namespace
