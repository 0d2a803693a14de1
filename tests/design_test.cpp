// SPDX-License-Identifier: Apache-2.0
// Design core: instances, virtual elements, net buses, equality, relative
// names, source ports, and a teardown that leaves nothing behind.
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "kaldata.h"
#include "support/model.h"

class design : public modeltest {
protected:
    // The design and instance calls take names by non-const pointer.
    std::string* K(const char* s) { return const_cast<std::string*>(S(s)); }
    // Instance `name` in a new design `in` of `owner`.
    kalcomponent* nest(kalcomponent* owner, const char* in, const char* name) {
        owner->createDesign(S("v"), S("l"), S(in), S("1.0"));
        auto* c = new kalcomponent(S("v"), S("l"), S("blk"), S("1.0"));
        EXPECT_TRUE(owner->getDesign(K(in))->addInstance(K(name), c));
        return c;
    }
};

TEST_F(design, instances_their_virtual_elements_and_handing_them_back) {
    top->setName(S("TopName"));  // records use the instance name of the owner
    kalcomponent* u1 = inst("u1");
    kalcomponent* u0 = inst("u0");
    EXPECT_EQ(*d->data->getInstanceList(), (std::list<kalcomponent*>{u1, u0}));
    EXPECT_EQ(records(), (std::vector<std::string>{"design/add instance=top::rtl/u1",
                                                   "design/add instance=top::rtl/u0"}));
    kalcomponent other(S("v"), S("l"), S("other"), S("1.0"));
    EXPECT_FALSE(d->addInstance(K("u1"), &other));
    EXPECT_EQ(*other.data->instanceName, "other");
    EXPECT_EQ(other.parentDesign, nullptr);
    releaseLeftovers(&other);
    kalrecorder::setNullObjects(true);  // a dropped record still adds the instance
    kalcomponent* u2 = inst("u2");
    kalrecorder::setNullObjects(false);
    EXPECT_MODEL_OK(top);  // instance names, parent links, list and map agree

    // Marked elements of the instances, by instance name and then element name.
    using entry = std::tuple<kalcomponent*, const char*, const char*>;  // no value: not marked
    std::vector<kalelement*> made;
    for (auto [c, name, value] : {entry{u1, "z", "3.3"}, entry{u1, "a", ""}, entry{u1, "m", nullptr},
                                  entry{u0, "q", "1.8"}, entry{top, "own", "1"}}) {
        made.push_back(c->getElements()->addElement(S("T"), S(name), false));
        if (value) made.back()->setAttribute(S("UVCCIO"), S(value), S("SPIRIT"));
    }
    d->getVirtualElements();  // a second call rebuilds the list rather than adding to it
    EXPECT_EQ(*d->getVirtualElements(), (std::list<kalelement*>{made[3], made[1], made[0]}));

    d->removeAllInstances();  // hands them back, silently
    EXPECT_TRUE(d->data->getInstanceList()->empty() && d->data->getInstanceMap()->empty());
    EXPECT_EQ(records().size(), 2u);
    for (kalcomponent* c : {u0, u1, u2})
        release(c);
}

TEST_F(design, net_buses_names_sources_equality_and_a_silent_teardown) {
    ASSERT_TRUE(d->addNet(S("r[1]"), S("x"), nullptr, nullptr));
    kalnet* existing = d->getNet(S("r[1]"));
    ASSERT_TRUE(d->addNetbus(S("a"), S(""), S("a"), 0, 2, nullptr));
    ASSERT_TRUE(d->addNetbus(S("r"), S("t"), S("s"), 2, 0, nullptr));
    EXPECT_FALSE(d->addNetbus(S("a"), nullptr, S("a"), 5, 4, nullptr));
    EXPECT_EQ(d->data->getNetMap()->size(), 6u);
    using nets = std::vector<kalnet*>;  // slot 0 holds the msb bit
    EXPECT_EQ(d->getNetbus(S("a"))->getBits(),
              (nets{d->getNet(S("a[0]")), d->getNet(S("a[1]")), d->getNet(S("a[2]"))}));
    EXPECT_EQ(d->getNetbus(S("r"))->getBits(), (nets{d->getNet(S("r[2]")), existing, d->getNet(S("r[0]"))}));
    EXPECT_EQ(*existing->getSecondName(), "x");  // reused as it was

    // Designs compare by identity and owner, not by contents.
    kaldesign* same = nest(new kalcomponent(S("v"), S("l"), S("top"), S("1.0")), "rtl", "u")->parentDesign;
    EXPECT_TRUE(*d == *same);
    EXPECT_TRUE(*d != *nest(top, "syn", "u")->parentDesign);
    same->owner->setVersion(S("2.0"));
    EXPECT_TRUE(*d != *same);
    release(same->owner);

    top->setName(S("TopN"));  // a root is named by its "Name"
    kalcomponent* u2 = nest(inst("u1"), "impl", "u2");
    kaldesign* impl = u2->parentDesign;
    u2->addPort(S("qo"), S("qo"), 2, nullptr);
    kalport *ti = pin("", "ti", 1), *to = pin("", "to", 2), *tb = pin("", "tb", 3);
    kalport *p = pin("u1", "p", 2), *pi = pin("u1", "pi", 1), *qo = u2->getPort(S("qo"), false);
    // Seen from inside, a top input drives, and so does an output one level down.
    using row = std::tuple<kaldesign*, kalport*, const char*, bool>;
    for (auto [in, port, name, drives] :
         {row{d, p, "u1/p", true}, row{d, qo, "u1/u2/qo", false}, row{d, ti, "TopN/ti", true},
          row{d, to, "TopN/to", false}, row{d, tb, "TopN/tb", true}, row{impl, qo, "u2/qo", true},
          row{impl, p, "TopN/u1/p", false}, row{impl, pi, "TopN/u1/pi", true}}) {
        EXPECT_EQ(in->getRelativeHierarchyName(port), name);
        EXPECT_EQ(in->isSourcePort(port), drives) << name;
    }
    inst("u1")->addPortbus(S("ob"), S("ob"), 1, 0, 2, nullptr);
    EXPECT_TRUE(d->isSourcePort(inst("u1")->getPortbus(S("ob"), false)));
    EXPECT_FALSE(impl->isSourcePort(inst("u1")->getPortbus(S("ob"), false)));

    // Nets go before instances and top ports, so no port is still on a net
    // when it dies and tearing the whole tree down sends nothing.
    impl->addNet(S("i"), S("i"), nullptr, nullptr);
    impl->getNet(S("i"))->connect(pi, true);
    impl->getNet(S("i"))->connect(qo, true);
    wire("r[0]", {{"u1", "ob[0]", 2}, {"", "to", 2}});
    release(top);
    top = nullptr;
    EXPECT_TRUE(records().empty());
}

