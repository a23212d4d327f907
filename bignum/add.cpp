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
#include <cassert>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"

namespace omrel {
namespace {

// Writes |a| + |b| into sum and returns its length; the sum is not ended.
int digit_sum(bignum& sum, const bignum& a, const bignum& b) {
  const bignum& longer = a.length >= b.length ? a : b;
  const bignum& shorter = a.length >= b.length ? b : a;
  const int n = longer.length;
  return n + add_digits(sum.vlstr, longer.vlstr, n, shorter.vlstr, shorter.length);
}

// Writes the distance of |a| and |b|, as many digits as the longer of them. Returns whether |a| is
// the smaller.
bool digit_difference(bignum& difference, const bignum& a, const bignum& b) {
  const bool swapped = compare_magnitudes(a, b) < 0;
  const bignum& upper = swapped ? b : a;
  const bignum& lower = swapped ? a : b;
  const int n = std::max(a.length, b.length);
  subtract_digits(difference.vlstr, upper.vlstr, upper.length, lower.vlstr, lower.length);
  if (n > upper.length) {
    std::memset(difference.vlstr + upper.length, '0', static_cast<std::size_t>(n - upper.length));
  }
  difference.end_digits(n, swapped ? 1 : 0);
  return swapped;
}

// A value with its digits as arithmetic reads them.
bignum cleaned(const bignum& b) {
  const Digits digits(b);
  bignum result;
  std::memcpy(result.vlstr, digits.text, static_cast<std::size_t>(digits.length));
  result.end_digits(digits.length, b.negative);
  return result;
}

}  // namespace

bignum bignum::add_signed(const bignum& b, std::int16_t b_negative) {
  return plain && b.plain ? add_plain(b, b_negative) : add_foreign(b, b_negative);
}

bignum bignum::add_plain(const bignum& b, std::int16_t b_negative) {
  bignum result;
  if ((negative != 0) == (b_negative != 0)) {
    const int n = digit_sum(result, *this, b);
    if (negative != 0 && n > 0 && significant_length(result.vlstr, n) == 0) negative = 0;
    result.end_digits(n, n > 0 ? negative : std::int16_t{0});
  } else if (negative != 0) {
    negative = 0;
    digit_difference(result, b, *this);
  } else if (digit_difference(result, *this, b)) {
    negative = 1;
  }
  return result;
}

bignum bignum::add_foreign(const bignum& b, std::int16_t b_negative) {
  bignum a = cleaned(*this);
  bignum result = a.add_plain(cleaned(b), b_negative);
  negative = a.negative;
  return result;
}

bignum bignum::operator+(const bignum& b) { return add_signed(b, b.negative); }

bignum bignum::operator-(const bignum& b) {
  return add_signed(b, b.negative != 0 ? std::int16_t{0} : std::int16_t{1});
}

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

bignum bignum::increment() { return *this + bignum(1); }

bignum bignum::decrement() { return *this - bignum(1); }

}  // namespace omrel
