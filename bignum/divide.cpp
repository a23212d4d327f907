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
#include <algorithm>
#include <cstdio>
#include <cstring>

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

[[noreturn]] void fail_on_zero() {
  mark_line();
  std::printf("Error: big number division by zero\n");
  throw EngineFailure();
}

Shortcut shortcut(const bignum& a, const bignum& d) {
  if (d.equals_digit('1')) return Shortcut::DIVIDEND;
  if (is_zero(d)) fail_on_zero();
  if (a == d) return Shortcut::ONE;
  if (a.equals_digit('0')) return Shortcut::ZERO;
  if (a.negative == 0 && d.negative == 0 && a < d) return Shortcut::ZERO_LEAVING_DIVIDEND;
  if (a.negative != 0 && d.negative != 0 && a > d) return Shortcut::ZERO_LEAVING_DIVIDEND;
  return is_zero(a) ? Shortcut::ZERO : Shortcut::NONE;
}

// The magnitudes of dividend and divisor, both multiplied by the power of ten that fills the
// divisor's top limb, and the dividend by 10^scale besides.
struct Aligned {
  Aligned(const bignum& dividend, const bignum& divisor, int scale = 0)
      : a_text(dividend),
        d_text(divisor),
        a_length(significant_length(a_text.text, a_text.length)),
        d_length(significant_length(d_text.text, d_text.length)),
        shift((LIMB_DIGITS - d_length % LIMB_DIGITS) % LIMB_DIGITS) {
    load(a, a_text.text, a_length, shift + scale);
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

std::int16_t sign_of_quotient(bool quotient_is_zero, const bignum& a, const bignum& d) {
  return !quotient_is_zero && (a.negative != 0) != (d.negative != 0) ? 1 : 0;
}

// Both magnitudes as machine words, or the divisor's. The exits all agree with dividing these, but
// for what the callers look after: a dividend that is handed on as it is, sign and all.
struct Words {
  Words(const bignum& dividend, const bignum& divisor) {
    if (debug_switch != 0 || !load_short(d, divisor) || d == 0) return;
    fit = load_short(a, dividend);
    divisor_fits = !fit && dividend.plain && d != 1;
  }

  std::uint64_t a = 0;
  std::uint64_t d = 0;
  bool fit = false;           // both
  bool divisor_fits = false;  // only the divisor, and it is not 1: so the dividend is greater
};

// Divides by such a divisor; returns the remainder.
std::uint64_t divide_long(Magnitude& q, const bignum& a, std::uint64_t d) {
  Magnitude limbs;
  load(limbs, a);
  return divide_short(q, limbs, d);
}

// The quotient where no search is needed, its remainder text left to the caller.
bignum shortcut_quotient(Shortcut kind, const bignum& a) {
  if (kind == Shortcut::DIVIDEND) return a;
  return value_of_short(kind == Shortcut::ONE ? 1 : 0, 0);
}

// The division of magnitudes, neither of them zero. What is not asked for stays in limbs.
class Division {
 public:
  Division(const bignum& dividend, const bignum& divisor) : a(dividend), d(divisor) {
    const Aligned x(a, d);
    shift = x.shift;
    if (debug_switch != 0) {
      traced_divide(q, r, x);
    } else {
      divide(q, r, x.a, x.d);
    }
  }

  bignum quotient() const { return value_of(q, sign_of_quotient(q.is_zero(), a, d)); }
  bignum remainder() const { return value_of_shifted(r, shift); }  // not negative

 private:
  const bignum& a;
  const bignum& d;
  Magnitude q;
  Magnitude r;  // times 10^shift
  int shift = 0;
};

// The remainder that a division leaves, but for a divisor that equals 1.
bignum remainder_of(Shortcut kind, const bignum& a, const bignum& d) {
  if (kind == Shortcut::ZERO_LEAVING_DIVIDEND) return a;
  if (kind != Shortcut::NONE) return value_of_short(0, 0);
  return Division(a, d).remainder();
}

// The magnitude as arithmetic reads it, "0" for no digits.
bignum value_without_foreign(const bignum& b) {
  Magnitude m;
  load(m, b);
  return value_of(m, 0);
}

}  // namespace

std::int32_t debug_switch = 0;

bignum bignum::operator/(const bignum& d) const {
  const Shortcut kind = shortcut(*this, d);
  if (kind == Shortcut::NONE) {
    const Division division(*this, d);
    bignum result = division.quotient();
    result.keep_remainder(division.remainder());
    return result;
  }
  bignum result = shortcut_quotient(kind, *this);
  if (kind == Shortcut::ZERO_LEAVING_DIVIDEND) result.keep_remainder(*this);
  return result;
}

bignum bignum::quotient(const bignum& d) const {
  if (const Words x(*this, d); x.fit) {
    if (x.d == 1 && d.negative == 0) return *this;
    const std::uint64_t q = x.a / x.d;
    return value_of_short(q, sign_of_quotient(q == 0, *this, d));
  } else if (x.divisor_fits) {
    Magnitude q;
    divide_long(q, *this, x.d);
    return value_of(q, sign_of_quotient(false, *this, d));
  }
  if (debug_switch != 0) return *this / d;
  const Shortcut kind = shortcut(*this, d);
  if (kind != Shortcut::NONE) return shortcut_quotient(kind, *this);
  const Aligned x(*this, d);
  Magnitude q;
  divide_quotient(q, x.a, x.d);
  return value_of(q, sign_of_quotient(q.is_zero(), *this, d));
}

// Nine places at a time: a remainder below 10^9 and nine zeros make a machine word.
bool bignum::short_fixed_quotient(FixedPoint& q, const bignum& d) const {
  constexpr std::uint64_t HALF_SCALE = 1'000'000'000;  // half of the fixed places
  const Words x(*this, d);
  if (!x.fit || x.d >= HALF_SCALE) return false;
  const std::uint64_t upper = x.a % x.d * HALF_SCALE;
  const std::uint64_t lower = upper % x.d * HALF_SCALE;
  q = {x.a / x.d, upper / x.d * HALF_SCALE + lower / x.d};
  return true;
}

bool bignum::scaled_quotient(bignum& q, const bignum& d) const {
  const bool fits = length + FIXED_PLACES < MAX_DIGITS && d.length + FIXED_PLACES < MAX_DIGITS;
  if (!fits || debug_switch != 0 || !plain || !d.plain) return false;
  std::uint64_t short_d = 0;
  const bool is_short = load_short(short_d, d);
  if (is_short && short_d == 0) return false;
  if (!is_short) {
    const Aligned x(*this, d, FIXED_PLACES);
    Magnitude quotient;
    divide_quotient(quotient, x.a, x.d);
    q = value_of(quotient, 0);
  } else {
    Magnitude a;
    Magnitude quotient;
    load(a, *this, FIXED_PLACES);
    divide_short(quotient, a, short_d);
    q = value_of(quotient, 0);
  }
  return true;
}

bignum bignum::remainder(const bignum& d) const {
  if (const Words x(*this, d); x.fit) {
    const bool keeps_sign = negative != 0 && d.negative != 0 && x.a < x.d;
    return value_of_short(x.a % x.d, keeps_sign ? 1 : 0);
  } else if (x.divisor_fits) {
    Magnitude q;
    return value_of_short(divide_long(q, *this, x.d), 0);
  }
  const Shortcut kind = shortcut(*this, d);
  return kind == Shortcut::DIVIDEND ? get_remainder() : remainder_of(kind, *this, d);
}

bignum bignum::operator%(const bignum& b) const {
  const std::int16_t sign = negative != 0 ? 1 : 0;
  if (b.equals_digit('0')) return value_of_short(0, sign);
  if (const Words x(*this, b); x.fit) {
    return value_of_short(x.a % x.d, sign);
  } else if (x.divisor_fits) {
    Magnitude q;
    return value_of_short(divide_long(q, *this, x.d), sign);
  }
  const Shortcut kind = shortcut(*this, b);
  if (kind == Shortcut::DIVIDEND) return value_of_short(0, sign);
  bignum r = remainder_of(kind, *this, b);
  if (r.length == 0 || !r.plain) r = value_without_foreign(r);
  r.negative = sign;
  return r;
}

bignum bignum::div2() const {
  bignum half;
  half.set_to_half(*this);
  return half;
}

void bignum::set_to_half(const bignum& b) {
  const Digits digits(b);
  finish(std::max(halve_digits(vlstr, digits.text, digits.length), 1), 0);
}

void bignum::keep_remainder(const bignum& r) {
  char* text = r.to_string();
  if (text == nullptr) out_of_memory();
  free_and_null(&remainder_text);
  remainder_text = text;
}

}  // namespace omrel
