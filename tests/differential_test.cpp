// Random calls judged by GMP. Operands run long in 0s and 9s, and their lengths lie next to limb
// boundaries and to the capacity.
#include <gmpxx.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/recording_host.h"

namespace omrel::test {
namespace {

using Integer = mpz_class;

constexpr unsigned SEED = 20240229;
constexpr int LIMIT = 6498;
std::mt19937 generator(SEED);

int below(int n) { return static_cast<int>(generator() % static_cast<unsigned>(n)); }

int digits(const Integer& n) { return static_cast<int>(Integer(abs(n)).get_str().size()); }

Integer power(const Integer& base, int n) {
  Integer r;
  mpz_pow_ui(r.get_mpz_t(), base.get_mpz_t(), static_cast<unsigned long>(n));
  return r;
}

// A number of at most `limit` digits: runs of digits, or a neighbour of a power of two.
Integer natural(int limit) {
  const int boundary = 8 * below(limit / 8 + 1) + below(3);
  const int lengths[] = {below(20), boundary, limit - below(3), below(limit + 1)};
  const int length = std::clamp(lengths[below(4)], 1, limit);
  if (below(8) == 0) return power(2, below(3 * length) + 1) + (below(3) - 1);
  std::string text;
  while (static_cast<int>(text.size()) < length) {
    text.append(static_cast<unsigned>(1 + below(2) * below(30)), "0099123456789"[below(13)]);
  }
  return Integer(text.substr(0, static_cast<unsigned>(length)), 10);
}

Integer integer(int limit) { return natural(limit) * (1 - 2 * below(2)); }

std::string with_zero_sign(const Integer& n, bool negative) {
  return n == 0 && negative ? "-0" : n.get_str();
}

// n / d to a number of places.
std::string fixed(const Integer& n, const Integer& d, int places) {
  const auto count = static_cast<unsigned>(places);
  std::string text = Integer(abs(n) * power(10, places) / abs(d)).get_str();
  if (text.size() <= count) text.insert(0, count + 1 - text.size(), '0');
  return ((n < 0) != (d < 0) ? "-" : "") + text.insert(text.size() - count, ".");
}

void check(const char* word, const std::vector<Integer>& operands, const std::string& wanted) {
  static RecordingHost host;
  Words words{"big", word};
  for (const Integer& operand : operands) words.push_back(operand.get_str());
  if (word == std::string("bintoint")) words[2] = operands[0].get_str(2);
  const std::string got = host.run(words).result.value_or("untouched");
  const auto shortened = [](const std::string& text) {
    return text.size() < 200 ? text : text.substr(0, 99) + "..." + text.substr(text.size() - 99);
  };
  if (got == wanted) return;
  for (std::string& text : words) text = shortened(text);
  ADD_FAILURE() << ::testing::PrintToString(words) << "\ngot    " << shortened(got) << "\nwanted "
                << shortened(wanted) << "\nseed   " << SEED;
}

void check(const char* word, const std::vector<Integer>& operands, const Integer& wanted) {
  check(word, operands, wanted.get_str());
}

void check_sums(const Integer& a, const Integer& b) {
  check("+", {a, b}, a + b);
  check("-", {a, b}, a - b);
  check("==", {a, b}, a == b);
  check("<", {a, b}, a < b);
  check("max", {a, b}, a > b ? a : b);
  check("++", {a}, a + 1);
  check("--", {a}, a - 1);
  check("div2", {a}, abs(a) / 2);
  check("div10", {a}, with_zero_sign(a / 10, a < 0));
}

void check_division(const Integer& n, const Integer& d) {
  const Integer r = n % d;
  check("/", {n, d}, n / d);
  check("%", {n, d}, with_zero_sign(r, n < 0));
  check("fmod", {n, d}, n < 0 && d < 0 && n > d ? n : abs(r));
  if (digits(d) > LIMIT - 18) return;
  check("fdiv", {n, d}, fixed(n, d, r != 0 && abs(r) * power(10, 18) < d ? 36 : 18));
}

void check_powers(const Integer& base, const Integer& root, int n) {
  check("**", {base, n}, power(base, n));
  const Integer square = root * root + (root > 0 ? below(3) - 1 : 0);
  check("sqrt", {square}, sqrt(square));
  check("*", {root, root}, root * root);
  check("pow2", {n * 3}, power(2, n * 3));
}

void check_bits(const Integer& a, const Integer& b, int n) {
  const Integer bits = power(2, n);
  check("&", {a, b}, a & b);
  check("|", {a, b, n + 1}, (a | b) % (2 * bits));
  check("^", {a, b}, a ^ b);
  check("~", {a}, a == 0 ? Integer(1) : power(2, static_cast<int>(a.get_str(2).size())) - 1 - a);
  check(">>", {a, n}, a / bits);
  check("<<", {a, n, n + 9}, a * bits % (bits * 512));
  check("inttobin", {a}, "0b" + a.get_str(2));
  check("bintoint", {a}, a);
}

TEST(Differential, AgreesWithGmp) {
  for (int round = 0; round < 300; ++round) {
    const Integer a = integer(LIMIT), b = integer(LIMIT), d = b == 0 ? Integer(7) : b;
    const int room = std::max(LIMIT - digits(d), 1);
    check_sums(a, b);
    check_sums(a, a + (below(3) - 1));
    check_division(a, d);
    check_division(d * integer(room) + (below(3) - 1), d);
    const Integer factor = integer(LIMIT - 1), other = integer(LIMIT + 1 - digits(factor));
    check("*", {factor, other}, with_zero_sign(factor * other, (factor < 0) != (other < 0)));
    const Integer base = integer(20 + below(300));
    check_powers(base, natural(LIMIT / 2), below(LIMIT / digits(base)));
    check_bits(natural(LIMIT / 2), natural(LIMIT / 2), below(3 * LIMIT / 2));
    const Integer x = integer(LIMIT - 20), y = integer(LIMIT - 20), z = integer(LIMIT - 20);
    check("mean", {x, y, z}, fixed(x + y + z, 3, 18));
  }
}

TEST(Differential, LongestPowers) {
  check("**", {-9, 6810}, power(-9, 6810));
  check("<<", {2, 21588}, power(2, 21589));
  check("pow2", {21589}, power(2, 21589));
}

TEST(Differential, EveryFactorialAndFibonacciNumber) {
  Integer factorial = 1, f = 1, next = 1;
  for (int n = 1; n <= 30000; ++n, std::swap(f, next), next += f) {
    if (n <= 1000) check("fact", {n}, factorial *= n);
    if (n <= 300 || n % 97 == 0 || n > 29900) check("fib", {n}, f);
  }
}

}  // namespace
}  // namespace omrel::test
