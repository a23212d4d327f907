// Random calls judged by GMP. Operands run long in 0s and 9s, and their lengths lie next to limb
// boundaries and to the capacity.
#include <gmpxx.h>

#include <algorithm>
#include <cfenv>
#include <random>
#include <utility>

#include "bignum/bignum.h"
#include "commands/operator_table.h"
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

// Makes a call, if GMP has an answer, which is wanted; a word that updates finds its first operand
// in a variable. Whether there was one.
bool check(const std::string& word, const Words& operands) {
  static RecordingHost host;
  Words words{"big", word};
  words.insert(words.end(), operands.begin(), operands.end());
  if (updates(word)) words[2] = "x";
  const std::string wanted = answer_by_gmp(words, operands[0]).value_or(ENDS);
  if (wanted == ENDS) return false;
  host.set("x", operands[0]);
  const std::string got = host.call(words).result.value_or("untouched");
  const bool is_stored = updates(word) && wanted != GUARD;
  EXPECT_TRUE(got == wanted && host.get("x") == (is_stored ? wanted : operands[0]))
      << printable(words) << "\ngot    " << got.substr(0, 200) << "\nwanted "
      << wanted.substr(0, 200) << "\nseed   " << SEED;
  return true;
}

// Each of the words with the operands; the binary digits of the first for the one that reads such.
void check_each(const std::string& words, const std::vector<Integer>& operands) {
  Words texts;
  for (const Integer& operand : operands) texts.push_back(operand.get_str());
  for (const std::string& word : split(words)) {
    texts[0] = operands[0].get_str(word == "bintoint" ? 2 : 10);
    EXPECT_TRUE(check(word, texts)) << word << printable(texts);
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
      check_each("+ - += -= == != < > <= >= && || max min", {a, other});
    }
    check_each("++ -- ! ~ abs is_even div2 div10", {a});
    for (const Integer& dividend : {a, multiple}) {
      check_each("/ % fmod /=", {dividend, d});
      if (digits(d) <= LIMIT - 60) check_each("fdiv", {dividend, d});
    }
    const Integer factor = integer(limit - 1);
    check_each("* *=", {factor, limit == LIMIT ? integer(LIMIT + 1 - digits(factor)) : a});
    const Integer side = integer(limit / 2);
    check_each("* *=", {side, side});
    const Integer base = integer(1 + below(limit)), root = natural(limit / 2);
    const int n = below(LIMIT / digits(base) + 1), bits = below(3 * limit / 2);
    check_each("** pow", {base, n});
    check_each("pow2", {n * 3});
    check_each("sqrt", {root * root + (root > 0 ? below(3) - 1 : 0)});
    const Integer u = integer(limit / 2), v = integer(limit / 2);
    check_each("& | ^ &= |= ^=", {u, v});
    check_each("& | &= |=", {u, v, bits + 1});
    check_each("<< >>", {u, bits});
    check_each("<< >>", {u, below(70)});
    check_each("<< >>", {u, bits, bits + 9});
    check_each("inttobin bintoint", {root});
    check_each("mean", {a, b, integer(limit)});
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, Differential,
                         ::testing::Values(std::pair(FE_TONEAREST, 3), std::pair(FE_DOWNWARD, 2),
                                           std::pair(FE_UPWARD, 0), std::pair(FE_TOWARDZERO, 2)));

// Every pair of these and a few more, by every word; again step by step, which a trace shows.
TEST(Differential, OddOperands) {
  Words operands = split(R"(0 -0 1 -1 2 -3 5 -7 00 -000 007 -20 64 10^18 -10^20 10^17_1 7^40
    -7^40 -10^20_7 0^3300_5 1^20 576460752303423488)");
  for (int i = 0; i < 8; ++i) operands.push_back(integer(40).get_str());
  int count = 0;
  capture_output([&] {
    for (const int traced : {0, 1}) {
      debug_switch = traced;
      for (const std::string& a : operands) {
        for (const std::string& b : operands) {
#define OMREL_ROW(word, admitted, function) \
  count += check(word, takes_one(word) ? Words{a} : Words{a, b}) + check(word, {a, b, "3"});
          OMREL_OPERATORS(OMREL_ROW)
        }
      }
    }
  });
  debug_switch = 0;
  EXPECT_GT(count, 120000);
}

TEST(Extremes, LongestPowersEveryFactorialAndFibonacciNumber) {
  for (const int n : {6809, 6810}) check_each("**", {-9, n});
  check_each("<<", {2, 21588});
  check_each("pow2", {21589});
  check_each("inttobin bintoint", {power(2, 21589)});
  for (int n = 1; n < 50; ++n) check_each("<< >>", {power(10, 6483) - 1, n});
  for (unsigned n = 1; n < 300; ++n) {
    const Integer nines = power(10, n) - 1;
    const auto bits = static_cast<unsigned>(mpz_sizeinbase(nines.get_mpz_t(), 2));
    for (const unsigned by : {bits - 1, bits}) check_each(">>", {nines, by});
    for (const int step : {-1, 0}) check_each("inttobin bintoint ~", {power(2, n) + step});
  }
  for (int n = 1; n <= 30000; ++n) {
    if (n <= 1000) check_each("fact", {n});
    if (n <= 300 || n % 97 == 0 || n > 29900) check_each("fib", {n});
  }
}

}  // namespace
}  // namespace omrel::test
