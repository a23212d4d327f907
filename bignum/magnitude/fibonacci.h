// Fibonacci numbers.
#pragma once

#include <utility>

#include "bignum/magnitude/magnitude.h"

namespace omrel {

// The Fibonacci numbers of index n and n - 1, n >= 1, modulo 2^64: exact up to MAX_WORD_INDEX.
constexpr int MAX_WORD_INDEX = 93;
std::pair<Limb, Limb> word_fibonacci(int n);

// r = the n-th Fibonacci number, n > MAX_WORD_INDEX. False when that would have more than
// MAX_DIGITS digits.
bool fibonacci(Magnitude& r, int n);

}  // namespace omrel
