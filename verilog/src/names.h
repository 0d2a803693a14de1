// Verilog identifiers for model names, and the name space of one module.
#ifndef KALVERILOG_NAMES_H
#define KALVERILOG_NAMES_H

#include <string>
#include <unordered_set>

namespace kalverilog {
namespace detail {

// A simple identifier that is no keyword: written as it is.
bool isSimple(const std::string& name);

// Written as an escaped identifier (every byte visible ASCII), which Verilog
// takes for the same name.
bool isEscapable(const std::string& name);

// Can be written under its own name, plain or escaped.
inline bool keepsName(const std::string& name) {
    return isSimple(name) || isEscapable(name);
}

// The name with every byte that no identifier may hold replaced by '_';
// "_" for an empty name.
std::string sanitised(const std::string& name);

// Appends the name as Verilog text: plain, or escaped with its closing space.
void appendIdent(std::string& out, const std::string& name);

// The text appendIdent writes.
std::string identText(const std::string& name);

// Names handed out by the writer itself: a base where it is free, else the
// base with the first free suffix _1, _2, ... "Free" is the caller's test
// (the model's own names) and none handed out before.
class freshnames {
public:
    template <typename Taken>
    std::string make(const std::string& base, Taken taken) {
        std::string b = sanitised(base), candidate = b;
        for (unsigned long n = 1; taken(candidate) || given.count(candidate); ++n)
            candidate = b + "_" + std::to_string(n);
        given.insert(candidate);
        return candidate;
    }

    // Counts a name as handed out already.
    void reserve(const std::string& name) { given.insert(name); }

private:
    std::unordered_set<std::string> given;
};

}  // namespace detail
}  // namespace kalverilog

#endif
