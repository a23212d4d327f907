// Words that answer with a fraction: 18 places, truncated.
//
// The fraction is one more quotient: the remainder times 10^18 over the divisor. As a rule the
// engine finds both at once; the steps themselves are taken where they can be seen, or may lead
// elsewhere.
#include <cstdio>

#include "commands/operator_table.h"
#include "support/line_marker.h"
#include "support/text.h"

namespace omrel {
namespace {

bignum scale() { return bignum("1000000000000000000", 0); }

// An empty result stands for one that there was no memory for.
template <class Form>
int hand_over_fixed(const Call& call, const Form& answer) {
  return hand_over(call, AnswerText(answer), "", 0);
}

bool signs_differ(const bignum& a, const bignum& b) {
  return (a.get_sign() != 0) != (b.get_sign() != 0);
}

int divide_by_steps(const Call& call, bignum& a, bignum& b) {
  // Of two negative operands the one nearer to zero is left as the remainder, sign and all. The
  // answer is that of the magnitudes.
  const bool both_negative = a.get_sign() != 0 && b.get_sign() != 0 && a > b;
  if (both_negative) {
    a.set_sign(0);
    b.set_sign(0);
  }
  bignum q = a / b;
  const bignum r = q.get_remainder();
  const bignum scaled = scale() * r;
  if (signs_differ(a, b)) q.set_sign(1);
  mark_line();
  if (!both_negative && !r.equals_digit('0') && scaled < b) {
    // The first 18 places are zeros: 18 more behind them.
    const bignum places = (scale() * scaled) / b;
    return hand_over_fixed(call, FixedText(q, places, FIXED_PLACES));
  }
  const bignum places = scaled / b;
  return hand_over_fixed(call, FixedText(q, places));
}

// Answers with a / b.
int divide(const Call& call, bignum& a, bignum& b) {
  const bool is_negative = signs_differ(a, b);
  FixedWords words;
  if (a.fixed_quotient(words, b)) return hand_over_fixed(call, FixedWordsText(words, is_negative));
  bignum scaled;
  if (!a.fixed_quotient(scaled, b)) return divide_by_steps(call, a, b);
  scaled.set_sign(is_negative ? 1 : 0);
  return hand_over_fixed(call, FixedText(scaled));
}

}  // namespace

int op_fixed_divide(const Call& call) {
  bignum a = operand(call, 2);
  bignum b = operand(call, 3);
  return divide(call, a, b);
}

int op_mean(const Call& call) {
  mark_line();
  bignum n(call.count - 2);
  bignum sum(0);
  for (int i = 2; i < call.count; ++i) {
    if (char_position(call.text(i), '.') != 0) {
      std::printf("Error: big mean does not accept float values\r\n");
      return 1;
    }
    sum.add(operand(call, i));
  }
  return divide(call, sum, n);  // which shows 18 places, n being no number of 19 digits
}

int op_fixed_remainder(const Call& call) {
  return hand_over(call, operand(call, 2).remainder(operand(call, 3)), "", 0);
}

}  // namespace omrel
