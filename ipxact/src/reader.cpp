// The reader, in two phases. Resolve: parse every document, index them by
// VLNV, and work the top VLNV's hierarchy out into a plan (plan.h) with every
// width evaluated and every port reference checked; any problem stops the load
// there, before a model object exists. Build: make the model from the plan
// through the public interface, which cannot fail any more.
#include <pugixml.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <deque>
#include <filesystem>
#include <functional>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <unordered_map>

#include "expr.h"
#include "kaldata.h"
#include "kalipxact.h"
#include "plan.h"
#include "xml.h"

namespace kalipxact {

const char* const extensionNamespace = "urn:kaldata:ipxact-extensions:1";

std::string vlnv::str() const {
    return vendor + ":" + library + ":" + name + ":" + version;
}

bool vlnv::parse(const std::string& text, vlnv& out) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        std::size_t c = text.find(':', start);
        parts.push_back(text.substr(start, c == std::string::npos ? std::string::npos : c - start));
        if (c == std::string::npos) break;
        start = c + 1;
    }
    if (parts.size() != 4) return false;
    for (auto& p : parts)
        if (p.empty()) return false;
    out = vlnv{parts[0], parts[1], parts[2], parts[3]};
    return true;
}

bool vlnv::operator<(const vlnv& o) const {
    return std::tie(vendor, library, name, version) < std::tie(o.vendor, o.library, o.name, o.version);
}
bool vlnv::operator==(const vlnv& o) const {
    return vendor == o.vendor && library == o.library && name == o.name && version == o.version;
}

std::string message::str() const {
    if (file.empty()) return text;
    return file + (line ? ":" + std::to_string(line) : std::string()) + ": " + text;
}

namespace detail {

namespace {

struct loadFailure {
    message m;
};

struct document {
    std::string name;
    std::string buffer;  // parsed in place; pugixml points into it
    pugi::xml_document xml;
    std::function<std::string()> reload;  // the text again, for a document used after it was consumed
    mutable bool consumed = false;        // parts were taken out (see resolver::consume)
    std::string ip;                       // prefix of the IP-XACT namespace, with its colon
    std::string kind;
    vlnv id;
    pugi::xml_node root;

    unsigned line(pugi::xml_node n) const {
        return lineAt(n ? static_cast<std::size_t>(n.offset_debug()) : 0);
    }
    unsigned lineAt(std::size_t offset) const {
        if (offset > buffer.size()) return 0;
        return 1 + static_cast<unsigned>(std::count(buffer.begin(), buffer.begin() + offset, '\n'));
    }
    bool is(pugi::xml_node n, const char* local) const {
        const char* nm = n.name();
        return std::strncmp(nm, ip.c_str(), ip.size()) == 0 && std::strcmp(nm + ip.size(), local) == 0;
    }
    pugi::xml_node child(pugi::xml_node n, const char* local) const {
        for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
            if (c.type() == pugi::node_element && is(c, local)) return c;
        return pugi::xml_node();
    }
    std::string text(pugi::xml_node n, const char* local) const {
        return trimmed(child(n, local).child_value());
    }
    template <class F>
    void each(pugi::xml_node n, const char* local, F f) const {
        for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
            if (c.type() == pugi::node_element && is(c, local)) f(c);
    }
    [[noreturn]] void fail(pugi::xml_node n, const std::string& what) const {
        throw loadFailure{message{name, line(n), what}};
    }
};

vlnv refOf(pugi::xml_node n) {
    return vlnv{n.attribute("vendor").value(), n.attribute("library").value(), n.attribute("name").value(),
                n.attribute("version").value()};
}

// ---------------------------------------------------------------- parameters

struct scope {
    struct entry {
        std::string expr;
        const document* doc = nullptr;
        pugi::xml_node node;
        const scope* evalIn = nullptr;  // where the expression's names are looked up
        int state = 0;                  // 0 not yet, 1 in progress, 2 done
        bool isString = false;
        std::int64_t value = 0;
        std::string str;
    };
    const scope* parent = nullptr;
    std::deque<entry> store;
    std::unordered_map<std::string, entry*> byId, byName;

    entry* find(const std::string& key) const {
        for (const scope* s = this; s; s = s->parent) {
            auto it = s->byId.find(key);
            if (it != s->byId.end()) return it->second;
            it = s->byName.find(key);
            if (it != s->byName.end()) return it->second;
        }
        return nullptr;
    }

    // Adds a <parameter>-like element: its value expression, found again by
    // id and by name. `firstName`: an earlier entry keeps a shared name.
    entry& declare(const document& d, pugi::xml_node p, std::string& id, std::string& name, bool firstName);
};

scope::entry& scope::declare(const document& d, pugi::xml_node p, std::string& id, std::string& name,
                             bool firstName) {
    store.emplace_back();
    entry& e = store.back();
    e.expr = d.text(p, "value");
    e.doc = &d;
    e.node = d.child(p, "value");
    e.evalIn = this;
    id = p.attribute("parameterId").value();
    name = d.text(p, "name");
    if (!id.empty()) byId[id] = &e;
    if (!name.empty() && (!firstName || !byName.count(name))) byName[name] = &e;
    return e;
}

// Evaluates an entry (once); a string literal is kept as a string.
void settle(scope::entry& e) {
    if (e.state == 2) return;
    if (e.state == 1) e.doc->fail(e.node, "parameter refers to itself: " + e.expr);
    e.state = 1;
    std::string s;
    if (stringLiteral(e.expr, s)) {
        e.isString = true;
        e.str = s;
        e.state = 2;
        return;
    }
    std::string why;
    std::int64_t v = 0;
    const scope* in = e.evalIn;
    auto lookup = [in](const std::string& name, std::int64_t& out, std::string& w) {
        scope::entry* r = in ? in->find(name) : nullptr;
        if (!r) {
            w = "unknown parameter " + name;
            return false;
        }
        settle(*r);
        if (r->isString) {
            w = "parameter " + name + " is a string";
            return false;
        }
        out = r->value;
        return true;
    };
    if (!evaluate(e.expr, lookup, v, why)) e.doc->fail(e.node, "cannot evaluate \"" + e.expr + "\": " + why);
    e.value = v;
    e.state = 2;
}

std::int64_t evalIn(const scope& sc, const document& doc, pugi::xml_node n, const std::string& expr) {
    scope::entry e;
    e.expr = expr;
    e.doc = &doc;
    e.node = n;
    e.evalIn = &sc;
    settle(e);
    if (e.isString) doc.fail(n, "expected a number, found the string " + expr);
    return e.value;
}

// ---------------------------------------------------------------- the resolver

struct bitRef {
    int inst;
    unsigned port, bit;
};

struct busMap {  // one port map of a bus interface: logical bits to physical bits
    std::string logical;
    std::vector<std::int64_t> indices;  // logical bit numbers, left to right
    std::vector<bitRef> bits;           // physical bits, left to right (inst filled in by the caller)
};

struct componentInfo {  // what a resolved component keeps beside its plan
    componentP* plan;
    const document* doc;
    std::map<std::string, unsigned> portByXml;
    std::map<std::string, std::vector<busMap>> busIfs;
};

struct resolver {
    std::vector<std::unique_ptr<document>> docs;
    std::map<vlnv, document*> index;
    plan out;
    std::vector<message> warnings;
    std::set<std::string> warned;
    std::map<std::string, componentInfo> cache;          // resolved components by VLNV and parameter values
    std::map<const componentP*, componentInfo*> infoOf;  // the same, by plan
    std::vector<std::string> stack;                      // VLNVs being resolved, for loops
    progressFn progress;
    std::size_t seen = 0;
    std::size_t consumed = 0;           // connections worked out, for progress
    std::size_t maxBits = 0, bits = 0;  // a bound on what the load creates (0: none)

    void spend(std::size_t n, const document& d, pugi::xml_node at) {
        bits += n;
        if (maxBits && bits > maxBits)
            d.fail(at, "the load would create more than " + std::to_string(maxBits) + " port and net bits");
    }

    void warn(const document& d, pugi::xml_node n, const std::string& what) {
        message m{d.name, d.line(n), what};
        if (warned.insert(m.str()).second) warnings.push_back(m);
    }
    // One warning per document and kind: a library of many documents with the
    // same foreign content says it once per file.
    void warnOnce(const document& d, pugi::xml_node n, const std::string& key, const std::string& what) {
        if (warned.insert(d.name + "\n" + key).second) warnings.push_back(message{d.name, d.line(n), what});
    }

    // ---- documents
    static constexpr unsigned parseOptions =
        (pugi::parse_default | pugi::parse_embed_pcdata) & ~pugi::parse_wconv_attribute;

