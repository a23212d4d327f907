// Between decimal limbs and lanes, which are limbs of fewer bits, as add_rows takes them.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

// A number in base 2^LANE_BITS.
class Lanes : public Limbs {};

// A lane holds less than a decimal limb, so a number has no more of those than lanes.
static_assert((Limb{1} << LANE_BITS) < LIMB_BASE);

// Rewrite a number, which is padded, in the other base.
// Cost: by halves, so that most of the work is a few long products.
void to_binary(Lanes& lanes, Magnitude& decimal);
void to_decimal(Magnitude& decimal, Lanes& lanes);

}  // namespace omrel
