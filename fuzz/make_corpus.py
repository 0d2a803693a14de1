#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the seed inputs of the API fuzzer into fuzz/corpus.

Each seed is a short scenario written with the helpers below, which encode
operations in the fuzzer's input format (see fuzz/api_fuzzer.cpp): a set-up
byte, then per operation an opcode byte and a fixed layout of argument bytes.
Run it after changing the format or the scenarios; KALDATA_FUZZ_TRACE=1
build/fuzz/fuzz/kaldata-api-fuzzer fuzz/corpus/<seed> shows what a seed does.
"""
import hashlib
import os
import sys

# In the order of `enum class op`.
OPS = """events addInstance removeInstance removeComponent reAddInstances addPort addPortbus
renamePort renamePortbus removePort removePortbus deletePortbus addNet addNetbus connect
disconnect renameNet renameNetbus netbusRange removeNet removeNetbus deleteNetbus addExport
removeExport dualAddPort dualAddPorts dualInsert dualSplit dualSplitByName dualRemove dualDelete
dualBusInsert dualBusRemove dualBusDelete dualBusSlot createDesign deleteDesign setName
attributes catalogue queries""".split()
OP = {name: code for code, name in enumerate(OPS)}

POOL = ["a", "b", "c", "d", "q", "i", "o", "y", "z", "n", "clk", "en", "top", "u1", "u2", "g",
        "a[0]", "a[1]", "d[0]", "d[1]", "d[2]", "d[3]", "q[0]", "q[1]", "u1_a", "u1_q", "x/y", "",
        "Chip", "rtl", "impl", "dp"]
AND2, REG, OSC = 0, 1, 2
NULL = "<null>"


def nm(s):
    """A name argument: null, or a name of the pool."""
    if s == NULL:
        return 0x00
    return 0x20 + POOL.index(s)


def own(k, n):
    """A name argument: the model's own string of the k-th of n known names."""
    for b in range(0xE0, 0x100):
        if b % n == k:
            return b
    raise ValueError


