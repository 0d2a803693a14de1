// SPDX-License-Identifier: Apache-2.0
// The internal event adapter against the recorder: key order, fixed source and
// fourth string, and the silent drop when the service gives no object.
#include "events/events.h"
#include "support/fixtures.h"

using adapter = recorded;

TEST_F(adapter, sends_keys_in_order_with_fixed_source) {
    kalevents::record r("net", "add");
    ASSERT_TRUE(static_cast<bool>(r));
    r.set("net", "top::rtl/n1").set("topport", "top/a");
    r.send();
    r.send();  // a second send must not reach the service again
    auto sent = kalrecorder::sent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].source, "KAL");
    EXPECT_EQ(sent[0].fourth, "");
    EXPECT_EQ(kalrecorder::format(sent[0]), "net/add net=top::rtl/n1 topport=top/a");
}

TEST_F(adapter, null_object_drops_record_silently) {
    kalrecorder::setNullObjects(true);
    {
        kalevents::record r("port", "rem");
        EXPECT_FALSE(static_cast<bool>(r));
        r.set("topport", "top/a");
        r.send();
    }
    EXPECT_EQ(kalrecorder::createCalls(), 1u);
    EXPECT_TRUE(kalrecorder::sent().empty());
    EXPECT_TRUE(kalrecorder::created().empty());
}

TEST_F(adapter, unsent_record_is_visible_as_created_only) {
    { kalevents::record r("design", "add"); }
    EXPECT_TRUE(kalrecorder::sent().empty());
    ASSERT_EQ(kalrecorder::created().size(), 1u);
    EXPECT_EQ(kalrecorder::format(kalrecorder::created()[0]), "design/add (unsent)");
}
