// Between decimal limbs and binary ones.
#pragma once

#include "bignum/limbs.h"

namespace omrel {

// A binary magnitude is a Magnitude whose limbs hold 27 bits each, the most that let as many
// products as a magnitude has limbs add up in a column.
constexpr int BINARY_LIMB_BITS = 27;

// Rewrite the number in the other base, into another object.
// Cost: by halves, so that most of the work is a few long products.
void to_binary(Magnitude& binary, const Magnitude& decimal);
void to_decimal(Magnitude& decimal, const Magnitude& binary);

// Bits of a binary magnitude, 0 for zero.
int bit_count(const Magnitude& binary);

}  // namespace omrel
