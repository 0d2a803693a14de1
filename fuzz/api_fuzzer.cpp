// SPDX-License-Identifier: Apache-2.0
// The API fuzzer. It decodes its input into a sequence of operations on a
// small block design, runs them through the public interface, and after each
// one asks the model checker for broken links. AddressSanitizer and
// UndefinedBehaviorSanitizer stop at the first read of freed memory or
// undefined behaviour; LeakSanitizer, run by libFuzzer after an input, reports
// what nobody frees.
//
// Input: one byte of set-up flags, then operations, each an opcode byte
// followed by its argument bytes; bytes past the end read as 0. The seeds in
// fuzz/corpus are written by fuzz/make_corpus.py, which knows this format.
// With KALDATA_FUZZ_TRACE=1 in the environment every decoded operation is
// printed before it runs, which is how a crashing input is read.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "kaldata.h"
#include "kalrecorder.h"
#include "support/checker.h"
#include "support/release.h"

namespace {

// Few, short names, so that they collide: with each other, with bus-bit
// names, with the names exports make (u1_a), with design and root names, and
// with paths ("x/y").
const char* const kPool[] = {"a",    "b",    "c",    "d",    "q",    "i",    "o",    "y",
                             "z",    "n",    "clk",  "en",   "top",  "u1",   "u2",   "g",
                             "a[0]", "a[1]", "d[0]", "d[1]", "d[2]", "d[3]", "q[0]", "q[1]",
                             "u1_a", "u1_q", "x/y",  "",     "Chip", "rtl",  "impl", "dp"};
constexpr std::size_t kPoolSize = sizeof kPool / sizeof kPool[0];
constexpr std::size_t kMaxOps = 256;

bool tracing() {
    static const bool on = [] {
        const char* v = std::getenv("KALDATA_FUZZ_TRACE");
        return v && *v && *v != '0';
    }();
    return on;
}

void trace(const char* format, ...) {
    if (!tracing()) return;
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
}

const char* show(const std::string* s) {
    return s ? s->c_str() : "<null>";
}

class reader {
public:
    reader(const std::uint8_t* data, std::size_t size) : at(data), end(data + size) {}
    bool done() const { return at >= end; }
    unsigned byte() { return at < end ? *at++ : 0u; }
    // Always takes one byte, so that an operation's layout does not depend on the model.
    std::size_t below(std::size_t n) {
        const unsigned b = byte();
        return n ? b % n : 0;
    }
    bool flag() { return byte() & 1u; }
    // A bus bound: mostly 0..3, now and then up to 11.
    unsigned bound() {
        unsigned b = byte();
        return b < 0xF0 ? b % 4 : 4 + b % 8;
    }
    // Mostly a valid direction; now and then one outside 1..3, which makes
    // empty ports and port buses without slots.
    int direction() {
        static const int odd[4] = {0, 4, -1, 7};
        const unsigned b = byte() % 16;
        return b < 12 ? 1 + static_cast<int>(b % 3) : odd[b - 12];
    }

private:
    const std::uint8_t* at;
    const std::uint8_t* end;
};

// The groups of a component's element catalogue, which the catalogue never frees.
std::vector<kalelementgroup*> catalogueGroups(kalcomponent* c) {
    std::vector<kalelementgroup*> out;
    if (kalelements* e = c->getElements())
        for (auto& g : e->getGroupMap())
            out.push_back(g.second);
    return out;
}

// What a component leaves to whoever made it: its file sets (with their
// files), its generator registry with the generators and groups in it, and
// the groups of its element catalogue. Noted when the fuzzer makes the
// component (again when it adds to the catalogue), freed once the component
// is gone, as release() and the tests do.
struct owed {
    std::vector<kalfileset*> filesets;
    kalgenerators* registry = nullptr;
    std::vector<kalgenerator*> generators;
    std::vector<kalgeneratorgroup*> groups;
    std::vector<kalelementgroup*> elementGroups;

    explicit owed(kalcomponent* c) : registry(c->data->generators), elementGroups(catalogueGroups(c)) {
        for (auto& f : c->data->filesets)
            filesets.push_back(f.second);
        if (registry) {
            for (auto& g : registry->getGeneratorMap())
                generators.push_back(g.second);
            for (auto& g : registry->getGroupMap())
                groups.push_back(g.second);
        }
    }
    void free() {
        for (auto* f : filesets)
            delete f;
        for (auto* g : generators)
            delete g;
        for (auto* g : groups)
            delete g;
        delete registry;
        for (auto* g : elementGroups)
            delete g;
    }
};

struct scope {
    kalcomponent* owner;
    kaldesign* design;
};

// What the library handed back, kept for a while: destroyed by a later
// operation or at the end, before or after the whole tree, in any order
// relative to its former owner.
struct kept {
    std::vector<kalnetbus*> netbuses;
    std::vector<kaldualport*> dualPorts;
    std::vector<kaldualportbus*> dualBuses;
    std::vector<kaldesign*> designs;
    std::vector<kalcomponent*> instances;

