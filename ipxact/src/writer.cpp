// The writer: one component document per distinct VLNV (taken from the first
// component of that VLNV met in a walk of the hierarchy), one design document
// per design. The text is produced directly rather than through a DOM, so that
// a design of a hundred thousand instances costs a pass over the model and
// little memory. What IP-XACT has no element for goes into vendor extensions
// in this library's own namespace (see reader.cpp for the other side).
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <unordered_map>

#include "expr.h"
#include "kaldata.h"
#include "kalipxact.h"

namespace kalipxact {

namespace {

const char* const header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const char* const namespaces =
    " xmlns=\"http://www.accellera.org/XMLSchema/IPXACT/1685-2014\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xsi:schemaLocation=\"http://www.accellera.org/XMLSchema/IPXACT/1685-2014 "
    "http://www.accellera.org/XMLSchema/IPXACT/1685-2014/index.xsd\"";

std::string str(const std::string* s) {
    return s ? *s : std::string();
}

// Set when a text held a control character that XML 1.0 cannot carry.
thread_local bool replacedControl = false;

void escape(std::string& out, const std::string& s) {
    for (char c : s) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\r':
                out += "&#13;";
                break;
            case '\t':
                out += "&#9;";
                break;
            default:
                // XML 1.0 cannot carry other control characters at all.
                if (static_cast<unsigned char>(c) < 0x20) {
                    out += "&#xFFFD;";
                    replacedControl = true;
                } else
                    out += c;
        }
    }
}

