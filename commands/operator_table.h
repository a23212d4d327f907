// The operator words of `big`, in the order in which they are compared: word, number of texts that
// admits it, function. A new word is one row here and one function.
#pragma once

#include "commands/call.h"

// clang-format off
#define OMREL_OPERATORS(row)                      \
  row("+",        FOUR_OR_MORE,   op_add)         \
  row("-",        FOUR_OR_MORE,   op_subtract)    \
  row("*",        FOUR_OR_MORE,   op_multiply)    \
  row("/",        FOUR_OR_MORE,   op_divide)      \
  row("%",        FOUR_OR_MORE,   op_remainder)   \
  row("==",       FOUR_OR_MORE,   op_equal)       \
  row("!=",       FOUR_OR_MORE,   op_not_equal)   \
  row(">",        FOUR_OR_MORE,   op_greater)     \
  row("<",        FOUR_OR_MORE,   op_less)        \
  row(">=",       FOUR_OR_MORE,   op_not_less)    \
  row("<=",       FOUR_OR_MORE,   op_not_greater) \
  row("&&",       FOUR_OR_MORE,   op_both)        \
  row("||",       FOUR_OR_MORE,   op_either)
// clang-format on

namespace omrel {

#define OMREL_DECLARE(word, admitted, function) int function(const Call& call);
OMREL_OPERATORS(OMREL_DECLARE)
#undef OMREL_DECLARE

}  // namespace omrel