    void add(std::string name, std::string text, std::function<std::string()> reload) {
        auto d = std::make_unique<document>();
        d->name = std::move(name);
        d->buffer = std::move(text);
        d->reload = std::move(reload);
        pugi::xml_parse_result r = d->xml.load_buffer_inplace(&d->buffer[0], d->buffer.size(), parseOptions);
        if (!r)
            throw loadFailure{message{d->name, d->lineAt(static_cast<std::size_t>(r.offset)),
                                      std::string("malformed XML: ") + r.description()}};
        d->root = d->xml.document_element();
        if (!d->root || !prefixOf(d->root, ipxactNamespace(), d->ip) ||
            std::strncmp(d->root.name(), d->ip.c_str(), d->ip.size()) != 0) {
            warn(*d, d->root, "not an IP-XACT 2014 document; skipped");
            return;
        }
        d->kind = d->root.name() + d->ip.size();
        d->id = vlnv{d->text(d->root, "vendor"), d->text(d->root, "library"), d->text(d->root, "name"),
                     d->text(d->root, "version")};
        if (d->id.vendor.empty() || d->id.library.empty() || d->id.name.empty() || d->id.version.empty()) {
            warn(*d, d->root, "IP-XACT document without a complete VLNV; skipped");
            return;
        }
        auto it = index.find(d->id);
        if (it != index.end())
            throw loadFailure{message{d->name, d->line(d->root),
                                      "duplicate VLNV " + d->id.str() + ", also defined by " +
                                          it->second->name + ":" +
                                          std::to_string(it->second->line(it->second->root))}};
        index[d->id] = d.get();
        docs.push_back(std::move(d));
    }

    // A document whose parts were consumed, parsed again from its text.
    const document& fresh(const document& cd) {
        if (!cd.consumed) return cd;
        auto& d = const_cast<document&>(cd);  // every document is the resolver's own
        d.buffer = d.reload();
        d.xml.reset();
        if (!d.xml.load_buffer_inplace(&d.buffer[0], d.buffer.size(), parseOptions))
            throw loadFailure{message{d.name, 0, "the document changed while it was read"}};
        d.root = d.xml.document_element();
        d.consumed = false;
        return d;
    }

    const document& find(const vlnv& id, const char* kind, const document& from, pugi::xml_node at) {
        auto it = index.find(id);
        if (it == index.end()) from.fail(at, std::string("missing document: no ") + kind + " " + id.str());
        if (it->second->kind != kind)
            from.fail(at,
                      id.str() + " is a " + it->second->kind + " (" + it->second->name + "), not a " + kind);
        return *it->second;
    }

    // ---- vendor extensions: this library's own are read, foreign ones skipped
    template <class F>
    void extensions(const document& d, pugi::xml_node owner, F ours) {
        pugi::xml_node ext = d.child(owner, "vendorExtensions");
        if (!ext) return;
        std::string kd;
        bool haveKd = prefixOf(ext, extensionNamespace, kd);
        bool foreign = false;
        for (pugi::xml_node c = ext.first_child(); c; c = c.next_sibling()) {
            if (c.type() != pugi::node_element) continue;
            const char* nm = c.name();
            if (haveKd && std::strncmp(nm, kd.c_str(), kd.size()) == 0 && !std::strchr(nm + kd.size(), ':'))
                ours(c, nm + kd.size());
            else if (namespaceOf(c) == extensionNamespace)
                ours(c, localName(nm));
            else
                foreign = true;
        }
        if (foreign)
            warnOnce(d, ext, "foreign-ext", "vendor extensions of other tools skipped (first at this line)");
    }
    static void attribute(pugi::xml_node c, std::vector<attrP>& into) {
        into.push_back(attrP{c.attribute("name").value(), c.attribute("value").value(),
                             c.attribute("vendor").value(), !c.attribute("vendor").empty()});
    }

    // This library's extension of a file or file set: its attributes, and its
    // three names where IP-XACT's elements cannot hold them.
    static auto namedExtension(const char* tag, std::string& name, std::string& second, std::string& third,
                               std::vector<attrP>& attrs) {
        return [tag, &name, &second, &third, &attrs](pugi::xml_node x, const char* n) {
            if (!std::strcmp(n, "attribute")) attribute(x, attrs);
            if (!std::strcmp(n, tag)) {
                name = x.attribute("name").value();
                second = x.attribute("second").value();
                third = x.attribute("third").value();
            }
        };
    }