// A name as IP-XACT's name types allow it (letters, digits, "_", "-", "."; not
// a digit, "-" or "." first); anything else is written as "kd.x" and its bytes
// in hex, and the name itself goes into an extension.
bool plainName(const std::string& s) {
    if (s.empty()) return false;
    auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    if (!letter(s[0])) return false;
    for (char c : s)
        if (!letter(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.') return false;
    return true;
}
std::string xmlName(const std::string& s) {
    if (plainName(s)) return s;
    static const char* hex = "0123456789abcdef";
    std::string r = "kd.x";
    for (unsigned char c : s) {
        r += hex[c >> 4];
        r += hex[c & 15];
    }
    return r;
}

struct out {
    std::string s;
    out& operator<<(const char* t) {
        s += t;
        return *this;
    }
    out& operator<<(const std::string& t) {
        escape(s, t);
        return *this;
    }
    out& operator<<(unsigned v) {
        s += std::to_string(v);
        return *this;
    }
    void element(const char* pad, const char* name, const std::string& text) {
        s += pad;
        s += "<";
        s += name;
        s += ">";
        escape(s, text);
        s += "</";
        s += name;
        s += ">\n";
    }
    void vlnvElements(const char* pad, const kalattributes& id) {
        auto& a = const_cast<kalattributes&>(id);
        element(pad, "vendor", str(a.getVendor()));
        element(pad, "library", str(a.getLibrary()));
        element(pad, "name", str(a.getName()));
        element(pad, "version", str(a.getVersion()));
    }
    void vlnvAttributes(const vlnv& v) {
        *this << " vendor=\"" << v.vendor << "\" library=\"" << v.library << "\" name=\"" << v.name
              << "\" version=\"" << v.version << "\"";
    }
};

vlnv idOf(kalattributes* a) {
    return vlnv{str(a->getVendor()), str(a->getLibrary()), str(a->getName()), str(a->getVersion())};
}

// The attributes of one object as extension elements.
void attributes(out& o, const char* pad, const kalattributes& a) {
    auto values = a.getValueMap();
    auto vendors = a.getVendorMap();
    for (auto& [k, v] : values) {
        o << pad << "<kd:attribute name=\"" << k << "\" value=\"" << v << "\"";
        auto it = vendors.find(k);
        if (it != vendors.end()) o << " vendor=\"" << it->second << "\"";
        o << "/>\n";
    }
}
// A vendorExtensions element only when there is something to put in it (the
// schema wants at least one child).
void extensions(out& o, const char* pad, const std::string& content) {
    if (content.empty()) return;
    o << pad << "<vendorExtensions>\n";
    o.s += content;
    o << pad << "</vendorExtensions>\n";
}

bool hasAttributes(const kalattributes& a) {
    return !a.getValueMap().empty();
}

// A bit port's number, from its bus-bit name.
bool bitNumber(const std::string& name, unsigned& bit) {
    std::size_t open = name.rfind('[');
    if (open == std::string::npos || name.size() < open + 3 || name.back() != ']') return false;
    unsigned long v = 0;
    for (std::size_t i = open + 1; i + 1 < name.size(); ++i) {
        if (name[i] < '0' || name[i] > '9') return false;
        v = v * 10 + static_cast<unsigned long>(name[i] - '0');
        if (v > 0xffffffffUL) return false;
    }
    bit = static_cast<unsigned>(v);
    return true;
}

// Would the reader give the same text back for this parameter value?
std::string valueText(const std::string& v) {
    std::int64_t n = 0;
    std::string why;
    if (detail::evaluate(v, nullptr, n, why) && std::to_string(n) == v) return v;
    return "\"" + v + "\"";
}

struct writer {
    std::vector<std::pair<std::string, std::string>>& docs;
    writeResult& result;
    std::map<vlnv, kalcomponent*> representative;  // first component of each VLNV
    std::vector<kalcomponent*> order;              // representatives, in walk order
    std::map<vlnv, kaldesign*> designs;
    std::vector<kaldesign*> designOrder;

    void warn(const std::string& what) { result.warnings.push_back(message{"", 0, what}); }

    void collect(kalcomponent* c) {
        vlnv id = idOf(c->identity);
        if (!representative.count(id)) {
            representative[id] = c;
            order.push_back(c);
        }
        for (auto& [key, d] : c->data->designs) {
            if (!d) continue;
            vlnv did = idOf(d->identity);
            if (!designs.count(did)) {
                designs[did] = d;
                designOrder.push_back(d);
            }
            for (auto& [name, inst] : *d->data->getInstanceMap())
                collect(inst);
        }
    }

    static std::string pathOf(const vlnv& id) {
        return id.vendor + "/" + id.library + "/" + id.name + "/" + id.version + "/" + id.name + "." +
               id.version + ".xml";
    }

    // ---- component documents
    void component(kalcomponent* c) {
        vlnv id = idOf(c->identity);
        out o;
        o << header << "<component" << namespaces << " xmlns:kd=\"" << extensionNamespace << "\">\n";
        o.vlnvElements("  ", *c->identity);
        std::vector<std::pair<std::string, kaldesign*>> ds;
        for (auto& [key, d] : c->data->designs)
            if (d) ds.push_back({key, d});
        std::string ports = portsText(c);
        if (!ds.empty() || !ports.empty()) {
            o << "  <model>\n";
            if (!ds.empty()) {
                o << "    <views>\n";
                for (std::size_t i = 0; i < ds.size(); ++i)
                    o << "      <view>\n        <name>view" << unsigned(i)
                      << "</name>\n        <designInstantiationRef>design" << unsigned(i)
                      << "</designInstantiationRef>\n      </view>\n";
                o << "    </views>\n    <instantiations>\n";
                for (std::size_t i = 0; i < ds.size(); ++i) {
                    o << "      <designInstantiation>\n        <name>design" << unsigned(i)
                      << "</name>\n        <designRef";
                    o.vlnvAttributes(idOf(ds[i].second->identity));
                    o << "/>\n      </designInstantiation>\n";
                    std::string name = str(ds[i].second->identity->getName());
                    if (ds[i].first != name &&
                        ds[i].first != name + "@" + str(ds[i].second->identity->getVersion()))
                        warn("design " + ds[i].first + " of " + id.str() +
                             " is keyed differently from its name " + name +
                             "; it reads back under its name");
                }
                o << "    </instantiations>\n";
            }
            if (!ports.empty()) o.s += ports;
            o << "  </model>\n";
        }
        if (kalgenerators* g = c->data->generators) {
            auto gens = g->getGeneratorMap();
            if (!gens.empty()) {
                o << "  <componentGenerators>\n";
                for (auto& [name, gen] : gens) {
                    o << "    <componentGenerator>\n";
                    o.element("      ", "name", xmlName(name));
                    o.element("      ", "generatorExe", gen->getDetail());
                    out x;
                    if (xmlName(name) != name) x << "        <kd:name value=\"" << name << "\"/>\n";
                    attributes(x, "        ", *gen);
                    extensions(o, "      ", x.s);
                    for (auto& [gname, grp] : g->getGroupMap())
                        if (grp->hasGenerator(&name)) o.element("      ", "group", gname);
                    o << "    </componentGenerator>\n";
                }
                o << "  </componentGenerators>\n";
            }
        }
        if (!c->data->filesets.empty()) {
            o << "  <fileSets>\n";
            for (auto& [name, fs] : c->data->filesets) {
                if (!fs) continue;
                o << "    <fileSet>\n";
                o.element("      ", "name", xmlName(name));
                for (kalfile* f : fs->getFiles()) {
                    o << "      <file>\n";
                    o.element("        ", "name", str(f->getName()));
                    o.element("        ", "fileType", "unknown");
                    o << "        <vendorExtensions>\n          <kd:file name=\"" << str(f->getName())
                      << "\" second=\"" << str(f->getSecondField()) << "\" third=\""
                      << str(f->getThirdField()) << "\"/>\n";
                    attributes(o, "          ", *f);
                    o << "        </vendorExtensions>\n      </file>\n";
                }
                o << "      <vendorExtensions>\n        <kd:fileSet name=\"" << name << "\" second=\""
                  << str(fs->getSecondField()) << "\" third=\"" << str(fs->getThirdField()) << "\"/>\n";
                attributes(o, "        ", *fs);
                o << "      </vendorExtensions>\n    </fileSet>\n";
            }
            o << "  </fileSets>\n";
        }
        if (!c->data->parameters.empty()) {
            o << "  <parameters>\n";
            for (auto& [key, p] : c->data->parameters) {
                o << "    <parameter>\n";
                o.element("      ", "name", xmlName(key));
                o.element("      ", "value", valueText(str(p->getValue())));
                o << "      <vendorExtensions>\n        <kd:parameter name=\"" << key << "\" second=\""
                  << str(p->getSecondField()) << "\" fourth=\"" << str(p->getFourthField()) << "\"/>\n";
                attributes(o, "        ", *p);
                o << "      </vendorExtensions>\n    </parameter>\n";
            }
            o << "  </parameters>\n";
        }
        out x;
        attributes(x, "    ", *c->data);
        catalogue(x, c);
        for (kallpc* l : c->data->lpcs) {
            x << "    <kd:lpc value=\"" << l->getValue() << "\">\n";
            attributes(x, "      ", *l);
            x << "    </kd:lpc>\n";
        }
        extensions(o, "  ", x.s);
        o << "</component>\n";
        docs.push_back({pathOf(id), std::move(o.s)});
    }

    // The element catalogue: registered groups with their members and nested
    // groups, and elements with their type.
    static void catalogue(out& x, kalcomponent* c) {
        kalelements* e = c->getElements();
        if (!e) return;
        auto groups = e->getGroupMap();
        auto elements = e->getElementMap();
        if (groups.empty() && elements.empty()) return;
        x << "    <kd:catalogue>\n";
        static const std::string groupType("GroupType"), elementType("ElementType");
        for (auto& [name, g] : groups) {
            x << "      <kd:group name=\"" << name << "\" category=\"" << g->getCategory() << "\" type=\""
              << str(g->getAttributeValue(&groupType)) << "\">\n";
            attributes(x, "        ", *g);
            for (auto& m : g->getElementMap())
                x << "        <kd:member name=\"" << m.first << "\"/>\n";
            for (auto& sub : g->getSubgroupMap())
                if (groups.count(sub.first) && groups.at(sub.first) == sub.second)
                    x << "        <kd:subgroup name=\"" << sub.first << "\"/>\n";
            x << "      </kd:group>\n";
        }
        for (auto& [name, el] : elements) {
            x << "      <kd:element name=\"" << name << "\" type=\""
              << str(el->getAttributeValue(&elementType)) << "\">\n";
            attributes(x, "        ", *el);
            x << "      </kd:element>\n";
        }
        x << "    </kd:catalogue>\n";
    }

    std::string portsText(kalcomponent* c) {
        out o;
        static const char* const dirs[] = {"", "in", "out", "inout"};
        auto one = [&](const std::string& name, const std::string* text, int dir, bool bus, unsigned msb,
                       unsigned lsb, const std::string& second, const kalattributes& attrs, kalportbus* pb) {
            if (dir < 1 || dir > 3) {
                warn("port " + name + " of " + idOf(c->identity).str() + " has no direction; not written");
                return;
            }
            o << "      <port>\n";
            o.element("        ", "name", xmlName(name));
            if (text) o.element("        ", "description", *text);
            o << "        <wire>\n          <direction>" << dirs[dir] << "</direction>\n";
            if (bus)
                o << "          <vectors>\n            <vector>\n              <left>" << msb
                  << "</left>\n              <right>" << lsb
                  << "</right>\n            </vector>\n          </vectors>\n";
            o << "        </wire>\n";
            out x;
            if (xmlName(name) != name) x << "          <kd:name value=\"" << name << "\"/>\n";
            if (second != name) x << "          <kd:second value=\"" << second << "\"/>\n";
            attributes(x, "          ", attrs);
            if (pb)
                for (kalport* bit : pb->getBits()) {
                    unsigned b = 0;
                    if (bit && hasAttributes(*bit) && bitNumber(str(bit->getName()), b)) {
                        x << "          <kd:bit index=\"" << b << "\">\n";
                        attributes(x, "            ", *bit);
                        x << "          </kd:bit>\n";
                    }
                }
            extensions(o, "        ", x.s);
            o << "      </port>\n";
        };
        for (auto& [name, pb] : c->data->portbuses)
            one(name, pb->getText(), pb->getDirection(), true, pb->getMsb(), pb->getLsb(),
                str(pb->getSecondName()), *pb, pb);
        for (auto& [name, p] : c->data->ports) {
            kalportbus* b = p->getBus();
            if (b && b->getComponent() == c) continue;  // a bit: made with its bus
            one(name, p->getText(), p->getDirection(), false, 0, 0, str(p->getSecondName()), *p, nullptr);
        }
        if (o.s.empty()) return std::string();
        return "    <ports>\n" + o.s + "    </ports>\n";
    }

    // An instance that differs from the document of its VLNV: what the reader
    // can apply goes into the instance's extensions, the rest is reported.
    void differences(out& o, kalcomponent* inst, const std::string& where) {
        kalcomponent* rep = representative.at(idOf(inst->identity));
        if (rep == inst) return;
        if (rep->data->getValueMap() != inst->data->getValueMap() ||
            rep->data->getVendorMap() != inst->data->getVendorMap()) {
            o << "        <kd:attributes>\n";
            attributes(o, "          ", *inst->data);
            o << "        </kd:attributes>\n";
        }
        auto& rp = rep->data->parameters;
        auto& ip = inst->data->parameters;
        if (rp.size() != ip.size())
            warn(where + " has other parameters than its component document; not written");
        for (auto& [name, p] : ip) {
            auto it = rp.find(name);
            if (it == rp.end()) continue;
            if (str(it->second->getValue()) != str(p->getValue()))
                o << "        <kd:parameter name=\"" << name << "\" value=\"" << str(p->getValue())
                  << "\"/>\n";
        }
        auto& rb = rep->data->portbuses;
        auto& ib = inst->data->portbuses;
        bool same = rb.size() == ib.size();
        for (auto& [name, b] : ib) {
            auto it = rb.find(name);
            if (it == rb.end() || it->second->getDirection() != b->getDirection()) {
                same = false;
                continue;
            }
            if (it->second->getMsb() != b->getMsb() || it->second->getLsb() != b->getLsb())
                o << "        <kd:portBus name=\"" << name << "\" msb=\"" << b->getMsb() << "\" lsb=\""
                  << b->getLsb() << "\"/>\n";
        }
        auto scalars = [](kalcomponent* c) {
            std::map<std::string, int> r;
            for (auto& [name, p] : c->data->ports)
                if (!p->getBus()) r[name] = p->getDirection();
            return r;
        };
        same = same && scalars(rep) == scalars(inst);
        if (!same) warn(where + " has other ports than its component document; the document's are written");
    }

    // ---- design documents
    void design(kaldesign* d) {
        vlnv id = idOf(d->identity);
        kalcomponent* owner = d->owner;
        out o;
        o << header << "<design" << namespaces << " xmlns:kd=\"" << extensionNamespace << "\">\n";
        o.vlnvElements("  ", *d->identity);
        auto* instances = d->data->getInstanceMap();
        if (!instances->empty()) {
            o << "  <componentInstances>\n";
            for (auto& [name, inst] : *instances) {
                o << "    <componentInstance>\n";
                o.element("      ", "instanceName", xmlName(name));
                o << "      <componentRef";
                o.vlnvAttributes(idOf(inst->identity));
                o << "/>\n";
                out ext;
                if (xmlName(name) != name) ext << "        <kd:name value=\"" << name << "\"/>\n";
                differences(ext, inst, "instance " + name + " of design " + id.str());
                if (!ext.s.empty()) {
                    o << "      <vendorExtensions>\n";
                    o.s += ext.s;
                    o << "      </vendorExtensions>\n";
                }
                o << "    </componentInstance>\n";
            }
            o << "  </componentInstances>\n";
        }

        // Port buses that lie wholly on a net bus, slot for slot, are written as
        // one connection of whole vectors; their bits are not written again.
        std::unordered_map<kalportbus*, kalnetbus*> covered;
        std::vector<std::pair<kalnetbus*, std::vector<kalportbus*>>> busConnections;
        for (auto& [name, nb] : *d->data->getNetbusMap()) {
            std::vector<kalnet*> bits = nb->getBits();
            std::vector<kalportbus*> whole;
            if (!bits.empty() && bits[0])
                for (kalport* p : bits[0]->getPorts()) {
                    kalportbus* pb = p->getBus();
                    if (!pb || covered.count(pb)) continue;
                    std::vector<kalport*> pbits = pb->getBits();
                    if (pbits.size() != bits.size() || pbits[0] != p) continue;
                    bool all = true;
                    for (std::size_t k = 0; k < bits.size() && all; ++k)
                        all = bits[k] && pbits[k] && pbits[k]->getNet() == bits[k];
                    if (all) {
                        covered[pb] = nb;
                        whole.push_back(pb);
                    }
                }
            if (!whole.empty()) busConnections.push_back({nb, std::move(whole)});
        }

        std::string instName;
        auto reference = [&](out& r, kalport* p, kalportbus* pb, bool bitSelect) {
            kalcomponent* c = p ? p->getComponent() : pb->getComponent();
            std::string portName = pb ? str(pb->getName()) : str(p->getName());
            if (c == owner)
                r << "        <externalPortReference portRef=\"" << xmlName(portName) << "\"";
            else
                r << "        <internalPortReference componentRef=\"" << xmlName(str(c->data->instanceName))
                  << "\" portRef=\"" << xmlName(portName) << "\"";
            unsigned bit = 0;
            if (bitSelect && bitNumber(str(p->getName()), bit))
                r << ">\n          <partSelect>\n            <range>\n              "
                     "<left>"
                  << bit << "</left>\n              <right>" << bit
                  << "</right>\n            </range>\n          </partSelect>\n        "
                  << (c == owner ? "</externalPortReference>\n" : "</internalPortReference>\n");
            else
                r << "/>\n";
        };
        out conns;
        auto connection = [&](const std::string& name, const std::string& refs) {
            conns << "    <adHocConnection>\n";
            conns.element("      ", "name", xmlName(name));
            conns << "      <portReferences>\n";
            conns.s += refs;
            conns << "      </portReferences>\n";
            if (xmlName(name) != name)
                conns << "      <vendorExtensions>\n        <kd:name value=\"" << name
                      << "\"/>\n      </vendorExtensions>\n";
            conns << "    </adHocConnection>\n";
        };
        for (auto& [nb, whole] : busConnections) {
            out refs;
            for (kalportbus* pb : whole)
                reference(refs, nullptr, pb, false);
            connection(str(nb->getName()), refs.s);
        }
        out ext;
        attributes(ext, "    ", *d->data);
        for (auto& [name, nb] : *d->data->getNetbusMap()) {
            ext << "    <kd:netBus name=\"" << name << "\" msb=\"" << nb->getMsb() << "\" lsb=\""
                << nb->getLsb() << "\"";
            if (nb->getText()) ext << " text=\"" << *nb->getText() << "\"";
            ext << ">\n";
            attributes(ext, "      ", *nb);
            ext << "    </kd:netBus>\n";
        }
        for (auto& [name, n] : *d->data->getNetMap()) {
            out refs;
            std::vector<kalport*> ports = n->getPorts();
            // The schema wants internal references before external ones.
            std::stable_partition(ports.begin(), ports.end(),
                                  [owner](kalport* p) { return p->getComponent() != owner; });
            for (kalport* p : ports) {
                kalportbus* pb = p->getBus();
                if (pb && n->getBus()) {
                    auto it = covered.find(pb);
                    if (it != covered.end() && it->second == n->getBus()) continue;
                }
                if (pb && pb->getComponent() == p->getComponent())
                    reference(refs, p, pb, true);
                else
                    reference(refs, p, nullptr, false);
            }
            if (!refs.s.empty()) connection(name, refs.s);
            bool bit = n->getBus() != nullptr;
            if ((refs.s.empty() && !bit) || n->getText() || hasAttributes(*n)) {
                ext << "    <kd:net name=\"" << name << "\"";
                if (n->getText()) ext << " text=\"" << *n->getText() << "\"";
                ext << ">\n";
                attributes(ext, "      ", *n);
                ext << "    </kd:net>\n";
            }
        }
        // Exports: an instance port (or port bus) and the owner's port it is exported to.
        for (auto& [name, inst] : *instances) {
            for (auto& [bname, pb] : inst->data->portbuses) {
                kalportbus* to = pb->getExportedToBus();
                if (to && to->getComponent() == owner)
                    ext << "    <kd:export instance=\"" << xmlName(name) << "\" port=\"" << xmlName(bname)
                        << "\" top=\"" << xmlName(str(to->getName())) << "\"/>\n";
            }
            for (auto& [pname, p] : inst->data->ports) {
                kalport* to = p->getExportedTo();
                if (!to || to->getComponent() != owner) continue;
                kalportbus* pb = p->getBus();
                if (pb && pb->getExportedToBus() && pb->getExportedToBus()->getComponent() == owner) continue;
                if (pb || to->getBus()) {
                    warn("export of bit " + pname + " of instance " + name + " alone is not written");
                    continue;
                }
                ext << "    <kd:export instance=\"" << xmlName(name) << "\" port=\"" << xmlName(pname)
                    << "\" top=\"" << xmlName(str(to->getName())) << "\"/>\n";
            }
        }
        for (auto& [name, dp] : *d->data->getDualPortMap()) {
            ext << "    <kd:dualPort name=\"" << name << "\">\n";
            for (kalport* p : dp->getPortList()) {
                if (!p) continue;
                kalcomponent* c = p->getComponent();
                ext << "      <kd:member instance=\""
                    << (c == owner ? std::string() : xmlName(str(c->data->instanceName))) << "\" port=\""
                    << str(p->getName()) << "\"/>\n";
            }
            ext << "    </kd:dualPort>\n";
        }
        for (auto& [name, b] : *d->data->getDualPortbusMap()) {
            ext << "    <kd:dualPortBus name=\"" << name << "\" msb=\"" << b->getMsb() << "\" lsb=\""
                << b->getLsb() << "\">\n";
            for (kaldualport* dp : b->getSlots()) {
                if (dp)
                    ext << "      <kd:slot dualPort=\"" << dp->getName() << "\"/>\n";
                else
                    ext << "      <kd:slot/>\n";
            }
            ext << "    </kd:dualPortBus>\n";
        }

        if (!conns.s.empty()) {
            o << "  <adHocConnections>\n";
            o.s += conns.s;
            o << "  </adHocConnections>\n";
        }
        if (!ext.s.empty()) {
            o << "  <vendorExtensions>\n";
            o.s += ext.s;
            o << "  </vendorExtensions>\n";
        }
        o << "</design>\n";
        // A design document is mostly connections: without indentation it is
        // a good deal smaller, and so is what a reader has to hold of it.
        std::size_t w = 0;
        bool lineStart = true;
        for (char ch : o.s) {
            if (lineStart && ch == ' ') continue;
            lineStart = ch == '\n';
            o.s[w++] = ch;
        }
        o.s.resize(w);
        docs.push_back({pathOf(id), std::move(o.s)});
    }

    bool run(kalcomponent* root) {
        collect(root);
        for (auto& [id, d] : designs)
            if (representative.count(id)) {
                result.error = message{"", 0, "design " + id.str() + " has the VLNV of a component"};
                return false;
            }
        for (kalcomponent* c : order)
            component(c);
        for (kaldesign* d : designOrder)
            design(d);
        return true;
    }
};

}  // namespace

writeResult writeDocuments(kalcomponent* root, std::vector<std::pair<std::string, std::string>>& documents) {
    writeResult r;
    if (!root) {
        r.error = message{"", 0, "no root component"};
        return r;
    }
    writer w{documents, r, {}, {}, {}, {}};
    replacedControl = false;
    r.ok = w.run(root);
    if (replacedControl)
        r.warnings.push_back(
            message{"", 0, "control characters, which XML 1.0 cannot hold, were written as U+FFFD"});
    return r;
}

writeResult write(kalcomponent* root, const std::string& folder) {
    std::vector<std::pair<std::string, std::string>> docs;
    writeResult r = writeDocuments(root, docs);
    if (!r.ok) return r;
    namespace fs = std::filesystem;
    for (auto& [rel, text] : docs) {
        fs::path p = fs::path(folder) / rel;
        std::error_code ec;
        fs::create_directories(p.parent_path(), ec);
        std::ofstream f(p, std::ios::binary | std::ios::trunc);
        if (ec || !f || !f.write(text.data(), static_cast<std::streamsize>(text.size()))) {
            r.ok = false;
            r.error =
                message{p.string(), 0, "cannot write the file" + (ec ? ": " + ec.message() : std::string())};
            return r;
        }
        r.files.push_back(p.string());
    }
    return r;
}

}  // namespace kalipxact