    template <class T>
    static void destroy(std::vector<T*>& v, std::size_t k) {
        if (v.empty()) return;
        k %= v.size();
        T* x = v[k];
        v.erase(v.begin() + static_cast<std::ptrdiff_t>(k));
        delete x;
    }
    bool empty() const {
        return netbuses.empty() && dualPorts.empty() && dualBuses.empty() && designs.empty() &&
               instances.empty();
    }
    // Kind 0..4, then which one of that kind.
    void destroyOne(unsigned kind, std::size_t k) {
        switch (kind % 5) {
            case 0:
                return destroy(netbuses, k);
            case 1:
                return destroy(dualPorts, k);
            case 2:
                return destroy(dualBuses, k);
            case 3:
                return destroy(designs, k);
            default:
                return destroy(instances, k);
        }
    }
    // `between` runs before each destruction and gets what it returns back
    // after it.
    template <class Before, class After>
    void destroyAll(bool backwards, Before before, After after) {
        while (!empty())
            for (unsigned kind = 0; kind < 5; ++kind) {
                const std::size_t sizes =
                    netbuses.size() + dualPorts.size() + dualBuses.size() + designs.size() + instances.size();
                if (!sizes) break;
                auto state = before();
                destroyOne(backwards ? 4 - kind : kind, 0);
                after(state);
            }
    }
};

// The operations, with their argument bytes after the opcode. A name is one
// byte (null, a pool name, or a name the model holds); "where" is a mode, an
// instance and an extra byte; "via" chooses the owner's forwarding operation
// (its first design only) or the design's own.
enum class op : unsigned {
    events,           // flag: the event service answers with null objects, or records
    addInstance,      // scope, name, block type
    removeInstance,   // scope, name
    removeComponent,  // scope, where
    reAddInstances,   // scope, which one, new name, destination design
    addPort,          // scope, member, name, direction
    addPortbus,       // scope, member, name, msb, lsb, direction
    renamePort,       // scope, member, old, new
    renamePortbus,    // scope, member, old, new
    removePort,       // scope, member, name
    removePortbus,    // scope, member, name
    deletePortbus,    // scope, member, name
    addNet,           // scope, via, name, same second name, second name, type
    addNetbus,        // scope, via, name, type, msb, lsb
    connect,          // scope, via, net, where, port, flag (unused)
    disconnect,       // scope, via, net, where, port, flag (a null instance name for a top port)
    renameNet,        // scope, via (unused), old, new
    renameNetbus,     // scope, via (unused), old, new
    netbusRange,      // scope, via (unused), name, first, last
    removeNet,        // scope, via, name
    removeNetbus,     // scope, via, name
    deleteNetbus,     // scope, via (unused), name
    addExport,        // scope, where, pin, flag, net type, top name
    removeExport,     // scope, where, pin, flag
    dualAddPort,      // scope, name, member, port
    dualAddPorts,     // scope, name, count, count x (member, port)
    dualInsert,       // scope, key, own name, count, count x (member, port), flag (vector form)
    dualSplit,        // scope, name, member, port
    dualSplitByName,  // scope, name, member, flag (a root's "Name"), port name
    dualRemove,       // scope, name
    dualDelete,       // scope, name
    dualBusInsert,    // scope, how, key, own name, msb, lsb, members
    dualBusRemove,    // scope, name
    dualBusDelete,    // scope, name
    dualBusSlot,      // scope, bus, action, index, dual port
    createDesign,     // component, name
    deleteDesign,     // component, name
    setName,          // component, name
    attributes,       // scope, value, member, kind, name (or port), flag
    catalogue,        // scope, member, element name, flag (UVCCIO or CLK_SRC)
    queries,          // scope
    freeKept,         // kind, which: destroy one object the library handed back
    busSlot,          // scope, kind, bus, action, index, member (of any component or design)
    count
};

class session {
public:
    session(const std::uint8_t* data, std::size_t size) : in(data, size) {}

    void run() {
        kalrecorder::setKeepRecords(false);
        const unsigned setup = in.byte();
        kalrecorder::setNullObjects(setup & 2u);
        top = new kalcomponent(text("v"), text("l"), text("top"), text("1.0"));
        // A root named differently from its instance name: dual ports name its ports by "Name".
        if (setup & 1u) top->setName(text("Chip"));
        top->createDesign(text("v"), text("l"), text("rtl"), text("1.0"));
        check("set-up");
        for (std::size_t n = 0; n < kMaxOps && !in.done(); ++n) {
            const unsigned code = in.byte() % static_cast<unsigned>(op::count);
            step(static_cast<op>(code));
            arena.clear();
            kalrecorder::clear();
            check("operation");
        }
        // release() frees what the live tree leaves behind: file sets, generators, catalogue groups.
        std::set<kalcomponent*> tree;
        walk(top, nullptr, &tree);
        // What was handed back goes before the tree or after it.
        const bool keptLast = setup & 4u;
        trace("end: kept objects destroyed %s the tree\n", keptLast ? "after" : "before");
        if (!keptLast) destroyKept(true, setup & 8u);
        release(top);
        top = nullptr;
        if (keptLast) destroyKept(false, setup & 8u);
        // The kept components' leftovers, once they are gone too.
        for (auto& [c, debt] : ledger)
            if (!tree.count(c)) debt.free();
        ledger.clear();
        kalrecorder::setNullObjects(false);
        kalrecorder::clear();
    }

private:
    reader in;
    kalcomponent* top = nullptr;
    std::deque<std::string> arena;  // the strings handed to one operation
    std::map<kalcomponent*, owed> ledger;
    kept held;  // handed back by the library, destroyed later
    std::size_t ops = 0;
    std::vector<scope> current;  // the designs when the operation started
    // removeAllInstances leaves the components it hands back their instance
    // names and parent design. Once one is added again under a name that
    // another of them still carries, the two compare equal, and a net takes
    // the first equal port off its list when either is disconnected: the other
    // keeps pointing to a net that no longer lists it.
    bool twins = false;
    bool looseSlots = false;  // a busSlot operation ran

    // ---- strings ----

    const std::string* text(const std::string& s) {
        arena.push_back(s);
        return &arena.back();
    }

    // A name argument: null, a name from the pool, a copy of a name the model
    // holds, or the model's own string itself (which the operation may free).
    const std::string* name(const std::vector<const std::string*>& known, bool nullable = true) {
        const unsigned b = in.byte();
        if (b < 0x10) return nullable ? nullptr : text("");
        if (b < 0x80 || known.empty()) return text(kPool[b % kPoolSize]);
        const std::string* k = known[b % known.size()];
        if (b < 0xE0 || !k) return k ? text(*k) : nullptr;
        return k;
    }
    const std::string& ref(const std::vector<const std::string*>& known) {
        const std::string* s = name(known, false);
        return s ? *s : *text("");
    }

    // ---- the live model ----

    void walk(kalcomponent* c, std::vector<scope>* scopes, std::set<kalcomponent*>* live) {
        if (live) live->insert(c);
        for (auto& entry : c->data->designs) {
            kaldesign* d = entry.second;
            if (!d) continue;
            if (scopes) scopes->push_back({c, d});
            for (auto& i : *d->data->getInstanceMap())
                if (i.second) walk(i.second, scopes, live);
        }
    }
    std::set<kalcomponent*> liveComponents() {
        std::set<kalcomponent*> out;
        walk(top, nullptr, &out);
        return out;
    }
    // Components still alive outside the tree: kept instances and the insides
    // of kept designs. Their leftovers wait until they are gone.
    void walkKept(std::set<kalcomponent*>& live) {
        for (kalcomponent* c : held.instances)
            walk(c, nullptr, &live);
        for (kaldesign* d : held.designs)
            for (auto& i : *d->data->getInstanceMap())
                if (i.second) walk(i.second, nullptr, &live);
    }
    // The designs of kept objects, whose dual port buses a dying member can
    // take out of a map as well.
    std::vector<scope> keptScopes() {
        std::vector<scope> out;
        for (kalcomponent* c : held.instances)
            walk(c, &out, nullptr);
        for (kaldesign* d : held.designs) {
            out.push_back({d->owner, d});
            for (auto& i : *d->data->getInstanceMap())
                if (i.second) walk(i.second, &out, nullptr);
        }
        return out;
    }
    std::vector<scope> withKept(std::vector<scope> scopes) {
        std::vector<scope> kept = keptScopes();
        scopes.insert(scopes.end(), kept.begin(), kept.end());
        return scopes;
    }
    std::vector<kalcomponent*> components() {
        std::set<kalcomponent*> live = liveComponents();
        std::vector<kalcomponent*> out{top};
        for (kalcomponent* c : live)
            if (c != top) out.push_back(c);
        return out;
    }
    bool pickScope(scope& s) {
        const std::vector<scope>& all = current;
        const std::size_t k = in.below(all.size());
        if (all.empty()) return false;
        s = all[k];
        return true;
    }
    template <class T>
    T* pick(const std::vector<T*>& from) {
        const std::size_t k = in.below(from.size());
        return from.empty() ? nullptr : from[k];
    }
    bool isFirstDesign(const scope& s) const {
        return !s.owner->data->designs.empty() && s.owner->data->designs.begin()->second == s.design;
    }
    static std::vector<kalcomponent*> instancesOf(kaldesign* d) {
        std::vector<kalcomponent*> out;
        for (auto& i : *d->data->getInstanceMap())
            if (i.second) out.push_back(i.second);
        return out;
    }
    // The owner of the design and its instances: the components whose ports
    // the design's nets and dual ports take.
    kalcomponent* member(const scope& s) {
        std::vector<kalcomponent*> all{s.owner};
        for (kalcomponent* c : instancesOf(s.design))
            all.push_back(c);
        return all[in.below(all.size())];
    }
    static kaldesign* firstDesign(kalcomponent* c) {
        return c->data->designs.empty() ? nullptr : c->data->designs.begin()->second;
    }
    static const std::string& iname(kalcomponent* c) {
        static const std::string none;
        return c->data->instanceName ? *c->data->instanceName : none;
    }

