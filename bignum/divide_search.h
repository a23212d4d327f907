// The search for a quotient that the debug switch shows.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

// Searches the quotient of a by d and writes a mark for every step to standard output.
//
// Operands: the magnitudes, and the dividend's digits (without leading zeros) and the divisor's
//           digit count, which give the first estimate.
// Result:   true when q and r are the exact quotient and remainder; false when the cap on unit
//           steps ended the search before.
bool search_quotient(Magnitude& q, Magnitude& r, const Magnitude& a, Magnitude& d,
                     const char* a_digits, int a_length, int d_length);

}  // namespace omrel