    // ---- components
    const componentP& component(
        const vlnv& id, const document& from, pugi::xml_node at,
        const std::map<std::string, std::pair<bool, std::pair<std::int64_t, std::string>>>& overrides) {
        std::string key = id.str();
        for (auto& o : overrides)
            key += "|" + o.first + "=" +
                   (o.second.first ? "s:" + o.second.second.second : std::to_string(o.second.second.first));
        if (std::find(stack.begin(), stack.end(), id.str()) != stack.end()) {
            std::string loop;
            for (auto& s : stack)
                loop += s + " -> ";
            from.fail(at, "loop in the hierarchy: " + loop + id.str());
        }
        auto hit = cache.find(key);
        if (hit != cache.end()) return *hit->second.plan;
        const document& d = find(id, "component", from, at);
        stack.push_back(id.str());
        auto owned = std::make_unique<componentP>();
        componentP& c = *owned;
        out.components.push_back(std::move(owned));
        componentInfo& info = cache[key];
        info.plan = &c;
        info.doc = &d;
        infoOf[&c] = &info;
        c.id = id;
        c.file = d.name;
        pugi::xml_node root = d.root;

        // Parameters first: widths and overrides refer to them.
        scope sc;
        std::vector<std::pair<scope::entry*, pugi::xml_node>> modelParams;
        auto addParams = [&](pugi::xml_node holder, const char* list, const char* item, bool keep) {
            pugi::xml_node ps = d.child(holder, list);
            d.each(ps, item, [&](pugi::xml_node p) {
                std::string pid, pname;
                scope::entry& e = sc.declare(d, p, pid, pname, true);
                for (auto& o : overrides)
                    if (o.first == pid || (pid.empty() && o.first == pname)) {
                        e.state = 2;
                        e.isString = o.second.first;
                        e.value = o.second.second.first;
                        e.str = o.second.second.second;
                    }
                if (keep) modelParams.push_back({&e, p});
            });
        };
        addParams(root, "parameters", "parameter", true);
        pugi::xml_node model = d.child(root, "model");
        pugi::xml_node insts = d.child(model, "instantiations");
        d.each(insts, "componentInstantiation", [&](pugi::xml_node ci) {
            addParams(ci, "moduleParameters", "moduleParameter", false);
            std::string module = d.text(ci, "moduleName");
            bool have = false;
            for (auto& a : c.attrs)
                have = have || a.name == "moduleName";
            if (!module.empty() && !have) c.attrs.push_back(attrP{"moduleName", module, "ipxact"});
        });

        static const std::set<std::string> paramAttrs = {
            "parameterId", "prompt", "choiceRef", "order", "configGroups", "minimum", "maximum",
            "type",        "sign",   "prefix",    "unit",  "resolve",      "id"};
        for (auto& [e, p] : modelParams) {
            paramP pp;
            pp.name = d.text(p, "name");
            pp.second = p.attribute("parameterId").value();
            if (pp.second.empty()) pp.second = pp.name;
            pp.fourth = p.attribute("type").value();
            settle(*e);
            pp.value = e->isString ? e->str : std::to_string(e->value);
            for (pugi::xml_attribute a = p.first_attribute(); a; a = a.next_attribute())
                if (!paramAttrs.count(a.name()))
                    warnOnce(d, p, std::string("attr-") + a.name(),
                             std::string("attribute \"") + a.name() +
                                 "\" of parameter is not in the schema; skipped (first at this line)");
            extensions(d, p, [&](pugi::xml_node x, const char* n) {
                if (!std::strcmp(n, "attribute")) attribute(x, pp.attrs);
                if (!std::strcmp(n, "parameter")) {
                    if (x.attribute("name")) pp.name = x.attribute("name").value();
                    pp.second = x.attribute("second").value();
                    pp.fourth = x.attribute("fourth").value();
                }
            });
            if (std::any_of(c.params.begin(), c.params.end(),
                            [&](const paramP& o) { return o.name == pp.name; })) {
                warn(d, p, "second parameter named " + pp.name + " skipped");
                continue;
            }
            c.params.push_back(std::move(pp));
        }

        // Ports.
        pugi::xml_node ports = d.child(model, "ports");
        d.each(ports, "port", [&](pugi::xml_node p) {
            portP pp;
            std::string xmlName = d.text(p, "name");
            pp.name = xmlName;
            pugi::xml_node wire = d.child(p, "wire");
            if (!wire) {
                warn(d, p, "port " + xmlName + " is not a wire port (transactional); skipped");
                return;
            }
            std::string dir = d.text(wire, "direction");
            pp.dir = dir == "in" ? 1 : dir == "out" ? 2 : dir == "inout" ? 3 : 0;
            if (!pp.dir) {
                warn(d, wire,
                     "port " + xmlName + " has direction \"" + dir +
                         "\", which the model cannot hold; skipped");
                return;
            }
            pugi::xml_node vec = d.child(d.child(wire, "vectors"), "vector");
            if (vec) {
                pugi::xml_node l = d.child(vec, "left"), r = d.child(vec, "right");
                std::int64_t lv = evalIn(sc, d, l, trimmed(l.child_value()));
                std::int64_t rv = evalIn(sc, d, r, trimmed(r.child_value()));
                if (lv < 0 || rv < 0 || lv > 0x7fffffff || rv > 0x7fffffff)
                    d.fail(vec, "port " + xmlName + " has a vector bound outside 0.." +
                                    std::to_string(0x7fffffff));
                if ((lv > rv ? lv - rv : rv - lv) >= 65536)
                    d.fail(vec, "port " + xmlName + " is wider than 65536 bits");
                pp.bus = true;
                pp.msb = static_cast<unsigned>(lv);
                pp.lsb = static_cast<unsigned>(rv);
                if (d.child(d.child(wire, "vectors"), "vector").next_sibling())
                    warn(d, vec, "port " + xmlName + " has more than one vector; only the first is kept");
            }
            std::string desc = d.text(p, "description");
            if (d.child(p, "description")) {
                pp.text = desc;
                pp.hasText = true;
            }
            pp.second = pp.name;
            extensions(d, p, [&](pugi::xml_node x, const char* n) {
                if (!std::strcmp(n, "attribute")) attribute(x, pp.attrs);
                if (!std::strcmp(n, "name")) pp.second = pp.name = x.attribute("value").value();
                if (!std::strcmp(n, "second")) pp.second = x.attribute("value").value();
                if (!std::strcmp(n, "bit")) {
                    pp.bitAttrs.emplace_back(x.attribute("index").as_uint(), std::vector<attrP>());
                    for (pugi::xml_node a = x.first_child(); a; a = a.next_sibling())
                        if (!std::strcmp(localName(a.name()), "attribute"))
                            attribute(a, pp.bitAttrs.back().second);
                }
            });
            if (info.portByXml.count(xmlName)) d.fail(p, "port " + xmlName + " is defined twice");
            info.portByXml[xmlName] = static_cast<unsigned>(c.ports.size());
            c.ports.push_back(std::move(pp));
        });
        // Port names must be unique in the model, bus bits included.
        {
            std::set<std::string> names;
            for (auto& p : c.ports)
                if (!names.insert(p.name).second) d.fail(ports, "two ports named " + p.name);
        }
        for (auto& p : c.ports) {
            p.base = c.bits;
            c.bits += p.width();
        }

        // Bus interfaces: kept only as port maps, to flatten interconnections.
        pugi::xml_node bis = d.child(root, "busInterfaces");
        if (bis)
            warnOnce(d, bis, "busif",
                     "bus interfaces are not kept in the model (only their port maps, to flatten "
                     "interconnections)");
        d.each(bis, "busInterface", [&](pugi::xml_node bi) {
            std::vector<busMap>& maps = info.busIfs[d.text(bi, "name")];
            pugi::xml_node ats = d.child(bi, "abstractionTypes");
            d.each(ats, "abstractionType", [&](pugi::xml_node at) {
                d.each(d.child(at, "portMaps"), "portMap", [&](pugi::xml_node pm) {
                    pugi::xml_node lp = d.child(pm, "logicalPort"), pp = d.child(pm, "physicalPort");
                    if (!lp || !pp) return;  // tied values carry no connection
                    busMap m;
                    m.logical = d.text(lp, "name");
                    std::string phys = d.text(pp, "name");
                    auto it = info.portByXml.find(phys);
                    if (it == info.portByXml.end())
                        d.fail(pp, "port map of bus interface " + d.text(bi, "name") + " names port " + phys +
                                       ", which the component lacks");
                    const portP& port = c.ports[it->second];
                    std::vector<unsigned> bits;
                    pugi::xml_node range = d.child(d.child(pp, "partSelect"), "range");
                    selectBits(d, sc, port, range, bits, "port map");
                    for (unsigned b : bits)
                        m.bits.push_back(bitRef{0, it->second, b});
                    pugi::xml_node lr = d.child(lp, "range");
                    if (lr && (d.text(lr, "left").empty() || d.text(lr, "right").empty())) {
                        warn(d, lr, "empty logical range of " + m.logical + " ignored");
                        lr = pugi::xml_node();
                    }
                    if (lr) {
                        std::int64_t l = evalIn(sc, d, d.child(lr, "left"), d.text(lr, "left"));
                        std::int64_t r = evalIn(sc, d, d.child(lr, "right"), d.text(lr, "right"));
                        for (std::int64_t k = l;; k += (l > r ? -1 : 1)) {
                            m.indices.push_back(k);
                            if (k == r || m.indices.size() > 65536) break;
                        }
                    } else {
                        for (std::size_t k = bits.size(); k-- > 0;)
                            m.indices.push_back(static_cast<std::int64_t>(k));
                    }
                    if (m.indices.size() != m.bits.size()) {
                        warn(d, pm,
                             "port map of " + m.logical + " pairs " + std::to_string(m.indices.size()) +
                                 " logical with " + std::to_string(m.bits.size()) +
                                 " physical bits; the extra bits are not connected");
                        std::size_t n = std::min(m.indices.size(), m.bits.size());
                        m.indices.resize(n);
                        m.bits.resize(n);
                    }
                    maps.push_back(std::move(m));
                });
            });
        });

        // What the model has no place for.
        static const char* const skipped[] = {
            "indirectInterfaces", "channels", "remapStates",       "addressSpaces", "memoryMaps", "choices",
            "whiteboxElements",   "cpus",     "otherClockDrivers", "resetTypes",    "assertions"};
        for (const char* s : skipped)
            if (pugi::xml_node n = d.child(root, s))
                warn(d, n, std::string(s) + " skipped: the model has no place for them");

        // File sets.
        d.each(d.child(root, "fileSets"), "fileSet", [&](pugi::xml_node fs) {
            filesetP f;
            f.name = d.text(fs, "name");
            f.second = d.text(fs, "displayName");
            f.third = d.text(fs, "description");
            d.each(fs, "file", [&](pugi::xml_node fn) {
                fileP file;
                file.name = d.text(fn, "name");
                pugi::xml_node ft = d.child(fn, "fileType");
                file.second = trimmed(ft.child_value());
                if (file.second == "user" && ft.attribute("user")) file.second = ft.attribute("user").value();
                file.third = d.text(fn, "description");
                extensions(d, fn, namedExtension("file", file.name, file.second, file.third, file.attrs));
                f.files.push_back(std::move(file));
            });
            extensions(d, fs, namedExtension("fileSet", f.name, f.second, f.third, f.attrs));
            c.filesets.push_back(std::move(f));
        });

        // Generators.
        d.each(d.child(root, "componentGenerators"), "componentGenerator", [&](pugi::xml_node g) {
            generatorP gp;
            gp.name = d.text(g, "name");
            gp.detail = d.text(g, "generatorExe");
            d.each(g, "group", [&](pugi::xml_node grp) { gp.groups.push_back(trimmed(grp.child_value())); });
            extensions(d, g, [&](pugi::xml_node x, const char* n) {
                if (!std::strcmp(n, "attribute")) attribute(x, gp.attrs);
                if (!std::strcmp(n, "name")) gp.name = x.attribute("value").value();
            });
            if (std::any_of(c.generators.begin(), c.generators.end(),
                            [&](const generatorP& o) { return o.name == gp.name; })) {
                warn(d, g, "second generator named " + gp.name + " skipped");
                return;
            }
            c.generators.push_back(std::move(gp));
        });

        // The component's own extensions: free attributes and LPC values.
        extensions(d, root, [&](pugi::xml_node x, const char* n) {
            if (!std::strcmp(n, "attribute")) {
                std::vector<attrP> one;
                attribute(x, one);
                auto same = std::find_if(c.attrs.begin(), c.attrs.end(),
                                         [&](const attrP& a) { return a.name == one[0].name; });
                if (same != c.attrs.end())
                    *same = one[0];
                else
                    c.attrs.push_back(one[0]);
            }
            if (!std::strcmp(n, "catalogue")) catalogue(d, x, c.catalogue);
            if (!std::strcmp(n, "lpc")) {
                lpcP l;
                l.value = x.attribute("value").value();
                for (pugi::xml_node a = x.first_child(); a; a = a.next_sibling())
                    if (!std::strcmp(localName(a.name()), "attribute")) attribute(a, l.attrs);
                c.lpcs.push_back(std::move(l));
            }
        });

        // Designs, through views.
        componentInfo* outer = currentOwner;
        currentOwner = &info;
        std::vector<const designP*> found;
        pugi::xml_node views = d.child(model, "views");
        d.each(views, "view", [&](pugi::xml_node v) {
            std::string di = d.text(v, "designInstantiationRef"),
                        dci = d.text(v, "designConfigurationInstantiationRef");
            if (!di.empty()) {
                pugi::xml_node inst;
                d.each(insts, "designInstantiation", [&](pugi::xml_node x) {
                    if (d.text(x, "name") == di) inst = x;
                });
                if (!inst)
                    d.fail(v, "view refers to design instantiation " + di + ", which the component lacks");
                pugi::xml_node ref = d.child(inst, "designRef");
                addDesign(found, refOf(ref), d, ref, sc, ref);
            }
            if (!dci.empty()) {
                pugi::xml_node inst;
                d.each(insts, "designConfigurationInstantiation", [&](pugi::xml_node x) {
                    if (d.text(x, "name") == dci) inst = x;
                });
                if (!inst)
                    d.fail(v, "view refers to design configuration instantiation " + dci +
                                  ", which the component lacks");
                pugi::xml_node ref = d.child(inst, "designConfigurationRef");
                const document& cfg = find(refOf(ref), "designConfiguration", d, ref);
                pugi::xml_node dref = cfg.child(cfg.root, "designRef");
                if (!dref) cfg.fail(cfg.root, "design configuration without a designRef");
                addDesign(found, refOf(dref), cfg, dref, sc, pugi::xml_node());
            }
        });
        // Design names are the model's keys: two designs of one name keep their versions apart.
        for (const designP* dp : found) {
            std::size_t same = 0;
            for (const designP* other : found)
                same += other->id.name == dp->id.name;
            c.designs.push_back(dp);
            c.designKeys.push_back(same > 1 ? dp->id.name + "@" + dp->id.version : dp->id.name);
        }
        currentOwner = outer;
        stack.pop_back();
        return c;
    }

