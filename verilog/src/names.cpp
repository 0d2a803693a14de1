#include "names.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace kalverilog {
namespace detail {

namespace {

// The reserved words of Verilog-2005, sorted for binary search.
const char* const keywords[] = {
    "always",
    "and",
    "assign",
    "automatic",
    "begin",
    "buf",
    "bufif0",
    "bufif1",
    "case",
    "casex",
    "casez",
    "cell",
    "cmos",
    "config",
    "deassign",
    "default",
    "defparam",
    "design",
    "disable",
    "edge",
    "else",
    "end",
    "endcase",
    "endconfig",
    "endfunction",
    "endgenerate",
    "endmodule",
    "endprimitive",
    "endspecify",
    "endtable",
    "endtask",
    "event",
    "for",
    "force",
    "forever",
    "fork",
    "function",
    "generate",
    "genvar",
    "highz0",
    "highz1",
    "if",
    "ifnone",
    "incdir",
    "include",
    "initial",
    "inout",
    "input",
    "instance",
    "integer",
    "join",
    "large",
    "liblist",
    "library",
    "localparam",
    "macromodule",
    "medium",
    "module",
    "nand",
    "negedge",
    "nmos",
    "nor",
    "noshowcancelled",
    "not",
    "notif0",
    "notif1",
    "or",
    "output",
    "parameter",
    "pmos",
    "posedge",
    "primitive",
    "pull0",
    "pull1",
    "pulldown",
    "pullup",
    "pulsestyle_ondetect",
    "pulsestyle_onevent",
    "rcmos",
    "real",
    "realtime",
    "reg",
    "release",
    "repeat",
    "rnmos",
    "rpmos",
    "rtran",
    "rtranif0",
    "rtranif1",
    "scalared",
    "showcancelled",
    "signed",
    "small",
    "specify",
    "specparam",
    "strong0",
    "strong1",
    "supply0",
    "supply1",
    "table",
    "task",
    "time",
    "tran",
    "tranif0",
    "tranif1",
    "tri",
    "tri0",
    "tri1",
    "triand",
    "trior",
    "trireg",
    "unsigned",
    "use",
    "uwire",
    "vectored",
    "wait",
    "wand",
    "weak0",
    "weak1",
    "while",
    "wire",
    "wor",
    "xnor",
    "xor",
};

bool isKeyword(const std::string& name) {
    return std::binary_search(std::begin(keywords), std::end(keywords), name.c_str(),
                              [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
}

bool letter(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool visible(unsigned char c) {
    return c > 0x20 && c < 0x7f;
}

// What each byte may be in a simple identifier.
enum : unsigned char { identByte = 1, lowerByte = 2, keywordStart = 4 };

struct byteclasses {
    unsigned char of[256] = {};
    constexpr byteclasses() {
        for (int c = 'a'; c <= 'z'; ++c)
            of[c] = identByte | lowerByte | keywordStart;
        for (int c = 'A'; c <= 'Z'; ++c)
            of[c] = identByte;
        for (int c = '0'; c <= '9'; ++c)
            of[c] = identByte | lowerByte;
        of[static_cast<unsigned char>('_')] = identByte | lowerByte;
        of[static_cast<unsigned char>('$')] = identByte;
    }
};

constexpr byteclasses classes;

}  // namespace

bool isSimple(const std::string& name) {
    if (name.empty()) return false;
    const auto first = static_cast<unsigned char>(name[0]);
    if (!letter(first) && first != '_') return false;
    // Every keyword is lower case letters, digits and '_' and starts with
    // three letters (two for "if" and "or"); most names of a large design
    // fail that early, so the keyword list is searched for few.
    unsigned char all = identByte | lowerByte;
    for (char ch : name)
        all &= classes.of[static_cast<unsigned char>(ch)];
    if (!(all & identByte)) return false;
    if (!(all & lowerByte)) return true;
    const std::size_t start = name.size() < 3 ? name.size() : 3;
    for (std::size_t i = 0; i < start; ++i)
        if (!(classes.of[static_cast<unsigned char>(name[i])] & keywordStart)) return true;
    return !isKeyword(name);
}

bool isEscapable(const std::string& name) {
    if (name.empty()) return false;
    for (char ch : name)
        if (!visible(static_cast<unsigned char>(ch))) return false;
    return true;
}

std::string sanitised(const std::string& name) {
    if (name.empty()) return "_";
    std::string out(name);
    for (char& ch : out)
        if (!visible(static_cast<unsigned char>(ch))) ch = '_';
    return out;
}

void appendIdent(std::string& out, const std::string& name) {
    if (isSimple(name)) {
        out += name;
        return;
    }
    out += '\\';
    out += name;
    out += ' ';
}

std::string identText(const std::string& name) {
    std::string out;
    appendIdent(out, name);
    return out;
}

}  // namespace detail
}  // namespace kalverilog
