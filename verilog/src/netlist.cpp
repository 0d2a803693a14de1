#include "netlist.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <deque>
#include <exception>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kaldata.h"
#include "names.h"
#include "ptrmap.h"
#include "textbuf.h"

namespace kalverilog {
namespace detail {

namespace {

// A model the netlist cannot express; caught at the interface.
struct failure {
    std::string message;
};

[[noreturn]] void fail(std::string message) {
    throw failure{std::move(message)};
}

std::string text(const std::string* s) {
    return s ? *s : std::string();
}

std::string quoted(const std::string& s) {
    return "\"" + s + "\"";
}

void appendNumber(std::string& out, unsigned long long n) {
    char buf[24];
    auto end = std::to_chars(buf, buf + sizeof buf, n).ptr;
    out.append(buf, end);
}

void appendNumber(textbuf& out, unsigned long long n) {
    out.number(n);
}

std::string number(unsigned long long n) {
    std::string s;
    appendNumber(s, n);
    return s;
}

kaldesign* firstDesign(kalcomponent* c) {
    if (!c || !c->data || c->data->designs.empty()) return nullptr;
    return c->data->designs.begin()->second;
}

// A component and the objects made with it (its attributes, ports, their
// map nodes, its buses) mostly lie together in memory, just after it. The
// extent that the last instance's objects took there is asked for on the
// next instance before it is read: its maps are chains of dependent reads
// that the processor cannot overlap by itself. A model laid out otherwise
// only loses the prefetch.
class extent {
public:
    void start(const void* base) {
        at = address(base);
        low = limit;
        high = 0;
    }
    void note(const void* p) {
        const std::uintptr_t offset = address(p) - at;  // wraps around for p below at
        if (offset >= limit) return;
        if (offset < low) low = offset;
        if (offset + 64 > high) high = offset + 64;
    }
    // The object itself (the component and the start of its data), and from
    // a little before the lowest object noted (the object a map node was made
    // after) to the highest.
    void done() {
        from = low > slack ? low - slack : 0;
        to = high;
    }
    // The extent is asked for in steps, so that the requests do not queue up
    // behind each other: aim at the next object, then ask for a few lines at
    // a time.
    void aim(const void* base) {
        next = static_cast<const char*>(base);
        pos = 0;
        end = head < to ? head : to;
        resume = from > head ? from : head;
    }
    KALVERILOG_INLINE void step(std::uintptr_t lines) {
#if defined(__GNUC__) || defined(__clang__)
        for (; lines; --lines) {
            if (pos >= end) {
                if (end == to || resume >= to) return;
                pos = resume > pos ? resume : pos;  // past the head, on to the noted span
                end = to;
            }
            __builtin_prefetch(next + pos);
            pos += 64;
        }
#else
        (void)lines;
#endif
    }

private:
    static constexpr std::uintptr_t limit = 64 * 1024;  // a span larger than this is no one piece
    static constexpr std::uintptr_t head = 512, slack = 256;
    static std::uintptr_t address(const void* p) {
        return reinterpret_cast<std::uintptr_t>(p);
    }
    std::uintptr_t at = 0, low = 0, high = 0, from = 0, to = 0;
    const char* next = nullptr;
    std::uintptr_t pos = 0, end = 0, resume = 0;
};

// Compares n bytes, sizeof(Word) <= n <= 2 * sizeof(Word), as the first and
// the last word (they overlap when n is short of two words).
template <typename Word>
KALVERILOG_INLINE bool sameEnds(const char* x, const char* y, std::size_t n) {
    Word x0, x1, y0, y1;
    std::memcpy(&x0, x, sizeof(Word));
    std::memcpy(&x1, x + n - sizeof(Word), sizeof(Word));
    std::memcpy(&y0, y, sizeof(Word));
    std::memcpy(&y1, y + n - sizeof(Word), sizeof(Word));
    return x0 == y0 && x1 == y1;
}

// A short string is compared word by word in place of a call.
KALVERILOG_INLINE bool sameText(const std::string& a, const char* y, std::size_t n) {
    if (a.size() != n) return false;
    const char* x = a.data();
    if (n >= 8 && n <= 16) return sameEnds<std::uint64_t>(x, y, n);
    if (n >= 4 && n < 8) return sameEnds<std::uint32_t>(x, y, n);
    if (n < 4) {
        for (std::size_t i = 0; i < n; ++i)
            if (x[i] != y[i]) return false;
        return true;
    }
    return std::memcmp(x, y, n) == 0;
}

KALVERILOG_INLINE bool sameText(const std::string& a, const std::string& b) {
    return sameText(a, b.data(), b.size());
}

// Vendor, library, name and version, as the user reads them.
std::string kindOf(kalcomponent* c) {
    kalattributes* id = c->identity;
    if (!id) return ":::";
    return text(id->getVendor()) + ":" + text(id->getLibrary()) + ":" + text(id->getName()) + ":" +
           text(id->getVersion());
}

// The same, unambiguous, for telling kinds apart, into key (whose storage
// is kept from one component to the next).
void kindKey(kalcomponent* c, std::string& key, extent& near) {
    key.clear();
    kalattributes* id = c->identity;
    if (!id) return;
    near.note(id);
    for (const std::string* part : {id->getVendor(), id->getLibrary(), id->getName(), id->getVersion()}) {
        near.note(part);
        near.step(6);
        key += part ? '+' : '-';  // an absent attribute is not an empty one
        if (part) key += *part;
        key += '\0';
    }
}

// Where a component sits below the root: the root's name, then one instance
// name per level.
std::string pathOf(kalcomponent* c, kalcomponent* root) {
    std::string path;
    while (c) {
        const bool top = c == root || !c->parentDesign;
        const std::string* own = c->data ? c->data->instanceName : nullptr;
        std::string segment = top && !own ? text(c->identity ? c->identity->getName() : nullptr) : text(own);
        path = path.empty() ? segment : segment + "/" + path;
        if (top) break;
        c = c->parentDesign->owner;
    }
    return path;
}

std::string describe(kalcomponent* c, kalcomponent* root) {
    return kindOf(c) + " at " + pathOf(c, root);
}

const char* directionWord(int direction) {
    switch (direction) {
        case 1:
            return "input";
        case 2:
            return "output";
        default:
            return "inout";
    }
}

// One port of a module: a scalar port, or a port bus with its range.
struct portref {
    const std::string* name = nullptr;  // the component's map key
    int direction = 0;
    kalport* port = nullptr;
    kalportbus* bus = nullptr;
    unsigned msb = 0, lsb = 0;
};

std::string describe(const portref& p) {
    std::string s = p.bus ? "port bus " + quoted(*p.name) + " [" + number(p.msb) + ":" + number(p.lsb) + "]"
                          : "port " + quoted(*p.name);
    return s + " (" + directionWord(p.direction) + ")";
}

// A component's module ports in name order (a scalar port before a bus of the
// same name), without the bit ports of its buses.
void portsOf(kalcomponent* c, kalcomponent* root, std::vector<portref>& out,
             std::vector<std::pair<kalport*, const std::string*>>& bits) {
    out.clear();
    bits.clear();
    if (!c->data) return;
    for (auto& b : c->data->portbuses) {
        if (!b.second) continue;
        for (kalport* p : b.second->getBits())
            if (p) bits.emplace_back(p, &b.first);
    }
    std::sort(bits.begin(), bits.end());
    for (std::size_t i = 1; i < bits.size(); ++i)
        if (bits[i].first == bits[i - 1].first) {
            const std::string* a = bits[i - 1].second;
            const std::string* b = bits[i].second;
            fail("port " + quoted(text(bits[i].first->getName())) + " of " + describe(c, root) +
                 (a == b ? " fills two slots of port bus " + quoted(*a)
                         : " is a bit of both port buses " + quoted(*a) + " and " + quoted(*b)) +
                 ", which a netlist cannot express");
        }
    auto isBit = [&bits](kalport* p) {
        auto at = std::lower_bound(bits.begin(), bits.end(),
                                   std::make_pair(p, static_cast<const std::string*>(nullptr)));
        return at != bits.end() && at->first == p;
    };
    auto port = c->data->ports.begin(), portEnd = c->data->ports.end();
    auto bus = c->data->portbuses.begin(), busEnd = c->data->portbuses.end();
    for (;;) {
        while (port != portEnd && (!port->second || isBit(port->second)))
            ++port;
        while (bus != busEnd && !bus->second)
            ++bus;
        if (port == portEnd && bus == busEnd) break;
        portref r;
        if (bus == busEnd || (port != portEnd && port->first <= bus->first)) {
            r.name = &port->first;
            r.port = port->second;
            r.direction = port->second->getDirection();
            ++port;
        } else {
            r.name = &bus->first;
            r.bus = bus->second;
            r.direction = bus->second->getDirection();
            r.msb = bus->second->getMsb();
            r.lsb = bus->second->getLsb();
            ++bus;
        }
        if (r.direction < 1 || r.direction > 3)
            fail((r.bus ? "port bus " : "port ") + quoted(*r.name) + " of " + describe(c, root) +
                 " has direction " + std::to_string(r.direction) +
                 "; a netlist port is an input (1), an output (2) or an inout (3)");
        out.push_back(r);
    }
}

// The first difference between two port lists, or nothing.
std::string difference(const std::vector<portref>& here, const std::vector<portref>& there) {
    auto same = [](const portref& a, const portref& b) {
        return *a.name == *b.name && a.direction == b.direction && !a.bus == !b.bus &&
               (!a.bus || (a.msb == b.msb && a.lsb == b.lsb));
    };
    for (std::size_t i = 0; i < here.size() || i < there.size(); ++i) {
        if (i < here.size() && i < there.size() && same(here[i], there[i])) continue;
        if (i >= there.size()) return "it has " + describe(here[i]) + ", which the other has not";
        if (i >= here.size()) return "it lacks " + describe(there[i]);
        if (*here[i].name == *there[i].name)
            return "it has " + describe(here[i]) + " where the other has " + describe(there[i]);
        return *here[i].name < *there[i].name ? "it has " + describe(here[i]) + ", which the other has not"
                                              : "it lacks " + describe(there[i]);
    }
    return std::string();
}

// A module to write, and the component its ports (and design) come from.
struct modinfo {
    kalcomponent* def = nullptr;
    kaldesign* design = nullptr;                 // null for a leaf
    std::vector<portref> ports;                  // of def
    std::vector<std::string> portNames;          // as written
    std::vector<std::string> portOpen;           // "        .name(" of a connection, per port
    std::size_t bitCount = 0;                    // scalar ports and bus bits of ports
    std::vector<std::string> freshPortNames;     // those the writer made up, unescaped
    std::vector<std::uint32_t> instanceModules;  // per instance of design, in name order
    std::string name;                            // as written
};

// Walks the hierarchy from the root: the modules, which module each instance
// is of, a check that no module contains itself, and the module names.
class hierarchy {
public:
    hierarchy(kalcomponent* root) : root(root) {
        if (!root) fail("no component was given");
        if (!firstDesign(root))
            fail(describe(root, root) + " has no design, so there is no netlist to write");
        discover();
        checkCycles();
        std::vector<std::pair<kalport*, const std::string*>> bits;
        for (auto& m : modules)
            portsOf(m.def, root, m.ports, bits);
        nameModules();
    }

