// The words with one operand.
#include <cstdio>
#include <cstring>

#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/line_marker.h"

namespace omrel {
namespace {

constexpr std::int32_t MAX_FIBONACCI = 30'000;
constexpr std::int32_t MAX_FACTORIAL = 1'000;

// The words here fail with an empty result when there is no memory for the answer's text.
int answer(const Call& call, const bignum& value) { return hand_over(call, value, "", 1); }

void replace_value(HostVar* var, const char* text) {
  if (var->value != nullptr) free_value(var->value);
  var->value = nullptr;
  set_var_value(var, text);
}

// "++" and "--": the operand names a variable, or is a number when there is no such variable. A
// variable without a value becomes 0.
int step(const Call& call, bool up, std::int32_t line = __builtin_LINE()) {
  mark_line(line);
  HostVar* var = get_var(call.interp, call.text(2));
  const char* source = var != nullptr ? var->value : call.text(2);
  bignum result(source, 0);
  if (source != nullptr && !result.step_lowest(up)) {
    result = up ? result.increment() : result.decrement();
  }
  const AnswerText text{DecimalText(result)};
  if (var != nullptr) replace_value(var, text.get() != nullptr ? text.get() : "0");
  return hand_over(call, text, "0", 1);
}

}  // namespace

int op_increment(const Call& call) { return step(call, true); }

int op_decrement(const Call& call) { return step(call, false); }

int op_halve(const Call& call) {
  bignum a = operand(call, 2);
  a.halve();
  return answer(call, a);
}

int op_power_of_two(const Call& call) { return answer(call, bignum::pow2(operand(call, 2))); }

int op_drop_digit(const Call& call) {
  bignum a = operand(call, 2);
  a.drop_digit();
  return answer(call, a);
}

int op_abs(const Call& call) {
  bignum a = operand(call, 2);
  a.set_sign(0);
  return answer(call, a);
}

int op_is_even(const Call& call) { return hand_over_truth(call, operand(call, 2).is_even()); }

int op_fibonacci(const Call& call) {
  mark_line();
  const std::int32_t n = parse_count(call.text(2));
  if (n > MAX_FIBONACCI) {
    std::printf("big fib: Value %s out of range\n", call.text(2));
    return 1;
  }
  return answer(call, bignum::fib(n));
}

int op_factorial(const Call& call) {
  mark_line();
  const std::int32_t n = parse_count(call.text(2));
  if (n > MAX_FACTORIAL) return refuse(call, "Argument too big");
  return answer(call, bignum::fact(n));
}

int op_square_root(const Call& call) { return answer(call, bignum::sqrt(operand(call, 2))); }

int op_from_binary(const Call& call) {
  mark_line();
  return answer(call, bignum::bintoint(call.text(2)));
}

int op_complement(const Call& call) { return answer(call, ~operand(call, 2)); }

int op_not(const Call& call) { return hand_over_truth(call, operand(call, 2).equals_digit('0')); }

int op_debug(const Call& call) {
  mark_line();
  debug_switch = std::strcmp(call.text(2), "on") == 0 ? 1 : 0;
  return 0;
}

}  // namespace omrel