    static std::vector<const std::string*> portNames(kalcomponent* c) {
        std::vector<const std::string*> out;
        for (auto& p : c->data->ports)
            out.push_back(p.second->getName());
        return out;
    }
    static std::vector<const std::string*> busNames(kalcomponent* c) {
        std::vector<const std::string*> out;
        for (auto& b : c->data->portbuses)
            out.push_back(b.second->getName());
        return out;
    }
    static std::vector<const std::string*> pinNames(kalcomponent* c) {
        std::vector<const std::string*> out = portNames(c);
        for (const std::string* b : busNames(c))
            out.push_back(b);
        return out;
    }
    static std::vector<const std::string*> netNames(kaldesign* d) {
        std::vector<const std::string*> out;
        for (auto& n : *d->data->getNetMap())
            out.push_back(n.second->getName());
        return out;
    }
    static std::vector<const std::string*> netbusNames(kaldesign* d) {
        std::vector<const std::string*> out;
        for (auto& b : *d->data->getNetbusMap())
            out.push_back(b.second->getName());
        return out;
    }
    static std::vector<const std::string*> instanceNames(kaldesign* d) {
        std::vector<const std::string*> out;
        for (kalcomponent* c : instancesOf(d))
            out.push_back(c->data->instanceName);
        return out;
    }
    // Dual ports by their own names (the model's strings) and by their keys.
    std::vector<const std::string*> dualNames(kaldesign* d) {
        std::vector<const std::string*> out;
        for (auto& e : *d->data->getDualPortMap()) {
            out.push_back(&e.second->getName());
            out.push_back(text(e.first));
        }
        return out;
    }
    std::vector<const std::string*> dualBusNames(kaldesign* d) {
        std::vector<const std::string*> out;
        for (auto& e : *d->data->getDualPortbusMap()) {
            out.push_back(&e.second->getName());
            out.push_back(text(e.first));
        }
        return out;
    }
    std::vector<kaldualport*> dualPorts(kaldesign* d) {
        std::vector<kaldualport*> out;
        for (auto& e : *d->data->getDualPortMap())
            out.push_back(e.second);
        return out;
    }

    kalport* pickPort(kalcomponent* c) {
        const std::size_t n = c->data->ports.size();
        const std::size_t k = in.below(n);
        if (!n) return nullptr;
        auto it = c->data->ports.begin();
        std::advance(it, static_cast<std::ptrdiff_t>(k));
        return it->second;
    }

    // ---- the fuzzer's own bookkeeping after each operation ----

    kalcomponent* make(unsigned type) {
        static const char* const kinds[] = {"and2", "reg", "osc"};
        kalcomponent* c = new kalcomponent(text("v"), text("l"), text(kinds[type % 3]), text("1.0"));
        switch (type % 3) {
            case 0:
                c->addPort(text("a"), text("a"), 1, nullptr);
                c->addPort(text("b"), text("b"), 1, nullptr);
                c->addPort(text("y"), text("y"), 2, nullptr);
                c->addPort(text("z"), text("z"), 3, nullptr);
                break;
            case 1:
                c->addPort(text("clk"), text("clk"), 1, nullptr);
                c->addPortbus(text("d"), text("d"), 1, 0, 1, nullptr);
                c->addPortbus(text("q"), text("q"), 0, 1, 2, nullptr);
                break;
            default: {
                // A clock source with a block inside: its en pin drives the inner g/a.
                static const std::string clkSrc("CLK_SRC"), yes("true");
                c->addPort(text("clk"), text("clk"), 2, nullptr);
                c->addPort(text("en"), text("en"), 1, nullptr);
                if (kalelement* e = c->getElements()->addElement(text("port"), text("clk"), false))
                    e->setAttributeValue(&clkSrc, &yes);
                c->createDesign(text("v"), text("l"), text("impl"), text("1.0"));
                std::string g("g");
                std::string impl("impl");
                kaldesign* d = c->getDesign(&impl);
                kalcomponent* inner = make(0);
                if (!d->addInstance(&g, inner)) delete inner;
                c->addNet(text("n"), text("n"), text(""), nullptr);
                c->connect(text("n"), text("en"), text(""));
                c->connect(text("n"), text("a"), text("g"));
                break;
            }
        }
        c->addFileSet(text("src"), text("hdl"), nullptr);
        c->addFile(text("src"), text("blk.v"), text("verilog"), nullptr);
        kalgenerators* registry = c->createGenerators();
        kalgenerator* g = c->createGenerator("gen");
        registry->createGroup("grp");
        registry->addGeneratorToGroup(g, "grp");
        ledger.emplace(c, owed(c));
        return c;
    }

    // A component that is gone leaves its file sets and generators to us.
    void settleLedger(const std::set<kalcomponent*>& live) {
        for (auto it = ledger.begin(); it != ledger.end();) {
            if (live.count(it->first)) {
                ++it;
                continue;
            }
            it->second.free();
            it = ledger.erase(it);
        }
    }