    kalcomponent* const root;
    std::vector<modinfo> modules;

private:
    void discover() {
        std::unordered_map<std::string, std::uint32_t> kinds;
        std::deque<std::uint32_t> pending;
        std::string key;
        extent near;
        kindKey(root, key, near);
        kinds.emplace(key, 0);
        modules.emplace_back();
        modules[0].def = root;
        modules[0].design = firstDesign(root);
        pending.push_back(0);
        while (!pending.empty()) {
            const std::uint32_t m = pending.front();
            pending.pop_front();
            kaldesign* d = modules[m].design;
            const auto& instances = *d->data->getInstanceMap();
            for (auto entry = instances.begin(); entry != instances.end(); ++entry) {
                kalcomponent* inst = entry->second;
                if (!inst) continue;
                auto ahead = std::next(entry);
                if (ahead != instances.end() && ahead->second) near.aim(ahead->second);
                near.start(inst);
                near.note(inst->data);
                kindKey(inst, key, near);
                near.step(~std::uintptr_t(0));
                near.done();
                auto known = kinds.find(key);
                const bool added = known == kinds.end();
                if (added) known = kinds.emplace(key, static_cast<std::uint32_t>(modules.size())).first;
                const std::uint32_t k = known->second;
                if (added) {
                    modules.emplace_back();
                    modules[k].def = inst;
                    modules[k].design = firstDesign(inst);
                    if (modules[k].design) pending.push_back(k);
                } else if (!modules[k].design && firstDesign(inst)) {
                    // the first component of the kind with a design defines it
                    modules[k].def = inst;
                    modules[k].design = firstDesign(inst);
                    pending.push_back(k);
                }
                modules[m].instanceModules.push_back(k);
            }
        }
    }

    void checkCycles() {
        std::vector<char> state(modules.size(), 0);  // 0 new, 1 on the path, 2 done
        std::vector<std::uint32_t> path;
        for (std::uint32_t m = 0; m < modules.size(); ++m)
            visit(m, state, path);
    }

    void visit(std::uint32_t m, std::vector<char>& state, std::vector<std::uint32_t>& path) {
        if (state[m] == 2 || !modules[m].design) return;
        path.push_back(m);
        if (state[m] == 1) {
            std::string chain;
            for (auto at = std::find(path.begin(), path.end(), m); at != path.end(); ++at)
                chain += (chain.empty() ? "" : " -> ") + kindOf(modules[*at].def);
            fail("the module of " + kindOf(modules[m].def) + " contains itself: " + chain);
        }
        state[m] = 1;
        std::vector<std::uint32_t> children(modules[m].instanceModules);
        std::sort(children.begin(), children.end());
        children.erase(std::unique(children.begin(), children.end()), children.end());
        for (std::uint32_t k : children)
            visit(k, state, path);
        state[m] = 2;
        path.pop_back();
    }

