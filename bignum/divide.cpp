// Division. Operands that need no search leave early, in a fixed order, and decide what remainder
// text the quotient carries:
//
//   divisor equals 1                          a copy of the dividend, with its remainder text
//   divisor is zero, of either sign           a line on standard output, and the failure
//   dividend equals divisor                   1, no remainder text
//   dividend equals 0                         0, no remainder text
//   neither is negative, dividend smaller     0, and the dividend's text
//   both are negative, dividend greater       0, and the dividend's text, minus sign included
//   dividend is a negative zero               0, no remainder text
//
// "Equals" is the signed comparison. All else is long division of the magnitudes, which leaves the
// remainder of the magnitudes; while the debug switch is on, the search that shows its steps.
#include <cstdio>

#include "bignum/bignum.h"
#include "bignum/buffers.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/divide_search.h"
#include "bignum/limbs.h"
#include "support/line_marker.h"
#include "support/text.h"

namespace omrel {
namespace {

enum class Shortcut { NONE, DIVIDEND, ONE, ZERO, ZERO_LEAVING_DIVIDEND };

bool is_zero(const bignum& b) {
  const Digits digits(b);
  return significant_length(digits.text, digits.length) == 0;
}

Shortcut shortcut(const bignum& a, const bignum& d) {
  if (d == bignum(1)) return Shortcut::DIVIDEND;
  if (is_zero(d)) {
    mark_line();
    std::printf("Error: big number division by zero\n");
    throw EngineFailure();
  }
  if (a == d) return Shortcut::ONE;
  if (a == bignum(0)) return Shortcut::ZERO;
  if (a.negative == 0 && d.negative == 0 && a < d) return Shortcut::ZERO_LEAVING_DIVIDEND;
  if (a.negative != 0 && d.negative != 0 && a > d) return Shortcut::ZERO_LEAVING_DIVIDEND;
  return is_zero(a) ? Shortcut::ZERO : Shortcut::NONE;
}

// The magnitudes of dividend and divisor, both multiplied by the power of ten that fills the
// divisor's top limb.
struct Aligned {
  Aligned(const bignum& dividend, const bignum& divisor)
      : a_text(dividend),
        d_text(divisor),
        a_length(significant_length(a_text.text, a_text.length)),
        d_length(significant_length(d_text.text, d_text.length)),
        shift((LIMB_DIGITS - d_length % LIMB_DIGITS) % LIMB_DIGITS) {
    load(a, a_text.text, a_length, shift);
    load(d, d_text.text, d_length, shift);
  }

  Digits a_text;
  Digits d_text;
  int a_length;
  int d_length;
  int shift;
  Magnitude a;
  Magnitude d;
};

void traced_divide(Magnitude& q, Magnitude& r, const Aligned& x) {
  const bool exact = search_quotient(q, r, x.a, x.d, x.a_text.text, x.a_length, x.d_length);
  if (!exact) divide(q, r, x.a, x.d);
  std::printf("\r\n");
}

bignum signed_quotient(const Magnitude& q, const bignum& a, const bignum& d) {
  const bool negative = !q.is_zero() && (a.negative != 0) != (d.negative != 0);
  return value_of(q, negative ? 1 : 0);
}

// The quotient where no search is needed, its remainder text left to the caller.
bignum shortcut_quotient(Shortcut kind, const bignum& a) {
  if (kind == Shortcut::DIVIDEND) return a;
  return bignum(kind == Shortcut::ONE ? 1 : 0);
}

}  // namespace

std::int32_t debug_switch = 0;

bignum bignum::operator/(const bignum& d) const {
  const Shortcut kind = shortcut(*this, d);
  if (kind != Shortcut::NONE) {
    bignum result = shortcut_quotient(kind, *this);
    if (kind == Shortcut::ZERO_LEAVING_DIVIDEND) result.keep_remainder(*this);
    return result;
  }
  const Aligned x(*this, d);
  Magnitude q;
  Magnitude r;
  if (debug_switch != 0) {
    traced_divide(q, r, x);
  } else {
    divide(q, r, x.a, x.d);
  }
  bignum result = signed_quotient(q, *this, d);
  result.keep_remainder(value_of_shifted(r, x.shift));
  return result;
}

bignum bignum::quotient(const bignum& d) const {
  if (debug_switch != 0) return *this / d;
  const Shortcut kind = shortcut(*this, d);
  if (kind != Shortcut::NONE) return shortcut_quotient(kind, *this);
  const Aligned x(*this, d);
  Magnitude q;
  divide_quotient(q, x.a, x.d);
  return signed_quotient(q, *this, d);
}

bignum bignum::operator%(const bignum& b) const {
  bignum r(0);
  if (b != bignum(0)) {
    const Shortcut kind = shortcut(*this, b);
    if (kind == Shortcut::ZERO_LEAVING_DIVIDEND) {
      const Digits digits(*this);
      Magnitude m;
      load(m, digits.text, digits.length, 0);
      r = value_of(m, 0);
    } else if (kind == Shortcut::NONE) {
      const Aligned x(*this, b);
      Magnitude q;
      Magnitude rest;
      if (debug_switch != 0) {
        traced_divide(q, rest, x);
      } else {
        divide(q, rest, x.a, x.d);
      }
      r = value_of_shifted(rest, x.shift);
    }
  }
  r.negative = negative != 0 ? 1 : 0;
  return r;
}

bignum bignum::div2() const {
  const Digits digits(*this);
  bignum result;
  const int n = halve_digits(result.vlstr, digits.text, digits.length);
  if (n == 0) return bignum(0);
  result.finish(n, 0);
  return result;
}

void bignum::keep_remainder(const bignum& r) {
  char* text = r.to_string();
  if (text == nullptr) out_of_memory();
  free_and_null(&remainder_text);
  remainder_text = text;
}

}  // namespace omrel
