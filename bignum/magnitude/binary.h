// Binary numbers: another type than magnitudes, so that neither is taken for the other.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

constexpr int BINARY_LIMB_BITS = 64;

// A number in base 2^BINARY_LIMB_BITS.
class Binary : public Limbs {};

// Reads a digit text.
// Cost: for some hundred digits a multiplication of words each 19 digits and limb, where the
//       machine has those; else, and for long texts, as radix.h.
void load(Binary& binary, const char* digits, int length);

// Writes the digits, least significant first, and zeros behind them, up to 27 bytes more; returns
// the count without leading zeros: 0 for zero. Cost: as load, with divisions.
int store(char* digits, const Binary& binary);

// The number of so many lanes, limbs of LANE_BITS.
void pack(Binary& binary, const Limb* lanes, int count);

// Bits of a number, 0 for zero.
int bit_count(const Binary& binary);

// x = x * factor.
void multiply(Binary& x, Limb factor);

// x = x * 2^n, x / 2^n truncated, x modulo 2^width.
void shift_left(Binary& x, int n);
void shift_right(Binary& x, int n);
void cut(Binary& x, int width);

}  // namespace omrel
