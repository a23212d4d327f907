// Random calls judged by GMP. Operands run long in 0s and 9s, and their lengths lie next to limb
// boundaries and to the capacity.
#include <gmpxx.h>

#include <algorithm>
#include <cfenv>
#include <random>
#include <utility>

#include "bignum/digit_text.h"
#include "tests/recording_host.h"

namespace omrel::test {
namespace {

using Integer = mpz_class;

constexpr unsigned SEED = 20240229;
constexpr int LIMIT = MAX_DIGITS - 2;
std::mt19937 generator(SEED);

int below(int n) { return static_cast<int>(generator() % static_cast<unsigned>(n)); }

Integer power(const Integer& base, unsigned long n) {
  Integer r;
  mpz_pow_ui(r.get_mpz_t(), base.get_mpz_t(), n);
  return r;
}

int digits(const Integer& n) { return static_cast<int>(Integer(abs(n)).get_str().size()); }

// A number of at most `limit` digits: runs of digits, or a neighbour of a power of two.
Integer natural(int limit) {
  const int boundary = 8 * below(limit / 8 + 1) + below(3);
  const int lengths[] = {below(20), boundary, limit - below(3), below(limit + 1)};
  const int length = std::clamp(lengths[below(4)], 1, limit);
  if (below(8) == 0) return power(2, static_cast<unsigned>(below(3 * length) + 1)) + (below(3) - 1);
  std::string text;
  while (static_cast<int>(text.size()) < length) {
    text.append(static_cast<unsigned>(1 + below(2) * below(30)), "0099123456789"[below(13)]);
  }
  return Integer(text.substr(0, static_cast<unsigned>(length)), 10);
}

Integer integer(int limit) { return natural(limit) * (1 - 2 * below(2)); }

// Calls each of the words with the operands; a word that updates finds the first in a variable.
void check(const std::string& words_text, const std::vector<Integer>& operands) {
  static RecordingHost host;
  Words words{"big", ""};
  for (const Integer& operand : operands) words.push_back(operand.get_str());
  const std::string first = words[2];
  host.set("x", first);
  for (const std::string& word : split(words_text)) {
    words[1] = word;
    words[2] = updates(word) ? "x" : word == "bintoint" ? operands[0].get_str(2) : first;
    const std::string wanted = answer_by_gmp(words, first).value_or("none");
    const std::string got = host.call(words).result.value_or("untouched");
    EXPECT_TRUE(!updates(word) || host.get("x") == wanted) << printable(words);
    host.set("x", first);
    EXPECT_TRUE(got == wanted) << printable(words) << "\ngot    " << got.substr(0, 200)
                               << "\nwanted " << wanted.substr(0, 200) << "\nseed   " << SEED;
  }
}

// A way in which a host may have left the floating-point units: to round so, and in 32 bits with
// the older one's results cut to so many bits (0: 24, 2: 53, 3: 64).
class Differential : public ::testing::TestWithParam<std::pair<int, int>> {
 protected:
  void SetUp() override {
    std::fesetround(GetParam().first);
#ifdef __i386__
    std::uint16_t control = 0;
    __asm__("fnstcw %0" : "=m"(control));
    control = static_cast<std::uint16_t>((control & ~0x300) | GetParam().second << 8);
    __asm__("fldcw %0" ::"m"(control));
#endif
  }
  void TearDown() override { std::fesetenv(FE_DFL_ENV); }
};

TEST_P(Differential, AgreesWithGmp) {
  for (int round = 0; round < 250; ++round) {
    const int limit = round % 2 == 0 ? LIMIT : 20;
    const Integer a = integer(limit), b = integer(limit), d = b == 0 ? Integer(7) : b;
    const Integer multiple = d * integer(std::max(limit - digits(d), 1)) + (below(3) - 1);
    for (const Integer& other : {b, Integer(a + (below(3) - 1))}) {
      check("+ - += -= == != < > <= >= && || max min", {a, other});
    }
    check("++ -- ! ~ abs is_even div2 div10", {a});
    for (const Integer& dividend : {a, multiple}) {
      check("/ % fmod /=", {dividend, d});
      if (digits(d) <= LIMIT - 60) check("fdiv", {dividend, d});
    }
    const Integer factor = integer(limit - 1);
    check("* *=", {factor, limit == LIMIT ? integer(LIMIT + 1 - digits(factor)) : a});
    const Integer side = integer(limit / 2);
    check("* *=", {side, side});
    const Integer base = integer(1 + below(limit)), root = natural(limit / 2);
    const int n = below(LIMIT / digits(base) + 1), bits = below(3 * limit / 2);
    check("** pow", {base, n});
    check("pow2", {n * 3});
    check("sqrt", {root * root + (root > 0 ? below(3) - 1 : 0)});
    const Integer u = integer(limit / 2), v = integer(limit / 2);
    check("& | ^ &= |= ^=", {u, v});
    check("& | &= |=", {u, v, bits + 1});
    check("<< >>", {u, bits});
    check("<< >>", {u, below(70)});
    check("<< >>", {u, bits, bits + 9});
    check("inttobin bintoint", {root});
    check("mean", {a, b, integer(limit)});
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, Differential,
                         ::testing::Values(std::pair(FE_TONEAREST, 3), std::pair(FE_DOWNWARD, 2),
                                           std::pair(FE_UPWARD, 0), std::pair(FE_TOWARDZERO, 2)));

TEST(Extremes, LongestPowersEveryFactorialAndFibonacciNumber) {
  for (const int n : {6809, 6810}) check("**", {-9, n});
  check("<<", {2, 21588});
  check("pow2", {21589});
  check("inttobin bintoint", {power(2, 21589)});
  for (int n = 1; n < 50; ++n) check("<< >>", {power(10, 6483) - 1, n});
  for (unsigned n = 1; n < 300; ++n) {
    const Integer nines = power(10, n) - 1;
    const auto bits = static_cast<unsigned>(mpz_sizeinbase(nines.get_mpz_t(), 2));
    for (const unsigned by : {bits - 1, bits}) check(">>", {nines, by});
    for (const int step : {-1, 0}) check("inttobin bintoint ~", {power(2, n) + step});
  }
  for (int n = 1; n <= 30000; ++n) {
    if (n <= 1000) check("fact", {n});
    if (n <= 300 || n % 97 == 0 || n > 29900) check("fib", {n});
  }
}

}  // namespace
}  // namespace omrel::test
