#include "bignum/magnitude_power.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"
#include "bignum/power_table.h"

namespace omrel {
namespace {

bool fits(const Magnitude& m) {
  return m.count() * LIMB_DIGITS < MAX_DIGITS || digit_count(m) < MAX_DIGITS;
}

// Raises *now, the base to the power that n has without its lowest bits, to the power n, and
// returns where that is: each product goes from one of the two magnitudes to the other.
// `times_base` multiplies *now by the base, and may exchange the two.
template <class TimesBase>
const Magnitude* raise(Magnitude* now, Magnitude* next, int n, int bits_left,
                       const TimesBase& times_base) {
  while (--bits_left >= 0) {
    if (!square(*next, *now)) return nullptr;
    std::swap(now, next);
    if (((n >> bits_left) & 1) != 0 && !times_base(now, next)) return nullptr;
  }
  return fits(*now) ? now : nullptr;
}

constexpr int MAX_FACTORIAL = 2229;  // its factorial has 6,497 digits, the next one 6,501

constexpr auto PRIMES = [] {
  std::array<std::uint16_t, 331> primes{};
  std::size_t count = 0;
  for (int n = 2; n <= MAX_FACTORIAL; ++n) {
    const auto divides = [n](int p) { return n % p == 0; };
    const auto end = primes.begin() + count;
    if (std::none_of(primes.begin(), end, divides)) primes[count++] = static_cast<std::uint16_t>(n);
  }
  return primes;
}();
static_assert(PRIMES.back() != 0);

// A product of many numbers, as many of which as fit make one factor.
class Product {
 public:
  explicit Product(Magnitude& r) : result(r) { result = Magnitude(1); }

  // number below 2^16
  void take(Limb number) {
    if (factor * number > MAX_FACTOR) multiply_add(result, std::exchange(factor, Limb{1}), 0);
    factor *= number;
  }
  void finish() { multiply_add(result, factor, 0); }

 private:
  Magnitude& result;
  Limb factor = 1;
};

// r = n! / (floor(n / 2)!)^2. A prime's exponent is the number of odd ones among floor(n / p),
// floor(n / p^2) and so on; so its power is at most n.
void swing(Magnitude& r, int n) {
  Product product(r);
  for (const unsigned p : PRIMES) {
    const auto bound = static_cast<unsigned>(n);
    if (p > bound) break;
    Limb power = 1;
    for (unsigned q = bound / p; q > 0; q /= p) power *= q % 2 != 0 ? p : 1;
    if (power > 1) product.take(power);
  }
  product.finish();
}

// m += 2 (-1)^k
void add_or_subtract_two(Magnitude& m, bool k_is_odd) {
  const Magnitude two(2);
  if (k_is_odd) {
    subtract(m, two);
  } else {
    add(m, two);
  }
}

// out = f_factor * ff + g_factor * gg + constant, from columns below 2 * 10^18 and small factors.
struct Combination {
  int f_factor;
  int g_factor;
  int constant;
};

void combine(Magnitude& out, const Limb* ff, const Limb* gg, int count, Combination c) {
  constexpr Limb OFFSET = 50'000'000'000;  // OFFSET * LIMB_BASE exceeds any negative sum
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
  out.set_count(count + 1);
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

WordPower word_power(Limb base, int n) {
  if (base < 2) return {base, 0};
  WordPower p = {base, 31 - __builtin_clz(static_cast<unsigned>(n))};
  for (; p.bits_left > 0; --p.bits_left) {
    Limb next = 0;
    if (__builtin_mul_overflow(p.word, p.word, &next)) break;
    const bool bit_is_set = ((n >> (p.bits_left - 1)) & 1) != 0;
    if (bit_is_set && __builtin_mul_overflow(next, base, &next)) break;
    p.word = next;
  }
  return p;
}

const Magnitude* power(Magnitude& r, Magnitude& other, Limb base, int n, const WordPower& begun) {
  r = Magnitude(begun.word);
  return raise(&r, &other, n, begun.bits_left, [base](Magnitude* now, Magnitude*) {
    if (now->count() >= MAX_LIMBS - 1) return false;
    multiply_add(*now, base, 0);
    return true;
  });
}

const Magnitude* power(Magnitude& r, Magnitude& other, const Magnitude& base, int n) {
  r = base;
  if (base.count() == 0 || (base.count() == 1 && base.limb()[0] == 1)) return &r;
  const int bits_left = 31 - __builtin_clz(static_cast<unsigned>(n));
  return raise(&r, &other, n, bits_left, [&base](Magnitude*& now, Magnitude*& next) {
    std::swap(now, next);
    return multiply(*now, *next, base);
  });
}

bool power_of_two(Magnitude& r, int n) {
  if (n > MAX_EXPONENT_OF_TWO) return false;
  int doublings = 0;  // of the exponent
  while (n >> doublings >= POWER_OF_TWO_COUNT) ++doublings;
  const PowerOfTwo& text = PowerOfTwoTable[static_cast<unsigned>(n >> doublings)];
  char digits[POWER_OF_TWO_DIGITS + 8];
  const auto length = static_cast<int>(std::strlen(text.data()));
  reverse_into_buffer(digits, text.data(), length);
  load(r, digits, length, 0);
  while (--doublings >= 0) {
    const Magnitude root = r;
    square(r, root);
    if (((n >> doublings) & 1) != 0) add(r, r);
  }
  return true;
}

// From the factorial of half the number, of half of that and so on (P. Luschny, Swing, divide and
// conquer the factorial, 2008): half the work is squaring.
bool factorial(Magnitude& r, int n) {
  constexpr int FEW = 100;
  if (n > MAX_FACTORIAL) return false;
  int halvings = 0;
  while (n >> halvings > FEW) ++halvings;
  Product product(r);
  for (int i = 2; i <= n >> halvings; ++i) product.take(static_cast<Limb>(i));
  product.finish();
  Magnitude squared;
  Magnitude rest;
  while (--halvings >= 0) {
    square(squared, r);
    swing(rest, n >> halvings);
    multiply(r, squared, rest);
  }
  return true;
}

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
  constexpr double LOG10_GOLDEN_RATIO = 0.20898764024997873;
  if (n * LOG10_GOLDEN_RATIO >= MAX_DIGITS) return false;
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
  return fits(r);
}

}  // namespace omrel