    // The dual port buses in the designs' maps. One that left its map during
    // an operation without being destroyed (removeDualPortBus, or a dying
    // member that took it out) is ours to free.
    static std::map<kaldualportbus*, kaldesign*> dualBuses(const std::vector<scope>& designs) {
        std::map<kaldualportbus*, kaldesign*> out;
        for (const scope& s : designs)
            for (auto& e : *s.design->data->getDualPortbusMap())
                out.emplace(e.second, s.design);
        return out;
    }
    void adoptDroppedDualBuses(const std::map<kaldualportbus*, kaldesign*>& before, kaldualportbus* destroyed,
                               const std::vector<scope>& after) {
        std::set<kaldesign*> designs;
        std::set<kaldualportbus*> mapped;
        for (const scope& s : after) {
            designs.insert(s.design);
            for (auto& e : *s.design->data->getDualPortbusMap())
                mapped.insert(e.second);
        }
        for (auto& [bus, design] : before) {
            // A design that is gone destroyed its buses with it.
            if (bus == destroyed || mapped.count(bus) || !designs.count(design)) continue;
            trace("    keeping dual port bus %s %p, out of its map\n", bus->getName().c_str(),
                  static_cast<void*>(bus));
            held.dualBuses.push_back(bus);
        }
    }

    // One at a time: a dying kept dual port can take its bus out of a map,
    // live or kept, and that bus is then ours to destroy as well.
    void destroyKept(bool treeAlive, bool backwards) {
        auto scopes = [&] {
            std::vector<scope> out;
            if (treeAlive) walk(top, &out, nullptr);
            return withKept(out);
        };
        held.destroyAll(
            backwards, [&] { return dualBuses(scopes()); },
            [&](const std::map<kaldualportbus*, kaldesign*>& before) {
                adoptDroppedDualBuses(before, nullptr, scopes());
            });
    }

    void check(const char* when) {
        std::vector<std::string> problems = checkModel(top);
        if (twins) {
            // A port whose twin took it off its net keeps pointing to that net: nets work by equality.
            std::vector<std::string> rest;
            for (std::string& p : problems)
                if (p.find(": its net ") == std::string::npos ||
                    p.find(" does not list it") == std::string::npos)
                    rest.push_back(std::move(p));
            problems.swap(rest);
        }
        if (looseSlots) {
            // Slots and links changed one end at a time disagree, and a bus may
            // hold members of other components: legal, as long as nothing dangles.
            std::vector<std::string> rest;
            for (std::string& p : problems)
                if (p.find(" has no slot for it") == std::string::npos &&
                    p.find(" is not registered under its name") == std::string::npos)
                    rest.push_back(std::move(p));
            problems.swap(rest);
        }
        if (!held.empty()) {
            // A member may link to a bus or dual port that was handed back to us:
            // alive, and no longer in any map (the checker reads it all the same).
            std::vector<std::string> rest;
            for (std::string& p : problems)
                if (p.find(" that is not held") == std::string::npos) rest.push_back(std::move(p));
            problems.swap(rest);
        }
        // The library's own bookkeeping has no legal exceptions.
        for (std::string& p : kalverify::model(top))
            problems.push_back("hidden state: " + p);
        if (problems.empty()) return;
        std::fprintf(stderr, "model checker, after %s %zu:\n", when, ops);
        for (const std::string& p : problems)
            std::fprintf(stderr, "  %s\n", p.c_str());
        std::abort();
    }

    // ---- operations ----

    void step(op o) {
        ++ops;
        current.clear();
        walk(top, &current, nullptr);
        const std::map<kaldualportbus*, kaldesign*> before = dualBuses(withKept(current));
        kaldualportbus* destroyed = nullptr;
        perform(o, destroyed);
        std::vector<scope> after;
        std::set<kalcomponent*> live;
        walk(top, &after, &live);
        walkKept(live);
        adoptDroppedDualBuses(before, destroyed, withKept(after));
        settleLedger(live);
    }

    void perform(op o, kaldualportbus*& destroyed) {
        scope s{nullptr, nullptr};
        switch (o) {
            case op::events: {
                const bool nulls = in.flag();
                trace("%zu events %s\n", ops, nulls ? "null" : "recorded");
                kalrecorder::setNullObjects(nulls);
                return;
            }
            case op::createDesign:
            case op::deleteDesign:
            case op::setName:
                return onComponent(o);
            case op::freeKept: {
                const unsigned kind = in.byte();
                const std::size_t k = in.byte();
                trace("%zu free kept object kind %u #%zu\n", ops, kind % 5, k);
                held.destroyOne(kind, k);
                return;
            }
            case op::count:
                return;
            default:
                break;
        }
        if (!pickScope(s)) return;
        kaldesign* d = s.design;
        switch (o) {
            case op::addInstance: {
                const std::string* n = name(instanceNames(d));
                const unsigned type = in.byte();
                kalcomponent* c = make(type);
                std::string* key = n ? &arena.emplace_back(*n) : nullptr;
                trace("%zu %s: addInstance %s type %u\n", ops, iname(s.owner).c_str(), show(key), type % 3);
                if (!d->addInstance(key, c)) delete c;  // still ours when refused
                return;
            }
            case op::removeInstance: {
                const std::string* n = name(instanceNames(d));
                trace("%zu %s: removeInstance %s\n", ops, iname(s.owner).c_str(), show(n));
                d->removeInstance(n);
                return;
            }
            case op::removeComponent: {
                const std::string path = where(s);
                trace("%zu %s: removeComponent %s\n", ops, iname(s.owner).c_str(), path.c_str());
                s.owner->removeComponent(&path);
                return;
            }
            case op::reAddInstances:
                return reAddInstances(s);
            case op::addPort:
            case op::addPortbus:
            case op::renamePort:
            case op::renamePortbus:
            case op::removePort:
            case op::removePortbus:
            case op::deletePortbus:
                return onPorts(o, s);
            case op::addNet:
            case op::addNetbus:
            case op::renameNet:
            case op::renameNetbus:
            case op::netbusRange:
            case op::removeNet:
            case op::removeNetbus:
            case op::deleteNetbus:
                return onNets(o, s);
            case op::connect:
            case op::disconnect:
                return onConnection(o, s);
            case op::addExport:
            case op::removeExport:
                return onExport(o, s);
            case op::dualAddPort:
            case op::dualAddPorts:
            case op::dualInsert:
            case op::dualSplit:
            case op::dualSplitByName:
            case op::dualRemove:
            case op::dualDelete:
                return onDualPorts(o, s);
            case op::dualBusInsert:
            case op::dualBusRemove:
            case op::dualBusDelete:
            case op::dualBusSlot:
                return onDualBuses(o, s, destroyed);
            case op::attributes:
                return attributes(s);
            case op::catalogue: {
                static const std::string clkSrc("CLK_SRC"), uvccio("UVCCIO"), yes("true");
                kalcomponent* m = member(s);
                const std::string* n = name(portNames(m));
                const bool virt = in.flag();
                trace("%zu %s: catalogue element %s (%s)\n", ops, iname(m).c_str(), show(n),
                      virt ? "UVCCIO" : "CLK_SRC");
                kalelement* e = m->getElements()->addElement(text("port"), n, false);
                if (!e) return;
                e->setAttributeValue(virt ? &uvccio : &clkSrc, &yes);
                // A name already registered gives an element that the catalogue does not keep.
                if (m->getElements()->getElement(n) != e) delete e;
                auto it = ledger.find(m);
                if (it != ledger.end()) it->second.elementGroups = catalogueGroups(m);
                return;
            }
            case op::queries:
                return queries(s);
            case op::busSlot:
                looseSlots = true;
                return onBusSlot(s);
            default:
                return;
        }
    }