class seed:
    def __init__(self, root_named_chip=False, null_events=False):
        self.bytes = [(1 if root_named_chip else 0) | (2 if null_events else 0)]

    def op(self, name, *args):
        self.bytes.append(OP[name])
        self.bytes.extend(args)
        return self

    # Scopes count designs in walk order: 0 is top's first design. Members
    # count the scope's owner (0), then its instances in name order.
    def events(self, null):
        return self.op("events", int(null))

    def inst(self, name, kind, scope=0):
        return self.op("addInstance", scope, nm(name), kind)

    def rm_inst(self, name, scope=0):
        return self.op("removeInstance", scope, nm(name))

    def rm_component(self, mode, inst=0, extra=0, scope=0):
        return self.op("removeComponent", scope, mode, inst, extra)

    def readd(self, which, name, scope=0, dest=0):
        return self.op("reAddInstances", scope, which, nm(name), dest)

    def port(self, member, name, direction, scope=0):
        return self.op("addPort", scope, member, nm(name), direction - 1)

    def portbus(self, member, name, msb, lsb, direction, scope=0):
        return self.op("addPortbus", scope, member, nm(name), msb, lsb, direction - 1)

    def port_op(self, what, member, *names, scope=0):
        return self.op(what, scope, member, *[nm(n) if isinstance(n, str) else n for n in names])

    def net(self, name, second=None, kind=1, via=0, scope=0):
        same = 1 if second is None else 0
        return self.op("addNet", scope, via, nm(name), same, nm(second or "a"), kind)

    def netbus(self, name, first, last, kind=1, via=0, scope=0):
        return self.op("addNetbus", scope, via, nm(name), kind, first, last)

    def net_op(self, what, *args, via=0, scope=0):
        return self.op(what, scope, via, *[nm(a) if isinstance(a, str) else a for a in args])

    # mode: 0 top port, 1 instance by name, 2 path from the owner, 3 one level
    # further down, 4 the instance's own name string, 5 a pool name.
    def connect(self, net, mode, inst, port, extra=0, via=0, scope=0, what="connect", null_inst=0):
        return self.op(what, scope, via, nm(net), mode, inst, extra,
                       nm(port) if isinstance(port, str) else port, null_inst)

    def disconnect(self, net, mode, inst, port, **kw):
        return self.connect(net, mode, inst, port, what="disconnect", **kw)

    # mode: 0 pin of an instance, 1 pin one level down, 2 the owner's own pin, 3 any name.
    def export(self, mode, inst, pin, extra=0, flag=0, kind=1, top=NULL, scope=0):
        return self.op("addExport", scope, mode, inst, extra, nm(pin), flag, kind, nm(top))

    def unexport(self, mode, inst, pin, extra=0, flag=0, scope=0):
        return self.op("removeExport", scope, mode, inst, extra, nm(pin), flag)

    def dual_add(self, name, member, port, scope=0):
        return self.op("dualAddPort", scope, nm(name), member, port)

    def dual_adds(self, name, ports, scope=0):
        out = [scope, nm(name), len(ports)]
        for member, port in ports:
            out += [member, port]
        return self.op("dualAddPorts", *out)

    def dual_insert(self, key, own_name, ports, vector=0, scope=0):
        out = [scope, nm(key), nm(own_name), len(ports)]
        for member, port in ports:
            out += [member, port]
        out.append(vector)
        return self.op("dualInsert", *out)

    def dual_split(self, name, member, port, scope=0):
        return self.op("dualSplit", scope, nm(name), member, port)

    def dual_split_name(self, name, member, port, by_name=0, scope=0):
        return self.op("dualSplitByName", scope, nm(name), member, by_name, nm(port))

    def dual_bus_made(self, key, own_name, msb, lsb, slots, duals, extra=0, scope=0):
        # slots: indexes into the design's `duals` dual ports in name order; None for an empty slot.
        out = [scope, 1, nm(key), nm(own_name), msb, lsb, 7 if extra else 0]
        for s in slots:
            out.append(duals if s is None else s)
        return self.op("dualBusInsert", *out)

    def dual_bus_built(self, key, own_name, msb, lsb, connects, scope=0):
        out = [scope, 0, nm(key), nm(own_name), msb, lsb, len(connects)]
        for index, dp in connects:
            out += [index, dp]
        return self.op("dualBusInsert", *out)

    def dual_bus_slot(self, bus, action, index, dp, scope=0):
        return self.op("dualBusSlot", scope, bus, action, index, dp)

    def design(self, what, component, name):
        return self.op(what, component, nm(name))

    def queries(self, scope=0):
        return self.op("queries", scope)

    def data(self):
        return bytes(b & 0xFF for b in self.bytes)


