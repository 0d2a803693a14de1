// Core records: project singleton, attribute sets, bus-bit names, messages,
// parameters, files and file sets.
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"

namespace {
using owned = std::unique_ptr<std::string>;
}

TEST(project, singleton_lifecycle) {
    kalproject::destoryInstance();  // harmless without an instance
    kalproject* p = kalproject::getInstance();
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p, kalproject::getInstance());
    ASSERT_NE(p->messageQueue, nullptr);
    EXPECT_EQ(p->projectWord1, nullptr);
    EXPECT_FALSE(p->projectFlag1);
    EXPECT_FALSE(p->projectFlag3);
    p->messageQueue->addMessage(1, "kept until destroyed");
    p->stringTable1["k"] = "v";
    kalproject::destoryInstance();
    EXPECT_EQ(kalproject::m_inst, nullptr);
    kalproject::destoryInstance();
    kalproject* fresh = kalproject::getInstance();
    EXPECT_EQ(fresh->messageQueue->messageCount(1), 0u);
    EXPECT_TRUE(fresh->stringTable1.empty());
    kalproject::destoryInstance();
}

TEST(attributes, vendor_map_is_loose) {
    strings S;
    kalattributes a;
    a.setAttribute(S("X"), S("v"), S("SPIRIT"));
    ASSERT_NE(a.getAttributeVendor(S("X")), nullptr);
    EXPECT_EQ(*a.getAttributeVendor(S("X")), "v");  // the value, by design

    kalattributes b;
    b.setAttribute(S("X"), S("1"), S("A"));
    b.removeAttribute(S("X"));
    EXPECT_FALSE(b.hasAttribute(S("X")));
    EXPECT_EQ(b.getVendorMap().at("X"), "A");
    kalattributes copy(b);
    EXPECT_EQ(copy.getVendorMap().at("X"), "A");
    b.setAttribute(S("X"), S("2"), S("B"));  // stale vendor survives the insert
    EXPECT_EQ(*b.getAttributeValue(S("X")), "2");
    EXPECT_EQ(b.getVendorMap().at("X"), "A");

    b.setAttributeValue(S("Y"), S("y"));
    EXPECT_EQ(b.getVendorMap().count("Y"), 0u);
    b.setAttribute(S("X"), S("3"), S("C"));  // existing value: both entries replaced
    EXPECT_EQ(b.getVendorMap().at("X"), "C");
}

TEST(attributes, null_arguments_and_merge) {
    strings S;
    kalattributes a;
    a.setAttribute(S("N"), S("v"), nullptr);
    a.setAttribute(nullptr, S("v"), S("V"));
    a.setAttributeValue(S("N"), nullptr);
    EXPECT_TRUE(a.getValueMap().empty());
    EXPECT_FALSE(a.hasAttribute(nullptr));
    EXPECT_EQ(a.getAttributeValue(nullptr), nullptr);
    EXPECT_EQ(a.getName(), nullptr);
    a.removeAttribute(nullptr);

    a.setAttribute(S("Name"), S("mine"), S("SPIRIT"));
    kalattributes other;
    other.setAttribute(S("Name"), S("theirs"), S("OTHER"));
    other.setAttribute(S("Library"), S("lib"), S("SPIRIT"));
    a.copyAttributesFrom(other);
    EXPECT_EQ(*a.getName(), "mine");
    EXPECT_EQ(a.getVendorMap().at("Name"), "SPIRIT");
    EXPECT_EQ(*a.getLibrary(), "lib");
    a.removeAllAttributes();
    EXPECT_TRUE(a.getValueMap().empty());
    EXPECT_TRUE(a.getVendorMap().empty());
}