    // The element catalogue this library wrote; names are unique in it.
    void catalogue(const document& d, pugi::xml_node x, catalogueP& into) {
        std::set<std::string> groups, elements;
        for (pugi::xml_node c = x.first_child(); c; c = c.next_sibling()) {
            const char* n = localName(c.name());
            std::vector<attrP> attrs;
            for (pugi::xml_node a = c.first_child(); a; a = a.next_sibling())
                if (!std::strcmp(localName(a.name()), "attribute")) attribute(a, attrs);
            std::string name = c.attribute("name").value();
            if (!std::strcmp(n, "group")) {
                if (!groups.insert(name).second) {
                    warn(d, c, "second catalogue group named " + name + " skipped");
                    continue;
                }
                catalogueP::group g{name,
                                    c.attribute("type").value(),
                                    c.attribute("category").as_uint(),
                                    std::move(attrs),
                                    {},
                                    {}};
                for (pugi::xml_node m = c.first_child(); m; m = m.next_sibling()) {
                    if (!std::strcmp(localName(m.name()), "member"))
                        g.members.push_back(m.attribute("name").value());
                    if (!std::strcmp(localName(m.name()), "subgroup"))
                        g.subgroups.push_back(m.attribute("name").value());
                }
                into.groups.push_back(std::move(g));
            } else if (!std::strcmp(n, "element")) {
                if (!elements.insert(name).second) {
                    warn(d, c, "second catalogue element named " + name + " skipped");
                    continue;
                }
                into.elements.push_back(
                    catalogueP::element{name, c.attribute("type").value(), std::move(attrs)});
            }
        }
    }

    // Bits that a part select (or, without one, the whole port) names, left to right.
    void selectBits(const document& d, const scope& sc, const portP& port, pugi::xml_node range,
                    std::vector<unsigned>& bits, const char* what) {
        if (!range) {
            for (unsigned s = 0; s < port.width(); ++s)
                bits.push_back(port.bus ? port.bitAt(s) : 0);
            return;
        }
        std::int64_t l = evalIn(sc, d, d.child(range, "left"), d.text(range, "left"));
        std::int64_t r = evalIn(sc, d, d.child(range, "right"), d.text(range, "right"));
        std::int64_t lo = port.bus ? std::min(port.msb, port.lsb) : 0,
                     hi = port.bus ? std::max(port.msb, port.lsb) : 0;
        if (l < lo || l > hi || r < lo || r > hi)
            d.fail(range,
                   std::string(what) + ": part select [" + std::to_string(l) + ":" + std::to_string(r) +
                       "] lies outside port " + port.name +
                       (port.bus ? " [" + std::to_string(port.msb) + ":" + std::to_string(port.lsb) + "]"
                                 : std::string(" (a scalar port)")));
        for (std::int64_t k = l;; k += (l > r ? -1 : 1)) {
            bits.push_back(static_cast<unsigned>(k));
            if (k == r) break;
        }
    }

    void addDesign(std::vector<const designP*>& found, const vlnv& id, const document& from,
                   pugi::xml_node at, const scope& owner, pugi::xml_node overridesAt) {
        for (const designP* f : found)
            if (f->id == id) return;  // several views, one design
        found.push_back(&design(id, from, at, owner, overridesAt));
    }

    // ---- designs
    const designP& design(const vlnv& id, const document& from, pugi::xml_node at, const scope& ownerScope,
                          pugi::xml_node overridesAt) {
        const document& d = fresh(find(id, "design", from, at));
        componentInfo* ownerInfo = stack.empty() ? nullptr : currentOwner;
        auto owned = std::make_unique<designP>();
        designP& ds = *owned;
        out.designs.push_back(std::move(owned));
        ds.id = id;
        pugi::xml_node root = d.root;

        scope sc;
        sc.parent = &ownerScope;
        d.each(d.child(root, "parameters"), "parameter", [&](pugi::xml_node p) {
            std::string pid, pname;
            sc.declare(d, p, pid, pname, false);
        });
        // A design instantiation's values replace the design's parameters.
        pugi::xml_node cevs = from.child(overridesAt, "configurableElementValues");
        from.each(cevs, "configurableElementValue", [&](pugi::xml_node v) {
            auto it = sc.byId.find(v.attribute("referenceId").value());
            if (it == sc.byId.end()) return;
            it->second->expr = trimmed(v.child_value());
            it->second->doc = &from;
            it->second->node = v;
            it->second->evalIn = &ownerScope;
        });
        if (pugi::xml_node n = d.child(root, "assertions")) warn(d, n, "assertions skipped");

        // Instances.
        std::map<std::string, int> instByXml;
        pugi::xml_node cis = d.child(root, "componentInstances");
        std::vector<pugi::xml_node> instNodes;
        d.each(cis, "componentInstance", [&](pugi::xml_node ci) { instNodes.push_back(ci); });
        for (pugi::xml_node ci : instNodes) {
            instP ip;
            std::string xmlName = d.text(ci, "instanceName");
            ip.name = xmlName;
            pugi::xml_node ref = d.child(ci, "componentRef");
            std::map<std::string, std::pair<bool, std::pair<std::int64_t, std::string>>> ov;
            d.each(d.child(ref, "configurableElementValues"), "configurableElementValue",
                   [&](pugi::xml_node v) {
                       scope::entry e;
                       e.expr = trimmed(v.child_value());
                       e.doc = &d;
                       e.node = v;
                       e.evalIn = &sc;
                       settle(e);
                       ov[v.attribute("referenceId").value()] = {e.isString, {e.value, e.str}};
                   });
            std::vector<attrP> attrs;
            bool replaceAttrs = false;
            std::vector<std::pair<std::string, std::string>> paramValues;
            std::vector<std::pair<std::string, std::pair<unsigned, unsigned>>> ranges;
            extensions(d, ci, [&](pugi::xml_node x, const char* n) {
                if (!std::strcmp(n, "name")) ip.name = x.attribute("value").value();
                if (!std::strcmp(n, "attributes")) {
                    replaceAttrs = true;
                    for (pugi::xml_node a = x.first_child(); a; a = a.next_sibling())
                        if (!std::strcmp(localName(a.name()), "attribute")) attribute(a, attrs);
                }
                if (!std::strcmp(n, "parameter"))
                    paramValues.push_back({x.attribute("name").value(), x.attribute("value").value()});
                if (!std::strcmp(n, "portBus"))
                    ranges.push_back({x.attribute("name").value(),
                                      {x.attribute("msb").as_uint(), x.attribute("lsb").as_uint()}});
            });
            ++seen;
            if (progress && seen % 4096 == 0) progress("resolve", seen, 0);
            const componentP& base = component(refOf(ref), d, ref, ov);
            spend(base.bits, d, ci);
            ip.comp = &base;
            if (replaceAttrs || !paramValues.empty() || !ranges.empty())
                ip.comp = &variant(base, d, ci, replaceAttrs, attrs, paramValues, ranges);
            if (instByXml.count(xmlName)) d.fail(ci, "two instances named " + xmlName);
            instByXml[xmlName] = static_cast<int>(ds.insts.size());
            ds.insts.push_back(std::move(ip));
        }
        out.instances += ds.insts.size();

        connections(ds, d, sc, instByXml, ownerInfo);
        return ds;
    }

    componentInfo* currentOwner = nullptr;  // the component whose designs are being resolved

