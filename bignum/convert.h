// Between values and the numbers that arithmetic is done on: machine words, magnitudes, bits.
#pragma once

#include "bignum/bignum.h"
#include "bignum/magnitude/binary.h"

namespace omrel {

// Small values, of up to so many digits, are read into one machine word and answered from it: half
// of all calls.
constexpr int SMALL_DIGITS = 18;

// Reads a magnitude of at most SMALL_DIGITS digits; false for a longer one, and for one with other
// characters.
bool load_small(std::uint64_t& magnitude, const bignum& b);

// Any magnitude of 64 bits as the digits of a value, and as a value.
void set(bignum& b, std::uint64_t magnitude);
bignum value_of(std::uint64_t magnitude, std::int16_t sign);

// The digits that make a length a multiple of a number of digits: as many fill the top limb or
// limbs.
constexpr int digits_to_fill(int of, int length) { return (of - length % of) % of; }

// Reads the magnitude of a value, multiplied by 10^shift.
void load(Magnitude& m, const bignum& b, int shift = 0);

// Reads the bits of a value that has a binary form; or enough of them, those of its magnitude
// modulo 10^digit_count: n low digits decide n low bits.
void load_binary(Binary& binary, const bignum& b, int digit_count = MAX_DIGITS);

// The value of a magnitude, "0" for zero, with the sign flag given.
// Errors: MAX_DIGITS or more digits end the process with overflow().
bignum value_of(const Magnitude& m, std::int16_t sign);

// The value of m / 10^shift, truncated; never negative.
bignum value_of_shifted(const Magnitude& m, int shift);

bignum value_of(const Binary& binary);

}  // namespace omrel
