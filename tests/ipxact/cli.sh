#!/bin/sh
# The kaldata tool: every subcommand on the example library, --help, and the
# exit status of usage errors (2) and document errors (1).
tool=$1
examples=$2
work=$3
fail() { echo "FAIL: $*"; exit 1; }
expect() {  # expect STATUS COMMAND...
    want=$1; shift
    "$@" >"$work/out" 2>"$work/err"; got=$?
    [ "$got" -eq "$want" ] || { cat "$work/out" "$work/err"; fail "$* exited $got, not $want"; }
}
rm -rf "$work" && mkdir -p "$work" || exit 1

expect 0 "$tool" --help
for c in stat check convert records; do
    expect 0 "$tool" $c --help
    grep -q "usage: kaldata $c" "$work/out" || fail "$c --help says no usage"
done
expect 2 "$tool"
expect 2 "$tool" frobnicate
expect 2 "$tool" stat onlyonearg
expect 2 "$tool" stat "$work" not-a-vlnv
expect 2 "$tool" convert "$work" a:b:c:d "$work/o"
expect 2 "$tool" convert "$work" a:b:c:d --to pdf "$work/o"

mkdir -p "$work/bad"
printf '<?xml version="1.0"?>\n<ipxact:component xmlns:ipxact="http://www.accellera.org/XMLSchema/IPXACT/1685-2014">\n<ipxact:vendor>\n' >"$work/bad/broken.xml"
expect 1 "$tool" stat "$work/bad" a:b:c:d
grep -q "broken.xml:.*malformed XML" "$work/err" || fail "no file and line for malformed XML"
expect 1 "$tool" check "$work" a:b:c:d

if [ ! -d "$examples" ]; then echo "skipped: $examples is absent"; exit 77; fi
top=tut.fi:other.subsystem:spi_example:1.0
expect 0 "$tool" stat "$examples" $top
grep -q "^level 0 total  *8 " "$work/out" || { cat "$work/out"; fail "stat counts"; }
expect 0 "$tool" check "$examples" $top
grep -q "^warning: .*spi_example.design.1.0_bus.xml:[0-9]*: vendor extensions of other tools skipped" "$work/out" \
    || { cat "$work/out"; fail "check does not list the reader's warnings"; }
grep -q "0 model problems" "$work/out" || fail "check found model problems"
expect 0 "$tool" records "$examples" $top
[ "$(grep -c '^design/add instance=spi_example::' "$work/out")" -eq 8 ] || fail "records: one design/add per instance"
[ "$(grep -c '^net/add ' "$work/out")" -eq 36 ] || fail "records: one net/add per connection"
expect 0 "$tool" convert "$examples" $top --to ipxact "$work/converted"
[ -f "$work/converted/tut.fi/other.subsystem/spi_example/1.0/spi_example.1.0.xml" ] || fail "convert wrote no component"
expect 0 "$tool" stat "$work/converted" $top
grep -q "^level 0 total  *8 " "$work/out" || fail "converted design has other counts"
expect 2 "$tool" convert "$examples" $top --to ipxact "$work/o" --leaf-stubs
expect 0 "$tool" convert "$examples" $top --to verilog "$work/spi.v" --leaf-stubs
grep -q "^module spi_example" "$work/spi.v" || fail "no module for the top"
grep -q "^module spi_slave" "$work/spi.v" || fail "no stub for a leaf"
# Tools no one here wrote read it (the design joins three slave outputs, so
# Yosys's driver check is not asked for).
if command -v iverilog >/dev/null && command -v yosys >/dev/null; then
    iverilog -g2005 -o "$work/spi.sim" "$work/spi.v" || fail "iverilog rejects the netlist"
    yosys -q -p "read_verilog $work/spi.v; hierarchy -check -top spi_example" || fail "yosys rejects the netlist"
fi
echo "cli passed"
