// kaldata-verilog: writes the hierarchy below a component of a libkaldata
// model as a structural Verilog-2005 netlist.
//
// What is written
//
// - One module per distinct component, components being told apart by the
//   four identity attributes "Vendor", "Library", "Name" and "Version". The
//   modules of components with a design come first, the given root's first,
//   then the others in the order they are first met (instances of a design in
//   instance-name order, a design's new modules before those of the designs
//   below it). A module is written from the first component of its kind met
//   that way which has a design; other components of that kind must have the
//   same ports, but their designs are not read. Only a component's first
//   design (the one with the smallest name) is read, as everywhere in the
//   model.
// - The module name is the component's "Name", or the value of its attribute
//   "moduleName" (moduleNameAttribute) when that is set and not empty: an
//   instantiation that names its HDL module is written under that name. Two
//   kinds of component that ask for the same "moduleName" are an error; a
//   "Name" taken already (by a "moduleName", or by an earlier module of
//   another kind) gets the first free suffix _1, _2, ...
// - Ports come from the component's scalar ports and port buses, in name
//   order, with the direction of the port or bus (1 input, 2 output, 3 inout)
//   and a range [msb:lsb] written as the bus has it, either order. The bit
//   ports of a bus (the ports its slots hold) are not module ports of their
//   own.
// - In each module, a vector wire for every net bus of the design and a wire
//   for every other net. A net that a net bus holds at the bit its name gives
//   ("b[3]", bit 3 of b) is that bit of the vector and nothing else, so each
//   bit net stays one net. A slot holding a net that is declared otherwise (a
//   bit of another bus, a net of another name) is joined to it by an assign:
//   one net still.
// - An instance per instance of the design (in name order), of the module of
//   its component, with named connections in the module's port order. A port
//   bus is connected as a whole: `.d(bus)` when its bits sit on the bits of
//   one net bus of its width, slot for slot; otherwise a concatenation of the
//   bits' nets from the bus's first bound to its second, where a bit on no
//   net is 1'bz for an input and a bit of an otherwise unused vector wire for
//   an output or inout (a constant cannot receive a value). A port on no net
//   is written `.port()`. A port that is on no net of the design but sits in
//   a dual port of the design is connected like the dual port: to the dual
//   port's net, or, when none of the dual port's ports is on a net, to a wire
//   named after the dual port, which joins them.
// - The enclosing component's own ports are joined to the nets they sit on by
//   continuous assignments: `assign net = port;` for an input,
//   `assign port = net;` for an output or inout. Assignments, rather than
//   naming a net after its port, keep every net a wire under its own name and
//   every net bus a whole vector, and they express every shape the model
//   allows: a net with several top ports, a port bus whose bits sit on
//   different nets or on a net bus of another range. Netlist readers
//   (synthesis, equivalence, Yosys) treat such an assignment as a plain
//   connection; an event-driven simulator carries an inout top port's value
//   from the net outward only. A port of a component that is itself an
//   instance may sit on a net of the parent's design instead (a port has one
//   net); inside, it is then joined to the net of the instance port exported
//   to it, if any.
// - Leaf components (no design) are modules defined elsewhere. With
//   Options::leafStubs each gets an empty module with its port list, marked
//   (* blackbox *), for tools that need every module declared.
// - Names are kept where Verilog allows them. A name that is not a simple
//   identifier, or is a keyword, is written as an escaped identifier
//   (`\u1/a[3] ` - backslash, the name, a space), which Verilog treats as the
//   same name. Bytes that cannot appear in an escaped identifier (space,
//   control and non-ASCII bytes) become '_', and an empty name becomes '_'.
//   Within a module, ports, instances, net buses, nets and the writer's own
//   wires share one name space and take their names in that order of
//   precedence; a name that is taken gets the first free suffix _1, _2, ...
//   and a comment on its declaration gives the model's name.
// - The text starts with `default_nettype none (any undeclared name is an
//   error in the reading tool) and ends by restoring `default_nettype wire.
//   Parameters, attributes and file sets are not written.
//
// The same model always gives the same bytes.
//
// Models that a netlist cannot express are refused with an error that names
// the object: a port or port bus whose direction is not 1, 2 or 3; two
// components of one kind with different ports; a net bus slot without a net;
// two kinds of component asking for one "moduleName"; a module that contains
// itself; a root without a design. Then nothing is written: the text is built
// in memory first, and a file is written under a temporary name in its own
// folder and renamed over the target only when complete. No exception leaves
// these functions; an allocation failure is reported as an error, too.
#ifndef KALDATA_KALVERILOG_H
#define KALDATA_KALVERILOG_H

#include <iosfwd>
#include <string>
#include <vector>

#if defined(__GNUC__) || defined(__clang__)
#define KALVERILOG_API __attribute__((visibility("default")))
#else
#define KALVERILOG_API
#endif

class kalcomponent;

namespace kalverilog {

// The component attribute that names a component's HDL module.
inline constexpr const char* moduleNameAttribute = "moduleName";

struct Options {
    // Write an empty (* blackbox *) module with its port list for every
    // component without a design.
    bool leafStubs = false;
};

// A module of the netlist and the component it was written from.
struct Module {
    std::string name;  // as written, escaped identifiers with their backslash and space
    kalcomponent* component = nullptr;
    bool leaf = false;  // no design: defined elsewhere (or a stub, with Options::leafStubs)
};

struct Result {
    bool ok = false;
    std::string error;            // what could not be written, naming the object; empty when ok
    std::vector<Module> modules;  // in the order of the text, leaves last; empty unless ok
    explicit operator bool() const { return ok; }
};

// Writes the netlist of root's hierarchy to out; root's module is the top.
// Nothing reaches out unless the whole netlist could be built; a stream that
// fails while being written gives an error.
KALVERILOG_API Result writeNetlist(kalcomponent* root, std::ostream& out, const Options& options);

// The same into the file at path, which is replaced only when the whole
// netlist is written (temporary file in the same folder, then rename). On any
// error no file is left behind and an existing file at path is untouched.
KALVERILOG_API Result writeNetlistFile(kalcomponent* root, const std::string& path, const Options& options);

}  // namespace kalverilog

#endif