    // A path naming a component for removeComponent, or an instance argument
    // for connect: "", an instance name, the owner's own name, a path below it.
    // Layout: mode, instance, extra (an instance one level down, or a pool name).
    std::string where(const scope& s) {
        const unsigned mode = in.byte() % 5;
        kalcomponent* c = pick(instancesOf(s.design));
        const unsigned extra = in.byte();
        kaldesign* inner = c ? firstDesign(c) : nullptr;
        std::vector<kalcomponent*> deeper = inner ? instancesOf(inner) : std::vector<kalcomponent*>();
        const std::string own = iname(s.owner);
        switch (mode) {
            case 0:
                return c ? iname(c) : std::string();
            case 1:
                return c ? own + "/" + iname(c) : own;
            case 2:
                if (deeper.empty()) return c ? own + "/" + iname(c) : own;
                return own + "/" + iname(c) + "/" + iname(deeper[extra % deeper.size()]);
            case 3:
                return own;
            default:
                return kPool[extra % kPoolSize];
        }
    }

    // removeAllInstances hands the instances back; they are added again, one of
    // them under a new name, and possibly into another design (never one inside
    // itself). Layout: which, name, destination design.
    void reAddInstances(const scope& s) {
        kaldesign* d = s.design;
        const std::map<std::string, kalcomponent*> instances = *d->data->getInstanceMap();
        const std::size_t renamed = in.below(instances.size());
        const std::string* fresh = name({}, false);
        const scope& there = current[in.below(current.size())];
        const bool keepChosen = in.flag();  // the chosen one stays with us instead
        kaldesign* dest = d;
        if (renamed < instances.size()) {
            kalcomponent* moved = std::next(instances.begin(), static_cast<std::ptrdiff_t>(renamed))->second;
            bool inside = false;
            for (kalcomponent* c = there.owner; c && !inside;
                 c = c->parentDesign ? c->parentDesign->owner : nullptr)
                inside = c == moved;
            if (!inside) dest = there.design;
        }
        trace("%zu %s: removeAllInstances, then add back with #%zu as %s into %s\n", ops,
              iname(s.owner).c_str(), renamed, show(fresh),
              dest == d ? "the same design" : iname(there.owner).c_str());
        d->removeAllInstances();
        if (renamed < instances.size() && instances.count(*fresh) &&
            std::next(instances.begin(), renamed)->first != *fresh)
            twins = true;
        std::size_t k = 0;
        for (auto& [key, c] : instances) {
            const bool chosen = k++ == renamed;
            if (chosen && keepChosen) {
                held.instances.push_back(c);
                twins = true;  // it keeps its name and parent design: a later one may equal it
                continue;
            }
            std::string* n = &arena.emplace_back(chosen ? *fresh : key);
            if (!(chosen ? dest : d)->addInstance(n, c)) held.instances.push_back(c);  // refused: ours
        }
    }

    void onPorts(op o, const scope& s) {
        kalcomponent* m = member(s);
        const char* who = iname(m).c_str();
        switch (o) {
            case op::addPort: {
                const std::string* n = name(portNames(m));
                const int dir = in.direction();
                trace("%zu %s: addPort %s dir %d\n", ops, who, show(n), dir);
                m->addPort(n, n, dir, nullptr);
                return;
            }
            case op::addPortbus: {
                const std::string* n = name(busNames(m));
                const unsigned msb = in.bound(), lsb = in.bound();
                const int dir = in.direction();
                trace("%zu %s: addPortbus %s [%u:%u] dir %d\n", ops, who, show(n), msb, lsb, dir);
                m->addPortbus(n, n, msb, lsb, dir, nullptr);
                return;
            }
            case op::renamePort: {
                const std::string* from = name(portNames(m));
                const std::string* to = name(portNames(m));
                trace("%zu %s: changePortName %s -> %s\n", ops, who, show(from), show(to));
                m->changePortName(from, to);
                return;
            }
            case op::renamePortbus: {
                const std::string* from = name(busNames(m));
                const std::string* to = name(busNames(m));
                trace("%zu %s: changePortbusName %s -> %s\n", ops, who, show(from), show(to));
                m->changePortbusName(from, to);
                return;
            }
            case op::removePort: {
                const std::string* n = name(portNames(m));
                trace("%zu %s: removePort %s\n", ops, who, show(n));
                m->removePort(n);
                return;
            }
            case op::removePortbus: {
                const std::string* n = name(busNames(m));
                trace("%zu %s: removePortbus %s\n", ops, who, show(n));
                m->removePortbus(n);
                return;
            }
            default: {
                const std::string* n = name(busNames(m));
                trace("%zu %s: deletePortbus %s\n", ops, who, show(n));
                m->deletePortbus(n);
                return;
            }
        }
    }

    const std::string* netType() {
        switch (in.byte() % 4) {
            case 0:
                return nullptr;
            case 1:
                return text("");
            case 2:
                return text("internal");
            default:
                return text("wire");
        }
    }

    void onNets(op o, const scope& s) {
        kaldesign* d = s.design;
        const char* who = iname(s.owner).c_str();
        // Through the owner (which forwards to its first design) or on the design itself.
        const bool viaOwner = in.flag() && isFirstDesign(s);
        switch (o) {
            case op::addNet: {
                const std::string* n = name(netNames(d));
                const bool same = in.flag();
                const std::string* other = name({});
                const std::string* second = same ? n : other;
                const std::string* type = netType();
                trace("%zu %s: addNet %s (%s) type %s%s\n", ops, who, show(n), show(second), show(type),
                      viaOwner ? " via owner" : "");
                if (viaOwner)
                    s.owner->addNet(n, second, type, nullptr);
                else
                    d->addNet(n, second, type, nullptr);
                return;
            }
            case op::addNetbus: {
                const std::string* n = name(netbusNames(d));
                const std::string* type = netType();
                const unsigned first = in.bound(), last = in.bound();
                trace("%zu %s: addNetbus %s [%u:%u] type %s%s\n", ops, who, show(n), first, last, show(type),
                      viaOwner ? " via owner" : "");
                if (viaOwner)
                    s.owner->addNetbus(n, type, n, first, last, nullptr);
                else
                    d->addNetbus(n, type, n, first, last, nullptr);
                return;
            }
            case op::renameNet: {
                const std::string* from = name(netNames(d));
                const std::string* to = name(netNames(d));
                trace("%zu %s: changeNetName %s -> %s\n", ops, who, show(from), show(to));
                d->changeNetName(from, to);
                return;
            }
            case op::renameNetbus: {
                const std::string* from = name(netbusNames(d));
                const std::string* to = name(netbusNames(d));
                trace("%zu %s: changeNetbusName %s -> %s\n", ops, who, show(from), show(to));
                d->changeNetbusName(from, to);
                return;
            }
            case op::netbusRange: {
                const std::string* n = name(netbusNames(d));
                const unsigned first = in.bound(), last = in.bound();
                trace("%zu %s: changeNetBusRange %s [%u:%u]\n", ops, who, show(n), first, last);
                d->changeNetBusRange(n, first, last);
                return;
            }
            case op::removeNet: {
                const std::string* n = name(netNames(d));
                trace("%zu %s: removeNet %s%s\n", ops, who, show(n), viaOwner ? " via owner" : "");
                if (viaOwner)
                    s.owner->removeNet(n);
                else
                    d->removeNet(n);
                return;
            }
            case op::removeNetbus: {
                const std::string* n = name(netbusNames(d));
                // removeNetbus hands the bus back: it becomes ours to free.
                kalnetbus* bus = d->getNetbus(n);
                trace("%zu %s: removeNetbus %s%s\n", ops, who, show(n), viaOwner ? " via owner" : "");
                if (viaOwner)
                    s.owner->removeNetbus(n);
                else
                    d->removeNetbus(n);
                bool mapped = false;
                for (auto& e : *d->data->getNetbusMap())
                    mapped = mapped || e.second == bus;
                if (bus && !mapped) held.netbuses.push_back(bus);
                return;
            }
            default: {
                const std::string* n = name(netbusNames(d));
                trace("%zu %s: deleteNetbus %s\n", ops, who, show(n));
                d->deleteNetbus(n);
                return;
            }
        }
    }

