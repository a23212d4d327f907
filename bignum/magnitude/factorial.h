// Factorials.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

// r = n!, n >= 2. False when that has more than MAX_LIMBS limbs.
bool factorial(Magnitude& r, int n);

}  // namespace omrel
