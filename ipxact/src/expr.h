// Constant expressions of IP-XACT documents: integer and sized literals,
// + - * / % **, shifts, bitwise and logical operators, comparisons, ?:,
// parentheses and $clog2, over parameters referred to by id or by name.
#ifndef KALIPXACT_EXPR_H
#define KALIPXACT_EXPR_H

#include <cstdint>
#include <functional>
#include <string>

namespace kalipxact {
namespace detail {

// Answers the value of a name, or false when the name is unknown or cannot be
// evaluated (then `why` says so).
using lookupFn = std::function<bool(const std::string& name, std::int64_t& value, std::string& why)>;

// Evaluates `text`; on failure returns false with the reason in `why`.
bool evaluate(const std::string& text, const lookupFn& lookup, std::int64_t& value, std::string& why);

// True when `text` is one quoted string literal; its contents go to `out`.
bool stringLiteral(const std::string& text, std::string& out);

}  // namespace detail
}  // namespace kalipxact

#endif