    void onConnection(op o, const scope& s) {
        kaldesign* d = s.design;
        const bool viaOwner = in.flag() && isFirstDesign(s);
        const std::string* net = name(netNames(d));
        // The instance argument and the component it is meant to reach, whose port names are offered.
        // Layout: mode, instance, extra (an instance one level down, or a pool name).
        const unsigned mode = in.byte() % 6;
        kalcomponent* m = pick(instancesOf(d));
        const unsigned extra = in.byte();
        const std::string own = iname(s.owner);
        std::string inst;
        kalcomponent* target = s.owner;
        const std::string* instArg = nullptr;
        switch (mode) {
            case 0:  // a top port of the design
                break;
            case 1:  // an instance by name
                if (m) {
                    inst = iname(m);
                    target = m;
                }
                break;
            case 2:  // a hierarchical path from the owner's own name
                inst = own;
                if (m) {
                    inst += "/" + iname(m);
                    target = m;
                }
                break;
            case 3: {  // one level further down
                kaldesign* inner = m ? firstDesign(m) : nullptr;
                std::vector<kalcomponent*> deeper = inner ? instancesOf(inner) : std::vector<kalcomponent*>();
                if (deeper.empty()) break;
                kalcomponent* x = deeper[extra % deeper.size()];
                inst = own + "/" + iname(m) + "/" + iname(x);
                target = x;
                break;
            }
            case 4:  // the instance's own name string
                if (m) {
                    instArg = m->data->instanceName;
                    target = m;
                }
                break;
            default:
                inst = kPool[extra % kPoolSize];
                break;
        }
        if (!instArg) instArg = text(inst);
        const std::string* port = name(portNames(target));
        // disconnect takes a null instance name as the owner; connect must be given one.
        const bool noInstance = in.flag();
        if (o == op::disconnect && mode == 0 && noInstance) instArg = nullptr;
        trace("%zu %s: %s net %s port %s inst %s%s\n", ops, own.c_str(),
              o == op::connect ? "connect" : "disconnect", show(net), show(port), show(instArg),
              viaOwner ? " via owner" : "");
        if (o == op::connect) {
            if (viaOwner)
                s.owner->connect(net, port, instArg);
            else
                d->connect(net, port, instArg);
        } else {
            if (viaOwner)
                s.owner->disconnect(net, port, instArg);
            else
                d->disconnect(net, port, instArg);
        }
    }

    void onExport(op o, const scope& s) {
        // Layout: mode, instance, extra (an instance one level down), pin, flag.
        const unsigned mode = in.byte() % 4;
        kalcomponent* m = pick(instancesOf(s.design));
        const unsigned extra = in.byte();
        kaldesign* inner = m ? firstDesign(m) : nullptr;
        std::vector<kalcomponent*> deeper = inner ? instancesOf(inner) : std::vector<kalcomponent*>();
        kalcomponent* x = deeper.empty() ? nullptr : deeper[extra % deeper.size()];
        // The pin is named from the component the path reaches.
        kalcomponent* reached = mode == 0 ? m : mode == 1 ? x : s.owner;
        const std::string pin = reached ? ref(pinNames(reached)) : ref({});
        const bool flag = in.flag();
        const std::string own = iname(s.owner);
        std::string path;
        bool hierarchical = true;
        switch (mode) {
            case 0:  // a pin of an instance, from the owner's own name
                if (!m) return;
                path = own + "/" + iname(m) + "/" + pin;
                break;
            case 1:  // a pin one level further down: its top port lands on the instance
                if (!x) return;
                path = own + "/" + iname(m) + "/" + iname(x) + "/" + pin;
                break;
            case 2:  // one of the owner's own pins, by plain name
                path = pin;
                hierarchical = false;
                break;
            default:
                path = pin;
                hierarchical = flag;
                break;
        }
        if (o == op::removeExport) {
            trace("%zu %s: removeExport %s%s\n", ops, own.c_str(), path.c_str(),
                  hierarchical ? " (path)" : "");
            s.owner->removeExport(path, hierarchical);
            return;
        }
        const std::string* type = netType();
        const std::string* topName = name(portNames(s.owner));
        trace("%zu %s: addExport %s%s net type %s top %s\n", ops, own.c_str(), path.c_str(),
              hierarchical ? " (path)" : "", show(type), show(topName));
        s.owner->addExport(path, hierarchical, type, topName);
    }

    // Ports a dual port of the design may hold: those of its owner and of its instances.
    kalport* dualMember(const scope& s) { return pickPort(member(s)); }

    std::vector<kalport*> dualMembers(const scope& s, std::size_t count) {
        std::vector<kalport*> out;
        for (std::size_t k = 0; k < count; ++k)
            if (kalport* p = dualMember(s)) out.push_back(p);
        return out;
    }

