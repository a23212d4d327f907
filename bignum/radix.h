// Between decimal limbs and binary ones.
#pragma once

#include "bignum/limbs.h"

namespace omrel {

// A binary magnitude is a Magnitude whose limbs hold 26 bits each: fewer than eight decimal digits
// do, so a number has no more decimal limbs than binary ones.
constexpr int BINARY_LIMB_BITS = 26;

// Rewrite the number in the other base, into another object.
// Cost: by halves, so that most of the work is a few long products.
void to_binary(Magnitude& binary, const Magnitude& decimal);
void to_decimal(Magnitude& decimal, const Magnitude& binary);

// Bits of a binary magnitude, 0 for zero.
int bit_count(const Magnitude& binary);

}  // namespace omrel
