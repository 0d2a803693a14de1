// Builds the whole netlist text in memory; the public functions only decide
// where it goes.
#ifndef KALVERILOG_NETLIST_H
#define KALVERILOG_NETLIST_H

#include "kalverilog.h"
#include "textbuf.h"

namespace kalverilog {
namespace detail {

// Fills text and answers ok, or answers the error with text empty. Throws
// nothing.
Result buildNetlist(kalcomponent* root, const Options& options, textbuf& text) noexcept;

}  // namespace detail
}  // namespace kalverilog

#endif
