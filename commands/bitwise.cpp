// Bitwise words, powers, the selectors, the random draw and the shifts.
#include "commands/operator_table.h"

namespace omrel {
namespace {

// A count below 1 leaves the value as it is, sign included.
bignum shift(const Call& call, bignum (bignum::*by)(std::int32_t) const,
             bignum (bignum::*by_and_cut)(std::int32_t, std::int32_t) const) {
  const std::int32_t n = parse_count(call.text(3));
  const std::int32_t width = width_of(call);
  const bignum a = operand(call, 2);
  if (n < 1) return width < 1 ? a : a.low_bits(width);
  return width < 1 ? (a.*by)(n) : (a.*by_and_cut)(n, width);
}

// Without memory for the answer's text, "&" and "|" answer with the empty text and succeed.
int combine(const Call& call, bignum (bignum::*with)(const bignum&, std::int32_t) const) {
  const bignum a = operand(call, 2);
  const bignum b = operand(call, 3);
  return hand_over(call, (a.*with)(b, width_of(call)), "", 0);
}

}  // namespace

int op_and(const Call& call) { return combine(call, &bignum::bit_and); }

int op_or(const Call& call) { return combine(call, &bignum::bit_or); }

int op_xor(const Call& call) { return hand_over(call, operand(call, 2) ^ operand(call, 3)); }

int op_power(const Call& call) {
  return hand_over(call, bignum::pow(operand(call, 2), parse_count(call.text(3))));
}

int op_max(const Call& call) {
  return hand_over(call, bignum::max(operand(call, 2), operand(call, 3)));
}

int op_min(const Call& call) {
  return hand_over(call, bignum::min(operand(call, 2), operand(call, 3)));
}

// The answer is what the draw leaves in r: 0, not the lower bound, when no value was found.
int op_random(const Call& call) {
  const bignum low = operand(call, 2);
  const bignum high = operand(call, 3);
  bignum r(0);
  r.rnd(low, high);
  return hand_over(call, r);
}

int op_shift_left(const Call& call) {
  return hand_over(call, shift(call, &bignum::shift_left, &bignum::shift_left));
}

int op_shift_right(const Call& call) {
  return hand_over(call, shift(call, &bignum::shift_right, &bignum::shift_right));
}

}  // namespace omrel
