// Between values and magnitudes.
#pragma once

#include "bignum/bignum.h"
#include "bignum/limbs.h"

namespace omrel {

// Values of a few digits are read into one machine word and answered from it: half of all calls.
constexpr int SHORT_DIGITS = 18;

// Reads a magnitude of at most SHORT_DIGITS digits; false for a longer one.
bool load_short(std::uint64_t& magnitude, const bignum& b);

// The value of any magnitude of 64 bits.
bignum value_of_short(std::uint64_t magnitude, std::int16_t sign);

// Reads the magnitude of a value, multiplied by 10^shift.
void load(Magnitude& m, const bignum& b, int shift = 0);

// The value of a magnitude, "0" for zero, with the sign flag given.
// Errors: MAX_DIGITS or more digits end the process with overflow().
bignum value_of(const Magnitude& m, std::int16_t sign);

// The value of m / 10^shift, truncated; never negative.
bignum value_of_shifted(const Magnitude& m, int shift);

}  // namespace omrel