    void onDualPorts(op o, const scope& s) {
        kaldesign* d = s.design;
        const char* who = iname(s.owner).c_str();
        switch (o) {
            case op::dualAddPort: {
                const std::string& n = ref(dualNames(d));
                kalport* p = dualMember(s);
                trace("%zu %s: addPortToDualPort %s %s\n", ops, who, n.c_str(), p ? show(p->getName()) : "-");
                if (p) d->addPortToDualPort(n, p);
                return;
            }
            case op::dualAddPorts: {
                const std::string& n = ref(dualNames(d));
                const std::vector<kalport*> ports = dualMembers(s, in.below(4));
                trace("%zu %s: addPortsToDualPort %s (%zu ports)\n", ops, who, n.c_str(), ports.size());
                d->addPortsToDualPort(n, ports);
                return;
            }
            case op::dualInsert: {
                const std::string& key = ref(dualNames(d));
                const std::string& own = ref(dualNames(d));
                auto* dp = new kaldualport(own);
                const std::vector<kalport*> ports = dualMembers(s, in.below(4));
                if (in.flag())
                    dp->addPort(ports);
                else
                    for (kalport* p : ports)
                        dp->addPort(p);
                trace("%zu %s: insertDualPort %s (own name %s, %zu ports)\n", ops, who, key.c_str(),
                      own.c_str(), ports.size());
                d->insertDualPort(key, dp);
                if (!mapsDual(d, dp)) delete dp;  // refused: still ours
                return;
            }
            case op::dualSplit: {
                const std::string& n = ref(dualNames(d));
                kalport* p = dualMember(s);
                trace("%zu %s: removePortFromDualPort %s port %s\n", ops, who, n.c_str(),
                      p ? show(p->getName()) : "-");
                if (p) d->removePortFromDualPort(n, p);
                return;
            }
            case op::dualSplitByName: {
                const std::string& n = ref(dualNames(d));
                kalcomponent* m = member(s);
                std::string prefix = iname(m);
                if (m == s.owner && in.flag()) {
                    static const std::string nameKey("Name");
                    const std::string* v = m->identity->getAttributeValue(&nameKey);
                    prefix = v ? *v : std::string();
                }
                const std::string key = prefix + "/" + ref(portNames(m));
                trace("%zu %s: removePortFromDualPort %s name %s\n", ops, who, n.c_str(), key.c_str());
                d->removePortFromDualPort(n, key);
                return;
            }
            case op::dualRemove: {
                const std::string& n = ref(dualNames(d));
                const std::string key = n;
                // removeDualPort hands the dual port back: it becomes ours to free.
                kaldualport* dp = d->getDualPort(key);
                trace("%zu %s: removeDualPort %s\n", ops, who, key.c_str());
                d->removeDualPort(n);
                if (dp && !mapsDual(d, dp)) held.dualPorts.push_back(dp);
                return;
            }
            default: {
                const std::string& n = ref(dualNames(d));
                trace("%zu %s: deleteDualPort %s\n", ops, who, n.c_str());
                d->deleteDualPort(n);
                return;
            }
        }
    }

    static bool mapsDual(kaldesign* d, kaldualport* dp) {
        for (auto& e : *d->data->getDualPortMap())
            if (e.second == dp) return true;
        return false;
    }

    void onDualBuses(op o, const scope& s, kaldualportbus*& destroyed) {
        kaldesign* d = s.design;
        const char* who = iname(s.owner).c_str();
        switch (o) {
            case op::dualBusInsert: {
                const bool build = in.flag();
                const std::string& key = ref(dualBusNames(d));
                const std::string own = ref(dualBusNames(d));
                const unsigned msb = in.bound(), lsb = in.bound();
                const std::vector<kaldualport*> known = dualPorts(d);
                // A slot argument: one of the design's dual ports, or none.
                auto dualPort = [&]() -> kaldualport* {
                    const std::size_t k = in.below(known.size() + 1);
                    return k < known.size() ? known[k] : nullptr;
                };
                kaldualportbus* bus = nullptr;
                if (build) {
                    // Made from a list, which must match the width of the range (one too many now and then).
                    const unsigned width = (msb > lsb ? msb - lsb : lsb - msb) + 1;
                    const unsigned size = width + (in.below(8) == 7 ? 1u : 0u);
                    std::vector<kaldualport*> members;
                    for (unsigned k = 0; k < size; ++k)
                        members.push_back(dualPort());
                    bus = kaldualportbus::createDualPortBus(own, msb, lsb, members);
                } else {
                    // Constructed empty, then filled slot by slot.
                    bus = new kaldualportbus(own, msb, lsb);
                    for (std::size_t k = in.below(4); k > 0; --k) {
                        const unsigned index = in.bound();
                        if (kaldualport* dp = dualPort()) bus->connect(index, dp);
                    }
                }
                trace("%zu %s: insertDualPortBus %s (own name %s [%u:%u], %s %p)\n", ops, who, key.c_str(),
                      own.c_str(), msb, lsb, bus ? "made" : "refused", static_cast<void*>(bus));
                if (bus && !d->insertDualPortBus(key, bus)) delete bus;  // refused: still ours
                return;
            }
            case op::dualBusRemove: {
                const std::string& n = ref(dualBusNames(d));
                trace("%zu %s: removeDualPortBus %s\n", ops, who, n.c_str());
                d->removeDualPortBus(
                    n);  // the bus it hands back is freed with the others that left their map
                return;
            }
            case op::dualBusDelete: {
                const std::string& n = ref(dualBusNames(d));
                destroyed = d->getDualPortbus(n);
                trace("%zu %s: deleteDualPortBus %s\n", ops, who, n.c_str());
                d->deleteDualPortBus(n);
                return;
            }
            default: {
                std::vector<kaldualportbus*> buses;
                for (auto& e : *d->data->getDualPortbusMap())
                    buses.push_back(e.second);
                kaldualportbus* bus = pick(buses);
                const unsigned action = in.byte() % 3;
                const unsigned index = in.bound();
                kaldualport* dp = pick(dualPorts(d));
                if (!bus) return;
                trace("%zu %s: dual port bus %s: %s %u\n", ops, who, bus->getName().c_str(),
                      action == 0   ? "connect"
                      : action == 1 ? "disconnect index"
                                    : "disconnect member",
                      index);
                if (action == 0)
                    bus->connect(index, dp);
                else if (action == 1)
                    bus->disconnect(index);
                else
                    bus->disconnect(dp);
                return;
            }
        }
    }

