// Powers of magnitudes.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

// The power of a number to the highest bits of an exponent, as many as give a machine word, and how
// many are left.
struct WordPower {
  Limb word;
  int bits_left;
};
WordPower word_power(Limb base, int n);

// Computes base^n, n >= 2, in two magnitudes and returns the one that holds it, null when it has
// more than MAX_LIMBS limbs. For any base, which is padded, and for one up to MAX_FACTOR that is
// begun so.
const Magnitude* power(Magnitude& r, Magnitude& other, Magnitude& base, int n);
const Magnitude* power(Magnitude& r, Magnitude& other, Limb base, int n, const WordPower& begun);

// The largest n for which 2^n has fewer than MAX_DIGITS digits, by the first digits of log2(10).
constexpr int MAX_EXPONENT_OF_TWO =
    static_cast<int>((MAX_DIGITS - 1) * 33'219'280'949LL / 10'000'000'000LL);

// r = 2^n, n >= 0. False when n exceeds that.
bool power_of_two(Magnitude& r, int n);

}  // namespace omrel
