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

// The top, a leaf (the good one unless given) and the top's design as d.xml.
docset withDesign(const std::string& d, const std::string& leafText = leaf()) {
    return {{"top.xml", top()}, {"leaf.xml", leafText}, {"d.xml", d}};
}

// The top's design: one leaf u1 (with the given parameter values), or two, u1 and u2.
std::string oneLeaf(const std::string& adhocs, const std::string& values = "") {
    return design("top_d", instance("u1", "leaf", values), adhocs);
}

std::string twoLeaves(const std::string& adhocs) {
    return design("top_d", instance("u1", "leaf") + instance("u2", "leaf"), adhocs);
}

// This library's own extensions are checked like the rest of a document.
std::string withExtensions(const std::string& adhocs, const std::string& ext) {
    std::string d = twoLeaves(adhocs);
    d.insert(d.rfind("</ipxact:design>"),
             "<ipxact:vendorExtensions xmlns:kd=\"urn:kaldata:ipxact-extensions:1\">\n" + ext +
                 "</ipxact:vendorExtensions>\n");
    return d;
}

// A load that must fail in `file` at the line of `marker`, with `words` in the message.
struct failure {
    docset set;
    std::string file, marker, words;
};

class badInput : public recorded {};

TEST_F(badInput, eachFailureNamesItsFileLineAndCause) {
    std::string broken = component("leaf", port("a", "in"));
    broken.replace(broken.find("</ipxact:ports>"), 15, "</ipxact:port>");
    const std::vector<failure> failures = {
        {{{"top.xml", top()}, {"leaf.xml", broken}},
         "leaf.xml",
         "</ipxact:port>\n</ipxact:model>",
         "malformed XML"},
        {withDesign(design("top_d", instance("u1", "leaf") + instance("u2", "nothere"), "")), "d.xml",
         "name=\"nothere\"", "missing document: no component acme:ip:nothere:1.0"},
        {{{"top.xml", top("gone_d")}, {"leaf.xml", leaf()}},
         "top.xml",
         "name=\"gone_d\"",
         "missing document: no design acme:ip:gone_d:1.0"},
        {{{"top.xml", top()}, {"leaf.xml", leaf()}, {"copy/leaf.xml", leaf()}, {"d.xml", oneLeaf("")}},
         "copy/leaf.xml",
         "<ipxact:component",
         "duplicate VLNV acme:ip:leaf:1.0, also defined by leaf.xml:2"},
        {withDesign(oneLeaf(adhoc("n", internal("u1", "a") + internal("u1", "nope")))), "d.xml",
         "portRef=\"nope\"", "reference to port nope, which component acme:ip:leaf:1.0 of instance u1 lacks"},
        {withDesign(oneLeaf(adhoc("n", internal("u1", "a") + external("zz")))), "d.xml", "portRef=\"zz\"",
         "reference to port zz, which component acme:ip:top:1.0 (the design's owner) lacks"},
        {withDesign(oneLeaf(adhoc("n", internal("u9", "a")))), "d.xml", "componentRef=\"u9\"",
         "reference to instance u9"},
        {withDesign(twoLeaves(adhoc("n", internal("u1", "v", 3, 0) + internal("u2", "v", 9, 6)))), "d.xml",
         "<ipxact:left>9<", "part select [9:6] lies outside port v [7:0]"},
        // The vector's width comes from the instance's own parameter value.
        {withDesign(
             oneLeaf(adhoc("n", internal("u1", "w", 5, 5) + external("p")), configured("uuid_w", "2"))),
         "d.xml", "<ipxact:left>5<", "part select [5:5] lies outside port w [3:0]"},
        {{{"top.xml", top()},
          {"mid.xml", component("mid", port("a", "in"), "", "mid_d")},
          {"mid_d.xml", design("mid_d", instance("again", "top"), "")},
          {"d.xml", design("top_d", instance("m", "mid"), "")}},
         "mid_d.xml",
         "name=\"top\"",
         "loop in the hierarchy: acme:ip:top:1.0 -> acme:ip:mid:1.0 -> acme:ip:top:1.0"},
        {withDesign(oneLeaf(""), component("leaf", port("w", "in", "W+*2", "0"), param("uuid_w", "W", "4"))),
         "leaf.xml", "W+*2", "cannot evaluate \"W+*2\""},
        {withDesign(oneLeaf(""), component("leaf", port("w", "in", "uuid_gone-1", "0"))), "leaf.xml",
         "uuid_gone", "unknown parameter uuid_gone"},
        {withDesign(oneLeaf(""), component("leaf", port("w", "in", "A", "0"),
                                           param("a", "A", "B+1") + param("b", "B", "A"))),
         "leaf.xml", "<ipxact:value>B+1", "refers to itself"},
        {withDesign(
             withExtensions(adhoc("n", internal("u1", "a") + internal("u2", "a")) + adhoc("m", external("p")),
                            "<kd:export instance=\"u1\" port=\"a\" top=\"p\"/>\n")),
         "d.xml", "<kd:export", "export of a to p: the two ports are not on one net"},
        {withDesign(
             withExtensions("",
                            "<kd:dualPort name=\"dp\"><kd:member instance=\"u1\" port=\"a\"/></kd:dualPort>\n"
                            "<kd:dualPortBus name=\"b\" msb=\"1\" lsb=\"0\"><kd:slot dualPort=\"dp\"/>"
                            "</kd:dualPortBus>\n")),
         "d.xml", "<kd:dualPortBus", "dual port bus b has 1 slots for a range of 2 bits"},
        {withDesign(withExtensions(
             "", "<kd:dualPort name=\"dp\"><kd:member instance=\"u1\" port=\"v[9]\"/></kd:dualPort>\n")),
         "d.xml", "<kd:member", "dual port dp lists port v[9], which acme:ip:leaf:1.0 lacks"},
        // Found after much was resolved: still nothing is made.
        {withDesign(design("top_d", instance("u1", "leaf") + instance("u2", "leaf") + instance("u3", "leaf"),
                           adhoc("ok", internal("u1", "a") + internal("u2", "a")) +
                               adhoc("bad", internal("u3", "v") + internal("u1", "a")))),
         "d.xml", "<ipxact:name>bad", "joins references of different widths (8 and 1 bits)"},
    };
    for (const failure& f : failures) {
        SCOPED_TRACE(f.words);
        kalrecorder::clear();
        kalipxact::loadResult r = kalipxact::loadDocuments(f.set, "acme:ip:top:1.0");
        EXPECT_FALSE(r.ok);
        EXPECT_EQ(r.root, nullptr);
        EXPECT_EQ(r.error.file, f.file) << r.error.str();
        for (auto& [name, text] : f.set)
            if (name == f.file) {
                EXPECT_EQ(r.error.line, lineOf(text, f.marker)) << r.error.str();
            }
        EXPECT_NE(r.error.text.find(f.words), std::string::npos) << r.error.str();
        EXPECT_EQ(kalrecorder::createCalls(), 0u) << "a failed load sent records";
        if (r.root) release(r.root);
    }
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

}  // namespace
