// Calls judged by GMP, drawn at random and of odd operands.
#include <gmpxx.h>

#include <cfenv>

#include "bignum/bignum.h"
#include "commands/operator_table.h"
#include "tests/recording_host.h"

namespace omrel::test {
namespace {

constexpr unsigned SEED = 20240229;

// Makes a call, if GMP has an answer, which is wanted; a word that updates finds its first operand
// in a variable. How many were made.
int check(Words words) {
  static RecordingHost host;
  const std::string first = words[2];
  if (updates(words[1])) words[2] = "x";
  const std::string wanted = answer_by_gmp(words, first).value_or(ENDS);
  if (wanted == ENDS) return 0;
  host.set("x", first);
  const std::string got = host.call(words).result.value_or("untouched");
  const bool is_stored = updates(words[1]) && wanted != GUARD;
  EXPECT_TRUE(got == wanted && host.get("x") == (is_stored ? wanted : first))
      << printable(words) << "\ngot    " << got.substr(0, 200) << "\nwanted "
      << wanted.substr(0, 200) << "\nseed   " << SEED;
  return 1;
}

// Each of the words with the operands; the binary digits of the first for the one that reads such.
void check_each(const std::string& words, const mpz_class& a, const std::string& b = "") {
  for (const std::string& word : split(words)) {
    Words call{"big", word, a.get_str(word == "bintoint" ? 2 : 10), b};
    if (takes_one(word)) call.pop_back();
    EXPECT_EQ(check(call), 1) << printable(call);
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
  std::mt19937 generator(SEED);
  int count = 0;
  for (int i = 0; i < 20000; ++i) count += check(drawn_call(generator));
  EXPECT_GT(count, 15000);
}

INSTANTIATE_TEST_SUITE_P(Modes, Differential,
                         ::testing::Values(std::pair(FE_TONEAREST, 3), std::pair(FE_DOWNWARD, 2),
                                           std::pair(FE_UPWARD, 0), std::pair(FE_TOWARDZERO, 2)));

// Every pair of these, by every word; again step by step, which a trace shows.
TEST(Differential, OddOperands) {
  const Words operands = split(R"(0 -0 1 -1 2 -3 5 -7 0^40 -000 007 -20 64 10^18 -10^20 10^17_1 7^40
    -7^40 -10^20_7 0^3300_5 1^20 576460752303423488 33109999999998 9^32 -10^31
    -870099980000000000000000001)");
  int count = 0;
  capture_output([&] {
    for (const int traced : {0, 1}) {
      debug_switch = traced;
      for (const std::string& a : operands) {
        for (const std::string& b : operands) {
#define OMREL_ROW(word, admitted, function)                                           \
  count += check(takes_one(word) ? Words{"big", word, a} : Words{"big", word, a, b}); \
  count += check({"big", word, a, b, "3"});
          OMREL_OPERATORS(OMREL_ROW)
        }
      }
    }
  });
  debug_switch = 0;
  EXPECT_GT(count, 80000);
}

mpz_class power(const mpz_class& base, unsigned n) {
  mpz_class r;
  mpz_pow_ui(r.get_mpz_t(), base.get_mpz_t(), n);
  return r;
}

TEST(Extremes, LongestPowersEveryFactorialAndFibonacciNumber) {
  for (const char* n : {"6809", "6810"}) check_each("**", -9, n);
  check_each("<<", 2, "21588");
  check_each("pow2", 21589);
  check_each("inttobin bintoint", power(2, 21589));
  for (int n = 1; n < 50; ++n) check_each("<< >>", power(10, 6483) - 1, std::to_string(n));
  for (unsigned n = 1; n < 300; ++n) {
    const mpz_class nines = power(10, n) - 1;
    const auto bits = static_cast<unsigned>(mpz_sizeinbase(nines.get_mpz_t(), 2));
    for (const unsigned by : {bits - 1, bits}) check_each(">>", nines, std::to_string(by));
    for (const int step : {-1, 0}) check_each("inttobin bintoint ~", power(2, n) + step);
    const mpz_class root = power(2, n) - 1;
    for (const int step : {-1, 0, 1}) check_each("sqrt", root * root + step);
  }
  EXPECT_EQ(check({"big", ">>", std::string(300, '0') + "5", "1", "200"}), 1);
  // Where a conversion takes another way, and where its blocks meet.
  for (const unsigned n : {504U, 505U, 1600U, 1601U}) check_each("inttobin ~", power(10, n) - 1);
  for (const unsigned n : {1664U, 3840U, 5616U, 11232U, 14080U, 16848U}) {
    for (const int step : {-1, 0, 1}) check_each("inttobin bintoint ~", power(2, n) + step);
  }
  for (int n = 1; n <= 30000; ++n) {
    if (n <= 1000) check_each("fact", n);
    if (n <= 300 || n % 97 == 0 || n > 29900) check_each("fib", n);
  }
}

}  // namespace
}  // namespace omrel::test
