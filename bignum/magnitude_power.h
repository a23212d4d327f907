// Powers, factorials and Fibonacci numbers of magnitudes. Each returns false when the answer would
// have MAX_DIGITS digits or more.
#pragma once

#include <utility>

#include "bignum/limbs.h"

namespace omrel {

// r = base^n, n >= 2.
bool power(Magnitude& r, const Magnitude& base, int n);

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
