// Between decimal limbs and binary ones.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

// A binary limb holds less than a decimal one, so a number has no more decimal limbs than binary.
static_assert((Limb{1} << BINARY_LIMB_BITS) < LIMB_BASE);

// Rewrite the number in the other base.
// Cost: by halves, so that most of the work is a few long products.
void to_binary(Binary& binary, const Magnitude& decimal);
void to_decimal(Magnitude& decimal, const Binary& binary);

// Bits of a number, 0 for zero.
int bit_count(const Binary& binary);

}  // namespace omrel
