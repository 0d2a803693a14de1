// The reader's intermediate description: everything a load needs, resolved and
// checked before the first model object is made. Component descriptions are
// shared by every instance with the same VLNV and the same parameter values,
// so a design of many instances of few types stays small.
#ifndef KALIPXACT_PLAN_H
#define KALIPXACT_PLAN_H

#include <memory>
#include <string>
#include <vector>

#include "kalipxact.h"

namespace kalipxact {
namespace detail {

struct attrP {
    std::string name, value, vendor;
    bool hasVendor = true;  // set with a vendor, or through the value-only form
};

struct portP {
    std::string name, second, text;
    bool hasText = false;
    int dir = 1;
    bool bus = false;
    unsigned msb = 0, lsb = 0;
    unsigned base = 0;  // first entry of the port's bits in its component's bit table
    std::vector<attrP> attrs;
    std::vector<std::pair<unsigned, std::vector<attrP>>> bitAttrs;  // bit number, attributes
    unsigned width() const { return bus ? (msb > lsb ? msb - lsb : lsb - msb) + 1 : 1; }
    // Slot of bit number b (slot 0 holds msb), as the model indexes buses.
    unsigned slot(unsigned b) const { return msb >= lsb ? msb - b : b - msb; }
    unsigned bitAt(unsigned slot) const { return msb >= lsb ? msb - slot : msb + slot; }
};

struct paramP {
    std::string name, second, value, fourth;
    std::vector<attrP> attrs;
};

struct fileP {
    std::string name, second, third;
    std::vector<attrP> attrs;
};

struct filesetP {
    std::string name, second, third;
    std::vector<attrP> attrs;
    std::vector<fileP> files;
};

struct generatorP {
    std::string name, detail;
    std::vector<attrP> attrs;
    std::vector<std::string> groups;
};

struct lpcP {
    std::string value;
    std::vector<attrP> attrs;
};

// The element catalogue, as the writer records it: groups with their own
// members and nested groups, elements with their type.
struct catalogueP {
    struct group {
        std::string name, type;
        unsigned category = 0;
        std::vector<attrP> attrs;
        std::vector<std::string> members, subgroups;
    };
    struct element {
        std::string name, type;
        std::vector<attrP> attrs;
    };
    std::vector<group> groups;
    std::vector<element> elements;
    bool empty() const { return groups.empty() && elements.empty(); }
};

struct designP;

struct componentP {
    vlnv id;
    std::string file;
    std::vector<attrP> attrs;
    std::vector<portP> ports;
    unsigned bits = 0;  // size of the bit table: every bit of every port
    std::vector<paramP> params;
    std::vector<filesetP> filesets;
    std::vector<generatorP> generators;
    std::vector<lpcP> lpcs;
    catalogueP catalogue;
    std::vector<const designP*> designs;
    std::vector<std::string> designKeys;  // the model's design names, parallel to designs
};

struct instP {
    std::string name;
    const componentP* comp = nullptr;
};

struct netbusP {
    std::string name, text;
    bool hasText = false;
    unsigned msb = 0, lsb = 0;
    std::vector<attrP> attrs;
    unsigned bitAt(unsigned slot) const { return msb >= lsb ? msb - slot : msb + slot; }
};

// A scalar net; the bit nets of net buses are not listed (their bus makes them).
struct netP {
    std::string name;
};

// Text and attributes of a net (scalar, or a bit of a net bus), kept apart:
// few nets have any.
struct netExtraP {
    unsigned net;  // as in connP
    unsigned slot;
    std::string text;
    bool hasText = false;
    std::vector<attrP> attrs;
};

// One port bit on a net: a scalar net (index into nets), or with busBit set
// the bit in `slot` of net bus `net & ~busBit`; the instance (-1: the design's
// owner), the port and the bit number.
struct connP {
    static constexpr unsigned busBit = 0x80000000u;
    unsigned net;
    unsigned slot;
    int inst;
    unsigned port;
    unsigned bit;
};

struct exportP {
    int inst;
    unsigned port, top;  // port of the instance, port of the owner
};

struct dualP {
    std::string name;
    std::vector<std::pair<int, std::string>> members;  // instance (-1 owner), port name
};

struct dualBusP {
    std::string name;
    unsigned msb = 0, lsb = 0;
    std::vector<std::string> slots;  // dual port names, msb first; empty: an empty slot
};

struct designP {
    vlnv id;
    std::vector<attrP> attrs;
    std::vector<instP> insts;
    std::vector<netbusP> buses;
    std::vector<netP> nets;
    std::vector<connP> conns;
    std::vector<netExtraP> extras;
    std::vector<exportP> exports;
    std::vector<dualP> duals;
    std::vector<dualBusP> dualBuses;
};

// Everything a load made, kept alive until the build is done.
struct plan {
    std::vector<std::unique_ptr<componentP>> components;
    std::vector<std::unique_ptr<designP>> designs;
    const componentP* top = nullptr;
    std::size_t instances = 0;  // for progress
};

}  // namespace detail
}  // namespace kalipxact

#endif
