// The four operations, the remainder, comparisons and the logical words.
#include "commands/operator_table.h"
#include "plugin/host_link.h"

namespace omrel {
namespace {

// Whether the divisor is refused: equal to 0 as comparison sees it, so not "-0".
bool refused(const Call& call, const bignum& divisor, std::int32_t line = __builtin_LINE()) {
  if (!divisor.equals_digit('0')) return false;
  set_result(call.interp, "0");
  refuse(call, "Division by zero", line);
  return true;
}

}  // namespace

int op_add(const Call& call) {
  bignum a = operand(call, 2);
  return hand_over(call, a + operand(call, 3));
}

int op_subtract(const Call& call) {
  bignum a = operand(call, 2);
  return hand_over(call, a - operand(call, 3));
}

// A script that squares a value passes one text twice.
int op_multiply(const Call& call) {
  const bignum a = operand(call, 2);
  return hand_over(call, call.texts[2] == call.texts[3] ? a * a : a * operand(call, 3));
}

int op_divide(const Call& call) {
  const bignum a = operand(call, 2);
  const bignum b = operand(call, 3);
  return refused(call, b) ? 1 : hand_over(call, a.quotient(b));
}

int op_remainder(const Call& call) {
  const bignum a = operand(call, 2);
  const bignum b = operand(call, 3);
  return refused(call, b) ? 1 : hand_over(call, a % b);
}

int op_equal(const Call& call) {
  return hand_over_truth(call, operand(call, 2) == operand(call, 3));
}

int op_not_equal(const Call& call) {
  return hand_over_truth(call, operand(call, 2) != operand(call, 3));
}

int op_greater(const Call& call) {
  return hand_over_truth(call, operand(call, 2) > operand(call, 3));
}

int op_less(const Call& call) { return hand_over_truth(call, operand(call, 2) < operand(call, 3)); }

int op_not_less(const Call& call) {
  return hand_over_truth(call, operand(call, 2) >= operand(call, 3));
}

int op_not_greater(const Call& call) {
  return hand_over_truth(call, operand(call, 2) <= operand(call, 3));
}

// A negative zero is not equal to 0, so it counts as true. Both operands are always read.
int op_both(const Call& call) {
  const bignum a = operand(call, 2);
  const bignum b = operand(call, 3);
  return hand_over_truth(call, !a.equals_digit('0') && !b.equals_digit('0'));
}

int op_either(const Call& call) {
  const bignum a = operand(call, 2);
  const bignum b = operand(call, 3);
  return hand_over_truth(call, !a.equals_digit('0') || !b.equals_digit('0'));
}

}  // namespace omrel
