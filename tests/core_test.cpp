// SPDX-License-Identifier: Apache-2.0
// Core records: project singleton, attribute sets, name utilities, messages,
// parameters and files.
#include <memory>

#include "kaldata.h"
#include "support/fixtures.h"

TEST(project, singleton_lifecycle) {
    kalproject::destoryInstance();  // harmless without an instance
    kalproject* p = kalproject::getInstance();
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p, kalproject::getInstance());
    p->messageQueue->addMessage(1, "kept until destroyed");
    kalproject::destoryInstance();
    EXPECT_EQ(kalproject::m_inst, nullptr);
    kalproject* fresh = kalproject::getInstance();
    EXPECT_EQ(fresh->messageQueue->messageCount(1), 0u);
    kalproject::destoryInstance();
}

TEST(attributes, vendor_map_is_loose_and_copies_never_overwrite) {
    strings S;
    kalattributes a;
    a.setAttribute(S("X"), S("1"), S("A"));
    ASSERT_NE(a.getAttributeVendor(S("X")), nullptr);
    EXPECT_EQ(*a.getAttributeVendor(S("X")), "1");  // the value, by design
    a.removeAttribute(S("X"));
    EXPECT_EQ(a.getVendorMap().at("X"), "A");
    a.setAttribute(S("X"), S("2"), S("B"));  // a stale vendor survives the insert
    EXPECT_EQ(a.getVendorMap().at("X"), "A");
    a.setAttribute(S("X"), S("3"), S("C"));  // over a present value both entries are replaced
    EXPECT_EQ(a.getVendorMap().at("X"), "C");

    kalattributes other;
    other.setAttribute(S("X"), S("theirs"), S("OTHER"));
    other.setAttribute(S("Library"), S("lib"), S("V"));
    a.copyAttributesFrom(other);
    EXPECT_EQ(*a.getAttributeValue(S("X")), "3");
    EXPECT_EQ(a.getVendorMap().at("X"), "C");
    EXPECT_EQ(*a.getLibrary(), "lib");

    // A name with a stale vendor only: absent from the value map, and a merge
    // fills its value but not its vendor.
    a.setAttribute(S("Y"), S("y"), S("OLD"));
    a.removeAttribute(S("Y"));
    EXPECT_EQ(a.getValueMap().count("Y"), 0u);
    EXPECT_EQ(a.hasAttribute(S("Y")), 0);
    other.setAttribute(S("Y"), S("theirs"), S("NEW"));
    a.copyAttributesFrom(other);
    EXPECT_EQ(*a.getAttributeValue(S("Y")), "theirs");
    EXPECT_EQ(a.getVendorMap().at("Y"), "OLD");
    // A value handed back in is read before it is replaced.
    a.setAttribute(S("Z"), a.getAttributeValue(S("Y")), a.getAttributeValue(S("X")));
    a.setAttribute(S("Y"), a.getAttributeValue(S("Y")), a.getAttributeValue(S("Z")));
    EXPECT_EQ(*a.getAttributeValue(S("Y")), "theirs");
    EXPECT_EQ(a.getVendorMap().at("Y"), "theirs");
    EXPECT_EQ(a.getVendorMap().at("Z"), "3");
}

TEST(utilities, names_split_and_join_with_empty_pieces) {
    using owned = std::unique_ptr<std::string>;
    using pieces = std::vector<std::string>;
    strings S;
    EXPECT_EQ(kalutilities::deconstructString(nullptr, S("/")), nullptr);
    const std::vector<std::pair<const char*, pieces>> cases = {
        {"a/b", {"a", "b"}}, {"/a/", {"", "a", ""}}, {"", {""}}, {"x//y", {"x", "", "y"}}};
    for (const auto& c : cases) {
        std::unique_ptr<pieces> parts(kalutilities::deconstructString(S(c.first), S("/")));
        ASSERT_NE(parts, nullptr);
        EXPECT_EQ(*parts, c.second) << c.first;
        EXPECT_EQ(*owned(kalutilities::reconstructString(parts.get(), S("/"))), c.first);
    }
    std::unique_ptr<pieces> multi(kalutilities::deconstructString(S("a::b::c"), S("::")));
    EXPECT_EQ(*multi, (pieces{"a", "b", "c"}));
}

TEST(messages, counting_clearing_and_null_text) {
    kalmessages q;
    q.addMessage(1, "one");
    q.addMessage(2, "two");
    q.addMessage(2, nullptr);  // not queued
    EXPECT_EQ(q.messageCount(2), 1u);
    EXPECT_EQ(q.getMessages().size(), 2u);
    q.clearMessageQueue();
    EXPECT_EQ(q.messageCount(1), 0u);
    kalmessage untyped(5, nullptr);
    EXPECT_EQ(untyped.getType(), 0u);
    EXPECT_EQ(untyped.getText(), nullptr);
}

TEST(records, parameter_without_a_field_and_file_equality) {
    strings S;
    kalparameter unnamed(S("W"), nullptr, S("8"), S("user"));
    EXPECT_EQ(unnamed.getName(), nullptr);
    EXPECT_EQ(unnamed.getValue(), nullptr);

    kalfile a(S("f.v"), S("verilog"), S("x"));
    kalfile b(S("f.v"), S("verilog"), nullptr);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a != kalfile(S("f.v"), S("vhdl"), S("x")));
    EXPECT_EQ(*b.getThirdField(), "");
}