    // An instance whose own content differs from its component's document (the
    // writer notes such differences in the instance's extensions).
    const componentP& variant(
        const componentP& base, const document& d, pugi::xml_node at, bool replaceAttrs,
        const std::vector<attrP>& attrs, const std::vector<std::pair<std::string, std::string>>& values,
        const std::vector<std::pair<std::string, std::pair<unsigned, unsigned>>>& ranges) {
        auto owned = std::make_unique<componentP>(base);
        componentP& c = *owned;
        out.components.push_back(std::move(owned));
        if (replaceAttrs) c.attrs = attrs;
        for (auto& nv : values) {
            const std::string& name = nv.first;
            const std::string& value = nv.second;
            auto it = std::find_if(c.params.begin(), c.params.end(),
                                   [&](const paramP& p) { return p.name == name; });
            if (it == c.params.end())
                d.fail(at, "instance sets parameter " + name + ", which its component lacks");
            it->value = value;
        }
        if (!ranges.empty() && !c.designs.empty())
            d.fail(at, "instance changes port ranges of a component with a design");
        for (auto& nr : ranges) {
            const std::string& name = nr.first;
            const std::pair<unsigned, unsigned>& range = nr.second;
            auto it = std::find_if(c.ports.begin(), c.ports.end(),
                                   [&](const portP& p) { return p.bus && p.name == name; });
            if (it == c.ports.end())
                d.fail(at, "instance sets the range of port bus " + name + ", which its component lacks");
            if ((range.first > range.second ? range.first - range.second : range.second - range.first) >=
                65536)
                d.fail(at, "port bus " + name + " is wider than 65536 bits");
            it->msb = range.first;
            it->lsb = range.second;
        }
        c.bits = 0;
        for (auto& p : c.ports) {
            p.base = c.bits;
            c.bits += p.width();
        }
        auto info = std::make_unique<componentInfo>(*infoOf.at(&base));
        info->plan = &c;
        infoOf[&c] = info.get();
        variants.push_back(std::move(info));
        return c;
    }
    std::vector<std::unique_ptr<componentInfo>> variants;

    // ---- connections: nets are classes of port bits joined by any connection
    struct group {
        std::string name;
        bool bus = false;
        bool extra = false;  // has an entry in the extras map
        unsigned msb = 0, lsb = 0;
        unsigned first = 0;  // its first node
        unsigned width() const { return bus ? (msb > lsb ? msb - lsb : lsb - msb) + 1 : 1; }
        unsigned bitAt(unsigned slot) const { return msb >= lsb ? msb - slot : msb + slot; }
        std::string nodeName(unsigned slot) const {
            return bus ? name + "[" + std::to_string(bitAt(slot)) + "]" : name;
        }
    };
    struct groupExtra {
        std::string text;
        bool hasText = false;
        std::vector<attrP> attrs;
    };

