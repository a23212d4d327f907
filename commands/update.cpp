// The words that change a variable: "*=", "/=", "^=", "&=", "|=", "+=" and "-=".
//
// The old value is released only when the answer and its text are there, so a failure on the way
// leaves the variable as it was.
#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/line_marker.h"

namespace omrel {
namespace {

// The variable, created with "0" when there is none; null when the host refuses that.
HostVar* variable_or_zero(const Call& call) {
  HostVar* var = get_var(call.interp, call.text(2));
  if (var == nullptr && set_var(call.interp, call.text(2), "0") == 0) {
    var = get_var(call.interp, call.text(2));
  }
  return var;
}

bool refused(const Call& call, const HostVar* var, std::int32_t line = __builtin_LINE()) {
  if (var != nullptr && var->value != nullptr) return false;
  refuse(call, "Invalid variable argument", line);
  return true;
}

// The empty text stands for an answer that there was no memory to write.
int store(const Call& call, HostVar* var, const AnswerText& answer) {
  const char* text = answer.get() == nullptr ? "" : answer.get();
  set_var_value(var, text);
  set_result(call.interp, text);
  return 0;
}

int replace(const Call& call, HostVar* var, const bignum& answer) {
  const AnswerText text{DecimalText(answer)};
  free_var_value(var);
  return store(call, var, text);
}

// The words that need a variable with a value; `combine` makes the answer from it and the number.
template <class Combine>
int update(const Call& call, Combine combine, std::int32_t line = __builtin_LINE()) {
  HostVar* var = get_var(call.interp, call.text(2));
  if (refused(call, var, line)) return 1;
  bignum a(var->value, 0);
  bignum b = operand(call, 3);
  return replace(call, var, combine(a, b));
}

}  // namespace

int op_update_multiply(const Call& call) {
  mark_line();
  return update(call, [](const bignum& a, const bignum& b) { return a * b; });
}

int op_update_divide(const Call& call) {
  mark_line();
  return update(call, [](const bignum& a, const bignum& b) { return a.quotient(b); });
}

int op_update_xor(const Call& call) {
  mark_line();
  return update(call, [](const bignum& a, const bignum& b) { return a ^ b; });
}

int op_update_and(const Call& call) {
  mark_line();
  return update(call, [width = width_of(call)](const bignum& a, const bignum& b) {
    return a.bit_and(b, width);
  });
}

int op_update_or(const Call& call) {
  mark_line();
  return update(call, [width = width_of(call)](const bignum& a, const bignum& b) {
    return a.bit_or(b, width);
  });
}

// The only word that clears the record's value itself once the host has released it.
int op_update_add(const Call& call) {
  mark_line();
  HostVar* var = variable_or_zero(call);
  if (refused(call, var)) return 1;
  bignum a(var->value, 0);
  const bignum sum = a + operand(call, 3);
  const AnswerText text{DecimalText(sum)};
  free_var_value(var);
  var->value = nullptr;
  return store(call, var, text);
}

// The only word that takes a variable without a value, as 0.
int op_update_subtract(const Call& call) {
  mark_line();
  HostVar* var = variable_or_zero(call);
  if (var == nullptr) return refuse(call, "Invalid variable");
  bignum a(var->value, 0);
  return replace(call, var, a - operand(call, 3));
}

}  // namespace omrel
