// SPDX-License-Identifier: Apache-2.0
// Copies. The declarations give every class the compiler's copy operations;
// only the copy constructor of kalattributes copies deeply, so the classes
// that may be copied are kalattributes and those whose other members are
// plain values or links (kallpc, kalgenerator). Each copy here must be
// independent of its original and die on its own (the sanitizer build
// catches a shared allocation freed twice).
#include <type_traits>

#include "kaldata.h"
#include "support/fixtures.h"

// The public classes held by value in application code are copy constructible
// (no declaration deletes a copy), and none is trivially copyable, so none
// may be copied with memcpy.
static_assert(std::is_copy_constructible_v<kalattributes> && std::is_copy_constructible_v<kallpc> &&
              std::is_copy_constructible_v<kalgenerator>);
static_assert(!std::is_trivially_copyable_v<kalattributes> && !std::is_trivially_copyable_v<kallpc> &&
              !std::is_trivially_copyable_v<kalgenerator> && !std::is_trivially_copyable_v<kalport>);

TEST(copy, attribute_sets_copy_deeply) {
    strings S;
    kalattributes a;
    a.setAttribute(S("Name"), S("top"), S("SPIRIT"));
    {
        kalattributes b(a);
        b.setAttributeValue(S("Name"), S("other"));
        b.setAttribute(S("extra"), S("1"), S("me"));
        EXPECT_EQ(*a.getName(), "top");
        EXPECT_EQ(a.hasAttribute(S("extra")), 0);
        EXPECT_EQ(b.getVendorMap().at("Name"), "SPIRIT");
    }
    EXPECT_EQ(a.getValueMap(), (std::map<std::string, std::string>{{"Name", "top"}}));
    kalattributes empty, copyOfEmpty(empty);  // no maps yet: the copy makes none either
    EXPECT_TRUE(copyOfEmpty.getValueMap().empty());
}

TEST(copy, lpc_records_and_generators_copy_through_their_attributes) {
    strings S;
    auto* lpc = new kallpc("3.3");
    lpc->setAttributeValue(S("VCC"), S("3.3"));
    kallpc lpcCopy(*lpc);
    delete lpc;  // the copy keeps its own value and attributes
    EXPECT_EQ(lpcCopy.getValue(), "3.3");
    EXPECT_EQ(*lpcCopy.getAttributeValue(S("VCC")), "3.3");

    kalcomponent c(S("v"), S("l"), S("c"), S("1"));
    kalgenerator* g = c.createGenerator("gen");
    g->setDetail("d");
    g->setAttributeValue(S("k"), S("v"));
    kalgenerator copy(*g);
    EXPECT_TRUE(copy.getName() == "gen" && copy.getDetail() == "d" && copy.getRegistry() == g->getRegistry());
    EXPECT_EQ(c.createGenerators()->generatorAtIndex("gen"), g);  // the registry lists the original only
    delete g;
    EXPECT_EQ(*copy.getAttributeValue(S("k")), "v");
    delete c.data->generators;
}