def seeds():
    s = {}

    s["wire_and_prune"] = (seed().inst("u1", AND2).inst("u2", AND2).port(0, "a", 1).port(0, "o", 2)
                           .net("n").net("c").connect("n", 1, 0, "y").connect("n", 1, 1, "a")
                           .connect("n", 0, 0, "o").connect("c", 0, 0, "a").connect("c", 2, 1, "b")
                           .disconnect("n", 1, 1, "a").disconnect("c", 0, 0, "a", null_inst=1)
                           .queries())

    s["export_scalar"] = (seed().inst("u1", AND2).net("n").connect("n", 1, 0, "y")
                          .export(0, 0, "a").export(0, 0, "y").export(0, 0, "b", top="u1_a")
                          .unexport(0, 0, "a").unexport(0, 0, "y").queries())

    s["export_bus_and_removal"] = (seed().inst("u1", REG).export(0, 0, "d").export(0, 0, "q")
                                   .unexport(0, 0, "d").rm_inst("u1").queries())

    s["netbus_rename_and_range"] = (seed().netbus("d", 1, 0).net("d[3]").net("d[2]").portbus(0, "a", 1, 0, 1)
                                    .connect("d[1]", 0, 0, "a[1]").connect("d[0]", 0, 0, "a[0]")
                                    .net_op("renameNetbus", "d", "q").net_op("renameNetbus", "q", "d")
                                    .net_op("netbusRange", "d", 3, 2).queries())

    s["netbus_remove_bits"] = (seed().inst("u1", REG).netbus("d", 1, 0).netbus("q", 0, 1)
                               .connect("d[1]", 1, 0, "d[1]").connect("d[0]", 1, 0, "d[0]")
                               .connect("q[0]", 1, 0, "q[0]").net_op("removeNet", "d[1]")
                               .net_op("removeNetbus", "q").net_op("deleteNetbus", "d").queries())

    s["dual_ports"] = (seed().inst("u1", AND2).inst("u2", AND2).net("n").connect("n", 1, 0, "y")
                       .connect("n", 1, 1, "a").dual_add("dp", 1, 0).dual_add("dp", 2, 0).dual_add("dp", 1, 0)
                       .dual_adds("c", [(1, 1), (2, 1), (1, 1)]).dual_split("dp", 1, 0)
                       .dual_split_name("c", 1, "b").dual_split_name("c", 2, "b").queries())

    s["dual_port_buses"] = (seed().inst("u1", AND2).inst("u2", AND2)
                            .dual_adds("a", [(1, 0), (2, 0)]).dual_adds("b", [(1, 1), (2, 1)])
                            .dual_insert("c", "dp", [(1, 2), (2, 2)])
                            .dual_bus_made("n", "n", 1, 0, [0, 1], 3).dual_bus_built("q", "z", 0, 2, [(0, 2), (2, 0)])
                            .dual_bus_slot(0, 0, 1, 2).dual_bus_slot(1, 1, 0, 0).queries()
                            .op("dualDelete", 0, nm("a")).op("dualBusDelete", 0, nm("n"))
                            .op("dualBusRemove", 0, nm("q")).op("dualRemove", 0, nm("c")).queries())

    s["nested_hierarchy"] = (seed().inst("u1", OSC).inst("u2", AND2).net("n")
                             .connect("n", 3, 0, "b").connect("n", 2, 0, "clk").connect("n", 1, 1, "a")
                             .export(1, 0, "y").unexport(1, 0, "y").export(1, 0, "z")
                             .rm_component(2, 0, 0).queries().rm_inst("u1"))

    s["designs"] = (seed().inst("u1", AND2).net("n").connect("n", 1, 0, "y").connect("n", 0, 0, "a")
                    .port(0, "a", 1).connect("n", 0, 0, "a").design("createDesign", 0, "a")
                    .inst("u2", AND2).net("c").connect("c", 0, 0, "a").connect("c", 2, 0, "b")
                    .connect("n", 2, 0, "b", scope=1).design("deleteDesign", 0, "rtl")
                    .design("createDesign", 0, "a").queries())

    s["port_renames"] = (seed().portbus(0, "d", 3, 0, 1).port(0, "a[1]", 2).portbus(0, "a", 1, 0, 2)
                         .port_op("renamePort", 0, "d[0]", "q[1]").port_op("renamePortbus", 0, "d", "q")
                         .port_op("renamePortbus", 0, "a", "d").port_op("removePort", 0, "d[1]")
                         .port_op("renamePort", 0, "a", "d[3]").queries())

    s["portbus_removal_on_nets"] = (seed().inst("u1", AND2).portbus(0, "d", 1, 0, 1).net("n").net("c")
                                    .connect("n", 0, 0, "d[1]").connect("n", 1, 0, "a")
                                    .connect("c", 0, 0, "d[0]").port_op("removePortbus", 0, "d")
                                    .portbus(0, "q", 0, 1, 2).connect("c", 0, 0, "q[1]")
                                    .port_op("deletePortbus", 0, "q").queries())

    # Re-added under a new name (its ports re-keyed on their nets), then moved into z's design.
    s["instances_re_added"] = (seed().inst("u1", AND2).inst("u2", REG).inst("z", OSC).net("n").net("c")
                               .connect("n", 1, 0, "y").connect("n", 1, 1, "clk").readd(0, "g")
                               .connect("c", 1, 0, "a").readd(1, "u2").readd(0, "u1", dest=1)
                               .queries().rm_inst("z").queries())

    # Names handed in as the model's own strings, into operations that free them.
    s["own_names"] = (seed().inst("u1", AND2).inst("u2", AND2).net("n").net("c")
                      .connect("n", 1, 0, "y").connect("n", 1, 1, "a")
                      .op("removeNet", 0, 0, own(1, 2))
                      .op("removeInstance", 0, own(0, 2))
                      .op("renameNet", 0, 0, own(0, 1), own(0, 1))
                      .op("removePort", 0, 1, own(0, 4)).queries())

    s["null_events"] = (seed(null_events=True).inst("u1", AND2).net("n").connect("n", 1, 0, "y")
                        .export(0, 0, "a").dual_adds("dp", [(1, 0), (1, 1)]).events(False)
                        .unexport(0, 0, "a").events(True).rm_inst("u1").queries())

    s["root_named_chip"] = (seed(root_named_chip=True).port(0, "a", 1).port(0, "b", 2).inst("u1", AND2)
                            .dual_adds("dp", [(0, 0), (0, 1), (1, 0)]).dual_split_name("dp", 0, "a", by_name=1)
                            .dual_split_name("dp", 0, "b").port_op("removePort", 0, "b")
                            .dual_split("dp", 1, 0).queries())

    s["remove_component_paths"] = (seed().inst("u1", OSC).inst("u2", OSC).rm_component(0, 0)
                                   .rm_component(2, 0, 0).rm_component(3).rm_component(1, 1)
                                   .rm_component(4, 0, 12).queries())

    s["attributes_and_catalogue"] = (seed().inst("u1", REG).inst("u2", OSC).netbus("d", 1, 0).net("n")
                                     .connect("n", 1, 1, "clk").connect("n", 1, 0, "clk")
                                     .op("attributes", 0, 1, 1, 1, nm("d"), 1)
                                     .op("attributes", 0, 0, 0, 0, 0, 0)
                                     .op("attributes", 0, 1, 0, 3, nm("d"), 1)
                                     .op("catalogue", 0, 1, nm("clk"), 0).op("catalogue", 0, 2, nm("en"), 1)
                                     .disconnect("n", 1, 1, "clk").queries())

    # Instances handed back keep their names: u2 comes back as "" and later as "a", while the
    # instance "a" is refused and destroyed. Its port and u2's are twins on net n; the net drops
    # u2's port from its list, which keeps its link until n goes.
    s["twin_ports"] = (seed().inst("u2", AND2).net("n").connect("n", 1, 0, "a").readd(0, "")
                       .inst("a", AND2).connect("n", 1, 1, "a").readd(0, "a").queries()
                       .net_op("removeNet", "n").rm_inst("a").queries())

    # A port that a second bus takes over as a bit, then goes.
    s["shared_port_bit"] = (seed().portbus(0, "a", 1, 0, 1).port_op("renamePort", 0, "a[0]", "d[0]")
                            .portbus(0, "d", 0, 0, 1).port_op("removePort", 0, "d[0]").queries()
                            .port_op("removePortbus", 0, "a"))

    # A net that a second net bus takes over as a bit, then goes.
    s["shared_net_bit"] = (seed().netbus("d", 1, 0).net_op("renameNet", "d[0]", "q[0]")
                           .netbus("q", 0, 0).net_op("removeNet", "q[0]").queries()
                           .net_op("renameNetbus", "d", "a"))

    s["net_renames_with_top_ports"] = (seed().inst("u1", AND2).port(0, "a", 1).net("n")
                                       .connect("n", 0, 0, "a").connect("n", 1, 0, "a")
                                       .net_op("renameNet", "n", "c").net_op("renameNet", "c", "c")
                                       .portbus(0, "q", 1, 0, 2).netbus("d", 1, 0)
                                       .connect("d[1]", 0, 0, "q[1]").net_op("renameNetbus", "d", "y")
                                       .queries())
    return s


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "corpus")
    os.makedirs(out, exist_ok=True)
    for name, sd in sorted(seeds().items()):
        with open(os.path.join(out, name), "wb") as f:
            f.write(sd.data())
    print(f"{len(seeds())} seeds in {out}")


if __name__ == "__main__":
    main()
