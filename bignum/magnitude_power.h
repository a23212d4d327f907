// Powers, factorials and Fibonacci numbers of magnitudes. Each returns false when the answer would
// have MAX_DIGITS digits or more.
#pragma once

#include "bignum/limbs.h"

namespace omrel {

// r = base^n, n >= 1.
bool power(Magnitude& r, const Magnitude& base, int n);

// r = 2^n, n >= 0.
bool power_of_two(Magnitude& r, int n);

// r = n!, n >= 0.
bool factorial(Magnitude& r, int n);

// r = the n-th Fibonacci number, n >= 1.
bool fibonacci(Magnitude& r, int n);

}  // namespace omrel
