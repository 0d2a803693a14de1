// The reader on small documents written for the purpose, and on the example
// library, whose counts are taken by a separate walk over the documents.
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "docs.h"
#include "kaldata.h"
#include "kalipxact.h"
#include "support/checker.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {

using namespace docs;

std::string netPorts(kaldesign* d, const std::string& net) {
    kalnet* n = d->getNet(&net);
    if (!n) return "<no net " + net + ">";
    std::set<std::string> names;
    for (kalport* p : n->getPorts())
        names.insert(
            (p->getComponent() == d->owner ? std::string() : *p->getComponent()->data->instanceName + "/") +
            *p->getName());
    std::string s;
    for (auto& x : names)
        s += (s.empty() ? "" : " ") + x;
    return s;
}

class reader : public recorded {};

TEST_F(reader, widthsAndParametersFollowEachInstancesValues) {
    std::string leaf =
        component("leaf",
                  port("clk", "in") + port("d", "in", "WIDTH-1", "0") + port("q", "out", "uuid_w*2-1", "0") +
                      port("sel", "in", "$clog2(WIDTH)-1", "0"),
                  param("uuid_w", "WIDTH", "8") + param("uuid_d", "DEPTH", "WIDTH > 4 ? 2**3 : 'h10"));
    std::string top = component("top", port("top_clk", "in") + port("top_in", "in", "3", "0"), "", "top_d");
    std::string topD =
        design("top_d", instance("u1", "leaf") + instance("u2", "leaf", configured("uuid_w", "(1+1)*2")),
               adhoc("clk", internal("u1", "clk") + internal("u2", "clk") + external("top_clk")) +
                   adhoc("data", internal("u2", "d") + external("top_in")) +
                   adhoc("part", internal("u1", "d", 3, 0) + internal("u2", "q", 7, 4)));
    kalipxact::loadResult r = kalipxact::loadDocuments(
        {{"leaf.xml", leaf}, {"top.xml", top}, {"top_d.xml", topD}}, "acme:ip:top:1.0");
    ASSERT_TRUE(r.ok) << r.error.str();
    EXPECT_MODEL_OK(r.root);
    kaldesign* d = r.root->getDesign(const_cast<std::string*>(S("top_d")));
    ASSERT_NE(d, nullptr);
    kalcomponent* u1 = d->getInstance(S("u1"));
    kalcomponent* u2 = d->getInstance(S("u2"));
    ASSERT_TRUE(u1 && u2);
    EXPECT_EQ(u1->getPortbus(S("q"), false)->getMsb(), 15u);
    EXPECT_EQ(u2->getPortbus(S("q"), false)->getMsb(), 7u);
    EXPECT_EQ(u1->getPortbus(S("sel"), false)->getMsb(), 2u);  // $clog2(8) - 1
    EXPECT_EQ(u2->getPortbus(S("sel"), false)->getMsb(), 1u);  // $clog2(4) - 1
    EXPECT_EQ(*u1->getParameter(S("DEPTH"))->getValue(), "8");
    EXPECT_EQ(*u2->getParameter(S("DEPTH"))->getValue(), "16");
    EXPECT_EQ(*u2->getParameter(S("WIDTH"))->getValue(), "4");
    EXPECT_EQ(*u1->getParameter(S("WIDTH"))->getSecondField(), "uuid_w");

    EXPECT_EQ(netPorts(d, "clk"), "top_clk u1/clk u2/clk");
    // Whole vectors make a net bus with the first vector's range.
    kalnetbus* data = d->getNetbus(S("data"));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->getMsb(), 3u);
    EXPECT_EQ(netPorts(d, "data[3]"), "top_in[3] u2/d[3]");
    EXPECT_EQ(netPorts(d, "data[0]"), "top_in[0] u2/d[0]");
    // Part selects pair bits left to right: u1.d[3:0] with u2.q[7:4].
    ASSERT_NE(d->getNetbus(S("part")), nullptr);
    EXPECT_EQ(netPorts(d, "part[3]"), "u1/d[3] u2/q[7]");
    EXPECT_EQ(netPorts(d, "part[0]"), "u1/d[0] u2/q[4]");

    // The records of the load: one per instance added, one per port connected, in that order.
    std::size_t adds = 0, nets = 0;
    for (auto& l : records()) {
        adds += l.rfind("design/add", 0) == 0;
        if (l.rfind("net/add", 0) == 0) {
            ++nets;
            EXPECT_EQ(adds, 2u) << "a connection before every instance was added";
        }
    }
    EXPECT_EQ(adds, 2u);
    EXPECT_EQ(nets, 3u + 8u + 8u);
    release(r.root);
}