// The net map is a public std::map the library also indexes by name and
// inserts into with the latest insertion as hint; after any mix of additions,
// renames and removals, including of the hinted entry, the map must hold
// exactly the expected names and every lookup must find its own net.
TEST_F(design, net_map_and_lookups_stay_exact_through_hinted_insertions) {
    std::map<std::string, kalnet*> expected;
    auto add = [&](const std::string& name) {
        EXPECT_TRUE(d->addNet(&name, &name, S(""), nullptr)) << name;
        expected[name] = d->getNet(&name);
    };
    auto check = [&] {
        EXPECT_EQ(*d->data->getNetMap(), expected);
        for (auto& entry : expected)
            EXPECT_EQ(d->getNet(&entry.first), entry.second) << entry.first;
    };
    for (const char* name : {"n5_0", "n5_1", "a", "n5_2", "z"})
        add(name);
    EXPECT_FALSE(d->addNet(S("n5_1"), S("n5_1"), S(""), nullptr));  // taken: the entry stays
    ASSERT_TRUE(d->removeNet(S("z")));                              // the hinted entry goes
    expected.erase("z");
    add("y");
    add("b");
    ASSERT_TRUE(d->changeNetName(S("b"), S("n5_3")));  // the hinted entry moves
    expected["n5_3"] = expected["b"];
    expected.erase("b");
    add("n5_4");
    ASSERT_TRUE(d->addNetbus(S("q"), S(""), S("q"), 11, 0, nullptr));  // bits arrive out of map order
    for (unsigned int i = 0; i < 12; ++i) {
        const std::string bit = "q[" + std::to_string(i) + "]";
        expected[bit] = d->getNet(&bit);
        EXPECT_NE(expected[bit], nullptr) << bit;
    }
    check();
}

// Numbered names share blocks of slots in the name indexes. Runs that overlap,
// wrap around the table and lose members in the middle must still find every
// name, and only their own: lookups are compared with the map itself.
TEST_F(design, numbered_runs_stay_exact_through_removals_and_renames) {
    std::vector<std::string> names;
    for (int run = 0; run < 40; ++run) {
        for (int k = 0; k < 37; ++k)
            names.push_back("c" + std::to_string(run) + "[" + std::to_string(k) + "]");
        names.push_back("x" + std::to_string(run * 16 + 5));
    }
    // The same number written otherwise, numbers past nine digits, and no number.
    for (const char* odd : {"v7", "v07", "v007", "v7]", "w12345678901", "w2345678901", "[3]", "9", "plain"})
        names.push_back(odd);
    for (const std::string& n : names)
        ASSERT_TRUE(d->addNet(&n, &n, S(""), nullptr)) << n;
    auto exact = [&] {
        for (const std::string& n : names) {
            auto it = d->data->getNetMap()->find(n);
            EXPECT_EQ(d->getNet(&n), it == d->data->getNetMap()->end() ? nullptr : it->second) << n;
        }
    };
    exact();
    for (std::size_t i = 0; i < names.size(); i += 3)
        ASSERT_TRUE(d->removeNet(&names[i])) << names[i];
    for (std::size_t i = 1; i < names.size(); i += 7) {
        const std::string to = "r" + std::to_string(i);
        if (d->changeNetName(&names[i], &to)) names.push_back(to);
    }
    exact();
    for (std::size_t i = 0; i < names.size(); i += 3) {  // back into the gaps the removals left
        const std::string& n = names[i];
        if (!d->getNet(&n)) {
            ASSERT_TRUE(d->addNet(&n, &n, S(""), nullptr)) << n;
        }
    }
    exact();
    EXPECT_EQ(d->getNet(S("c3[37]")), nullptr);
    EXPECT_EQ(d->getNet(S("v0007")), nullptr);
}

