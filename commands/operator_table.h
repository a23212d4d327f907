// The operator words of `big`: word, number of texts that admits it, function. No word has two
// rows, so their order decides nothing. A new word is one row here and one function.
#pragma once

#include "commands/call.h"

// clang-format off
#define OMREL_OPERATORS(row)                           \
  row("+",          FOUR_OR_MORE,  op_add)             \
  row("-",          FOUR_OR_MORE,  op_subtract)        \
  row("*",          FOUR_OR_MORE,  op_multiply)        \
  row("/",          FOUR_OR_MORE,  op_divide)          \
  row("%",          FOUR_OR_MORE,  op_remainder)       \
  row("==",         FOUR_OR_MORE,  op_equal)           \
  row("!=",         FOUR_OR_MORE,  op_not_equal)       \
  row(">",          FOUR_OR_MORE,  op_greater)         \
  row("<",          FOUR_OR_MORE,  op_less)            \
  row(">=",         FOUR_OR_MORE,  op_not_less)        \
  row("<=",         FOUR_OR_MORE,  op_not_greater)     \
  row("*=",         FOUR_OR_MORE,  op_update_multiply) \
  row("/=",         FOUR_OR_MORE,  op_update_divide)   \
  row("^=",         FOUR_OR_MORE,  op_update_xor)      \
  row("&=",         FOUR_OR_MORE,  op_update_and)      \
  row("|=",         FOUR_OR_MORE,  op_update_or)       \
  row("+=",         FOUR_OR_MORE,  op_update_add)      \
  row("-=",         FOUR_OR_MORE,  op_update_subtract) \
  row("&",          FOUR_OR_MORE,  op_and)             \
  row("&&",         FOUR_OR_MORE,  op_both)            \
  row("|",          FOUR_OR_MORE,  op_or)              \
  row("||",         FOUR_OR_MORE,  op_either)          \
  row("^",          FOUR_OR_MORE,  op_xor)             \
  row("**",         FOUR_OR_MORE,  op_power)           \
  row("pow",        FOUR_OR_MORE,  op_power)           \
  row("max",        FOUR_OR_MORE,  op_max)             \
  row("min",        FOUR_OR_MORE,  op_min)             \
  row("rnd",        FOUR_OR_MORE,  op_random)          \
  row("<<",         FOUR_OR_MORE,  op_shift_left)      \
  row(">>",         FOUR_OR_MORE,  op_shift_right)     \
  row("fdiv",       FOUR_OR_MORE,  op_fixed_divide)    \
  row("mean",       FOUR_OR_MORE,  op_mean)            \
  row("fmod",       FOUR_OR_MORE,  op_fixed_remainder) \
  row("++",         THREE,         op_increment)       \
  row("--",         THREE,         op_decrement)       \
  row("div2",       THREE,         op_halve)           \
  row("pow2",       THREE,         op_power_of_two)    \
  row("div10",      THREE,         op_drop_digit)      \
  row("abs",        THREE,         op_abs)             \
  row("is_even",    THREE,         op_is_even)         \
  row("fib",        THREE,         op_fibonacci)       \
  row("fact",       THREE,         op_factorial)       \
  row("sqrt",       THREE,         op_square_root)     \
  row("bintoint",   THREE,         op_from_binary)     \
  row("~",          THREE,         op_complement)      \
  row("!",          THREE,         op_not)             \
  row("debug",      THREE,         op_debug)           \
  row("inttobin",   THREE_OR_FOUR, op_to_binary)       \
  row("graph",      THREE_OR_FOUR, op_graph)
// clang-format on

namespace omrel {

#define OMREL_DECLARE(word, admitted, function) int function(const Call& call);
OMREL_OPERATORS(OMREL_DECLARE)
#undef OMREL_DECLARE

}  // namespace omrel
