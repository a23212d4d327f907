// Words that answer with a fraction: 18 places, truncated.
//
// The fraction is one more quotient: the remainder times 10^18 over the divisor. The quotient of
// the scaled dividend holds both parts at once, so as a rule there is one division; the steps
// themselves are taken where they can be seen, or may lead elsewhere.
#include <cstdio>
#include <cstring>

#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/line_marker.h"
#include "support/text.h"

namespace omrel {
namespace {

constexpr char SCALE[] = "1000000000000000000";
constexpr char NO_PLACES[] = ".000000000000000000";

// Makes the integer part, what stands between, and the fraction padded to 18 digits the result; an
// empty text when there is no memory for it.
int hand_over_fixed(const Call& call, const bignum& whole, const char* between,
                    const bignum& fraction) {
  const HeapText digits(fraction.to_string());
  char* text = whole.to_string();
  bool made = digits != nullptr && text != nullptr && string_append(&text, between, 0) != nullptr;
  for (std::size_t i = made ? std::strlen(digits.get()) : 0; made && i < FIXED_PLACES; ++i) {
    made = string_append_char(&text, '0') != nullptr;
  }
  made = made && string_append(&text, digits.get(), 0) != nullptr;
  const HeapText owned(text);
  set_result(call.interp, made ? text : "");
  return 0;
}

// Makes a quotient that was scaled by 10^18 the result.
int hand_over_scaled(const Call& call, bignum& scaled, bool negative) {
  scaled.set_sign(negative ? 1 : 0);
  if (char short_text[SHORT_TEXT]; scaled.write_short_fixed(short_text, sizeof short_text)) {
    set_result(call.interp, short_text);
    return 0;
  }
  const HeapText text(scaled.to_fixed_string());
  set_result(call.interp, text == nullptr ? "" : text.get());
  return 0;
}

int hand_over_short(const Call& call, const FixedPoint& x, bool negative) {
  char text[FIXED_TEXT];
  bignum::write_fixed_text(text, x, negative);
  set_result(call.interp, text);
  return 0;
}

int divide_by_steps(const Call& call, bignum& a, bignum& b) {
  // Of two negative operands the one nearer to zero is left as the remainder, sign and all. The
  // answer is that of the magnitudes.
  const bool both_negative = a.get_sign() != 0 && b.get_sign() != 0 && a > b;
  if (both_negative) {
    a.set_sign(0);
    b.set_sign(0);
  }
  const bignum scale(SCALE, 0);
  bignum q = a / b;
  const bignum r = q.get_remainder();
  const bignum scaled = scale * r;
  if ((a.get_sign() != 0) != (b.get_sign() != 0)) q.set_sign(1);
  mark_line();
  if (!both_negative && !r.equals_digit('0') && scaled < b) {
    // The first 18 places are zeros: 18 more behind them.
    const bignum places = (scale * scaled) / b;
    return hand_over_fixed(call, q, NO_PLACES, places);
  }
  bignum places = scaled / b;
  places.set_sign(0);
  return hand_over_fixed(call, q, ".", places);
}

// Whether all places of a scaled quotient are zeros although there is a remainder, perhaps: what is
// below 10^18 leaves none.
bool may_be_cut_short(const bignum& scaled, const bignum& divisor) {
  if (divisor.length <= FIXED_PLACES) return false;
  for (int i = 0; i < FIXED_PLACES && i < scaled.length; ++i) {
    if (scaled.vlstr[i] != '0') return false;
  }
  return true;
}

int mean_by_steps(const Call& call, const bignum& sum, const bignum& n) {
  bignum q = sum / n;
  bignum places = (bignum(SCALE, 0) * q.get_remainder()) / n;
  if (sum.get_sign() != 0) q.set_sign(1);
  places.set_sign(0);
  return hand_over_fixed(call, q, ".", places);
}

}  // namespace

int op_fixed_divide(const Call& call) {
  mark_line();
  bignum a = number(call, 2);
  bignum b = number(call, 3);
  const bool negative = (a.get_sign() != 0) != (b.get_sign() != 0);
  FixedPoint q;
  if (a.short_fixed_quotient(q, b)) return hand_over_short(call, q, negative);
  bignum scaled;
  if (!a.scaled_quotient(scaled, b) || may_be_cut_short(scaled, b)) {
    return divide_by_steps(call, a, b);  // which may find 36 places
  }
  return hand_over_scaled(call, scaled, negative);
}

int op_mean(const Call& call) {
  mark_line();
  const bignum n(call.count - 2);
  bignum sum(0);
  for (int i = 2; i < call.count; ++i) {
    if (char_position(call.text(i), '.') != 0) {
      std::printf("Error: big mean does not accept float values\r\n");
      return 1;
    }
    sum.add(number(call, i));
  }
  mark_line();
  const bool negative = sum.get_sign() != 0;
  FixedPoint q;
  if (sum.short_fixed_quotient(q, n)) return hand_over_short(call, q, negative);
  bignum scaled;
  if (!sum.scaled_quotient(scaled, n)) return mean_by_steps(call, sum, n);
  return hand_over_scaled(call, scaled, negative);
}

int op_fixed_remainder(const Call& call) {
  mark_line();
  return hand_over(call, number(call, 2).remainder(number(call, 3)), "", 0);
}

}  // namespace omrel
