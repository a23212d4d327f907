// Square roots, found limb by limb. Only the root of a number that is negative (or has no digits)
// takes Newton's steps, which are its definition; so does every root while the debug switch shows
// the divisions.
#include <cmath>
#include <cstdint>
#include <utility>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"

namespace omrel {
namespace {

// The square root of a number below 2^60, from one in floating point that is off by less than a
// millionth of one, whichever way the host has left the unit to round: so by one when truncated.
std::uint64_t small_root(std::uint64_t n) {
  // In 32 bits the processor has instructions for signed words only.
  const double near_root = std::sqrt(static_cast<double>(static_cast<std::int64_t>(n)));
  std::uint64_t root = static_cast<std::uint32_t>(static_cast<std::int32_t>(near_root));
  if (root * root > n) --root;
  return (root + 1) * (root + 1) <= n ? root + 1 : root;
}

#ifdef __SIZEOF_INT128__

constexpr int TWO_WORD_DIGITS = 36;

// The same for a number of two words below 10^TWO_WORD_DIGITS. Here the root in floating point, a
// word below 2^60, is off by less than 2^9 in any mode, and the rest over twice the root says by
// how much, but for less than one.
std::uint64_t two_word_root(std::uint64_t high, std::uint64_t low) {
  __extension__ using Wide = unsigned __int128;
  __extension__ using SignedWide = __int128;
  const auto real = [](std::uint64_t word) { return static_cast<double>(word); };
  const Wide n = Wide{high} << 64 | low;
  auto root = static_cast<std::uint64_t>(std::sqrt(real(high) * 0x1p64 + real(low)));
  const auto rest = static_cast<std::int64_t>(static_cast<SignedWide>(n - Wide{root} * root) >> 8);
  root += static_cast<std::uint64_t>(
      static_cast<std::int64_t>(static_cast<double>(rest) * 128 / real(root)));
  while (Wide{root} * root > n) --root;
  while (Wide{root + 1} * (root + 1) <= n) ++root;
  return root;
}

#endif

// Newton's steps from n downwards, until one does not lead below the estimate.
//
// A negative operand makes them wander, and some (-17 is the first) come back to an earlier
// estimate, which would repeat for ever. The estimate is compared with one kept from before, a new
// one after twice as many steps each time (R. P. Brent, An improved Monte Carlo factorization
// algorithm, BIT 20, 1980), so a circle is found with two values in hand.
bignum newton_root(const bignum& n) {
  const bignum two(2);
  bignum y(n);
  bignum kept(n);
  long steps = 0;
  for (long next_kept = 1;; ++steps) {
    const bignum q = n.quotient(y);
    bignum t = (y + q).quotient(two);
    if (!(t < y)) return y;
    y = std::move(t);
    if (y == kept) throw EngineFailure();
    if (steps == next_kept) {
      kept = bignum(y);
      next_kept *= 2;
    }
  }
}

}  // namespace

bignum bignum::sqrt(const bignum& n) {
  const bool takes_steps = n.negative != 0 || n.length == 0 || debug_switch != 0;
  if (std::uint64_t x = 0; !takes_steps && load_small(x, n)) return value_of(small_root(x), 0);
  if (n.equals_digit('0')) return value_of(0, 0);
  const Digits digits(n);
  const int length = significant_length(digits.text, digits.length);
  if (takes_steps || length == 0) return newton_root(n);
#ifdef __SIZEOF_INT128__
  if (length <= TWO_WORD_DIGITS) {
    Binary two_words;
    load(two_words, digits.text, length);
    const std::uint64_t high = two_words.count() < 2 ? 0 : two_words.limb()[1];
    return value_of(two_word_root(high, two_words.limb()[0]), 0);
  }
#endif
  // An even shift that fills the top pair of limbs; the root comes out shifted by half of it.
  const int shift = digits_to_fill(2 * LIMB_DIGITS, length) / 2 * 2;
  Magnitude m;
  Magnitude root;
  load(m, digits.text, length, shift);
  square_root(root, m);
  return value_of_shifted(root, shift / 2);
}

}  // namespace omrel