    void nameModules() {
        static const std::string attribute(moduleNameAttribute);
        std::vector<const std::string*> asked(modules.size(), nullptr);
        std::set<std::string> bases, claimed;
        std::unordered_map<std::string, std::uint32_t> askedBy;
        for (std::uint32_t m = 0; m < modules.size(); ++m) {
            const std::string* a = modules[m].def->getAttributeValue(&attribute);
            if (a && !a->empty()) asked[m] = a;
            kalattributes* id = modules[m].def->identity;
            bases.insert(asked[m] ? *asked[m] : text(id ? id->getName() : nullptr));
        }
        // A module name asked for is how other sources refer to the module, so it
        // is kept or refused, never changed.
        for (std::uint32_t m = 0; m < modules.size(); ++m) {
            if (!asked[m]) continue;
            std::string name = keepsName(*asked[m]) ? *asked[m] : sanitised(*asked[m]);
            auto taken = askedBy.emplace(name, m);
            if (!taken.second)
                fail(kindOf(modules[taken.first->second].def) + " and " + kindOf(modules[m].def) +
                     " both ask for the module name " + quoted(name) + " (attribute " + quoted(attribute) +
                     ")");
            claimed.insert(name);
            modules[m].name = identText(name);
        }
        freshnames fresh;
        for (std::uint32_t m = 0; m < modules.size(); ++m) {
            if (asked[m]) continue;
            kalattributes* id = modules[m].def->identity;
            const std::string base = text(id ? id->getName() : nullptr);
            std::string name = base;
            if (!keepsName(base) || claimed.count(base))
                name = fresh.make(base,
                                  [&](const std::string& s) { return claimed.count(s) || bases.count(s); });
            claimed.insert(name);
            modules[m].name = identText(name);
        }
    }
};

void range(textbuf& o, unsigned msb, unsigned lsb) {
    o += '[';
    appendNumber(o, msb);
    o += ':';
    appendNumber(o, lsb);
    o += "] ";
}

void portList(textbuf& out, const modinfo& m) {
    if (m.ports.empty()) {
        out += ";\n";
        return;
    }
    out += " (\n";
    for (std::size_t i = 0; i < m.ports.size(); ++i) {
        const portref& p = m.ports[i];
        out += "    ";
        out += directionWord(p.direction);
        out += " wire ";
        if (p.bus) range(out, p.msb, p.lsb);
        out += m.portNames[i];
        out += i + 1 < m.ports.size() ? ",\n" : "\n";
    }
    out += ");\n";
}

// Orders two names as std::string does; names differ early, mostly, so the
// bytes are compared here in place of a call.
inline int compareText(const std::string& a, const std::string& b) {
    const std::size_t n = a.size() < b.size() ? a.size() : b.size();
    const char *x = a.data(), *y = b.data();
    for (std::size_t i = 0; i < n; ++i)
        if (x[i] != y[i]) return static_cast<unsigned char>(x[i]) < static_cast<unsigned char>(y[i]) ? -1 : 1;
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

// Iterates a sorted sequence of names alongside another sorted walk.
template <typename Iterator, typename Key>
class cursor {
public:
    cursor(Iterator begin, Iterator end, Key key) : at(begin), end(end), key(key) {}
    bool holds(const std::string& name) {
        int order = 0;
        while (at != end && (order = compareText(key(*at), name)) < 0)
            ++at;
        return at != end && order == 0;
    }

private:
    Iterator at, end;
    Key key;
};

template <typename Iterator, typename Key>
cursor<Iterator, Key> makeCursor(Iterator begin, Iterator end, Key key) {
    return cursor<Iterator, Key>(begin, end, key);
}

// Writes one module with a design.
class modulewriter {
public:
    modulewriter(const hierarchy& h, std::uint32_t self, textbuf& out)
        : h(h),
          m(h.modules[self]),
          design(m.design),
          instances(*design->data->getInstanceMap()),
          netbuses(*design->data->getNetbusMap()),
          nets(*design->data->getNetMap()),
          busIndex(netbuses.size()),
          special(64),
          scalars(16),
          out(out),
          decls(&out) {
        for (const std::string& name : m.freshPortNames)
            fresh.reserve(name);
    }

    void write() {
        header();
        declareNetbuses();
        declareNets();
        declarePins();
        joinTopPorts();
        joinSharedBits();
        // Declarations go straight into the text up to here. Instances follow
        // the assignments; the few wires that only instances turn up are
        // declared apart and put in place at the end.
        const std::size_t declEnd = out.size();
        if (!assigns.empty()) {
            out += '\n';
            out += assigns;
        }
        textbuf late;
        decls = &late;
        writeInstances();
        if (ncCount) {
            late += "    wire [";
            late.number(ncCount - 1);
            late += ":0] ";
            late += *ncName;
            late += ";  // bits on no net\n";
        }
        if (!late.empty()) out.insert(declEnd, late);
        out += "endmodule\n";
    }

private:
    static constexpr std::uint32_t noWire = 0xffffffffu;

    // A declared wire: a net bus's vector, or a scalar wire with a name of the
    // writer's making (scalar nets under their own name are not listed).
    struct wire {
        const std::string* text;  // as written
        unsigned msb, lsb;
        bool bus;
    };

    // Where a net is in the text: a wire's bit (slot + 1), the whole wire
    // (slot 0), or a net written under its own name (no wire).
    struct netref {
        const std::string* text = nullptr;
        std::uint32_t wire = noWire;
        std::uint32_t slot = 0;
    };

    struct sharedbit {
        netref bit, home;
    };

    const hierarchy& h;
    const modinfo& m;
    kaldesign* design;
    const std::map<std::string, kalcomponent*>& instances;
    const std::map<std::string, kalnetbus*>& netbuses;
    const std::map<std::string, kalnet*>& nets;
    std::vector<wire> wires;
    std::deque<std::string> texts;  // written names that are not the model's own strings
    // How each net of the design is found, cheapest first: a net named
    // "bus[i]" that the net bus "bus" holds at bit i (looked up by name, so the
    // net map is walked without reading the nets); one the writer named, or
    // that a bus holds otherwise (special: net -> wire << 32 | slot); a scalar
    // net under its own name (scalars).
    struct businfo {
        std::string_view name;
        kalnetbus* bus;
        std::uint32_t wire;
        unsigned long long width, named;  // bits, and bits held by the net of their name
        bool slotsNamed;                  // every slot holds the net of its bit name (allSlotsNamed)
        std::map<std::string, kalnet*>::const_iterator past;  // the first net name after every "name[..."
    };
    std::vector<businfo> businfos;  // in name order
    ptrmap busIndex;             // net bus -> businfos; a net's own bus is most often the one its name gives
    businfo* lastBus = nullptr;  // most lookups come in runs of one bus
    ptrmap special;
    ptrset scalars;
    std::unordered_map<const kaldualport*, std::uint32_t> pins;
    std::vector<sharedbit> shared;
    freshnames fresh;
    textbuf& out;
    textbuf* decls;  // where declarations go: the text, or apart once instances are written
    textbuf assigns;
    bool instanceWritten = false;
    std::size_t ncCount = 0;
    const std::string* ncName = nullptr;
    std::vector<const std::string*> portNames;  // model names of the module ports, sorted

    // ---- names ----

    static bool byName(const std::string* a, const std::string* b) { return *a < *b; }

    bool portHas(const std::string& s) const {
        return std::binary_search(portNames.begin(), portNames.end(), &s, byName);
    }

    bool modelName(const std::string& s) const {
        return portHas(s) || instances.count(s) || netbuses.count(s) || nets.count(s);
    }

    const std::string* freshName(const std::string& base) {
        return &texts.emplace_back(
            identText(fresh.make(base, [this](const std::string& s) { return modelName(s); })));
    }

    // The written name of a model object: its own (the model's string itself
    // when it needs no escape), or a fresh one when it cannot be written or a
    // name of higher precedence has it.
    const std::string* nameFor(const std::string& name, bool taken) {
        if (!taken && isSimple(name)) return &name;
        if (!taken && isEscapable(name)) return &texts.emplace_back(identText(name));
        return freshName(name);
    }

    void renamedComment(textbuf& o, const std::string* written, const std::string& model, const char* what) {
        if (written == &model || *written == model || *written == identText(model)) return;
        o += "  // ";
        o += what;
        o += ' ';
        o += model;
    }

    std::string designName() const {
        kalattributes* id = design->identity;
        return "the design " + quoted(text(id ? id->getName() : nullptr)) + " of " + describe(m.def, h.root);
    }

    // ---- header ----

    void header() {
        out += "// ";
        out += kindOf(m.def);
        out += "\nmodule ";
        out += m.name;
        portList(out, m);
        for (const portref& p : m.ports)
            portNames.push_back(p.name);
        std::sort(portNames.begin(), portNames.end(), byName);
    }

    // ---- wires ----

    netref refOf(std::uint64_t code) const {
        const auto w = static_cast<std::uint32_t>(code >> 32);
        return {wires[w].text, w, static_cast<std::uint32_t>(code)};
    }

    static std::uint64_t codeOf(std::size_t wire, std::size_t slot) {
        return static_cast<std::uint64_t>(wire) << 32 | slot;
    }

    // The net is the bit of the net bus its name ("bus[i]", i written as the
    // library writes bit numbers) names, and that bus holds it there. The name
    // is the net map key: the library keeps the two equal.
    static bool mayBeBitName(const std::string& name) { return name.size() >= 4 && name.back() == ']'; }

    bool namedBit(const std::string& name, const kalnet* net, netref& r) {
        if (!mayBeBitName(name)) return false;
        const std::size_t size = name.size();
        const std::size_t open = name.rfind('[', size - 2);
        if (open == std::string::npos || open == 0 || open + 2 == size) return false;
        if (name[open + 1] == '0' && open + 3 != size) return false;  // "b[03]" is no bit name
        unsigned long long bit = 0;
        for (std::size_t i = open + 1; i + 1 < size; ++i) {
            const char c = name[i];
            if (c < '0' || c > '9' || bit > 0xffffffffull) return false;
            bit = bit * 10 + static_cast<unsigned>(c - '0');
        }
        const std::string_view prefix(name.data(), open);
        if (!lastBus || prefix != lastBus->name) {
            businfo* b = nullptr;
            if (kalnetbus* own = net->getBus())
                if (const std::uint64_t* i = busIndex.find(own))
                    if (businfos[*i].name == prefix) b = &businfos[*i];
            if (!b) {
                auto found =
                    std::lower_bound(businfos.begin(), businfos.end(), prefix,
                                     [](const businfo& x, std::string_view name) { return x.name < name; });
                if (found == businfos.end() || found->name != prefix) return false;
                b = &*found;
            }
            lastBus = b;
        }
        const wire& w = wires[lastBus->wire];
        const unsigned long long lo = std::min(w.msb, w.lsb), hi = std::max(w.msb, w.lsb);
        if (bit < lo || bit > hi) return false;
        try {
            if (lastBus->bus->netAtIndex(static_cast<unsigned>(bit)) != net) return false;
        } catch (const std::out_of_range&) {  // a slot vector shorter than the range
            return false;
        }
        r = {w.text, lastBus->wire,
             static_cast<std::uint32_t>((w.msb >= w.lsb ? w.msb - bit : bit - w.msb) + 1)};
        return true;
    }

    bool namedBit(const kalnet* net, netref& r) {
        const std::string* name = net->getName();
        return name && namedBit(*name, net, r);
    }

    void declareNetbuses() {
        auto inInstances = makeCursor(instances.begin(), instances.end(),
                                      [](const auto& e) -> const std::string& { return e.first; });
        businfos.reserve(netbuses.size());
        wires.reserve(netbuses.size());
        for (auto& entry : netbuses) {
            kalnetbus* nb = entry.second;
            if (!nb) continue;
            const unsigned msb = nb->getMsb(), lsb = nb->getLsb();
            const bool taken = portHas(entry.first);
            const std::string* name = nameFor(entry.first, inInstances.holds(entry.first) || taken);
            busIndex.emplace(nb, businfos.size());
            businfos.push_back({entry.first, nb, static_cast<std::uint32_t>(wires.size()),
                                (msb > lsb ? msb - lsb : lsb - msb) + 1ull, 0, false, nets.end()});
            wires.push_back({name, msb, lsb, true});
            textbuf& d = *decls;
            d += "    wire ";
            range(d, msb, lsb);
            d += *name;
            d += ';';
            renamedComment(d, name, entry.first, "net bus");
            d += '\n';
        }
        checkSlotNames();
    }

    // businfo::slotsNamed of every bus, and for those whose slots all hold
    // the nets of their names where the net map walk will step over their
    // run of names (businfo::past). The nets of the slots are read, and asked
    // for a bus ahead: they lie together, but far from the last bus's. The
    // net map lookups, one tree descent each, overlap with those reads here;
    // in the walk they would wait alone.
    void checkSlotNames() {
        std::vector<kalnet*> bits, next;
        if (!businfos.empty()) bits = businfos[0].bus->getBits();
        for (std::size_t i = 0; i < businfos.size(); ++i) {
            next.clear();
            if (i + 1 < businfos.size()) next = businfos[i + 1].bus->getBits();
            std::size_t asked = 0;  // of next's nets
            businfos[i].slotsNamed = allSlotsNamed(businfos[i], bits, next, asked);
            for (; asked < next.size(); ++asked)
                prefetchNet(next[asked]);
            if (businfos[i].slotsNamed) {
                std::string past(businfos[i].name);
                past += '\\';  // '[' + 1
                businfos[i].past = nets.lower_bound(past);
            }
            bits.swap(next);
        }
    }

    using netentry = std::pair<const std::string, kalnet*>;

    void declareNets() {
        unsigned long long busBits = 0;
        for (const businfo& b : businfos)
            busBits += b.width;
        scalars.reserve(nets.size() > busBits ? nets.size() - busBits : 16);
        // What walkNets may have to take back.
        const std::size_t outMark = out.size(), wireMark = wires.size(), textMark = texts.size();
        const freshnames freshMark = fresh;
        const ptrmap specialMark = special;
        std::vector<kalnet*> simple;
        if (!walkNets(true, simple)) {
            out.truncate(outMark);
            wires.resize(wireMark);
            while (texts.size() > textMark)
                texts.pop_back();
            fresh = freshMark;
            special = specialMark;
            simple.clear();
            walkNets(false, simple);
        }
        // The set of nets written under their own names is filled in one go,
        // each net's cell asked for a few nets ahead.
        for (std::size_t i = 0; i < simple.size(); ++i) {
            if (i + 8 < simple.size()) scalars.prefetch(simple[i + 8]);
            scalars.insert(simple[i]);
        }
        checkNetbuses();
    }

    // Declares the nets that are not bits of their net bus by name ("loose"
    // nets), in name order, and counts the others in businfo::named. Nets
    // that keep their simple names are listed in simple for the scalars set.
    //
    // The net map is the largest thing a netlist reads; with skipRuns, a bus
    // all of whose slots hold nets of their bit names (businfo::slotsNamed)
    // has its run of "bus[..." names in the map stepped over. That is right
    // when the run holds just those names, which the count of entries
    // confirms (a net of a name like "bus[99]" beside them shows as a
    // surplus); otherwise the caller takes back what was declared and walks
    // again without skipping.
    bool walkNets(bool skipRuns, std::vector<kalnet*>& simple) {
        for (businfo& b : businfos)
            b.named = 0;
        std::vector<char> tried(skipRuns ? businfos.size() : 0, 0);
        auto inPorts = makeCursor(portNames.begin(), portNames.end(),
                                  [](const std::string* s) -> const std::string& { return *s; });
        auto inInstances = makeCursor(instances.begin(), instances.end(),
                                      [](const auto& e) -> const std::string& { return e.first; });
        auto inNetbuses = makeCursor(netbuses.begin(), netbuses.end(),
                                     [](const auto& e) -> const std::string& { return e.first; });
        std::size_t seen = 0;
        netref r;
        for (auto it = nets.begin(); it != nets.end();) {
            const std::string& model = it->first;
            kalnet* net = it->second;
            if (net && namedBit(model, net, r)) {
                businfo& b = *lastBus;
                const std::size_t index = static_cast<std::size_t>(&b - businfos.data());
                if (skipRuns && !tried[index]) {
                    tried[index] = 1;
                    if (b.slotsNamed) {
                        b.named = b.width;
                        seen += b.width;
                        it = b.past;
                        continue;
                    }
                }
                ++b.named;
            } else if (net) {
                const bool taken =
                    inPorts.holds(model) || inInstances.holds(model) || inNetbuses.holds(model);
                if (!taken && isSimple(model)) {
                    simple.push_back(net);  // written as its own name
                    declare(&model, model, "net");
                } else {
                    special.emplace(net, codeOf(wires.size(), 0));
                    wires.push_back({nameFor(model, taken), 0, 0, false});
                    declare(wires.back().text, model, "net");
                }
            }
            ++seen;
            ++it;
        }
        return seen == nets.size();
    }

    // Every slot of the bus holds a net of this design named "bus[bit]".
    // The nets of ahead are asked for along the way, one per slot (asked
    // counts them), so that the requests do not queue up at once.
    bool allSlotsNamed(const businfo& b, const std::vector<kalnet*>& bits, const std::vector<kalnet*>& ahead,
                       std::size_t& asked) {
        if (bits.size() != b.width) return false;
        const wire& w = wires[b.wire];
        // "bus[", then each bit's number and "]"
        const std::size_t stem = b.name.size() + 1;
        if (bitName.size() < stem + 24) bitName.resize(stem + 24);
        char* expected = &bitName[0];
        std::memcpy(expected, b.name.data(), b.name.size());
        expected[stem - 1] = '[';
        for (std::size_t k = 0; k < bits.size(); ++k) {
            if (asked < ahead.size()) prefetchNet(ahead[asked++]);
            kalnet* net = bits[k];
            if (!net || net->getDesign() != design) return false;
            const std::string* name = net->getName();
            const unsigned long long bit = w.msb >= w.lsb ? w.msb - k : w.msb + k;
            char* end = std::to_chars(expected + stem, expected + stem + 22, bit).ptr;
            *end++ = ']';
            if (!name || !sameText(*name, expected, static_cast<std::size_t>(end - expected))) return false;
        }
        return true;
    }

    std::string bitName;  // room for the names allSlotsNamed expects

    // Buses whose every bit is the net of its name are done. The others are
    // checked slot by slot; a net that such a slot holds and that is declared
    // already (its own bus's bit, a scalar net, another bus's slot) stays one
    // net: the slot is joined to it.
    void checkNetbuses() {
        for (const businfo& b : businfos) {
            if (b.named == b.width) continue;
            kalnetbus* nb = b.bus;
            const std::string entryName(b.name);
            struct {
                const std::string& first;
            } entry{entryName};
            const unsigned msb = nb->getMsb(), lsb = nb->getLsb();
            const std::vector<kalnet*> bits = nb->getBits();
            if (bits.size() != b.width)
                fail("net bus " + quoted(entry.first) + " of " + designName() + " has " +
                     number(bits.size()) + " slots for its range [" + number(msb) + ":" + number(lsb) + "]");
            for (std::size_t k = 0; k < bits.size(); ++k) {
                const unsigned long long bit = msb >= lsb ? msb - k : msb + k;
                kalnet* net = bits[k];
                if (!net)
                    fail("net bus " + quoted(entry.first) + " of " + designName() + " has no net at bit " +
                         number(bit));
                if (net->getDesign() != design)
                    fail("net bus " + quoted(entry.first) + " of " + designName() + " holds at bit " +
                         number(bit) + " the net " + quoted(text(net->getName())) + " of another design");
                const netref here = refOf(codeOf(b.wire, k + 1));
                netref home;
                if (namedBit(net, home)) {
                    if (home.wire != here.wire || home.slot != here.slot) shared.push_back({here, home});
                } else if (scalars.contains(net)) {
                    shared.push_back({here, {net->getName(), noWire, 0}});
                } else {
                    auto placed = special.emplace(net, codeOf(b.wire, k + 1));
                    if (!placed.second) shared.push_back({here, refOf(placed.first)});
                }
            }
        }
    }

    void declare(const std::string* name, const std::string& model, const char* what) {
        textbuf& d = *decls;
        d += "    wire ";
        d += *name;
        d += ';';
        renamedComment(d, name, model, what);
        d += '\n';
    }

    // A net of this design that neither the net map nor a net bus holds.
    netref strayNet(kalnet* net) {
        const std::string model = text(net->getName());
        const std::size_t w = wires.size();
        wires.push_back({freshName(model), 0, 0, false});
        declare(wires.back().text, model, "net");
        special.emplace(net, codeOf(w, 0));
        return refOf(codeOf(w, 0));
    }

    bool netRef(kalnet* net, netref& r) {
        if (!net) return false;
        const std::string* name = net->getName();
        if (name && mayBeBitName(*name) && namedBit(*name, net, r)) return true;
        if (const std::uint64_t* code = special.find(net)) {
            r = refOf(*code);
            return true;
        }
        if (scalars.contains(net)) {
            r = {name, noWire, 0};
            return true;
        }
        if (net->getDesign() != design) return false;
        r = strayNet(net);
        return true;
    }

    // The ports of a dual port on no net of this design are joined by a wire
    // of the dual port's name.
    void declarePins() {
        for (auto& entry : *design->data->getDualPortMap()) {
            kaldualport* dp = entry.second;
            if (!dp || dp->getDesign() != design || dp->getPortsCount() < 2) continue;
            bool onNet = false;
            netref r;
            for (kalport* p : dp->getPortList())
                if (p && netRef(p->getNet(), r)) onNet = true;
            if (onNet) continue;
            pins.emplace(dp, static_cast<std::uint32_t>(wires.size()));
            wires.push_back({freshName(entry.first), 0, 0, false});
            declare(wires.back().text, entry.first, "dual port");
        }
    }

    // An instance port's net in this design: its own, or its dual port's.
    bool instanceRef(kalport* p, netref& r) { return p && instanceRef(p, p->getNet(), r); }

    bool instanceRef(kalport* p, kalnet* net, netref& r) {
        if (netRef(net, r)) return true;
        kaldualport* dp = p->getDualPort();
        if (!dp || dp->getDesign() != design) return false;
        for (kalport* q : dp->getPortList())
            if (q && q != p && netRef(q->getNet(), r)) return true;
        auto pin = pins.find(dp);
        if (pin == pins.end()) return false;
        r = refOf(codeOf(pin->second, 0));
        return true;
    }

    // A port of the module's own component inside: on a net of the design, or
    // joined to the net of the instance port exported to it.
    bool topRef(kalport* t, netref& r) {
        if (!t) return false;
        if (netRef(t->getNet(), r)) return true;
        kalport* from = t->getExportedFrom();
        if (!from || !from->getComponent() || from->getComponent()->parentDesign != design) return false;
        return instanceRef(from, r);
    }

    void expr(textbuf& o, const netref& r) const {
        o += *r.text;
        if (!r.slot) return;
        const wire& w = wires[r.wire];
        o += '[';
        appendNumber(o, w.msb >= w.lsb ? w.msb - (r.slot - 1ull) : w.msb + (r.slot - 1ull));
        o += ']';
    }

    // The bits' nets make up one whole net bus of the same width, slot for slot.
    bool wholeBus(const std::vector<netref>& refs, const std::vector<char>& on) const {
        if (refs.empty() || !on[0] || refs[0].wire == noWire) return false;
        const wire& w = wires[refs[0].wire];
        if (!w.bus || (w.msb > w.lsb ? w.msb - w.lsb : w.lsb - w.msb) + 1ull != refs.size()) return false;
        for (std::size_t k = 0; k < refs.size(); ++k)
            if (!on[k] || refs[k].wire != refs[0].wire || refs[k].slot != k + 1) return false;
        return true;
    }

    // ---- assignments ----

    void assign(const std::string& port, const netref& r, int direction) {
        assigns += "    assign ";
        if (direction == 1) {
            expr(assigns, r);
            assigns += " = ";
            assigns += port;
        } else {
            assigns += port;
            assigns += " = ";
            expr(assigns, r);
        }
        assigns += ";\n";
    }

    void joinTopPorts() {
        std::vector<netref> refs;
        std::vector<char> on;
        for (std::size_t i = 0; i < m.ports.size(); ++i) {
            const portref& p = m.ports[i];
            netref r;
            if (!p.bus) {
                if (topRef(p.port, r)) assign(m.portNames[i], r, p.direction);
                continue;
            }
            const std::vector<kalport*> bits = p.bus->getBits();
            refs.assign(bits.size(), netref());
            on.assign(bits.size(), 0);
            for (std::size_t k = 0; k < bits.size(); ++k)
                on[k] = topRef(bits[k], refs[k]);
            if (wholeBus(refs, on)) {
                assign(m.portNames[i], refOf(codeOf(refs[0].wire, 0)), p.direction);
                continue;
            }
            for (std::size_t k = 0; k < bits.size(); ++k) {
                if (!on[k]) continue;
                std::string bit = m.portNames[i];
                bit += '[';
                appendNumber(bit, p.msb >= p.lsb ? p.msb - k : p.msb + k);
                bit += ']';
                assign(bit, refs[k], p.direction);
            }
        }
    }

    void joinSharedBits() {
        for (const sharedbit& s : shared) {
            assigns += "    assign ";
            expr(assigns, s.bit);
            assigns += " = ";
            expr(assigns, s.home);
            assigns += ";  // one net in two net bus slots\n";
        }
    }

    // ---- instances ----

    void unconnectedBit(textbuf& o, int direction) {
        if (direction == 1) {
            o += "1'bz";
            return;
        }
        if (!ncName) ncName = freshName("nc");
        o += *ncName;
        o += '[';
        appendNumber(o, ncCount++);
        o += ']';
    }

    // An instance read and waiting to be written. Instances are written one
    // behind the reading, so that the nets asked for while reading one arrive
    // while the one before it is written. Its ports are those of its module
    // (of->ports), checked when it is read.
    struct pending {
        const std::string* name = nullptr;  // instance map key
        const modinfo* of = nullptr;
        std::vector<kalport*> bitPorts;  // every bit port in the module's port order
        std::vector<kalnet*> bitNets;    // and its net
    };

    void writeInstances() {
        pending slots[2];
        std::size_t j = 0, filled = 0;
        auto nextInstance = [this](auto at) {
            while (at != instances.end() && !at->second)
                ++at;
            return at;
        };
        for (auto at = nextInstance(instances.begin()); at != instances.end();) {
            kalcomponent* inst = at->second;
            pending& next = slots[filled % 2];
            next.name = &at->first;
            next.of = &h.modules[m.instanceModules[j++]];
            at = nextInstance(std::next(at));
            if (at != instances.end()) near.aim(at->second);
            if (!readPorts(inst, next)) readPortsSlowly(inst, next);
            if (filled++) writeInstance(slots[filled % 2]);
        }
        if (filled) writeInstance(slots[(filled + 1) % 2]);
    }

    extent near;

    // The bit ports of one component, in a table that a new stamp empties.
    class bitset {
    public:
        void reset(std::size_t expected) {
            if (tableCapacity(expected) > cells.size()) {
                cells.assign(tableCapacity(expected), cell{nullptr, 0});
                mask = cells.size() - 1;
            }
            if (++stamp == 0) {
                std::fill(cells.begin(), cells.end(), cell{nullptr, 0});
                stamp = 1;
            }
        }

        // False when the key is in already.
        bool insert(const void* key) {
            for (std::size_t i = tableSlot(key, mask);; i = (i + 1) & mask) {
                if (cells[i].stamp != stamp) {
                    cells[i] = {key, stamp};
                    return true;
                }
                if (cells[i].key == key) return false;
            }
        }

        bool contains(const void* key) const {
            for (std::size_t i = tableSlot(key, mask);; i = (i + 1) & mask) {
                if (cells[i].stamp != stamp) return false;
                if (cells[i].key == key) return true;
            }
        }

    private:
        struct cell {
            const void* key;
            std::uint32_t stamp;
        };
        std::vector<cell> cells;
        std::size_t mask = 0;
        std::uint32_t stamp = 0;
    };

    bitset bitPortSet;
    std::vector<kalport*> slotPorts;  // the slots of an instance's port buses, bus after bus
    std::vector<std::size_t> slotEnds;

    // Reads an instance whose ports are its module's, in place: answers false
    // for anything else (a port or bus the module has not, or another
    // direction or range, or a bit port in two slots), which
    // readPortsSlowly then tells apart.
    bool readPorts(kalcomponent* inst, pending& into) {
        const std::vector<portref>& want = into.of->ports;
        std::vector<kalport*>& bitPorts = into.bitPorts;
        std::vector<kalnet*>& bitNets = into.bitNets;
        bitPorts.resize(into.of->bitCount);
        bitNets.resize(into.of->bitCount);
        std::size_t at = 0;  // into bitPorts and bitNets
        if (!inst->data) return want.empty();
        const auto& ports = inst->data->ports;
        const auto& buses = inst->data->portbuses;
        near.start(inst);
        slotPorts.clear();
        slotEnds.clear();
        for (auto& b : buses) {
            if (!b.second) continue;
            near.note(&b);
            near.note(b.second);
            const std::vector<kalport*> bits = b.second->getBits();
            slotPorts.insert(slotPorts.end(), bits.begin(), bits.end());
            slotEnds.push_back(slotPorts.size());
        }
        bitPortSet.reset(slotPorts.size());
        std::uintptr_t low = ~std::uintptr_t(0), high = 0;  // the bit ports' addresses lie within
        for (kalport* p : slotPorts) {
            if (!p) continue;
            if (!bitPortSet.insert(p)) return false;
            low = std::min(low, reinterpret_cast<std::uintptr_t>(p));
            high = std::max(high, reinterpret_cast<std::uintptr_t>(p));
        }
        auto isBit = [&](const kalport* p) {
            const auto a = reinterpret_cast<std::uintptr_t>(p);
            return a >= low && a <= high && bitPortSet.contains(p);
        };
        // The module's ports are the component's scalar ports that are no bit
        // and its buses, merged in name order (a port before a bus of its name).
        auto port = ports.begin(), portEnd = ports.end();
        auto bus = buses.begin(), busEnd = buses.end();
        std::size_t i = 0, nthBus = 0;
        for (;; ++i) {
            while (port != portEnd && (!port->second || isBit(port->second))) {
                near.note(&*port);  // a map node is made after its port
                near.step(4);
                ++port;
            }
            while (bus != busEnd && !bus->second)
                ++bus;
            if (port == portEnd && bus == busEnd) break;
            if (i == want.size()) return false;
            const portref& w = want[i];
            if (bus == busEnd || (port != portEnd && port->first <= bus->first)) {
                kalport* p = port->second;
                near.note(&*port);
                near.step(4);
                if (w.bus || !sameText(port->first, *w.name) || p->getDirection() != w.direction)
                    return false;
                bitPorts[at] = p;
                bitNets[at] = p->getNet();
                prefetch(bitNets[at++]);
                ++port;
            } else {
                kalportbus* b = bus->second;
                if (!w.bus || !sameText(bus->first, *w.name) || b->getDirection() != w.direction ||
                    b->getMsb() != w.msb || b->getLsb() != w.lsb)
                    return false;
                // as many bits as the range has, whatever the slot vector holds
                const std::size_t from = nthBus ? slotEnds[nthBus - 1] : 0, to = slotEnds[nthBus];
                const unsigned long long width = (w.msb > w.lsb ? w.msb - w.lsb : w.lsb - w.msb) + 1ull;
                for (unsigned long long k = 0; k < width; ++k, ++at) {
                    kalport* bit = k < to - from ? slotPorts[from + k] : nullptr;
                    bitPorts[at] = bit;
                    bitNets[at] = bit ? bit->getNet() : nullptr;
                }
                prefetch(bitNets[at - width]);  // a whole bus is told by its first bit
                ++bus;
                ++nthBus;
            }
        }
        near.step(~std::uintptr_t(0));
        near.done();
        return i == want.size();
    }

    // An instance whose ports are not simply its module's: refused with the
    // first difference, unless it is the component that defines the module.
    void readPortsSlowly(kalcomponent* inst, pending& into) {
        std::vector<portref> ports;
        std::vector<std::pair<kalport*, const std::string*>> bits;
        portsOf(inst, h.root, ports, bits);
        if (inst != into.of->def) {
            std::string why = difference(ports, into.of->ports);
            if (!why.empty())
                fail(describe(inst, h.root) + " has other ports than " + describe(into.of->def, h.root) +
                     ", which defines the module of that kind: " + why);
        }
        gatherNets(ports, into);
    }

    void writeInstance(const pending& p) {
        const std::vector<portref>& ports = p.of->ports;
        const std::string* name = nameFor(*p.name, portHas(*p.name));
        if (!instanceWritten) out += '\n';  // after the declarations and assignments
        instanceWritten = true;
        out += "    ";
        out += p.of->name;
        out += ' ';
        out += *name;
        out += ports.empty() ? " ();" : " (";
        renamedComment(out, name, *p.name, "instance");
        out += '\n';
        if (ports.empty()) return;
        std::size_t at = 0;  // into bitPorts and bitNets
        for (std::size_t i = 0; i < ports.size(); ++i) {
            const portref& port = ports[i];
            out += p.of->portOpen[i];
            netref r;
            if (!port.bus) {
                if (instanceRef(p.bitPorts[at], p.bitNets[at], r)) expr(out, r);
                ++at;
            } else {
                at = connectBus(p, port, at);
            }
            if (i + 1 < ports.size())
                out += "),\n";
            else
                out += ")\n";
        }
        out += "    );\n";
    }

    // Every bit port and its net, asking for the nets (which lie anywhere in
    // memory) before any is read.
    void gatherNets(const std::vector<portref>& ports, pending& into) {
        std::vector<kalport*>& bitPorts = into.bitPorts;
        std::vector<kalnet*>& bitNets = into.bitNets;
        bitPorts.clear();
        bitNets.clear();
        for (const portref& p : ports) {
            if (!p.bus) {
                bitPorts.push_back(p.port);
                bitNets.push_back(p.port->getNet());
                prefetch(bitNets.back());
                continue;
            }
            // as many bits as the range has, whatever the slot vector holds
            const std::vector<kalport*> bits = p.bus->getBits();
            const unsigned long long width = (p.msb > p.lsb ? p.msb - p.lsb : p.lsb - p.msb) + 1ull;
            for (unsigned long long k = 0; k < width; ++k) {
                kalport* bit = k < bits.size() ? bits[k] : nullptr;
                bitPorts.push_back(bit);
                bitNets.push_back(bit ? bit->getNet() : nullptr);
            }
            prefetch(bitNets[bitNets.size() - width]);  // a whole bus is told by its first bit
        }
    }

    static KALVERILOG_INLINE void prefetchNet(const kalnet* net) {
#if defined(__GNUC__) || defined(__clang__)
        if (!net) return;
        __builtin_prefetch(net);
        __builtin_prefetch(reinterpret_cast<const char*>(net) + 48);
#else
        (void)net;
#endif
    }

    KALVERILOG_INLINE void prefetch(const kalnet* net) const {
#if defined(__GNUC__) || defined(__clang__)
        if (!net) return;
        __builtin_prefetch(net);
        __builtin_prefetch(reinterpret_cast<const char*>(net) + 64);
        scalars.prefetch(net);
#else
        (void)net;
#endif
    }

    // The bus's bits sit on the bits of one net bus, slot for slot, whose bits
    // are all the nets of their names: the net bus as a whole, without reading
    // each bit's net.
    bool onWholeNetbus(const std::vector<kalnet*>& bitNets, std::size_t at, unsigned long long width,
                       netref& r) {
        kalnet* first = bitNets[at];
        if (!first) return false;
        kalnetbus* bus = first->getBus();
        const std::uint64_t* i = bus ? busIndex.find(bus) : nullptr;
        if (!i || businfos[*i].named != width || businfos[*i].width != width) return false;
        const std::vector<kalnet*> slots = bus->getBits();
        if (slots.size() != width || !std::equal(slots.begin(), slots.end(), bitNets.begin() + at))
            return false;
        r = refOf(codeOf(businfos[*i].wire, 0));
        return true;
    }

    // Writes the connection of a port bus whose bits start at `at` in the
    // instance's bit ports; answers where the next port's bits start.
    std::vector<netref> refs;
    std::vector<char> on;

    std::size_t connectBus(const pending& pend, const portref& p, std::size_t at) {
        const std::vector<kalport*>& bitPorts = pend.bitPorts;
        const std::vector<kalnet*>& bitNets = pend.bitNets;
        const unsigned long long width = (p.msb > p.lsb ? p.msb - p.lsb : p.lsb - p.msb) + 1ull;
        netref whole;
        if (onWholeNetbus(bitNets, at, width, whole)) {
            out += *whole.text;
            return at + width;
        }
        refs.assign(width, netref());
        on.assign(width, 0);
        bool any = false;
        for (std::size_t k = 0; k < width; ++k)
            any |= (on[k] = bitPorts[at + k] && instanceRef(bitPorts[at + k], bitNets[at + k], refs[k])) != 0;
        if (!any) return at + width;
        if (wholeBus(refs, on)) {
            out += *wires[refs[0].wire].text;
            return at + width;
        }
        out += '{';
        for (std::size_t k = 0; k < width; ++k) {
            if (k) out += ", ";
            if (on[k])
                expr(out, refs[k]);
            else
                unconnectedBit(out, p.direction);
        }
        out += '}';
        return at + width;
    }
};

// The written names of each module's ports: the model's names, unless two
// ports share one (a scalar port and a bus) or a name cannot be written. A
// made-up name avoids every name of the module's design as well.
void namePorts(modinfo& m) {
    freshnames fresh;
    kaldesigndata* d = m.design ? m.design->data : nullptr;
    auto taken = [&m, d](const std::string& s) {
        for (const portref& p : m.ports)
            if (*p.name == s) return true;
        return d &&
               (d->getInstanceMap()->count(s) || d->getNetbusMap()->count(s) || d->getNetMap()->count(s));
    };
    m.portNames.clear();
    m.portOpen.clear();
    m.bitCount = 0;
    m.freshPortNames.clear();
    for (std::size_t i = 0; i < m.ports.size(); ++i) {
        const std::string& model = *m.ports[i].name;
        const bool twin = i > 0 && *m.ports[i - 1].name == model;
        if (!twin && keepsName(model)) {
            m.portNames.push_back(identText(model));
        } else {
            m.freshPortNames.push_back(fresh.make(model, taken));
            m.portNames.push_back(identText(m.freshPortNames.back()));
        }
        m.portOpen.push_back("        ." + m.portNames.back() + "(");
        const portref& p = m.ports[i];
        m.bitCount += p.bus ? (p.msb > p.lsb ? p.msb - p.lsb : p.lsb - p.msb) + 1ull : 1;
    }
}

}  // namespace

Result buildNetlist(kalcomponent* root, const Options& options, textbuf& out) noexcept {
    Result result;
    out.clear();
    try {
        hierarchy h(root);
        for (auto& m : h.modules)
            namePorts(m);
        out += "// Structural Verilog-2005 netlist of " + kindOf(root) + ", written by kaldata-verilog.\n";
        out += "`default_nettype none\n";
        for (std::uint32_t i = 0; i < h.modules.size(); ++i) {
            if (!h.modules[i].design) continue;
            out += '\n';
            modulewriter(h, i, out).write();
            result.modules.push_back({h.modules[i].name, h.modules[i].def, false});
        }
        for (const modinfo& m : h.modules) {
            if (m.design) continue;
            result.modules.push_back({m.name, m.def, true});
            if (!options.leafStubs) continue;
            out += "\n// ";
            out += kindOf(m.def);
            out += ", defined elsewhere\n(* blackbox *)\nmodule ";
            out += m.name;
            portList(out, m);
            out += "endmodule\n";
        }
        out += "\n`default_nettype wire\n";
        result.ok = true;
    } catch (const failure& f) {
        result.error = f.message;
    } catch (const std::exception& e) {
        result.error = std::string("the netlist could not be built: ") + e.what();
    }
    if (!result.ok) {
        out.release();
        result.modules.clear();
    }
    return result;
}

}  // namespace detail
}  // namespace kalverilog
