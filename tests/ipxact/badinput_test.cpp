// Bad input: every kind of failure has its own message naming file and line,
// and a failed load sends no record and hands back no model.
#include <gtest/gtest.h>

#include "docs.h"
#include "kaldata.h"
#include "kalipxact.h"
#include "support/fixtures.h"
#include "support/release.h"

namespace {

using namespace docs;
using docset = std::vector<std::pair<std::string, std::string>>;

std::string leaf() {
    return component("leaf", port("a", "in") + port("v", "out", "7", "0") + port("w", "in", "W*2-1", "0"),
                     param("uuid_w", "W", "4"));
}

std::string top(const std::string& designName = "top_d") {
    return component("top", port("p", "in"), "", designName);
}

class badInput : public recorded {
protected:
    // Loads, expects failure in `file` at the line of `marker`, with `words` in the message.
    void fails(const docset& set, const std::string& file, const std::string& marker,
               const std::string& words, const char* topVlnv = "acme:ip:top:1.0") {
        kalipxact::loadResult r = kalipxact::loadDocuments(set, topVlnv);
        ASSERT_FALSE(r.ok);
        EXPECT_EQ(r.root, nullptr);
        EXPECT_EQ(r.error.file, file) << r.error.str();
        for (auto& [name, text] : set)
            if (name == file && !marker.empty()) {
                EXPECT_EQ(r.error.line, lineOf(text, marker)) << r.error.str();
            }
        EXPECT_NE(r.error.text.find(words), std::string::npos) << r.error.str();
        EXPECT_EQ(kalrecorder::createCalls(), 0u) << "a failed load sent records";
        if (r.root) release(r.root);
    }
};

TEST_F(badInput, malformedXml) {
    std::string broken = component("leaf", port("a", "in"));
    broken.replace(broken.find("</ipxact:ports>"), 15, "</ipxact:port>");
    fails({{"top.xml", top()}, {"leaf.xml", broken}}, "leaf.xml", "</ipxact:port>\n</ipxact:model>",
          "malformed XML");
}

TEST_F(badInput, missingReferencedDocument) {
    std::string d = design("top_d", instance("u1", "leaf") + instance("u2", "nothere"), "");
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", d}}, "d.xml", "name=\"nothere\"",
          "missing document: no component acme:ip:nothere:1.0");
    fails({{"top.xml", top("gone_d")}, {"leaf.xml", leaf()}}, "top.xml", "name=\"gone_d\"",
          "missing document: no design acme:ip:gone_d:1.0");
}

TEST_F(badInput, duplicateVlnv) {
    std::string d = design("top_d", instance("u1", "leaf"), "");
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"copy/leaf.xml", leaf()}, {"d.xml", d}},
          "copy/leaf.xml", "<ipxact:component",
          "duplicate VLNV acme:ip:leaf:1.0, also defined by leaf.xml:2");
}

TEST_F(badInput, referenceToAPortTheComponentLacks) {
    std::string d =
        design("top_d", instance("u1", "leaf"), adhoc("n", internal("u1", "a") + internal("u1", "nope")));
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", d}}, "d.xml", "portRef=\"nope\"",
          "reference to port nope, which component acme:ip:leaf:1.0 of instance u1 lacks");
    std::string e = design("top_d", instance("u1", "leaf"), adhoc("n", internal("u1", "a") + external("zz")));
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", e}}, "d.xml", "portRef=\"zz\"",
          "reference to port zz, which component acme:ip:top:1.0 (the design's owner) lacks");
    std::string f = design("top_d", instance("u1", "leaf"), adhoc("n", internal("u9", "a")));
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", f}}, "d.xml", "componentRef=\"u9\"",
          "reference to instance u9");
}

TEST_F(badInput, partSelectOutsideTheVector) {
    std::string d = design("top_d", instance("u1", "leaf") + instance("u2", "leaf"),
                           adhoc("n", internal("u1", "v", 3, 0) + internal("u2", "v", 9, 6)));
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", d}}, "d.xml", "<ipxact:left>9<",
          "part select [9:6] lies outside port v [7:0]");
    // The vector's width comes from the instance's own parameter value.
    std::string e = design("top_d",
                           instance("u1", "leaf",
                                    "<ipxact:configurableElementValue referenceId=\"uuid_w\">2"
                                    "</ipxact:configurableElementValue>"),
                           adhoc("n", internal("u1", "w", 5, 5) + external("p")));
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", e}}, "d.xml", "<ipxact:left>5<",
          "part select [5:5] lies outside port w [3:0]");
}