TEST_F(reader, interconnectionsBecomeOneNetPerLogicalPortAcrossConnections) {
    auto busIf = [](const std::string& name, const std::string& maps) {
        return "<ipxact:busInterface><ipxact:name>" + name + "</ipxact:name>" + ref("busType", "bus") +
               "<ipxact:abstractionTypes><ipxact:abstractionType>" + ref("abstractionRef", "bus.absDef") +
               "<ipxact:portMaps>" + maps +
               "</ipxact:portMaps></ipxact:abstractionType></ipxact:abstractionTypes>"
               "<ipxact:master/></ipxact:busInterface>\n";
    };
    auto map = [](const std::string& logical, const std::string& range, const std::string& phys) {
        return "<ipxact:portMap><ipxact:logicalPort><ipxact:name>" + logical + "</ipxact:name>" + range +
               "</ipxact:logicalPort><ipxact:physicalPort><ipxact:name>" + phys +
               "</ipxact:name></ipxact:physicalPort></ipxact:portMap>";
    };
    std::string range =
        "<ipxact:range><ipxact:left>3</ipxact:left><ipxact:right>0</ipxact:right></ipxact:range>";
    std::string m = component("mst", port("ck", "out") + port("dout", "out", "3", "0"), "", "",
                              busIf("m", map("CLK", "", "ck") + map("DAT", range, "dout")));
    std::string s =
        component("slv", port("c", "in") + port("din", "in", "3", "0") + port("extra", "in"), "", "",
                  busIf("s", map("CLK", "", "c") + map("DAT", "", "din") + map("ONLY", "", "extra")));
    std::string top = component("sys", "", "", "sys_d");
    auto ic = [](const std::string& name, const std::string& a, const std::string& b) {
        return "<ipxact:interconnection><ipxact:name>" + name + "</ipxact:name>" +
               "<ipxact:activeInterface componentRef=\"m0\" busRef=\"m\"/><ipxact:activeInterface "
               "componentRef=\"" +
               a + "\" busRef=\"" + b + "\"/></ipxact:interconnection>\n";
    };
    std::string d = design("sys_d", instance("m0", "mst") + instance("s0", "slv") + instance("s1", "slv"), "",
                           ic("i0", "s0", "s") + ic("i1", "s1", "s"));
    kalipxact::loadResult r = kalipxact::loadDocuments(
        {{"m.xml", m}, {"s.xml", s}, {"t.xml", top}, {"d.xml", d}}, "acme:ip:sys:1.0");
    ASSERT_TRUE(r.ok) << r.error.str();
    EXPECT_MODEL_OK(r.root);
    kaldesign* ds = r.root->getDesign(const_cast<std::string*>(S("sys_d")));
    // m0's interface is in both connections: they make one net per logical port, named after the first.
    EXPECT_EQ(netPorts(ds, "i0_CLK"), "m0/ck s0/c s1/c");
    ASSERT_NE(ds->getNetbus(S("i0_DAT")), nullptr);
    EXPECT_EQ(netPorts(ds, "i0_DAT[2]"), "m0/dout[2] s0/din[2] s1/din[2]");
    EXPECT_EQ(ds->getNet(S("i1_CLK")), nullptr);
    EXPECT_EQ(ds->getNetbus(S("i1_DAT")), nullptr);
    EXPECT_EQ(ds->getNet(S("i0_ONLY")), nullptr) << "a logical port mapped on one side joins nothing";
    EXPECT_EQ(ds->data->getNetMap()->size(), 5u);
    release(r.root);
}

