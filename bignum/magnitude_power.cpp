#include "bignum/magnitude_power.h"

#include <cmath>

#include "bignum/bignum.h"

namespace omrel {
namespace {

// A number that is surely at most the logarithm to base ten, and hardly less.
double low_log10(const Magnitude& m) {
  const int top = m.count() - 1;
  double leading = static_cast<double>(m.limb()[top]);
  if (top > 0) leading += static_cast<double>(m.limb()[top - 1]) / static_cast<double>(LIMB_BASE);
  return std::log10(leading) + LIMB_DIGITS * top - 1e-9;
}

bool fits(const Magnitude& m) { return digit_count(m) < MAX_DIGITS; }

// The product of the numbers from low to high, which is not empty.
bool product_of_range(Magnitude& r, int low, int high) {
  if (high - low < 16) {
    r = Magnitude(static_cast<Limb>(low));
    for (int i = low + 1; i <= high; ++i) multiply_add(r, static_cast<Limb>(i), 0);
    return true;
  }
  const int middle = low + (high - low) / 2;
  Magnitude lower;
  Magnitude upper;
  return product_of_range(lower, low, middle) && product_of_range(upper, middle + 1, high) &&
         multiply(r, lower, upper);
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

// From f = F(k), g = F(k - 1) to the same for 2k, or for 2k + 1.
void double_index(Magnitude& f, Magnitude& g, bool k_is_odd, bool plus_one) {
  Magnitude ff;
  Magnitude gg;
  square(ff, f);
  square(gg, g);
  g = ff;
  add(g, gg);  // F(2k - 1)
  f = ff;
  multiply_add(f, 4, 0);
  subtract(f, gg);
  add_or_subtract_two(f, k_is_odd);  // F(2k + 1)
  if (plus_one) {
    ff = f;
    subtract(ff, g);
    g = ff;
  } else {
    subtract(f, g);
  }
}

}  // namespace

bool power(Magnitude& r, const Magnitude& base, int n) {
  r = base;
  if (base.is_zero() || n == 1 || (base.count() == 1 && base.limb()[0] == 1)) return true;
  if (low_log10(base) * n >= MAX_DIGITS - 1) return false;
  // From the exponent's highest bit down: r = base^(the bits so far).
  Magnitude next;
  for (int bit = 30 - __builtin_clz(static_cast<unsigned>(n)); bit >= 0; --bit) {
    if (!square(next, r)) return false;
    if (((n >> bit) & 1) == 0) {
      r = next;
    } else if (base.count() == 1) {
      r = next;
      if (r.count() >= MAX_LIMBS - 1) return false;
      multiply_add(r, base.limb()[0], 0);
    } else if (!multiply(r, next, base)) {
      return false;
    }
  }
  return fits(r);
}

bool factorial(Magnitude& r, int n) {
  r = Magnitude(1);
  if (n < 2) return true;
  if (std::lgamma(n + 1.0) >= MAX_DIGITS * std::log(10.0)) return false;
  return product_of_range(r, 2, n) && fits(r);
}

// By doubling, with two squares a step (D. Takahashi, A fast algorithm for computing large
// Fibonacci numbers, Information Processing Letters 75, 2000). With f = F(k) and g = F(k - 1):
//   F(2k - 1) = f^2 + g^2,  F(2k + 1) = 4 f^2 - g^2 + 2 (-1)^k,  F(2k) = their difference,
// and the last step needs one product alone:
//   F(2k) = f (f + 2 g),  F(2k + 1) = (2 f + g) (2 f - g) + 2 (-1)^k.
bool fibonacci(Magnitude& r, int n) {
  constexpr double LOG10_GOLDEN_RATIO = 0.20898764024997873;
  if (n * LOG10_GOLDEN_RATIO >= MAX_DIGITS) return false;
  r = Magnitude(1);
  if (n < 2) return true;
  Magnitude f(1);
  Magnitude g(0);
  bool k_is_odd = true;
  for (int bit = 30 - __builtin_clz(static_cast<unsigned>(n)); bit >= 1; --bit) {
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