TEST_F(badInput, loopInTheHierarchy) {
    std::string mid = component("mid", port("a", "in"), "", "mid_d");
    std::string midD = design("mid_d", instance("again", "top"), "");
    std::string d = design("top_d", instance("m", "mid"), "");
    fails({{"top.xml", top()}, {"mid.xml", mid}, {"mid_d.xml", midD}, {"d.xml", d}}, "mid_d.xml",
          "name=\"top\"", "loop in the hierarchy: acme:ip:top:1.0 -> acme:ip:mid:1.0 -> acme:ip:top:1.0");
}

TEST_F(badInput, expressionThatCannotBeEvaluated) {
    std::string bad = component("leaf", port("w", "in", "W+*2", "0"), param("uuid_w", "W", "4"));
    std::string d = design("top_d", instance("u1", "leaf"), "");
    fails({{"top.xml", top()}, {"leaf.xml", bad}, {"d.xml", d}}, "leaf.xml", "W+*2",
          "cannot evaluate \"W+*2\"");
    std::string unknown = component("leaf", port("w", "in", "uuid_gone-1", "0"));
    fails({{"top.xml", top()}, {"leaf.xml", unknown}, {"d.xml", d}}, "leaf.xml", "uuid_gone",
          "unknown parameter uuid_gone");
    std::string self =
        component("leaf", port("w", "in", "A", "0"), param("a", "A", "B+1") + param("b", "B", "A"));
    fails({{"top.xml", top()}, {"leaf.xml", self}, {"d.xml", d}}, "leaf.xml", "<ipxact:value>B+1",
          "refers to itself");
}

TEST_F(badInput, topThatIsNoVlnvOrMissing) {
    kalipxact::loadResult r = kalipxact::loadDocuments({{"top.xml", top()}}, "acme:ip:top");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.text.find("is not a VLNV"), std::string::npos);
    r = kalipxact::loadDocuments({{"top.xml", top()}}, "acme:ip:other:1.0");
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.text.find("no document has the VLNV acme:ip:other:1.0"), std::string::npos);
    r = kalipxact::load("/nonexistent/folder", "acme:ip:top:1.0");
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(kalrecorder::createCalls(), 0u);
}

// This library's own extensions are checked like the rest of a document.
TEST_F(badInput, extensionsThatDoNotFitTheDesign) {
    auto withExtensions = [](const std::string& adhocs, const std::string& ext) {
        std::string d = design("top_d", instance("u1", "leaf") + instance("u2", "leaf"), adhocs);
        d.insert(d.rfind("</ipxact:design>"),
                 "<ipxact:vendorExtensions xmlns:kd=\"urn:kaldata:ipxact-extensions:1\">\n" + ext +
                     "</ipxact:vendorExtensions>\n");
        return d;
    };
    std::string d =
        withExtensions(adhoc("n", internal("u1", "a") + internal("u2", "a")) + adhoc("m", external("p")),
                       "<kd:export instance=\"u1\" port=\"a\" top=\"p\"/>\n");
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", d}}, "d.xml", "<kd:export",
          "export of a to p: the two ports are not on one net");
    std::string e =
        withExtensions("",
                       "<kd:dualPort name=\"dp\"><kd:member instance=\"u1\" port=\"a\"/></kd:dualPort>\n"
                       "<kd:dualPortBus name=\"b\" msb=\"1\" lsb=\"0\"><kd:slot dualPort=\"dp\"/>"
                       "</kd:dualPortBus>\n");
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", e}}, "d.xml", "<kd:dualPortBus",
          "dual port bus b has 1 slots for a range of 2 bits");
    std::string f = withExtensions(
        "", "<kd:dualPort name=\"dp\"><kd:member instance=\"u1\" port=\"v[9]\"/></kd:dualPort>\n");
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", f}}, "d.xml", "<kd:member",
          "dual port dp lists port v[9], which acme:ip:leaf:1.0 lacks");
}

// The failure is found after much was resolved: still nothing is made.
TEST_F(badInput, lateFailureLeavesNoModelAndNoRecords) {
    std::string d = design("top_d", instance("u1", "leaf") + instance("u2", "leaf") + instance("u3", "leaf"),
                           adhoc("ok", internal("u1", "a") + internal("u2", "a")) +
                               adhoc("bad", internal("u3", "v") + internal("u1", "a")));
    fails({{"top.xml", top()}, {"leaf.xml", leaf()}, {"d.xml", d}}, "d.xml", "<ipxact:name>bad",
          "joins references of different widths (8 and 1 bits)");
}

}  // namespace
