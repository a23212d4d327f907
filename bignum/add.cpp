// Addition and subtraction. Signed addition and subtraction reduce to a sum or a difference of
// magnitudes. What they do to the left operand's sign flag (its digits and the right operand never
// change) is part of their contract; fa and fb are the flags on entry, a - b counting as a + b with
// fb turned over:
//
//   fa     fb     result                        a's flag afterwards
//   set    clear  |b| - |a|                     clear
//   clear  set    |a| - |b|                     set if |a| < |b|, else clear
//   equal         |a| + |b| with a's flag       clear if the sum is all zeros, else unchanged
#include <algorithm>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"

namespace omrel {
namespace {

// Writes |a| + |b| into sum and returns its length; the sum is not ended.
int digit_sum(bignum& sum, const bignum& a, const bignum& b) {
  if (a.length < b.length) return digit_sum(sum, b, a);
  return a.length + add_digits(sum.vlstr, a.vlstr, a.length, b.vlstr, b.length);
}

// Sets the difference to |a| - |b|, as many digits as the longer of them.
void digit_difference(bignum& difference, const bignum& a, const bignum& b) {
  const bool swapped = compare_magnitudes(a, b) < 0;
  const bignum& upper = swapped ? b : a;
  const bignum& lower = swapped ? a : b;
  subtract_digits(difference.vlstr, upper.vlstr, upper.length, lower.vlstr, lower.length);
  difference.end_digits(std::max(a.length, b.length), swapped ? 1 : 0);
}

// A value with its digits as arithmetic reads them.
bignum cleaned(const bignum& b) {
  const Digits digits(b);
  bignum result;
  std::memcpy(result.vlstr, digits.text, static_cast<std::size_t>(digits.length));
  result.end_digits(digits.length, b.negative);
  return result;
}

bignum add_plain(bignum& a, const bignum& b, bool b_is_negative) {
  bignum result;
  if ((a.negative != 0) == b_is_negative) {
    const int n = digit_sum(result, a, b);
    if (a.negative != 0 && n > 0 && significant_length(result.vlstr, n) == 0) a.negative = 0;
    result.end_digits(n, n > 0 ? a.negative : std::int16_t{0});
  } else if (a.negative != 0) {
    a.negative = 0;
    digit_difference(result, b, a);
  } else {
    digit_difference(result, a, b);
    a.negative = result.negative;
  }
  return result;
}

[[gnu::cold]] bignum add_foreign(bignum& a, const bignum& b, bool b_is_negative) {
  bignum clean_a = cleaned(a);
  bignum result = add_plain(clean_a, cleaned(b), b_is_negative);
  a.negative = clean_a.negative;
  return result;
}

// Returns a + b, b's sign being the one given.
bignum add_signed(bignum& a, const bignum& b, bool b_is_negative) {
  return a.plain && b.plain ? add_plain(a, b, b_is_negative) : add_foreign(a, b, b_is_negative);
}

}  // namespace

bignum bignum::operator+(const bignum& b) { return add_signed(*this, b, b.negative != 0); }

bignum bignum::operator-(const bignum& b) { return add_signed(*this, b, b.negative == 0); }

void bignum::add(const bignum& b) {
  if (negative != 0 || b.negative != 0 || !plain || !b.plain) {
    *this = *this + b;
  } else {
    end_digits(digit_sum(*this, *this, b), 0);
  }
}

bool bignum::step_lowest(bool up) {
  if (negative != 0 || !plain) return false;
  constexpr std::uint64_t ONE = ASCII_ZEROS + 1;
  const std::uint64_t mask = length < 8 ? ~(~std::uint64_t{0} << (8 * length)) : ~std::uint64_t{0};
  const std::uint64_t word = load_word(vlstr) & mask;
  if (word == ((up ? ASCII_NINES : ASCII_ZEROS) & mask)) return false;
  const std::uint64_t stepped = up ? word + CARRY_BIAS + ONE : word - ONE;
  store_word(vlstr, to_ascii(stepped) & mask);
  return true;
}

}  // namespace omrel