    void connections(designP& ds, const document& d, const scope& sc,
                     const std::map<std::string, int>& instByXml, componentInfo* owner) {
        pugi::xml_node root = d.root;
        std::deque<group> groups;               // stable: the name index holds views of the names
        std::map<unsigned, groupExtra> extras;  // ordered: attributes apply in document order
        std::vector<unsigned> parent;           // union-find over nodes, the smaller node is the root
        // Nets and net buses have names of their own, as in a design's two maps.
        std::unordered_map<std::string_view, unsigned> scalarByName, busByName;
        bool bracketed = false;  // a scalar group named like a bus bit
        std::vector<std::size_t> base(ds.insts.size() + 1);
        std::size_t total = owner ? owner->plan->bits : 0;
        for (std::size_t i = 0; i < ds.insts.size(); ++i) {
            base[i] = total;
            total += ds.insts[i].comp->bits;
        }
        base[ds.insts.size()] = 0;
        std::vector<std::uint32_t> claim(total, UINT32_MAX);
        // Port bits in the order first met; `net` holds their node until the nets are known.
        std::vector<connP>& refs = ds.conns;

        auto findRoot = [&](unsigned x) {
            while (parent[x] != x) {
                parent[x] = parent[parent[x]];
                x = parent[x];
            }
            return x;
        };
        auto unite = [&](unsigned a, unsigned b) {
            a = findRoot(a);
            b = findRoot(b);
            if (a == b) return;
            if (a < b)
                parent[b] = a;
            else
                parent[a] = b;
        };
        auto compOf = [&](int inst) -> const componentP& {
            return inst < 0 ? *owner->plan : *ds.insts[static_cast<std::size_t>(inst)].comp;
        };
        auto bitIndex = [&](int inst, unsigned port, unsigned bit) {
            const portP& p = compOf(inst).ports[port];
            std::size_t b = inst < 0 ? 0 : base[static_cast<std::size_t>(inst)];
            return b + p.base + (p.bus ? p.slot(bit) : 0);
        };
        // A new group: joined by name with an existing net of that name.
        auto newGroup = [&](group g, groupExtra* x, const document& at, pugi::xml_node where) -> unsigned {
            auto& byName = g.bus ? busByName : scalarByName;
            auto it = byName.find(g.name);
            if (it != byName.end()) {
                group& old = groups[it->second];
                if (old.bus != g.bus || old.width() != g.width())
                    at.fail(where,
                            "connection " + g.name + " has the name of an earlier net bus of another width");
                if (x) {
                    groupExtra& ox = extras[it->second];
                    old.extra = true;
                    for (auto& a : x->attrs)
                        ox.attrs.push_back(a);
                    if (x->hasText) {
                        ox.text = x->text;
                        ox.hasText = true;
                    }
                }
                return it->second;
            }
            spend(g.width(), at, where);
            g.first = static_cast<unsigned>(parent.size());
            unsigned gi = static_cast<unsigned>(groups.size());
            for (unsigned s = 0; s < g.width(); ++s)
                parent.push_back(static_cast<unsigned>(parent.size()));
            if (x) {
                g.extra = true;
                extras[gi] = std::move(*x);
            }
            groups.push_back(std::move(g));
            byName[groups.back().name] = gi;
            const group& ng = groups.back();
            if (!ng.bus) {
                // name[i]: the bit of an earlier net bus
                std::size_t open = ng.name.rfind('[');
                if (open != std::string::npos && ng.name.back() == ']') {
                    bracketed = true;
                    auto bus = busByName.find(std::string_view(ng.name).substr(0, open));
                    if (bus != busByName.end()) {
                        const group& bg = groups[bus->second];
                        for (unsigned s = 0; s < bg.width(); ++s)
                            if (bg.nodeName(s) == ng.name) unite(bg.first + s, ng.first);
                    }
                }
            } else if (bracketed) {
                for (unsigned s = 0; s < ng.width(); ++s) {
                    auto bit = scalarByName.find(ng.nodeName(s));
                    if (bit != scalarByName.end()) unite(ng.first + s, groups[bit->second].first);
                }
            }
            return gi;
        };
        auto attach = [&](unsigned node, int inst, unsigned port, unsigned bit) {
            std::size_t b = bitIndex(inst, port, bit);
            if (claim[b] == UINT32_MAX) {
                claim[b] = node;
                refs.push_back(connP{node, 0, inst, port, bit});
            } else {
                unite(claim[b], node);
            }
        };
        auto portOf = [&](int inst, const std::string& xmlName, const document& at, pugi::xml_node where) {
            const componentInfo& ci =
                inst < 0 ? *owner : *infoOf.at(ds.insts[static_cast<std::size_t>(inst)].comp);
            auto it = ci.portByXml.find(xmlName);
            if (it == ci.portByXml.end())
                at.fail(where,
                        "reference to port " + xmlName + ", which component " + ci.plan->id.str() +
                            (inst < 0 ? " (the design's owner)"
                                      : " of instance " + ds.insts[static_cast<std::size_t>(inst)].name) +
                            " lacks");
            return it->second;
        };
        auto instOf = [&](const std::string& xmlName, const document& at, pugi::xml_node where) {
            auto it = instByXml.find(xmlName);
            if (it == instByXml.end())
                at.fail(where, "reference to instance " + xmlName + ", which the design lacks");
            return it->second;
        };

        // Declarations this library wrote: net buses and nets that connections then join by name.
        std::vector<pugi::xml_node> exportNodes;
        extensions(d, root, [&](pugi::xml_node x, const char* n) {
            groupExtra ge;
            auto attrsOf = [&]() -> groupExtra* {
                for (pugi::xml_node a = x.first_child(); a; a = a.next_sibling())
                    if (!std::strcmp(localName(a.name()), "attribute")) attribute(a, ge.attrs);
                if (x.attribute("text")) {
                    ge.text = x.attribute("text").value();
                    ge.hasText = true;
                }
                return ge.hasText || !ge.attrs.empty() ? &ge : nullptr;
            };
            if (!std::strcmp(n, "attribute")) attribute(x, ds.attrs);
            if (!std::strcmp(n, "netBus")) {
                group g;
                g.name = x.attribute("name").value();
                g.bus = true;
                g.msb = x.attribute("msb").as_uint();
                g.lsb = x.attribute("lsb").as_uint();
                if (g.width() > 65536) d.fail(x, "net bus " + g.name + " is wider than 65536 bits");
                newGroup(std::move(g), attrsOf(), d, x);
            }
            if (!std::strcmp(n, "net")) {
                group g;
                g.name = x.attribute("name").value();
                newGroup(std::move(g), attrsOf(), d, x);
            }
            if (!std::strcmp(n, "export") || !std::strcmp(n, "dualPort") || !std::strcmp(n, "dualPortBus"))
                exportNodes.push_back(x);
        });

        // Ad-hoc connections: a net, or a net bus when they join vectors.
        // Each connection leaves the document once it is worked out: a large
        // design's connections are then never held twice, as elements and as nets.
        consume(d, d.child(root, "adHocConnections"), "adHocConnection", [&](pugi::xml_node a) {
            group g;
            g.name = d.text(a, "name");
            groupExtra ge;
            if (d.child(a, "description")) {
                ge.text = d.text(a, "description");
                ge.hasText = true;
            }
            extensions(d, a, [&](pugi::xml_node x, const char* n) {
                if (!std::strcmp(n, "name")) g.name = x.attribute("value").value();
            });
            struct one {
                int inst;
                unsigned port;
                std::vector<unsigned> bits;
                bool whole;
            };
            std::vector<one> all;
            pugi::xml_node prs = d.child(a, "portReferences");
            for (pugi::xml_node r = prs.first_child(); r; r = r.next_sibling()) {
                if (r.type() != pugi::node_element) continue;
                one o;
                if (d.is(r, "internalPortReference")) {
                    o.inst = instOf(r.attribute("componentRef").value(), d, r);
                } else if (d.is(r, "externalPortReference")) {
                    if (!owner)
                        d.fail(r, "external port reference in a design that has no enclosing component");
                    o.inst = -1;
                } else {
                    continue;
                }
                o.port = portOf(o.inst, r.attribute("portRef").value(), d, r);
                const portP& p = compOf(o.inst).ports[o.port];
                pugi::xml_node range = d.child(d.child(r, "partSelect"), "range");
                o.whole = !range;
                selectBits(d, sc, p, range, o.bits, ("connection " + g.name).c_str());
                all.push_back(std::move(o));
            }
            if (all.empty()) {
                warn(d, a, "connection " + g.name + " has no port references (tied value?); skipped");
                return;
            }
            std::size_t w = all[0].bits.size();
            for (auto& o : all)
                if (o.bits.size() != w)
                    d.fail(a, "connection " + g.name + " joins references of different widths (" +
                                  std::to_string(w) + " and " + std::to_string(o.bits.size()) + " bits)");
            if (w > 1 || std::any_of(all.begin(), all.end(), [&](const one& o) {
                    return o.whole && compOf(o.inst).ports[o.port].bus;
                })) {
                // A bus: the range of an earlier declaration, else of the first whole vector, else w-1..0.
                g.bus = true;
                auto declared = busByName.find(g.name);
                if (declared != busByName.end()) {
                    g.msb = groups[declared->second].msb;
                    g.lsb = groups[declared->second].lsb;
                } else {
                    g.msb = static_cast<unsigned>(w - 1);
                    g.lsb = 0;
                    for (auto& o : all)
                        if (o.whole && compOf(o.inst).ports[o.port].bus) {
                            g.msb = compOf(o.inst).ports[o.port].msb;
                            g.lsb = compOf(o.inst).ports[o.port].lsb;
                            break;
                        }
                }
                if (g.width() != w)
                    d.fail(a, "connection " + g.name + " does not match the width of net bus " + g.name);
            }
            unsigned gi = newGroup(std::move(g), ge.hasText ? &ge : nullptr, d, a);
            unsigned first = groups[gi].first;
            for (auto& o : all)
                for (std::size_t s = 0; s < o.bits.size(); ++s)
                    attach(first + static_cast<unsigned>(s), o.inst, o.port, o.bits[s]);
        });

        // Interconnections: each side's port maps onto the logical ports; one net per logical port.
        consume(d, d.child(root, "interconnections"), "interconnection", [&](pugi::xml_node ic) {
            std::string name = d.text(ic, "name");
            std::vector<std::vector<busMap>> sides;
            for (pugi::xml_node s = ic.first_child(); s; s = s.next_sibling()) {
                if (s.type() != pugi::node_element) continue;
                int inst;
                const componentInfo* ci;
                if (d.is(s, "activeInterface")) {
                    inst = instOf(s.attribute("componentRef").value(), d, s);
                    ci = infoOf.at(ds.insts[static_cast<std::size_t>(inst)].comp);
                } else if (d.is(s, "hierInterface")) {
                    if (!owner)
                        d.fail(s, "hierarchical interface in a design that has no enclosing component");
                    inst = -1;
                    ci = owner;
                } else {
                    continue;
                }
                std::string bus = s.attribute("busRef").value();
                auto it = ci->busIfs.find(bus);
                if (it == ci->busIfs.end())
                    d.fail(s, "reference to bus interface " + bus + ", which component " +
                                  ci->plan->id.str() + " lacks");
                std::vector<busMap> maps = it->second;
                for (auto& m : maps)
                    for (auto& b : m.bits)
                        b.inst = inst;
                sides.push_back(std::move(maps));
            }
            // logical port -> logical bit -> physical bits of every side
            std::map<std::string, std::map<std::int64_t, std::vector<bitRef>>> logical;
            std::map<std::string, std::set<std::size_t>> sidesOf;
            for (std::size_t k = 0; k < sides.size(); ++k)
                for (auto& m : sides[k]) {
                    sidesOf[m.logical].insert(k);
                    for (std::size_t b = 0; b < m.bits.size(); ++b)
                        logical[m.logical][m.indices[b]].push_back(m.bits[b]);
                }
            for (auto& [lname, bits] : logical) {
                if (sidesOf[lname].size() < 2) continue;  // mapped on one side only: nothing to join
                group g;
                g.name = name + "_" + lname;
                std::int64_t lo = bits.begin()->first, hi = bits.rbegin()->first;
                if (lo < 0 || hi - lo >= 65536)
                    d.fail(ic, "logical port " + lname + " has bit numbers out of range");
                if (lo != hi) {
                    g.bus = true;
                    g.msb = static_cast<unsigned>(hi);
                    g.lsb = static_cast<unsigned>(lo);
                }
                unsigned gi = newGroup(std::move(g), nullptr, d, ic);
                const group& ng = groups[gi];
                for (auto& [index, refsOfBit] : bits)
                    for (auto& r : refsOfBit)
                        attach(ng.first + (ng.bus ? static_cast<unsigned>(ng.msb - index) : 0), r.inst,
                               r.port, r.bit);
            }
        });
        if (pugi::xml_node n = d.child(root, "monitorInterconnections"))
            warn(d, n, "monitor interconnections skipped");

        // Exports and dual ports: instance ports and top ports that must exist (and share a net).
        for (pugi::xml_node x : exportNodes) {
            const char* n = localName(x.name());
            if (!std::strcmp(n, "export")) {
                if (!owner) d.fail(x, "export in a design that has no enclosing component");
                int inst = instOf(x.attribute("instance").value(), d, x);
                unsigned port = portOf(inst, x.attribute("port").value(), d, x);
                unsigned top = portOf(-1, x.attribute("top").value(), d, x);
                const portP& p = compOf(inst).ports[port];
                const portP& t = owner->plan->ports[top];
                if (p.width() != t.width() || p.bus != t.bus)
                    d.fail(x, "export of " + p.name + " to " + t.name + " joins ports of different widths");
                for (unsigned s = 0; s < p.width(); ++s) {
                    std::uint32_t a = claim[bitIndex(inst, port, p.bus ? p.bitAt(s) : 0)],
                                  b = claim[bitIndex(-1, top, t.bus ? t.bitAt(s) : 0)];
                    if (a == UINT32_MAX || b == UINT32_MAX || findRoot(a) != findRoot(b))
                        d.fail(x, "export of " + p.name + " to " + t.name +
                                      ": the two ports are not on one net");
                }
                ds.exports.push_back(exportP{inst, port, top});
            } else if (!std::strcmp(n, "dualPortBus")) {
                dualBusP b{x.attribute("name").value(),
                           x.attribute("msb").as_uint(),
                           x.attribute("lsb").as_uint(),
                           {}};
                for (pugi::xml_node m = x.first_child(); m; m = m.next_sibling())
                    if (!std::strcmp(localName(m.name()), "slot"))
                        b.slots.push_back(m.attribute("dualPort").value());
                std::size_t width = (b.msb > b.lsb ? b.msb - b.lsb : b.lsb - b.msb) + std::size_t(1);
                if (b.slots.size() != width)
                    d.fail(x, "dual port bus " + b.name + " has " + std::to_string(b.slots.size()) +
                                  " slots for a range of " + std::to_string(width) + " bits");
                for (auto& slot : b.slots)
                    if (!slot.empty() && std::none_of(ds.duals.begin(), ds.duals.end(),
                                                      [&](const dualP& dp) { return dp.name == slot; }))
                        d.fail(x, "dual port bus " + b.name + " names dual port " + slot +
                                      ", which the design does not declare before it");
                ds.dualBuses.push_back(std::move(b));
            } else {
                dualP dp;
                dp.name = x.attribute("name").value();
                for (pugi::xml_node m = x.first_child(); m; m = m.next_sibling()) {
                    if (std::strcmp(localName(m.name()), "member") != 0) continue;
                    std::string in = m.attribute("instance").value();
                    int inst = in.empty() ? -1 : instOf(in, d, m);
                    if (inst < 0 && !owner)
                        d.fail(m, "dual port member of a design that has no enclosing component");
                    std::string pn = m.attribute("port").value();
                    // a bus bit is named name[i]; its bus must exist
                    const componentP& cp = compOf(inst);
                    bool ok = false;
                    for (auto& p : cp.ports) {
                        if (!p.bus && p.name == pn) ok = true;
                        if (p.bus && pn.compare(0, p.name.size() + 1, p.name + "[") == 0)
                            for (unsigned s = 0; s < p.width() && !ok; ++s)
                                ok = pn == p.name + "[" + std::to_string(p.bitAt(s)) + "]";
                    }
                    if (!ok)
                        d.fail(m, "dual port " + dp.name + " lists port " + pn + ", which " + cp.id.str() +
                                      " lacks");
                    dp.members.push_back({inst, pn});
                }
                ds.duals.push_back(std::move(dp));
            }
        }

        // Nets: every class of nodes is one net named after its first node; a
        // net bus stays a bus while every bit of it heads its own class.
        std::vector<unsigned> netOfRoot(parent.size(), UINT32_MAX), slotOfRoot;
        slotOfRoot.resize(parent.size());
        for (std::size_t gi = 0; gi < groups.size(); ++gi) {
            const group& g = groups[gi];
            bool whole = g.bus;
            for (unsigned s = 0; s < g.width() && whole; ++s)
                whole = findRoot(g.first + s) == g.first + s;
            if (whole) {
                unsigned b = static_cast<unsigned>(ds.buses.size()) | connP::busBit;
                netbusP nb{g.name, std::string(), false, g.msb, g.lsb, {}};
                if (g.extra) {
                    groupExtra& x = extras[static_cast<unsigned>(gi)];
                    nb.text = x.text;
                    nb.hasText = x.hasText;
                    nb.attrs = x.attrs;
                }
                ds.buses.push_back(std::move(nb));
                for (unsigned s = 0; s < g.width(); ++s) {
                    netOfRoot[g.first + s] = b;
                    slotOfRoot[g.first + s] = s;
                }
                continue;
            }
            for (unsigned s = 0; s < g.width(); ++s) {
                if (findRoot(g.first + s) != g.first + s) continue;
                netOfRoot[g.first + s] = static_cast<unsigned>(ds.nets.size());
                ds.nets.push_back(netP{g.nodeName(s)});
            }
        }
        // A net's text and attributes come from every scalar connection or
        // declaration that joined it, the bit of a net bus included.
        std::map<std::pair<unsigned, unsigned>, std::size_t> extraOf;
        for (auto& [gi, x] : extras) {
            const group& g = groups[gi];
            if (g.bus) continue;
            unsigned r = findRoot(g.first);
            auto key = std::make_pair(netOfRoot[r], slotOfRoot[r]);
            auto it = extraOf.find(key);
            if (it == extraOf.end()) {
                it = extraOf.emplace(key, ds.extras.size()).first;
                ds.extras.push_back(
                    netExtraP{key.first, (key.first & connP::busBit) ? key.second : 0, "", false, {}});
            }
            netExtraP& e = ds.extras[it->second];
            for (auto& a : x.attrs)
                e.attrs.push_back(a);
            if (x.hasText) {
                e.text = x.text;
                e.hasText = true;
            }
        }
        for (auto& r : refs) {
            unsigned root = findRoot(r.net);
            r.net = netOfRoot[root];
            r.slot = (r.net & connP::busBit) ? slotOfRoot[root] : 0;
        }
        refs.shrink_to_fit();
    }

