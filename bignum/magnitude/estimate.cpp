#include "bignum/magnitude/estimate.h"

#include <algorithm>
#include <bit>

namespace omrel {

#ifdef __SIZEOF_INT128__

namespace {

__extension__ using Wide = unsigned __int128;
__extension__ using SignedWide = __int128;

constexpr std::uint64_t PAIR_BASE = LIMB_BASE * LIMB_BASE;

// The bits of a dividend that its quotient is not found from.
constexpr int LEFT_OUT = 44;

constexpr double PAIRS_PER_WORD = 0x1p64 / static_cast<double>(PAIR_BASE);

// floor(2^PLACES * PAIR_BASE / d) for a divisor d of two pairs, cut to 64 bits, is a word.
constexpr int PLACES = 73;

}  // namespace

void Estimator::set_divisor(const Limb (&top)[TOP]) {
  for (int i = 0; i < TOP / 2; ++i) {
    upper[i] = top[2 * i];
    top_pair[i] = upper[i] * LIMB_BASE + top[2 * i + 1];
  }
  set_per_head(static_cast<double>(LIMB_BASE) / real(top_pair[0]));
  const Wide leading = Wide{top_pair[0]} * PAIR_BASE + top_pair[1];
  const auto cut = static_cast<int>(std::bit_width(static_cast<std::uint64_t>(leading >> 64)));
  reciprocal = static_cast<std::uint64_t>((Wide{PAIR_BASE} << PLACES) / ((leading >> cut) + 1));
  shift = PLACES + cut - LEFT_OUT - 64;
}

// Two limbs at a time, a pair: the part of the remainder from its column up, over the divisor's
// leading four limbs. That part is the head, the next pair of columns, and what the one after sends
// up, since products have been subtracted from it. The rest comes to less than 2^40, and the part
// is cut to a multiple of 2^LEFT_OUT. Both are small beside a pair of divisor limbs, 2^49 at least:
// the quotient is never too large and hardly ever too small, by one.
double Estimator::find_group(Limb* x, int count, Limb& head, const Limb* next) const {
  constexpr SignedWide REST = SignedWide{1} << 40;
  // An odd count begins one place higher, with a limb of zero.
  const int odd = count % 2;
  const auto column = [&](int i) {
    return static_cast<std::int64_t>(i < odd ? head : 0 - next[odd - i]);
  };
  const int pairs = (count + 1) / 2;
  SignedWide near[NEAR / 2];
  for (int i = 0; i <= pairs; ++i) {
    near[i] = SignedWide{column(2 * i)} * LIMB_BASE + column(2 * i + 1);
  }
  auto rest = odd != 0 ? 0 : static_cast<std::int64_t>(head);
  x += odd;
  for (int k = 0; k < pairs; ++k) {
    const SignedWide part = SignedWide{rest} * PAIR_BASE + near[k];
    // Times PAIRS_PER_WORD, but for 2^37.
    const std::int64_t sent = static_cast<std::int64_t>(near[k + 1] >> 64) * 118059 >> 6;
    const SignedWide reached = part + sent - REST;
    const auto dividend = static_cast<std::uint64_t>(std::max<SignedWide>(reached, 0) >> LEFT_OUT);
    const auto q = static_cast<std::uint64_t>(Wide{dividend} * reciprocal >> 64) >> shift;
    rest = static_cast<std::int64_t>(static_cast<std::uint64_t>(part) - q * top_pair[0]);
    for (int i = k + 1; i <= pairs; ++i) {
      near[i] -= static_cast<SignedWide>(Wide{q} * top_pair[i - k]);
    }
    x[-2 * k] = q / LIMB_BASE;
    x[-2 * k - 1] = q % LIMB_BASE;
  }
  // Of the products below the head those of the pairs' upper limbs reach into its lowest column.
  head = static_cast<Limb>(rest);
  for (int k = 0; k < pairs; ++k) head -= x[-2 * k] * upper[pairs - k];
  const auto below = static_cast<double>(static_cast<std::int64_t>(near[pairs] >> 64));
  return ratio(static_cast<Limb>(rest), 0) + below * PAIRS_PER_WORD * per_next;
}

#else

void Estimator::set_divisor(const Limb (&top)[TOP]) {
  std::copy_n(top, TOP, leading);
  set_per_head(1.0 /
               (real(top[0]) + real(top[1]) * PER_LIMB + real(top[2]) * (PER_LIMB * PER_LIMB)));
}

// From limb to limb the steps depend on each other, so little is done between them: the column
// after next is read before the last limb's row is subtracted, which changes the estimate by less
// than 10^-6.
double Estimator::find_group(Limb* x, int count, Limb& head, const Limb* next) const {
  const double per_after = per_next * PER_LIMB;
  const auto low_part = [&](Limb after) { return real(after) * per_after - BIAS; };
  Limb near[NEAR];
  for (int i = 0; i < NEAR; ++i) near[i] = 0 - next[-i];
  const Limb top_pair = leading[0] * LIMB_BASE + leading[1];
  double low = low_part(near[1]);
  for (int k = 0; k < count; ++k) {
    const Limb limb = to_limb(real(head) * per_head + (real(near[k]) * per_next + low));
    low = low_part(near[k + 2]);
    x[-k] = limb;
    head = head * LIMB_BASE + near[k] - limb * top_pair;
    for (int i = k + 1; i <= ROWS; ++i) near[i] -= limb * leading[i - k + 1];
  }
  return ratio(head, near[count]);
}

#endif

}  // namespace omrel
