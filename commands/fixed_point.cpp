// Words that answer with a fraction: 18 places, truncated.
//
// The engine knows whole numbers only, so the places are one more quotient: the remainder times
// 10^18 over the divisor.
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
constexpr std::size_t PLACES = sizeof SCALE - 2;

// Makes the integer part, what stands between, and the fraction padded to 18 digits the result; an
// empty text when there is no memory for it.
int hand_over_fixed(const Call& call, const bignum& whole, const char* between,
                    const bignum& fraction) {
  const HeapText digits(fraction.to_string());
  char* text = whole.to_string();
  bool made = digits != nullptr && text != nullptr && string_append(&text, between, 0) != nullptr;
  for (std::size_t i = made ? std::strlen(digits.get()) : PLACES; made && i < PLACES; ++i) {
    made = string_append_char(&text, '0') != nullptr;
  }
  made = made && string_append(&text, digits.get(), 0) != nullptr;
  const HeapText owned(text);
  set_result(call.interp, made ? text : "");
  return 0;
}

}  // namespace

int op_fixed_divide(const Call& call) {
  mark_line();
  const bignum scale(SCALE, 0);
  bignum a = number(call, 2);
  bignum b = number(call, 3);
  if (a.get_sign() != 0 && b.get_sign() != 0 && a > b) {
    // The remainder would keep the dividend's sign; the answer is that of the magnitudes.
    a.set_sign(0);
    b.set_sign(0);
  }
  bignum q = a / b;
  const bignum r = q.get_remainder();
  const bignum scaled = scale * r;
  if ((a.get_sign() != 0) != (b.get_sign() != 0)) q.set_sign(1);
  mark_line();
  if (r != bignum(0) && scaled < b) {
    // The first 18 places are zeros: 18 more behind them.
    bignum places = (scale * scaled) / b;
    return hand_over_fixed(call, q, NO_PLACES, places);
  }
  bignum places = scaled / b;
  places.set_sign(0);
  return hand_over_fixed(call, q, ".", places);
}

int op_mean(const Call& call) {
  mark_line();
  const bignum scale(SCALE, 0);
  const bignum n(call.count - 2);
  bignum sum(0);
  for (int i = 2; i < call.count; ++i) {
    if (char_position(call.text(i), '.') != 0) {
      std::printf("Error: big mean does not accept float values\r\n");
      return 1;
    }
    sum = sum + number(call, i);
  }
  mark_line();
  bignum q = sum / n;
  bignum places = (scale * q.get_remainder()) / n;
  if (sum.get_sign() != 0) q.set_sign(1);
  places.set_sign(0);
  return hand_over_fixed(call, q, ".", places);
}

int op_fixed_remainder(const Call& call) {
  mark_line();
  const bignum q = number(call, 2) / number(call, 3);
  return hand_over(call, q.get_remainder(), "", 0);
}

}  // namespace omrel
