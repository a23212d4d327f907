// Powers, factorials and Fibonacci numbers of magnitudes. Functions return false when the answer
// would have MAX_DIGITS digits or more.
#pragma once

#include <utility>

#include "bignum/limbs.h"

namespace omrel {

// The power of a number to the highest bits of an exponent, as many as give a machine word, and how
// many are left.
struct WordPower {
  Limb word;
  int bits_left;
};
WordPower word_power(Limb base, int n);

// Computes base^n, n >= 2, in two magnitudes and returns the one that holds it, null where the
// functions below return false. For any base, and for one up to MAX_FACTOR that is begun so.
const Magnitude* power(Magnitude& r, Magnitude& other, const Magnitude& base, int n);
const Magnitude* power(Magnitude& r, Magnitude& other, Limb base, int n, const WordPower& begun);

// r = 2^n, n >= 0. The largest n is MAX_EXPONENT_OF_TWO.
constexpr int MAX_EXPONENT_OF_TWO = 21'589;
bool power_of_two(Magnitude& r, int n);

// r = n!, n >= 2.
bool factorial(Magnitude& r, int n);

// The Fibonacci numbers of index n and n - 1, n >= 1, modulo 2^64: exact up to MAX_WORD_INDEX.
constexpr int MAX_WORD_INDEX = 93;
std::pair<Limb, Limb> word_fibonacci(int n);

// r = the n-th Fibonacci number, n > MAX_WORD_INDEX.
bool fibonacci(Magnitude& r, int n);

}  // namespace omrel
