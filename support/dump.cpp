#include <algorithm>
#include <map>
#include <sstream>

#include "kaldata.h"
#include "kalsupport.h"

// One line per object, children indented under their owner, every map in name
// order: two models give the same text exactly when they hold the same
// components, ports, buses, nets, connections, exports and attributes. A
// net's ports are listed sorted, since the order in which they were connected
// is not part of what a design means.
namespace {

std::string q(const std::string* s) {
    return s ? "\"" + *s + "\"" : std::string("-");
}

void attributes(std::ostream& o, const std::string& pad, const kalattributes& a) {
    auto values = a.getValueMap();
    auto vendors = a.getVendorMap();
    for (auto& [k, v] : values) {
        o << pad << "@" << k << "=\"" << v << "\"";
        auto it = vendors.find(k);
        if (it != vendors.end()) o << " vendor=\"" << it->second << "\"";
        o << "\n";
    }
}

std::string portPath(kalport* p, kalcomponent* owner) {
    if (!p) return "-";
    kalcomponent* c = p->getComponent();
    std::string name = p->getName() ? *p->getName() : std::string("?");
    if (!c) return "?/" + name;
    if (c == owner) return name;
    return (c->data->instanceName ? *c->data->instanceName : std::string("?")) + "/" + name;
}

void component(std::ostream& o, const std::string& pad, kalcomponent* c);

void design(std::ostream& o, const std::string& pad, const std::string& key, kaldesign* d) {
    kalcomponent* owner = d->owner;
    o << pad << "design " << key << " " << q(d->identity->getVendor()) << ":" << q(d->identity->getLibrary())
      << ":" << q(d->identity->getName()) << ":" << q(d->identity->getVersion()) << "\n";
    std::string in = pad + "  ";
    attributes(o, in, *d->data);
    for (auto& [name, inst] : *d->data->getInstanceMap()) {
        o << in << "instance " << name << "\n";
        component(o, in + "  ", inst);
    }
    for (auto& [name, b] : *d->data->getNetbusMap()) {
        o << in << "netbus " << name << " [" << b->getMsb() << ":" << b->getLsb()
          << "] text=" << q(b->getText()) << " bits";
        for (kalnet* n : b->getBits())
            o << " " << (n && n->getName() ? *n->getName() : std::string("-"));
        o << "\n";
        attributes(o, in + "  ", *b);
    }
    for (auto& [name, n] : *d->data->getNetMap()) {
        std::vector<std::string> ports;
        for (kalport* p : n->getPorts())
            ports.push_back(portPath(p, owner));
        std::sort(ports.begin(), ports.end());
        o << in << "net " << name << " text=" << q(n->getText())
          << " bus=" << (n->getBus() && n->getBus()->getName() ? *n->getBus()->getName() : std::string("-"))
          << " ports";
        for (auto& p : ports)
            o << " " << p;
        o << "\n";
        attributes(o, in + "  ", *n);
    }
    for (auto& [name, dp] : *d->data->getDualPortMap()) {
        o << in << "dualport " << name;
        for (kalport* p : dp->getPortList())
            o << " " << portPath(p, owner);
        o << "\n";
    }
    for (auto& [name, b] : *d->data->getDualPortbusMap()) {
        o << in << "dualportbus " << name << " [" << b->getMsb() << ":" << b->getLsb() << "] slots";
        for (kaldualport* dp : b->getSlots())
            o << " " << (dp ? dp->getName() : std::string("-"));
        o << "\n";
    }
}

void component(std::ostream& o, const std::string& pad, kalcomponent* c) {
    o << pad << "component " << q(c->identity->getVendor()) << ":" << q(c->identity->getLibrary()) << ":"
      << q(c->identity->getName()) << ":" << q(c->identity->getVersion())
      << " instanceName=" << q(c->data->instanceName) << " clockSource=" << c->getClockSourceState() << "\n";
    std::string in = pad + "  ";
    attributes(o, in, *c->data);
    for (auto& [name, p] : c->data->parameters) {
        o << in << "parameter " << name << " name=" << q(p->getName()) << " second=" << q(p->getSecondField())
          << " value=" << q(p->getValue()) << " fourth=" << q(p->getFourthField()) << "\n";
        attributes(o, in + "  ", *p);
    }
    for (auto& [name, b] : c->data->portbuses) {
        o << in << "portbus " << name << " [" << b->getMsb() << ":" << b->getLsb()
          << "] dir=" << b->getDirection() << " text=" << q(b->getText()) << "\n";
        attributes(o, in + "  ", *b);
    }
    for (auto& [name, p] : c->data->ports) {
        kalnet* n = p->getNet();
        o << in << "port " << name << " dir=" << p->getDirection() << " text=" << q(p->getText())
          << " bus=" << (p->getBus() ? *p->getBus()->getName() : std::string("-"))
          << " net=" << (n && n->getName() ? *n->getName() : std::string("-"))
          << " exportedTo=" << portPath(p->getExportedTo(), nullptr)
          << " exportedFrom=" << portPath(p->getExportedFrom(), nullptr)
          << " dualport=" << (p->getDualPort() ? p->getDualPort()->getName() : std::string("-")) << "\n";
        attributes(o, in + "  ", *p);
    }
    for (auto& [name, fs] : c->data->filesets) {
        if (!fs) continue;
        o << in << "fileset " << name << " second=" << q(fs->getSecondField())
          << " third=" << q(fs->getThirdField()) << "\n";
        attributes(o, in + "  ", *fs);
        for (kalfile* f : fs->getFiles()) {
            o << in << "  file " << q(f->getName()) << " second=" << q(f->getSecondField())
              << " third=" << q(f->getThirdField()) << "\n";
            attributes(o, in + "    ", *f);
        }
    }
    if (kalgenerators* g = c->data->generators) {
        for (auto& [name, gen] : g->getGeneratorMap()) {
            o << in << "generator " << name << " detail=\"" << gen->getDetail() << "\" groups=\""
              << g->getGroupNames(&name) << "\"\n";
            attributes(o, in + "  ", *gen);
        }
    }
    if (kalelements* e = c->getElements()) {
        for (auto& [name, g] : e->getGroupMap()) {
            o << in << "catalogue group " << name << " category=" << g->getCategory() << " members";
            for (auto& m : g->getElementMap())
                o << " " << m.first;
            o << " subgroups";
            for (auto& sub : g->getSubgroupMap())
                o << " " << sub.first;
            o << "\n";
            attributes(o, in + "  ", *g);
        }
        for (auto& [name, el] : e->getElementMap()) {
            o << in << "catalogue element " << name << "\n";
            attributes(o, in + "  ", *el);
        }
    }
    for (kallpc* l : c->data->lpcs) {
        o << in << "lpc \"" << l->getValue() << "\"\n";
        attributes(o, in + "  ", *l);
    }
    for (auto& [key, d] : c->data->designs)
        if (d) design(o, in, key, d);
}

}  // namespace

std::string kalsupport::dumpModel(kalcomponent* root) {
    std::ostringstream o;
    if (root) component(o, "", root);
    return o.str();
}
