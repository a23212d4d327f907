// Factorials.
#pragma once

#include "bignum/magnitude/binary.h"

namespace omrel {

// r = n!, n >= 2, for few numbers: the faster way up to some hundred.
void factorial(Binary& r, int n);

// r = n!, n >= 2. False when that has more than MAX_LIMBS limbs.
bool factorial(Magnitude& r, int n);

}  // namespace omrel