// The net index doubles from sixteen slots to tens of thousands, placing
// most names anew from what its slots keep and, every ten doublings, from the
// names themselves; removals along the way shift crowded runs back. The
// model check reads every slot's hash bits and distance from home.
TEST_F(design, a_growing_index_stays_exact_through_removals) {
    std::vector<std::string> names, gone;
    for (int run = 0; names.size() < 24000; ++run) {
        for (int k = 0; k < 16; ++k)
            names.push_back("q" + std::to_string(run) + "[" + std::to_string(k) + "]");
        for (int j = 0; j < 8; ++j)
            names.push_back("n" + std::to_string(run) + "_" + std::to_string(j));
        names.push_back("u" + std::to_string(run));
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_TRUE(d->addNet(&names[i], &names[i], S(""), nullptr)) << names[i];
        if (i % 5 == 4) {  // an earlier name goes, from anywhere in its run
            const std::string& old = names[i * 7 / 10];
            if (d->removeNet(&old)) gone.push_back(old);
        }
        if (i == 3000 || i == 17000) EXPECT_MODEL_OK(top);
    }
    std::set<std::string> absent(gone.begin(), gone.end());
    for (const std::string& n : names) {
        kalnet* net = d->getNet(&n);
        ASSERT_EQ(net == nullptr, absent.count(n) == 1) << n;
        if (net) {
            EXPECT_EQ(*net->getName(), n);
        }
    }
    EXPECT_EQ(d->data->getNetMap()->size(), names.size() - absent.size());
}

// An instance is looked up port after port, and the latest hit is tried first:
// it must never outlive its entry, whichever way the entry goes.
TEST_F(design, repeated_instance_lookups_follow_removals_and_outside_changes) {
    kalcomponent* u1 = inst("u1");
    EXPECT_EQ(d->getInstance(S("u1")), u1);
    EXPECT_EQ(d->getInstance(S("u1")), u1);  // the repeated hit
    releaseLeftovers(u1);                    // what the component never frees
    ASSERT_TRUE(d->removeInstance(S("u1")));
    EXPECT_EQ(d->getInstance(S("u1")), nullptr);
    kalcomponent* again = inst("u1");
    EXPECT_EQ(d->getInstance(S("u1")), again);
    EXPECT_EQ(d->getInstance(S("u2")), nullptr);  // a miss leaves nothing behind
    EXPECT_EQ(d->getInstance(S("u1")), again);
    // An entry taken out of the public map by hand: the index notices the size.
    auto& map = *d->data->getInstanceMap();
    kalcomponent* taken = map.at("u1");
    map.erase("u1");
    EXPECT_EQ(d->getInstance(S("u1")), nullptr);
    map.emplace("u1", taken);
    EXPECT_EQ(d->getInstance(S("u1")), taken);
    d->removeAllInstances();
    EXPECT_EQ(d->getInstance(S("u1")), nullptr);
    releaseLeftovers(taken);
    delete taken;
}

// A net whose list grew large is remembered by name and destroyed first with
// the design. A stale name (the net renamed, another net under the old name,
// or the net removed) must reach a live net or none.
TEST_F(design, crowded_nets_go_first_and_stale_names_reach_no_freed_net) {
    for (const char* name : {"big", "other", "gone"})
        ASSERT_TRUE(d->addNet(S(name), S(name), S(""), nullptr));
    std::vector<kalcomponent*> loads;
    for (int k = 0; k < 4100; ++k) {
        kalcomponent* c = inst(("u" + std::to_string(k)).c_str());
        c->addPort(S("a"), S("a"), 1, nullptr);
        c->addPort(S("b"), S("b"), 1, nullptr);
        ASSERT_TRUE(d->connect(S("big"), S("a"), S(("u" + std::to_string(k)).c_str())));
        ASSERT_TRUE(d->connect(S("gone"), S("b"), S(("u" + std::to_string(k)).c_str())));
    }
    ASSERT_TRUE(d->changeNetName(S("big"), S("renamed")));
    ASSERT_TRUE(d->changeNetName(S("other"), S("big")));  // the old name now names a small net
    kalrecorder::setNullObjects(true);                    // the removal's records are not the point
    ASSERT_TRUE(d->removeNet(S("gone")));
    kalrecorder::setNullObjects(false);
    EXPECT_EQ(d->getNet(S("renamed"))->getPorts().size(), 4100u);
    EXPECT_MODEL_OK(top);
}