// A design keeps nets and net buses in two maps, so one name can be both; a
// connection named like a bit of an earlier net bus joins that bit.
TEST_F(reader, netsAndNetBusesHaveNamesOfTheirOwn) {
    std::string leaf =
        component("leaf", port("a", "in") + port("v", "out", "3", "0") + port("w", "in", "1", "0"));
    std::string top = component("top", port("p", "in"), "", "top_d");
    std::string d =
        design("top_d", instance("u1", "leaf") + instance("u2", "leaf"),
               adhoc("b", internal("u1", "v") + internal("u2", "v")) +
                   adhoc("b[2]", internal("u1", "a") + external("p")) + adhoc("x", internal("u2", "a")) +
                   adhoc("x", internal("u1", "w") + internal("u2", "w")));
    kalipxact::loadResult r =
        kalipxact::loadDocuments({{"leaf.xml", leaf}, {"top.xml", top}, {"d.xml", d}}, "acme:ip:top:1.0");
    ASSERT_TRUE(r.ok) << r.error.str();
    EXPECT_MODEL_OK(r.root);
    kaldesign* ds = r.root->getDesign(const_cast<std::string*>(S("top_d")));
    EXPECT_EQ(netPorts(ds, "b[2]"), "p u1/a u1/v[2] u2/v[2]");
    ASSERT_NE(ds->getNetbus(S("b")), nullptr);
    EXPECT_EQ(netPorts(ds, "x"), "u2/a");
    ASSERT_NE(ds->getNetbus(S("x")), nullptr);
    EXPECT_EQ(netPorts(ds, "x[0]"), "u1/w[0] u2/w[0]");
    release(r.root);
}

TEST_F(reader, skipsWhatTheModelCannotHoldWithFileAndLine) {
    std::string c =
        head("component") + vlnv("odd") +
        "<ipxact:memoryMaps><ipxact:memoryMap><ipxact:name>mm</ipxact:name></ipxact:memoryMap>"
        "</ipxact:memoryMaps>\n<ipxact:model><ipxact:instantiations><ipxact:componentInstantiation>"
        "<ipxact:name>v</ipxact:name><ipxact:moduleName>odd_top</ipxact:moduleName>"
        "</ipxact:componentInstantiation></ipxact:instantiations><ipxact:ports>\n" +
        port("a", "in") +
        "<ipxact:port><ipxact:name>t</ipxact:name><ipxact:transactional><ipxact:initiative>provides"
        "</ipxact:initiative></ipxact:transactional></ipxact:port>\n"
        "</ipxact:ports></ipxact:model>\n<ipxact:parameters>\n"
        "<ipxact:parameter usageCount=\"3\"><ipxact:name>P</ipxact:name><ipxact:value>1</ipxact:value>"
        "</ipxact:parameter>\n</ipxact:parameters>\n"
        "<ipxact:vendorExtensions><other:thing xmlns:other=\"urn:other\"/></ipxact:vendorExtensions>\n"
        "</ipxact:component>\n";
    kalipxact::loadResult r = kalipxact::loadDocuments({{"odd.xml", c}}, "acme:ip:odd:1.0");
    ASSERT_TRUE(r.ok) << r.error.str();
    std::map<std::string, unsigned> want = {{"memoryMaps", lineOf(c, "<ipxact:memoryMaps>")},
                                            {"transactional", lineOf(c, "<ipxact:name>t<")},
                                            {"usageCount", lineOf(c, "usageCount")},
                                            {"vendor extensions", lineOf(c, "<ipxact:vendorExtensions>")}};
    for (auto& [what, line] : want) {
        bool found = false;
        for (auto& w : r.warnings)
            if (w.text.find(what) != std::string::npos) {
                found = true;
                EXPECT_EQ(w.file, "odd.xml");
                EXPECT_EQ(w.line, line) << w.str();
            }
        EXPECT_TRUE(found) << "no warning about " << what;
    }
    EXPECT_NE(r.root->getPort(S("a"), false), nullptr);
    EXPECT_EQ(r.root->getPort(S("t"), false), nullptr);
    ASSERT_NE(r.root->getAttributeValue(S("moduleName")), nullptr);
    EXPECT_EQ(*r.root->getAttributeValue(S("moduleName")), "odd_top");
    release(r.root);
}

