// Builds the whole netlist text in memory; the public functions only decide
// where it goes.
#ifndef KALVERILOG_NETLIST_H
#define KALVERILOG_NETLIST_H

#include <string>

#include "kalverilog.h"

namespace kalverilog {
namespace detail {

// Fills text and answers ok, or answers the error with text empty. Throws
// nothing.
Result buildNetlist(kalcomponent* root, const Options& options, std::string& text) noexcept;

}  // namespace detail
}  // namespace kalverilog

#endif