    // Calls f on every `local` child of `list` and then takes it out of the
    // document, which is marked so that a second use parses it again.
    template <class F>
    void consume(const document& d, pugi::xml_node list, const char* local, F f) {
        for (pugi::xml_node c = list.first_child(); c;) {
            pugi::xml_node next = c.next_sibling();
            if (c.type() == pugi::node_element && d.is(c, local)) {
                f(c);
                list.remove_child(c);
                d.consumed = true;
                if (progress && ++consumed % 16384 == 0) progress("connect", consumed, 0);
            }
            c = next;
        }
    }

    // ---- the top
    void resolveTop(const vlnv& id) {
        auto it = index.find(id);
        if (it == index.end())
            throw loadFailure{message{"", 0, "missing document: no document has the VLNV " + id.str()}};
        const document& d = *it->second;
        if (d.kind == "component") {
            out.top = &topComponent(id, d);
            return;
        }
        const document* designDoc = &d;
        pugi::xml_node at = d.root;
        if (d.kind == "designConfiguration") {
            pugi::xml_node dref = d.child(d.root, "designRef");
            if (!dref) d.fail(d.root, "design configuration without a designRef");
            designDoc = &find(refOf(dref), "design", d, dref);
            at = dref;
        } else if (d.kind != "design") {
            d.fail(d.root,
                   "the top VLNV names a " + d.kind + ", not a component, design or design configuration");
        }
        // A design on its own: a root component of the design's VLNV holds it.
        auto owned = std::make_unique<componentP>();
        componentP& c = *owned;
        out.components.push_back(std::move(owned));
        c.id = designDoc->id;
        c.file = designDoc->name;
        scope none;
        currentOwner = nullptr;
        const designP& ds = design(designDoc->id, d, at, none, pugi::xml_node());
        c.designs.push_back(&ds);
        c.designKeys.push_back(ds.id.name);
        out.top = &c;
    }

    const componentP& topComponent(const vlnv& id, const document& d) {
        const componentP& c = component(id, d, d.root, {});
        spend(c.bits, d, d.root);
        return c;
    }
};

}  // namespace

// ---------------------------------------------------------------- the build

namespace {

struct builder {
    const progressFn& progress;
    std::size_t total, done = 0;
    const std::string empty;

    static void attrs(kalattributes* on, const std::vector<attrP>& list) {
        for (auto& a : list)
            if (a.hasVendor)
                on->setAttribute(&a.name, &a.value, &a.vendor);
            else
                on->setAttributeValue(&a.name, &a.value);
    }
    template <class Bus>
    static void busAttrs(Bus* on, const std::vector<attrP>& list) {
        for (auto& a : list)
            if (a.hasVendor)
                on->setAttribute(&a.name, &a.value, &a.vendor, false);
            else
                on->setAttributeValue(&a.name, &a.value, false);
    }
    static std::string bitName(const portP& p, unsigned bit) {
        return p.bus ? p.name + "[" + std::to_string(bit) + "]" : p.name;
    }

    // The component with everything but its designs.
    kalcomponent* shell(const componentP& c) {
        auto* k = new kalcomponent(&c.id.vendor, &c.id.library, &c.id.name, &c.id.version);
        for (auto& a : c.attrs)
            if (a.hasVendor)
                k->setAttribute(&a.name, &a.value, &a.vendor);
            else
                k->setAttributeValue(&a.name, &a.value);
        for (auto& p : c.ports) {
            const std::string* text = p.hasText ? &p.text : nullptr;
            if (p.bus) {
                k->addPortbus(&p.name, &p.second, p.msb, p.lsb, p.dir, text);
                busAttrs(k->getPortbus(&p.name, false), p.attrs);
                for (auto& [bit, list] : p.bitAttrs) {
                    std::string n = bitName(p, bit);
                    if (kalport* q = k->getPort(&n, false)) attrs(q, list);
                }
            } else {
                k->addPort(&p.name, &p.second, p.dir, text);
                attrs(k->getPort(&p.name, false), p.attrs);
            }
        }
        for (auto& p : c.params) {
            auto* kp = new kalparameter(&p.name, &p.second, &p.value, &p.fourth);
            attrs(kp, p.attrs);
            if (!k->addParameter(&p.name, kp)) delete kp;
        }
        for (auto& f : c.filesets) {
            kalfileset* fs = k->addFileSet(&f.name, &f.second, &f.third);
            if (!fs) continue;
            attrs(fs, f.attrs);
            for (auto& file : f.files)
                if (kalfile* kf = k->addFile(&f.name, &file.name, &file.second, &file.third))
                    attrs(kf, file.attrs);
        }
        if (!c.generators.empty()) {
            kalgenerators* reg = k->createGenerators();
            for (auto& g : c.generators) {
                kalgenerator* kg = k->createGenerator(g.name);
                kg->setDetail(g.detail);
                attrs(kg, g.attrs);
                for (auto& grp : g.groups) {
                    if (!reg->hasGroup(&grp)) reg->createGroup(grp);
                    reg->addGeneratorToGroup(kg, grp);
                }
            }
        }
        if (!c.catalogue.empty()) catalogue(k, c.catalogue);
        for (auto& l : c.lpcs) {
            auto* kl = new kallpc(l.value);
            attrs(kl, l.attrs);
            k->addLPC(kl);
        }
        return k;
    }

