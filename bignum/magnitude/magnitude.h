// Unsigned numbers on limbs, where everything above addition is done: magnitudes, whose limbs hold
// eight decimal digits each. Binary numbers are another type (binary.h).
//
// They know no sign and no text beyond load and store. Their callers see to the limits: an operand
// has at most MAX_DIGITS digits, and a product that has more is reported, not computed.
#pragma once

#include <algorithm>

#include "bignum/digit_text.h"
#include "bignum/magnitude/rows.h"

namespace omrel {

constexpr int LIMB_DIGITS = 8;
constexpr int LANE_BITS = 26;  // of a binary number that is being converted; see radix.h

// At least as many bits as a number of so many digits can have.
constexpr int most_bits(int digit_count) { return digit_count * 10 / 3 + 1; }

// The digits by which the operand of a division, a root or a shift is lengthened at most.
constexpr int MAX_SHIFT = 28;

// Room for any operand, lengthened so, or for its bits.
constexpr int MAX_LIMBS =
    std::max((MAX_DIGITS + MAX_SHIFT) / LIMB_DIGITS, most_bits(MAX_DIGITS) / LANE_BITS) + 1;

// How many products of two limbs a column has room for, and a column with a sign. An operation adds
// at most as many to one as its shorter operand has limbs; both together have MAX_LIMBS.
constexpr int COLUMN_PRODUCTS = static_cast<int>(~Limb{0} / (LIMB_BASE * LIMB_BASE));
static_assert(MAX_LIMBS / 2 <= COLUMN_PRODUCTS / 2, "columns are carried once, at the end");

// Limbs from the least significant, the top one not zero; zero has none.
//
// Nothing around the number's own limbs is initialised.
class Limbs {
 public:
  Limbs() {}  // room for a number
  Limbs(const Limbs& x) { *this = x; }
  Limbs& operator=(const Limbs& x);

  Limb* limb() { return storage + ROW_PADDING; }
  const Limb* limb() const { return storage + ROW_PADDING; }

  int count() const { return limb_count; }
  bool is_zero() const { return limb_count == 0; }

  // Ends the number at its highest non-zero limb below `at_most`.
  void trim(int at_most);

  // Writes zeros around the limbs, ROW_PADDING below and above, as add_rows reads them; returns the
  // limbs.
  const Limb* pad();

 private:
  int limb_count = 0;
  Limb storage[MAX_LIMBS + 2 * ROW_PADDING];
};

// A magnitude in base LIMB_BASE.
class Magnitude : public Limbs {
 public:
  Magnitude() = default;
  explicit Magnitude(Limb value);  // any value of 64 bits
};

// Reads a digit text, multiplied by 10^shift.
void load(Magnitude& m, const char* digits, int length, int shift);

// Writes the digits, least significant first, whole limbs of them, and returns their count
// without leading zeros: 0 for zero.
int store(char* digits, const Magnitude& m);

// Turns columns into limbs, in whole vectors (rows.h); a carry out of the last one is dropped.
void carry_columns(Limb* columns, int count);

// Decimal digits in a number that is not zero.
int digit_count(const Magnitude& m);

// -1, 0 or 1 as a is less than, equal to or greater than b.
int compare(const Magnitude& a, const Magnitude& b);

// What a limb may be multiplied by, and the product carried in one word.
constexpr Limb MAX_FACTOR = (Limb{1} << 37) - 1;

// a += b; a -= b for b <= a; a /= 2; a = a * m + addend for m and addend up to MAX_FACTOR.
void add(Magnitude& a, const Magnitude& b);
void subtract(Magnitude& a, const Magnitude& b);
void halve(Magnitude& a);
void multiply_add(Magnitude& a, Limb m, Limb addend);

// product = a * b, another object than either; both are padded. False when it has more than
// MAX_LIMBS limbs: then the product is left unspecified.
bool multiply(Magnitude& product, Magnitude& a, Magnitude& b);

// product = a * a for a that is not zero, as multiply but in half the time.
bool square(Magnitude& product, Magnitude& a);

// Writes the columns of a * a for a that is not zero, 2 * a.count() of them, each below 10^16 times
// a.count(). There is room for ROW_PADDING columns more.
void square_columns(Limb* columns, Magnitude& a);

// q = a / d truncated and r = a - q * d, all four different objects.
//
// Operands: d's top limb is at least LIMB_BASE / 10; load both with the shift that makes it so,
//           and r comes out shifted as well. d is padded.
void divide(Magnitude& q, Magnitude& r, const Magnitude& a, Magnitude& d);

// q = a / d as divide, without the remainder: skips the products that cannot reach the quotient.
// Returns whether nothing is left.
bool divide_quotient(Magnitude& q, const Magnitude& a, Magnitude& d);

// q = a / d for 0 < d < 10^18, another object than a; returns the remainder.
std::uint64_t divide_by_word(Magnitude& q, const Magnitude& a, std::uint64_t d);

// s = the largest magnitude whose square does not exceed n, another object.
//
// Operand: not zero, an even number of limbs, the top two together at least LIMB_BASE * LIMB_BASE /
// 100.
void square_root(Magnitude& s, const Magnitude& n);

}  // namespace omrel