    // One end of a bus membership changed alone, with members taken from
    // anywhere in the tree: slots and links that disagree, members in buses
    // of other components or designs.
    void onBusSlot(const scope& s) {
        const bool ports = in.flag();
        const unsigned action = in.byte() % 5;
        const unsigned index = in.bound();
        static const char* const actions[] = {"connect", "disconnect index", "disconnect member", "setBus",
                                              "unsetBus"};
        if (ports) {
            kalcomponent* owner = pick(components());
            std::vector<kalportbus*> buses;
            for (auto& e : owner->data->portbuses)
                buses.push_back(e.second);
            kalportbus* bus = pick(buses);
            kalport* port = pickPort(pick(components()));
            if (!bus || !port) return;
            trace("%zu %s: port bus %s: %s %u, port %s\n", ops, iname(owner).c_str(), show(bus->getName()),
                  actions[action], index, show(port->getName()));
            if (action == 0) bus->connect(index, port);
            if (action == 1) bus->disconnect(index);
            if (action == 2) bus->disconnect(port);
            if (action == 3) port->setBus(bus);
            if (action == 4) port->unsetBus();
            return;
        }
        std::vector<kalnetbus*> buses;
        for (auto& e : *s.design->data->getNetbusMap())
            buses.push_back(e.second);
        kalnetbus* bus = pick(buses);
        kaldesign* other = current.empty() ? s.design : current[in.below(current.size())].design;
        std::vector<kalnet*> nets;
        for (auto& e : *other->data->getNetMap())
            nets.push_back(e.second);
        kalnet* net = pick(nets);
        if (!bus || !net) return;
        trace("%zu %s: net bus %s: %s %u, net %s\n", ops, iname(s.owner).c_str(), show(bus->getName()),
              actions[action], index, show(net->getName()));
        if (action == 0) bus->connect(index, net);
        if (action == 1) bus->disconnect(index);
        if (action == 2) bus->disconnect(net);
        if (action == 3) net->setBus(bus);
        if (action == 4) net->unsetBus();
    }

    void onComponent(op o) {
        kalcomponent* c = pick(components());
        const char* who = iname(c).c_str();
        if (o == op::setName) {
            const std::string* n = name({});
            trace("%zu %s: setName %s\n", ops, who, show(n));
            c->setName(n);
            return;
        }
        std::vector<const std::string*> designs;
        for (auto& e : c->data->designs)
            designs.push_back(text(e.first));
        const std::string* n = name(designs);
        std::string key = n ? *n : std::string();
        // Both hand the design that leaves the map back to us.
        kaldesign* old = n ? c->getDesign(&key) : nullptr;
        if (o == op::createDesign) {
            trace("%zu %s: createDesign %s\n", ops, who, show(n));
            c->createDesign(text("v"), text("l"), n, text("1.0"));
        } else {
            trace("%zu %s: deleteDesign %s\n", ops, who, show(n));
            c->deleteDesign(n);
        }
        if (old && c->getDesign(&key) != old) held.designs.push_back(old);
    }

    // Layout: value, member, kind, name (or port), flag.
    void attributes(const scope& s) {
        static const std::string padPin("PadPin"), type("type"), mark("mark");
        const std::string* value = text(in.flag() ? "true" : "internal");
        kaldesign* d = s.design;
        kalcomponent* m = member(s);
        const unsigned kind = in.byte() % 5;
        trace("%zu %s: attributes, kind %u\n", ops, iname(s.owner).c_str(), kind);
        // Reaching every member is for complete buses only.
        auto complete = [](const auto& slots) {
            for (auto* slot : slots)
                if (!slot) return false;
            return true;
        };
        switch (kind) {
            case 0: {
                kalport* p = pickPort(m);
                in.byte();
                if (p) p->setAttributeValue(&padPin, value);
                return;
            }
            case 1: {
                kalportbus* b = m->getPortbus(name(busNames(m)), false);
                const bool all = in.flag();
                if (b) b->setAttributeValue(&padPin, value, all && complete(b->getBits()));
                return;
            }
            case 2: {
                kalnet* n = d->getNet(name(netNames(d)));
                in.byte();
                if (n) n->setAttributeValue(&type, value);
                return;
            }
            case 3: {
                kalnetbus* b = d->getNetbus(name(netbusNames(d)));
                const bool all = in.flag();
                if (b) b->setAttributeValue(&type, value, all && complete(b->getBits()));
                return;
            }
            default: {
                kaldualportbus* b = d->getDualPortbus(ref(dualBusNames(d)));
                const bool all = in.flag();
                if (b) b->setAttributeValue(&mark, value, all && complete(b->getSlots()));
                return;
            }
        }
    }

    // Read-only questions over the whole scope; their answers do not matter,
    // every pointer they follow does.
    void queries(const scope& s) {
        kaldesign* d = s.design;
        trace("%zu %s: queries\n", ops, iname(s.owner).c_str());
        volatile std::size_t sink = 0;
        std::vector<kalcomponent*> members{s.owner};
        for (kalcomponent* c : instancesOf(d))
            members.push_back(c);
        for (kalcomponent* c : members) {
            for (auto& e : c->data->ports) {
                kalport* p = e.second;
                sink += p->getConnectedPorts().size() + p->getPortsOfDualPort().size();
                sink += isPadPin(p) + isPortOrDualPortConnected(p) + isDualPort(p) + d->isSourcePort(p);
                sink += getNetConnectedToPortOrDualPort(p) != nullptr;
                sink += getExportedToOfPortOrDualPort(p) != nullptr;
                sink += d->getRelativeHierarchyName(p).size();
            }
            for (auto& e : c->data->portbuses) {
                kalportbus* b = e.second;
                sink += b->getConnectedNetbus() != nullptr;
                sink += b->getExportedToBus() != nullptr;
                sink += b->hasConnectedPort() + isDualPortbus(b) + isPadPinBus(b) + d->isSourcePort(b);
                sink += getNetbusConnectedToPortbusOrDualPortbus(b) != nullptr;
                sink += hasPortBitConnectedToPortbusOrDualPortbus(b);
            }
        }
        for (auto& e : *d->data->getNetMap()) {
            kalnet* n = e.second;
            sink += n->getTop().size() + n->getSources().size() + n->getSinks().size();
            sink += isInternalConnection(n);
        }
        for (auto& e : *d->data->getNetbusMap()) {
            kalnetbus* b = e.second;
            sink += isInternalConnection(b);
            const unsigned lo = b->getMsb() < b->getLsb() ? b->getMsb() : b->getLsb();
            const unsigned hi = b->getMsb() < b->getLsb() ? b->getLsb() : b->getMsb();
            for (unsigned i = lo; i <= hi; ++i)
                sink += b->netAtIndex(i) != nullptr;
        }
        for (auto& e : *d->data->getDualPortMap()) {
            kaldualport* dp = e.second;
            sink += static_cast<std::size_t>(dp->direction()) + dp->getPortsCount() + dp->isConnected();
            sink += dp->getConnectedNet() != nullptr;
            sink += dp->getConnectedPort() != nullptr;
            sink += dp->getExportedTo() != nullptr;
        }
        for (auto& e : *d->data->getDualPortbusMap()) {
            kaldualportbus* b = e.second;
            sink += b->getDualPortsCount();
            // The direction is read from slot 0, which must then hold a dual port.
            const std::vector<kaldualport*> slots = b->getSlots();
            if (!slots.empty() && slots[0]) sink += static_cast<std::size_t>(b->direction());
        }
        sink += d->getVirtualElements()->size();
        sink += s.owner->elementCount() + top->elementCount();
        std::vector<std::string> pads;
        top->initBlackBoxPadPin(pads);
        sink += pads.size();
        (void)sink;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    session(data, size).run();
    return 0;
}
