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
// "Equals" is the signed comparison. All else is a division of the magnitudes, which leaves their
// remainder: of machine words, of limbs by a machine word, of limbs by limbs, or, while the debug
// switch is on, by the search that shows its steps. The quotients by machine words come before the
// exits, since they agree with all of them but the first, and with what those leave as a value.
#include <algorithm>
#include <cstdio>
#include <utility>

#include "bignum/bignum.h"
#include "bignum/buffers.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/divide_search.h"
#include "support/line_marker.h"
#include "support/text.h"

namespace omrel {

std::int32_t debug_switch = 0;

namespace {

bool is_zero(const bignum& b) {
  const Digits digits(b);
  return significant_length(digits.text, digits.length) == 0;
}

[[noreturn]] void fail_on_zero() {
  mark_line();
  std::printf("Error: big number division by zero\n");
  throw EngineFailure();
}

enum class Way {
  DIVIDEND,  // the exits
  ONE,
  ZERO,
  ZERO_LEAVING_DIVIDEND,
  WORDS,  // both magnitudes are machine words
  LIMBS,
};

// The exit that two values take, else LIMBS.
Way exit_of(const bignum& a, const bignum& d) {
  if (d.equals_digit('1')) return Way::DIVIDEND;
  if (is_zero(d)) fail_on_zero();
  if (a == d) return Way::ONE;
  if (a.equals_digit('0')) return Way::ZERO;
  if (a.negative != 0 ? a > d : a < d) return Way::ZERO_LEAVING_DIVIDEND;  // of equal signs
  return is_zero(a) ? Way::ZERO : Way::LIMBS;
}

// Whether a has more digits than d, and that more than one, without leading zeros.
bool is_longer(const bignum& a, const bignum& d) {
  return a.length > d.length && d.length > 1 && a.vlstr[a.length - 1] != '0' &&
         d.vlstr[d.length - 1] != '0';
}

// The value alone, as a new one has it.
bignum without_remainder(const bignum& b) {
  bignum value(b);
  value.set_remainder(nullptr);
  return value;
}

// The magnitudes of dividend and divisor, both multiplied by the power of ten that fills the
// divisor's top limb, and the dividend by 10^scale besides.
struct Aligned {
  Aligned(const bignum& dividend, const bignum& divisor, int scale = 0)
      : a_text(dividend),
        d_text(divisor),
        a_length(significant_length(a_text.text, a_text.length)),
        d_length(significant_length(d_text.text, d_text.length)),
        shift(digits_to_fill(LIMB_DIGITS, d_length)) {
    static_assert(LIMB_DIGITS - 1 + FIXED_PLACES <= MAX_SHIFT);
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

bool shows_steps() { return debug_switch != 0; }

// Divides the magnitude of a * 10^scale. What is left is returned where d is a machine word, which
// d_word is then; elsewhere d_word is 0, and so is the answer when nothing is left.
std::uint64_t divide_scaled(Magnitude& q, const bignum& a, int scale, const bignum& d,
                            std::uint64_t d_word) {
  if (d_word == 0) {
    Aligned x(a, d, scale);
    return divide_quotient(q, x.a, x.d) ? 0 : 1;
  }
  Magnitude limbs;
  load(limbs, a, scale);
  return divide_by_word(q, limbs, d_word);
}

// How two values divide. Whatever is asked of their quotient is asked of this.
class Division {
 public:
  Division(const bignum& dividend, const bignum& divisor) : a(dividend), d(divisor) {
    const bool is_word = !shows_steps() && load_small(d_word, d) && d_word > 1;
    way = is_word && load_small(a_word, a) ? Way::WORDS : long_way();
  }

  // The quotient, without a remainder text.
  bignum quotient() const {
    if (way != Way::WORDS) return long_quotient();
    const std::uint64_t q = a_word / d_word;
    return value_of(q, sign_of(q == 0));
  }

  // What it leaves: never negative, but for a dividend that is handed on as it is.
  bignum remainder() const {
    if (way != Way::WORDS) return long_remainder();
    const bool is_dividend = a.negative != 0 && d.negative != 0 && a_word < d_word;
    return value_of(a_word % d_word, is_dividend ? 1 : 0);
  }

  // The remainder of the magnitudes with that sign.
  bignum signed_remainder(std::int16_t sign) const {
    return way == Way::WORDS ? value_of(a_word % d_word, sign) : long_signed_remainder(sign);
  }

  std::pair<bignum, bignum> both() const;

 private:
  std::int16_t sign_of(bool quotient_is_zero) const {
    return !quotient_is_zero && (a.negative != 0) != (d.negative != 0) ? 1 : 0;
  }

  // As a rule the dividend is longer, and none of the exits can be.
  [[gnu::noinline]] Way long_way() const {
    const bool is_greater = a.plain && (d_word > 1 || (d.plain && is_longer(a, d)));
    return is_greater ? Way::LIMBS : exit_of(a, d);
  }
  [[gnu::noinline]] bignum long_quotient() const;
  [[gnu::noinline]] bignum long_remainder() const;
  [[gnu::noinline]] bignum long_signed_remainder(std::int16_t sign) const;
  int divide_limbs(Magnitude& q, Magnitude& r) const;

  const bignum& a;
  const bignum& d;
  std::uint64_t a_word = 0;
  std::uint64_t d_word = 0;  // 0 for a divisor that is none
  Way way;
};

bignum Division::long_quotient() const {
  if (way == Way::DIVIDEND) return without_remainder(a);
  if (way != Way::LIMBS) return value_of(way == Way::ONE ? 1 : 0, 0);
  if (shows_steps()) return both().first;
  Magnitude q;
  divide_scaled(q, a, 0, d, d_word);
  return value_of(q, sign_of(q.is_zero()));
}

bignum Division::long_remainder() const {
  if (way == Way::DIVIDEND) return a.get_remainder();
  if (way == Way::ZERO_LEAVING_DIVIDEND) return without_remainder(a);
  if (way != Way::LIMBS) return value_of(0, 0);
  Magnitude q;
  if (d_word != 0) return value_of(divide_scaled(q, a, 0, d, d_word), 0);
  Magnitude r;
  const int shift = divide_limbs(q, r);
  return value_of_shifted(r, shift);
}

bignum Division::long_signed_remainder(std::int16_t sign) const {
  bignum r = way == Way::DIVIDEND ? value_of(0, 0) : long_remainder();
  if (r.length == 0 || !r.plain) r = r * value_of(1, 0);  // a dividend as arithmetic reads it
  r.negative = sign;
  return r;
}

std::pair<bignum, bignum> Division::both() const {
  if (way != Way::LIMBS || d_word != 0) return {quotient(), remainder()};
  Magnitude q;
  Magnitude r;
  const int shift = divide_limbs(q, r);
  return {value_of(q, sign_of(q.is_zero())), value_of_shifted(r, shift)};
}

// Divides limbs by limbs, by a search where that is to be seen. The remainder comes out multiplied
// by a power of ten, whose exponent is returned.
int Division::divide_limbs(Magnitude& q, Magnitude& r) const {
  Aligned x(a, d);
  const bool is_found =
      shows_steps() && search_quotient(q, r, x.a, x.d, x.a_text.text, x.a_length, x.d_length);
  if (!is_found) divide(q, r, x.a, x.d);
  if (shows_steps()) std::printf("\r\n");
  return x.shift;
}

}  // namespace

bignum bignum::operator/(const bignum& d) const {
  const Way exit = exit_of(*this, d);
  if (exit == Way::DIVIDEND) return *this;
  auto [q, r] = Division(*this, d).both();
  if (exit == Way::LIMBS || exit == Way::ZERO_LEAVING_DIVIDEND) {
    const HeapText text(r.to_string());
    if (text == nullptr) out_of_memory();
    q.set_remainder(text.get());
  }
  return std::move(q);
}

bignum bignum::quotient(const bignum& d) const { return Division(*this, d).quotient(); }

bignum bignum::remainder(const bignum& d) const { return Division(*this, d).remainder(); }

bool bignum::fixed_quotient(bignum& q, const bignum& d) const {
  if (length + FIXED_PLACES >= MAX_DIGITS || !plain || !d.plain || shows_steps()) return false;
  std::uint64_t d_word = 0;
  if (load_small(d_word, d) && d_word == 0) return false;
  Magnitude m;
  const bool is_exact = divide_scaled(m, *this, FIXED_PLACES, d, d_word) == 0;
  bignum scaled = value_of(m, 0);
  const int places = std::min(scaled.length, FIXED_PLACES);
  if (!is_exact && significant_length(scaled.vlstr, places) == 0) return false;
  q = std::move(scaled);
  return true;
}

// Nine places at a time: a remainder below 10^9 and nine zeros make a machine word.
bool bignum::fixed_quotient(FixedWords& q, const bignum& d) const {
  constexpr std::uint64_t HALF_SCALE = 1'000'000'000;
  static_assert(FIXED_PLACES == 2 * 9);
  std::uint64_t a_word = 0;
  std::uint64_t d_word = 0;
  if (shows_steps() || !load_small(d_word, d) || d_word == 0 || d_word >= HALF_SCALE) return false;
  if (!load_small(a_word, *this)) return false;
  const std::uint64_t upper = a_word % d_word * HALF_SCALE;
  const std::uint64_t lower = upper % d_word * HALF_SCALE;
  q = {a_word / d_word, upper / d_word * HALF_SCALE + lower / d_word};
  return true;
}

bignum bignum::operator%(const bignum& b) const {
  const std::int16_t sign = negative != 0 ? 1 : 0;
  if (b.equals_digit('0')) return value_of(0, sign);
  return Division(*this, b).signed_remainder(sign);
}

}  // namespace omrel
