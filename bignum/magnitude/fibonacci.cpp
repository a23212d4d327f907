#include "bignum/magnitude/fibonacci.h"

#include <algorithm>
#include <utility>

namespace omrel {
namespace {

// m += 2 (-1)^k
void add_or_subtract_two(Magnitude& m, bool k_is_odd) {
  const Magnitude two(2);
  if (k_is_odd) {
    subtract(m, two);
  } else {
    add(m, two);
  }
}

// out = f_factor * ff + g_factor * gg + constant.
struct Combination {
  int f_factor;
  int g_factor;
  int constant;
};

void combine(Magnitude& out, const Limb* ff, const Limb* gg, int count, Combination c) {
  // The squares are of numbers with a quarter of the digits: the last step is a product alone.
  constexpr Limb MAX_COLUMN = (MAX_DIGITS / 4 / LIMB_DIGITS + 2) * LIMB_BASE * LIMB_BASE;
  constexpr Limb OFFSET = 50'000'000'000;
  static_assert(OFFSET * LIMB_BASE > 2 * MAX_COLUMN, "a sum with the offset may be negative");
  static_assert((~Limb{0} - OFFSET * LIMB_BASE) / 5 > MAX_COLUMN, "a sum may exceed 64 bits");
  const auto f_factor = static_cast<Limb>(c.f_factor);
  const auto g_factor = static_cast<Limb>(static_cast<std::int64_t>(c.g_factor));
  auto carry = static_cast<Limb>(static_cast<std::int64_t>(c.constant));
  for (int i = 0; i < count; ++i) {
    // Modulo 2^64; with the offset the sum is not negative, and below 2^64.
    const Limb total = OFFSET * LIMB_BASE + ff[i] * f_factor + gg[i] * g_factor + carry;
    carry = total / LIMB_BASE - OFFSET;
    out.limb()[i] = total % LIMB_BASE;
  }
  out.limb()[count] = carry;  // not negative, since the sum is not
  out.trim(count + 1);
}

// From f = F(k), g = F(k - 1) to the same for 2k, or for 2k + 1.
void double_index(Magnitude& f, Magnitude& g, bool k_is_odd, bool plus_one) {
  Limb ff[MAX_LIMBS + ROW_PADDING];
  Limb gg[MAX_LIMBS + ROW_PADDING];
  const int count = 2 * f.count();
  square_columns(ff, f);
  square_columns(gg, g);
  std::fill(gg + 2 * g.count(), gg + count, 0);
  const int two = k_is_odd ? -2 : 2;
  combine(f, ff, gg, count, plus_one ? Combination{4, -1, two} : Combination{3, -2, two});
  combine(g, ff, gg, count, plus_one ? Combination{3, -2, two} : Combination{1, 1, 0});
}

}  // namespace

// By the formulas that fibonacci explains.
std::pair<Limb, Limb> word_fibonacci(int n) {
  Limb f = 1;
  Limb g = 0;
  Limb two = 0 - Limb{2};  // 2 (-1)^k
  for (int bit = 30 - __builtin_clz(static_cast<unsigned>(n)); bit >= 0; --bit) {
    const Limb below = f * f + g * g;
    const Limb above = 4 * f * f - g * g + two;
    const bool plus_one = ((n >> bit) & 1) != 0;
    f = plus_one ? above : above - below;
    g = plus_one ? above - below : below;
    two = plus_one ? 0 - Limb{2} : 2;
  }
  return {f, g};
}

// By doubling, with two squares a step (D. Takahashi, A fast algorithm for computing large
// Fibonacci numbers, Information Processing Letters 75, 2000). With f = F(k) and g = F(k - 1):
//   F(2k - 1) = f^2 + g^2,  F(2k + 1) = 4 f^2 - g^2 + 2 (-1)^k,  F(2k) = their difference,
// and the last step needs one product alone:
//   F(2k) = f (f + 2 g),  F(2k + 1) = (2 f + g) (2 f - g) + 2 (-1)^k.
bool fibonacci(Magnitude& r, int n) {
  // By the logarithm of the golden ratio, rounded so that no shorter one is refused.
  constexpr int MAX_INDEX = MAX_DIGITS * 4785LL / 1000;
  if (n > MAX_INDEX) return false;
  // The index's highest bits, as far as the number of that index is a machine word.
  int bit = 0;
  while (n >> bit > MAX_WORD_INDEX) ++bit;
  const auto [word_f, word_g] = word_fibonacci(n >> bit);
  Magnitude f(word_f);
  Magnitude g(word_g);
  bool k_is_odd = ((n >> bit) & 1) != 0;
  for (--bit; bit >= 1; --bit) {
    const bool bit_is_set = ((n >> bit) & 1) != 0;
    double_index(f, g, k_is_odd, bit_is_set);
    k_is_odd = bit_is_set;
  }
  if (n % 2 == 0) {
    multiply_add(g, 2, 0);
    add(g, f);
    multiply(r, f, g);
  } else {
    multiply_add(f, 2, 0);
    Magnitude sum = f;
    add(sum, g);
    subtract(f, g);
    multiply(r, sum, f);
    add_or_subtract_two(r, k_is_odd);
  }
  return true;
}

}  // namespace omrel