// A design whose component is instantiated with two parameter values is
// worked out twice; the reader takes each connection out of the document once
// used, so the second time it parses the document again.
TEST_F(reader, aDesignUsedWithTwoParameterSetsIsReadTwice) {
    std::string leaf = component("leaf", port("a", "in", "W-1", "0"), param("uuid_lw", "W", "1"));
    std::string mid = component("mid", port("v", "in", "W-1", "0"), param("uuid_mw", "W", "2"), "mid_d");
    std::string midD = design("mid_d", instance("l", "leaf", configured("uuid_lw", "uuid_mw")),
                              adhoc("n", internal("l", "a") + external("v")));
    std::string top = component("top", "", "", "top_d");
    std::string topD = design(
        "top_d",
        instance("m2", "mid", configured("uuid_mw", "2")) + instance("m5", "mid", configured("uuid_mw", "5")),
        "");
    std::vector<std::pair<std::string, std::string>> set = {
        {"leaf.xml", leaf}, {"mid.xml", mid}, {"mid_d.xml", midD}, {"top.xml", top}, {"top_d.xml", topD}};
    std::filesystem::path dir = std::filesystem::path(KALDATA_WRITE_DIR) / "../reader-twice";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    for (auto& [name, text] : set)
        std::ofstream(dir / name) << text;
    kalrecorder::setNullObjects(true);
    for (bool fromFiles : {false, true}) {
        kalipxact::loadResult r = fromFiles ? kalipxact::load(dir.string(), "acme:ip:top:1.0")
                                            : kalipxact::loadDocuments(set, "acme:ip:top:1.0");
        ASSERT_TRUE(r.ok) << r.error.str();
        EXPECT_MODEL_OK(r.root);
        for (auto [inst, width] : {std::pair<const char*, unsigned>{"m2", 2}, {"m5", 5}}) {
            kalcomponent* m = r.root->getComponent(S((std::string("top/") + inst).c_str()));
            ASSERT_NE(m, nullptr);
            kaldesign* d = m->getDesign(const_cast<std::string*>(S("mid_d")));
            ASSERT_NE(d, nullptr) << inst;
            ASSERT_NE(d->getNetbus(S("n")), nullptr) << inst;
            EXPECT_EQ(d->getNetbus(S("n"))->getBits().size(), width) << inst;
            EXPECT_EQ(netPorts(d, "n[0]"), "l/a[0] v[0]") << inst;
        }
        release(r.root);
    }
}

// ---- the example library, counted by a walk that shares nothing with the reader

const std::string shared = KALDATA_SHARED_DIR;

struct walk {
    std::map<std::string, pugi::xml_document> docs;  // by "v:l:n:ver"
    std::size_t instances = 0, ports = 0;

    static std::string key(pugi::xml_node n) {
        return std::string(n.child_value("ipxact:vendor")) + ":" + n.child_value("ipxact:library") + ":" +
               n.child_value("ipxact:name") + ":" + n.child_value("ipxact:version");
    }
    static std::string refKey(pugi::xml_node n) {
        return std::string(n.attribute("vendor").value()) + ":" + n.attribute("library").value() + ":" +
               n.attribute("name").value() + ":" + n.attribute("version").value();
    }
    explicit walk(const std::string& folder) {
        for (auto& e : std::filesystem::recursive_directory_iterator(folder)) {
            if (e.path().extension() != ".xml") continue;
            pugi::xml_document d;
            if (!d.load_file(e.path().c_str())) continue;
            std::string k = key(d.document_element());
            docs[k].reset(d);
        }
    }
    void component(const std::string& k) {
        pugi::xml_node c = docs.at(k).document_element();
        pugi::xml_node model = c.child("ipxact:model");
        for (pugi::xml_node p : model.child("ipxact:ports").children("ipxact:port")) {
            std::string dir = p.child("ipxact:wire").child_value("ipxact:direction");
            ports += dir == "in" || dir == "out" || dir == "inout";
        }
        std::set<std::string> designs;
        pugi::xml_node insts = model.child("ipxact:instantiations");
        for (pugi::xml_node v : model.child("ipxact:views").children("ipxact:view")) {
            std::string di = v.child_value("ipxact:designInstantiationRef");
            std::string dci = v.child_value("ipxact:designConfigurationInstantiationRef");
            for (pugi::xml_node i : insts.children("ipxact:designInstantiation"))
                if (!di.empty() && di == i.child_value("ipxact:name"))
                    designs.insert(refKey(i.child("ipxact:designRef")));
            for (pugi::xml_node i : insts.children("ipxact:designConfigurationInstantiation"))
                if (!dci.empty() && dci == i.child_value("ipxact:name")) {
                    pugi::xml_node cfg =
                        docs.at(refKey(i.child("ipxact:designConfigurationRef"))).document_element();
                    designs.insert(refKey(cfg.child("ipxact:designRef")));
                }
        }
        for (auto& dk : designs)
            for (pugi::xml_node ci : docs.at(dk)
                                         .document_element()
                                         .child("ipxact:componentInstances")
                                         .children("ipxact:componentInstance")) {
                ++instances;
                component(refKey(ci.child("ipxact:componentRef")));
            }
    }
};

