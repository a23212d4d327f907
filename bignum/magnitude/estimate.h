// Quotient limbs from floating point, for long division and for square roots, which is division by
// twice the root so far.
//
// A remainder is held by its head H, the columns from some place up as one exact integer, and the
// columns below it, not normalised: each may be as large as a machine word. The quotient limb is
// H + (next + after / LIMB_BASE) / LIMB_BASE over the leading limbs of the divisor.
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

  // The divisor's leading limbs, the top one at least LIMB_BASE / 10.
  void set_divisor(const Limb* top) {
    set_per_head(1.0 /
                 (real(top[0]) + real(top[1]) * PER_LIMB + real(top[2]) * (PER_LIMB * PER_LIMB)));
  }

  // The same, limb by limb: the top one, then the next one, at most ten times as large. The third
  // one changes an estimate by no more than 10^-7.
  void set_top(Limb top) { set_per_head(1.0 / real(top)); }
  void set_next_to_top(Limb next) {
    // 1 / (1 + e) is 1 - e + e^2 for an e of 10^-7 at most, without a division.
    const double x = real(next);
    const double first_order = per_head * per_next;
    const double second_order = first_order * per_next;
    set_per_head(per_head - x * first_order + x * x * second_order);
  }

  // What the column after next adds to an estimate, less a bias that exceeds the error.
  double low_part(Limb after) const { return real(after) * per_after - BIAS; }

  // The quotient limb and a fraction, never too large, and too small by less than 2 * BIAS.
  double quotient(Limb head, Limb next, double low) const {
    return real(head) * per_head + (real(next) * per_next + low);
  }

  // The same from a divisor that has just been set, whose reciprocal comes last.
  double first_quotient(Limb head, Limb next, Limb after) const {
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
    return real(head) * per_next + real(next) * per_after + RATIO_MARGIN;
  }

  // Finds `count` limbs one after another, the highest at x and the others before it. Subtracts
  // their rows from the head, which moves down as many places, and from the columns near it; then
  // near[count] is the one next to the head. Arithmetic is modulo 2^64; what is read is small
  // enough.
  //
  // From limb to limb the steps depend on each other, so little is done between them: the column
  // after next is read before the last limb's row is subtracted, which changes the estimate by less
  // than 10^-6.
  void find_group(Limb* x, int count, Limb& head, Limb (&near)[NEAR],
                  const Limb (&top)[TOP]) const {
    const Limb top_pair = top[0] * LIMB_BASE + top[1];
    double low = low_part(near[1]);
    for (int k = 0; k < count; ++k) {
      const Limb limb = to_limb(quotient(head, near[k], low));
      low = low_part(near[k + 2]);
      x[-k] = limb;
      head = head * LIMB_BASE + near[k] - limb * top_pair;
      for (int m = k + 1; m <= ROWS; ++m) near[m] -= limb * top[m - k + 1];
    }
  }

 private:
  void set_per_head(double reciprocal) {
    per_head = reciprocal;
    per_next = per_head * PER_LIMB;
    per_after = per_next * PER_LIMB;
  }

  static constexpr double PER_LIMB = 1.0 / static_cast<double>(LIMB_BASE);
  static constexpr double BIAS = 2e-6;
  static constexpr double RATIO_MARGIN = 1e-5;

  double per_head = 0;
  double per_next = 0;
  double per_after = 0;
};

}  // namespace omrel
