// Quotient limbs, for long division and for square roots, which is division by twice the root so
// far.
//
// A remainder is held by its head H, the columns from some place up as one exact integer, and the
// columns below it, not normalised: each may be as large as a machine word. The quotient limb is
// H + (next + after / LIMB_BASE) / LIMB_BASE over the leading limbs of the divisor; it is estimated
// in floating point, or, two limbs at a time, in integers where the machine has products of words.
//
// Nothing here depends on how the host has left the floating-point unit to round. An estimate comes
// from a dozen roundings; each is off by at most one unit in the last place in any mode, a part of
// 2^-52, so for a quotient limb up to 2 * LIMB_BASE they come to less than 10^-6 in all. What is
// left out on purpose comes to 10^-6 too, and BIAS exceeds both together.
#pragma once

#include "bignum/magnitude/magnitude.h"

namespace omrel {

class Estimator {
 public:
  static constexpr int TOP = ROWS + 2;   // leading divisor limbs that a group of estimates reads
  static constexpr int NEAR = ROWS + 2;  // columns below the head that it reads

  // The divisor's leading limbs, the top one at least LIMB_BASE / 10: for groups, and for single
  // limbs.
  void set_divisor(const Limb (&top)[TOP]);

  // The same for single limbs, limb by limb: the top one, then the next one, at most ten times as
  // large. The third one changes an estimate by no more than 10^-7.
  void set_top(Limb top) { set_per_head(1.0 / real(top)); }
  void set_next_to_top(Limb next) {
    // 1 / (1 + e) is 1 - e + e^2 for an e of 10^-7 at most, without a division.
    const double x = real(next);
    const double first_order = per_head * per_next;
    const double second_order = first_order * per_next;
    set_per_head(per_head - x * first_order + x * x * second_order);
  }

  // The quotient limb and a fraction, never too large, and too small by less than 2 * BIAS.
  double quotient(Limb head, Limb next, Limb after) const {
    const double low = real(next) + real(after) * PER_LIMB;
    return (real(head) + low * PER_LIMB) * per_head - BIAS;
  }

  // A quotient limb as a part of the divisor's limb above its top.
  double part_of_divisor(double limb) const { return limb * per_next; }

  // As a limb, which is below 2^31; a negative estimate is one of zero. In 32 bits the processor
  // has an instruction for this, but not for larger integers.
  static Limb to_limb(double quotient) {
    return quotient > 0 ? static_cast<std::uint32_t>(static_cast<std::int32_t>(quotient)) : 0;
  }

  static double real(Limb x) { return static_cast<double>(static_cast<std::int64_t>(x)); }

  // The ratio of a remainder to the divisor, at the place where its head ends; it is certainly
  // below one when this is.
  double ratio(Limb head, Limb next) const {
    return real(head) * per_next + real(next) * (per_next * PER_LIMB) + RATIO_MARGIN;
  }

  // Finds `count` limbs one after another, the highest at x and the others before it; a zero may be
  // written behind it. Subtracts their rows from the head, which moves down as many places, and
  // returns the ratio of what is left to the divisor. `next` is the column below the head, with the
  // others before it, all of them negated. Arithmetic is modulo 2^64; what is read is small enough.
  double find_group(Limb* x, int count, Limb& head, const Limb* next) const;

 private:
  void set_per_head(double value) {
    per_head = value;
    per_next = per_head * PER_LIMB;
  }

  static constexpr double PER_LIMB = 1.0 / static_cast<double>(LIMB_BASE);
  static constexpr double BIAS = 2e-6;
  static constexpr double RATIO_MARGIN = 1e-5;

  double per_head = 0;
  double per_next = 0;
#ifdef __SIZEOF_INT128__
  std::uint64_t reciprocal;
  int shift;
  std::uint64_t top_pair[TOP / 2];
  Limb upper[TOP / 2];  // of each pair
#else
  Limb leading[TOP];
#endif
};

}  // namespace omrel
