#include "bignum/magnitude/factorial.h"

#include <array>
#include <cstdint>
#include <utility>

namespace omrel {
namespace {

// More than any whose factorial fits: n! > (n / e)^n, which for n = MAX_DIGITS / 2 has MAX_DIGITS
// digits when n / e > 100.
constexpr int MAX_FACTORIAL = MAX_DIGITS / 2;
static_assert(MAX_FACTORIAL > 272 && MAX_FACTORIAL < 1 << 16);

// In order, then zeros, by the sieve of Eratosthenes.
constexpr auto PRIMES = [] {
  std::array<std::uint16_t, MAX_FACTORIAL / 4> primes{};  // there are fewer from 272 on
  std::array<bool, MAX_FACTORIAL + 1> is_composite{};
  std::size_t count = 0;
  for (std::size_t n = 2; n <= MAX_FACTORIAL; ++n) {
    if (is_composite[n]) continue;
    primes[count++] = static_cast<std::uint16_t>(n);
    for (std::size_t m = n * n; m <= MAX_FACTORIAL; m += n) is_composite[m] = true;
  }
  return primes;
}();
static_assert(PRIMES.back() == 0);

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
    if (p == 0 || p > bound) break;
    Limb power = 1;
    for (unsigned q = bound / p; q > 0; q /= p) power *= q % 2 != 0 ? p : 1;
    if (power > 1) product.take(power);
  }
  product.finish();
}

}  // namespace

void factorial(Binary& r, int n) {
  r.limb()[0] = 1;
  r.trim(1);
  Limb factor = 1;
  for (Limb i = 2; i <= static_cast<Limb>(n); ++i) {
    Limb product = 0;
    if (__builtin_mul_overflow(factor, i, &product)) {
      multiply(r, factor);
      product = i;
    }
    factor = product;
  }
  multiply(r, factor);
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
    swing(rest, n >> halvings);
    if (!square(squared, r) || !multiply(r, squared, rest)) return false;
  }
  return true;
}

}  // namespace omrel