void modelCounts(kalcomponent* c, std::size_t& instances, std::size_t& ports) {
    ports += c->data->portbuses.size();
    for (auto& [name, p] : c->data->ports)
        ports += p->getBus() == nullptr;
    for (auto& [key, d] : c->data->designs)
        for (auto& [name, inst] : *d->data->getInstanceMap()) {
            ++instances;
            modelCounts(inst, instances, ports);
        }
}

TEST_F(reader, examplesMatchAnIndependentCountOfTheirDocuments) {
    std::string folder = shared + "/ipxact/examples";
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << folder << " is absent";
    kalrecorder::setNullObjects(true);
    walk w(folder);
    std::size_t tops = 0;
    for (auto& [k, doc] : w.docs) {
        pugi::xml_node root = doc.document_element();
        if (std::string(root.name()) != "ipxact:component") continue;
        pugi::xml_node model = root.child("ipxact:model");
        bool hierarchical = false;
        for (pugi::xml_node v : model.child("ipxact:views").children("ipxact:view"))
            hierarchical = hierarchical || v.child("ipxact:designInstantiationRef") ||
                           v.child("ipxact:designConfigurationInstantiationRef");
        if (!hierarchical) continue;
        ++tops;
        w.instances = w.ports = 0;
        w.component(k);
        kalipxact::loadResult r = kalipxact::load(folder, k);
        ASSERT_TRUE(r.ok) << k << ": " << r.error.str();
        EXPECT_MODEL_OK(r.root);
        std::size_t instances = 0, ports = 0;
        modelCounts(r.root, instances, ports);
        EXPECT_EQ(instances, w.instances) << k;
        EXPECT_EQ(ports, w.ports) << k;
        EXPECT_GT(instances, 0u) << k;
        release(r.root);
    }
    EXPECT_GE(tops, 10u);
}

// The top may be a design or a design configuration: a root component of the
// design's VLNV then holds that design alone.
TEST_F(reader, topDesignOrDesignConfiguration) {
    std::string folder = shared + "/ipxact/examples";
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << folder << " is absent";
    kalrecorder::setNullObjects(true);
    for (const char* top : {"tut.fi:other.subsystem:spi_example.design:1.0_bus",
                            "tut.fi:other.subsystem:spi_example.designcfg:1.0_bus"}) {
        kalipxact::loadResult r = kalipxact::load(folder, top);
        ASSERT_TRUE(r.ok) << top << ": " << r.error.str();
        EXPECT_EQ(*r.root->identity->getName(), "spi_example.design") << top;
        ASSERT_EQ(r.root->data->designs.size(), 1u);
        kaldesign* d = r.root->data->designs.begin()->second;
        EXPECT_EQ(d->data->getInstanceMap()->size(), 4u);
        EXPECT_EQ(netPorts(d, "spi_master_0_master_if_to_spi_slave_0_slave_if_SCLK"),
                  "spi_master_0/clk_out spi_slave_0/clk_in spi_slave_1/clk_in spi_slave_2/clk_in");
        EXPECT_MODEL_OK(r.root);
        release(r.root);
    }
}

TEST_F(reader, adHocDesignJoinsEveryReferenceOnce) {
    std::string folder = shared + "/ipxact/examples";
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << folder << " is absent";
    // The ad-hoc variant of the SPI example names every port several times;
    // each distinct (instance, port) is one connection of the model.
    walk w(folder);
    std::set<std::string> refs;
    pugi::xml_node d = w.docs.at("tut.fi:other.subsystem:spi_example.design:1.0_adhoc").document_element();
    for (pugi::xml_node a : d.child("ipxact:adHocConnections").children("ipxact:adHocConnection"))
        for (pugi::xml_node p : a.child("ipxact:portReferences").children("ipxact:internalPortReference"))
            refs.insert(std::string(p.attribute("componentRef").value()) + "/" +
                        p.attribute("portRef").value());
    kalrecorder::setNullObjects(true);
    kalipxact::loadResult r = kalipxact::load(folder, "tut.fi:other.subsystem:spi_example:1.0");
    ASSERT_TRUE(r.ok) << r.error.str();
    kaldesign* ds = r.root->getDesign(const_cast<std::string*>(S("spi_example.design@1.0_adhoc")));
    ASSERT_NE(ds, nullptr);
    std::set<std::string> connected;
    for (auto& [name, n] : *ds->data->getNetMap())
        for (kalport* p : n->getPorts())
            connected.insert(*p->getComponent()->data->instanceName + "/" + *p->getName());
    EXPECT_EQ(connected, refs);
    release(r.root);
}

}  // namespace