    // The catalogue's own operations set attributes and make a group per
    // element type; what they add beyond the record is taken away again.
    static void catalogue(kalcomponent* k, const catalogueP& cat) {
        kalelements* e = k->getElements();
        for (auto& g : cat.groups)
            e->createGroup(g.category, &g.type, &g.name, false);
        for (auto& el : cat.elements) {
            kalelement* x = e->addElement(&el.type, &el.name, false);
            if (!x) continue;
            x->removeAllAttributes();
            attrs(x, el.attrs);
        }
        std::set<std::string> recorded;
        for (auto& g : cat.groups)
            recorded.insert(g.name);
        for (auto& [name, grp] : e->getGroupMap())
            if (!recorded.count(name)) {
                e->removeGroup(&name);
                delete grp;  // made by addElement for a type whose group the record does not have
            }
        for (auto& g : cat.groups) {
            kalelementgroup* grp = e->getGroup(&g.name);
            grp->removeAllAttributes();
            attrs(grp, g.attrs);
            std::set<std::string> members(g.members.begin(), g.members.end());
            for (auto& [name, el] : grp->getElementMap())
                if (!members.count(name)) grp->removeElement(&name);
            for (auto& m : g.members)
                e->addElementToGroup(e->getElement(&m), &g.name);
            for (auto& sub : g.subgroups)
                grp->addGroup(e->getGroup(&sub));
        }
    }

    void designs(kalcomponent* k, const componentP& c) {
        for (std::size_t i = 0; i < c.designs.size(); ++i) {
            const designP& dp = *c.designs[i];
            const std::string& key = c.designKeys[i];
            k->createDesign(&dp.id.vendor, &dp.id.library, &key, &dp.id.version);
            std::string keyCopy = key;
            kaldesign* d = k->getDesign(&keyCopy);
            if (key != dp.id.name) {
                static const std::string nameKey("Name"), spirit("SPIRIT");
                d->identity->setAttribute(&nameKey, &dp.id.name, &spirit);
            }
            attrs(d->data, dp.attrs);
            std::vector<kalcomponent*> made(dp.insts.size());
            for (std::size_t n = 0; n < dp.insts.size(); ++n) {
                const instP& ip = dp.insts[n];
                kalcomponent* child = shell(*ip.comp);
                std::string name = ip.name;
                d->addInstance(&name, child);
                made[n] = child;
                designs(child, *ip.comp);
                if (progress && ++done % 1024 == 0) progress("build", done, total);
            }
            std::string netName, portName;
            auto nameOf = [&](unsigned net, unsigned slot) -> const std::string& {
                if (!(net & connP::busBit)) return dp.nets[net].name;
                const netbusP& b = dp.buses[net & ~connP::busBit];
                netName = b.name + "[" + std::to_string(b.bitAt(slot)) + "]";
                return netName;
            };
            // A net's text is given when it is made; a bit net with a text of its
            // own is made before its bus, which then takes it over.
            std::unordered_map<unsigned, const netExtraP*> scalarExtra;
            for (auto& x : dp.extras) {
                if (!(x.net & connP::busBit)) {
                    scalarExtra[x.net] = &x;
                } else if (x.hasText) {
                    std::string name = nameOf(x.net, x.slot);
                    d->addNet(&name, &name, &empty, &x.text);
                }
            }
            for (auto& b : dp.buses)
                d->addNetbus(&b.name, &empty, &b.name, b.msb, b.lsb, b.hasText ? &b.text : nullptr);
            for (auto& b : dp.buses)
                busAttrs(d->getNetbus(&b.name), b.attrs);
            for (std::size_t i = 0; i < dp.nets.size(); ++i) {
                auto x = scalarExtra.find(static_cast<unsigned>(i));
                const std::string* text =
                    x != scalarExtra.end() && x->second->hasText ? &x->second->text : nullptr;
                d->addNet(&dp.nets[i].name, &dp.nets[i].name, &empty, text);
            }
            for (auto& x : dp.extras)
                if (kalnet* kn = d->getNet(&nameOf(x.net, x.slot))) attrs(kn, x.attrs);
            const std::string& self = *k->data->instanceName;
            for (auto& cn : dp.conns) {
                const componentP& owner = cn.inst < 0 ? c : *dp.insts[static_cast<std::size_t>(cn.inst)].comp;
                const portP& p = owner.ports[cn.port];
                portName = bitName(p, cn.bit);
                const std::string& inst =
                    cn.inst < 0 ? empty : dp.insts[static_cast<std::size_t>(cn.inst)].name;
                const std::string& net = nameOf(cn.net, cn.slot);
                if (cn.inst >= 0 && inst == self) {
                    // The design would read this instance name as its owner's own path.
                    kalnet* kn = d->getNet(&net);
                    kalport* kp = made[static_cast<std::size_t>(cn.inst)]->getPort(&portName, false);
                    if (kn && kp && !kn->isConnectedTo(kp)) kn->connect(kp, true);
                    continue;
                }
                d->connect(&net, &portName, &inst);
            }
            for (auto& e : dp.exports) {
                kalcomponent* inst = made[static_cast<std::size_t>(e.inst)];
                const portP& p = dp.insts[static_cast<std::size_t>(e.inst)].comp->ports[e.port];
                const portP& t = c.ports[e.top];
                if (p.bus)
                    inst->getPortbus(&p.name, false)->exportTo(k->getPortbus(&t.name, false));
                else
                    inst->getPort(&p.name, false)->exportTo(k->getPort(&t.name, false));
            }
            for (auto& dual : dp.duals)
                for (auto& [inst, port] : dual.members) {
                    kalcomponent* on = inst < 0 ? k : made[static_cast<std::size_t>(inst)];
                    d->addPortToDualPort(dual.name, on->getPort(&port, false));
                }
            for (auto& b : dp.dualBuses) {
                std::vector<kaldualport*> slots;
                for (auto& name : b.slots)
                    slots.push_back(name.empty() ? nullptr : d->getDualPort(name));
                kaldualportbus* kb = kaldualportbus::createDualPortBus(b.name, b.msb, b.lsb, slots);
                if (kb && !d->insertDualPortBus(b.name, kb)) delete kb;
            }
        }
    }
};

loadResult finish(resolver& r, const std::string& top) {
    loadResult res;
    try {
        vlnv id;
        if (!vlnv::parse(top, id))
            throw loadFailure{message{"", 0, "\"" + top + "\" is not a VLNV (vendor:library:name:version)"}};
        r.resolveTop(id);
    } catch (loadFailure& f) {
        res.error = f.m;
        res.warnings = std::move(r.warnings);
        return res;
    }
    // The plan holds copies of all it needs: the documents go before the model is made.
    if (r.progress) r.progress("resolved", r.out.instances, r.out.instances);
    r.index.clear();
    r.docs.clear();
    builder b{r.progress, r.out.instances, 0, std::string()};
    const componentP& c = *r.out.top;
    res.root = b.shell(c);
    b.designs(res.root, c);
    res.ok = true;
    res.warnings = std::move(r.warnings);
    return res;
}

// A load that stopped: its message and the warnings gathered up to then.
loadResult failed(resolver& r, const loadFailure& f) {
    loadResult res;
    res.error = f.m;
    res.warnings = std::move(r.warnings);
    return res;
}

}  // namespace
}  // namespace detail

loadResult loadDocuments(const std::vector<std::pair<std::string, std::string>>& documents,
                         const std::string& top, const progressFn& progress, std::size_t maxBits) {
    detail::resolver r;
    r.progress = progress;
    r.maxBits = maxBits;
    try {
        for (auto& doc : documents) {
            const std::string* source = &doc.second;
            r.add(doc.first, doc.second, [source] { return *source; });
        }
    } catch (detail::loadFailure& f) {
        return detail::failed(r, f);
    }
    return detail::finish(r, top);
}

namespace {

// The whole file in one allocation of its size: a large design is held once.
bool readFile(const std::string& path, std::string& out) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) return false;
    std::streamoff size = in.tellg();
    if (size < 0) return false;
    out.assign(static_cast<std::size_t>(size), '\0');
    in.seekg(0);
    return static_cast<bool>(in.read(&out[0], size)) || size == 0;
}

}  // namespace

loadResult load(const std::string& folder, const std::string& top, const progressFn& progress) {
    namespace fs = std::filesystem;
    detail::resolver r;
    r.progress = progress;
    std::vector<std::string> paths;
    std::error_code ec;
    fs::recursive_directory_iterator it(folder, fs::directory_options::follow_directory_symlink, ec), end;
    if (ec || !fs::is_directory(folder)) {
        loadResult res;
        res.error = message{folder, 0,
                            "cannot read the folder: " + (ec ? ec.message() : std::string("not a folder"))};
        return res;
    }
    for (; it != end; it.increment(ec)) {
        if (ec) break;
        if (it->is_regular_file(ec) && it->path().extension() == ".xml") paths.push_back(it->path().string());
    }
    std::sort(paths.begin(), paths.end());  // the same messages whatever the folder's order
    try {
        std::size_t n = 0;
        for (auto& p : paths) {
            std::string text;
            if (!readFile(p, text)) throw detail::loadFailure{message{p, 0, "cannot read the file"}};
            r.add(p, std::move(text), [p] {
                std::string again;
                readFile(p, again);
                return again;
            });
            if (progress) progress("scan", ++n, paths.size());
        }
    } catch (detail::loadFailure& f) {
        return detail::failed(r, f);
    }
    return detail::finish(r, top);
}

}  // namespace kalipxact
