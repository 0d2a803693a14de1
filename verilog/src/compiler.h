// Inlining hints for the writer's few hot helpers.
#ifndef KALVERILOG_COMPILER_H
#define KALVERILOG_COMPILER_H

// Always inline. Besides speed: GCC takes a function that only prefetches
// for one without effects and drops the calls to it before it would have
// inlined it, so every prefetching helper carries this.
#if defined(__GNUC__) || defined(__clang__)
#define KALVERILOG_INLINE inline __attribute__((always_inline))
#define KALVERILOG_NOINLINE __attribute__((noinline))
#else
#define KALVERILOG_INLINE inline
#define KALVERILOG_NOINLINE
#endif

#endif