TEST(utilities, bus_bits_split_and_join) {
    strings S;
    EXPECT_EQ(*owned(kalutilities::constructBusBit(S("data"), 7)), "data[7]");
    EXPECT_EQ(*owned(kalutilities::constructBusBit(S("b"), 0)), "b[0]");
    EXPECT_EQ(*owned(kalutilities::constructBusBit(S("b"), 4294967295u)), "b[4294967295]");

    EXPECT_EQ(kalutilities::deconstructString(nullptr, S("/")), nullptr);
    EXPECT_EQ(kalutilities::deconstructString(S("a"), nullptr), nullptr);
    const std::vector<std::pair<const char*, std::vector<std::string>>> cases = {
        {"a/b", {"a", "b"}}, {"/a/", {"", "a", ""}}, {"", {""}}, {"x//y", {"x", "", "y"}}, {"abc", {"abc"}}};
    for (const auto& c : cases) {
        std::unique_ptr<std::vector<std::string>> parts(kalutilities::deconstructString(S(c.first), S("/")));
        ASSERT_NE(parts, nullptr);
        EXPECT_EQ(*parts, c.second) << c.first;
        EXPECT_EQ(*owned(kalutilities::reconstructString(parts.get(), S("/"))), c.first);
    }
    std::unique_ptr<std::vector<std::string>> multi(kalutilities::deconstructString(S("a::b::c"), S("::")));
    EXPECT_EQ(*multi, (std::vector<std::string>{"a", "b", "c"}));
    std::vector<std::string> none;
    EXPECT_EQ(*owned(kalutilities::reconstructString(&none, S("/"))), "");
}

TEST(messages, counting_and_clearing) {
    kalmessages q;
    q.addMessage(1, "one");
    q.addMessage(2, "two");
    q.addMessage(2, "three");
    q.addMessage(2, nullptr);
    EXPECT_EQ(q.messageCount(2), 2u);
    EXPECT_EQ(q.getMessages().size(), 3u);
    EXPECT_EQ(*q.getMessages()[2]->getText(), "three");
    q.clearMessageQueue();
    EXPECT_EQ(q.messageCount(1), 0u);
    EXPECT_EQ(q.messageCount(2), 0u);

    kalmessage untyped(5, nullptr);
    EXPECT_EQ(untyped.getType(), 0u);
    EXPECT_EQ(untyped.getText(), nullptr);
}

TEST(records, parameters_files_and_filesets) {
    strings S;
    kalparameter p(S("W"), S("int"), S("8"), S("user"));
    EXPECT_EQ(*p.getName(), "W");
    EXPECT_EQ(*p.getSecondField(), "int");
    EXPECT_EQ(*p.getValue(), "8");
    EXPECT_EQ(*p.getFourthField(), "user");
    p.setValue(nullptr);
    EXPECT_EQ(*p.getValue(), "8");
    p.setValue(S("16"));
    EXPECT_EQ(*p.getValue(), "16");
    kalparameter empty(S("W"), nullptr, S("8"), S("user"));
    EXPECT_EQ(empty.getName(), nullptr);
    EXPECT_EQ(empty.getValue(), nullptr);

    kalfile a(S("f.v"), S("verilog"), S("x"));
    kalfile b(S("f.v"), S("verilog"), nullptr);
    kalfile c(S("f.v"), S("vhdl"), S("x"));
    EXPECT_TRUE(a == b);
    EXPECT_EQ(*b.getThirdField(), "");
    EXPECT_TRUE(a != c);

    kalfileset set(S("rtl"), S("src"), nullptr);
    set.addFile(S("ignored"), new kalfile(S("a.v"), S("verilog"), nullptr));
    set.addFile(S("ignored"), new kalfile(S("a.v"), S("verilog"), nullptr));  // no duplicate check
    set.addFile(S("k"), nullptr);
    ASSERT_EQ(set.getFiles().size(), 2u);
    EXPECT_EQ(*set.getThirdField(), "");

    kalfileset unnamed(nullptr, S("src"), nullptr);
    kalfile* orphan = new kalfile(S("b.v"), S("verilog"), nullptr);
    unnamed.addFile(nullptr, orphan);  // no vector: not taken over
    EXPECT_TRUE(unnamed.getFiles().empty());
    delete orphan;

    kallpc lpc("LOCATE COMP \"x\"");
    EXPECT_EQ(lpc.getValue(), "LOCATE COMP \"x\"");
}
