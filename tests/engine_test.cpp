// What a caller of the engine sees beyond the answer: sign flags left behind, stored digits,
// remainder texts, the trace of a search, the order of random draws.
#include "bignum/bignum.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "bignum/magnitude/rows.h"
#include "bignum/random.h"
#include "support/text.h"
#include "tests/recording_host.h"

namespace omrel::test {
namespace {

std::string shown(const bignum& b) { return HeapText(b.to_string()).get(); }

// The result of an operation, and what it has left of its operand.
std::string shown(const bignum& result, const bignum& operand) {
  return shown(result) + " " + shown(operand);
}

bignum value(const std::string& text) {
  soil_buffers();
  return bignum(text == "{}" ? "" : text.c_str(), 0);
}

// Run alone, this leaves the first seeding, from the clock, to draws that are only counted.
TEST(Random, SeedsAndOutputs) {
  using Time = platform::TimeOfDay;
  bool is_fresh = ::testing::UnitTest::GetInstance()->test_to_run_count() == 1;
  for (const auto& [time, seed] : {std::pair{Time{9, 34, 56, 789}, 790U * 57 * 2100},
                                   {Time{9, 0, 0, 0}, 60U},
                                   {Time{}, 5489U}}) {
    recording_platform.utc_time = time;
    std::mt19937 judge(seed);
    if (is_fresh) judge.discard(65535), bignum(0).rnd(bignum(50), bignum(40));
    if (!is_fresh) mt_randomize(seed == 5489 ? seed : 0);
    is_fresh = false;
    for (int i = 0; i < 1500; ++i) {
      EXPECT_EQ(mt_range(5, 5), 5);  // draws nothing
      EXPECT_EQ(mt_range(INT32_MAX - 1, 0), judge() % INT32_MAX) << seed;
    }
  }
  EXPECT_EQ(mt_range(INT32_MIN, INT32_MAX), 0);
}

// Draws digits until they, or all but the last, lie between the bounds; none is just below 0.
std::string drawn(std::mt19937& judge, const std::string& low, const std::string& high) {
  const auto fits = [&](const std::string& text) {
    const double v = text.empty() ? -0.5 : std::stod(text);
    return std::stod(low) <= v && v <= std::stod(high);
  };
  const std::size_t width = high.size() > low.size() ? high.size() - low.size() : 1;
  for (int attempts = 0; attempts < 65535; ++attempts) {
    std::string text(width == 1 ? 1 : 1 + judge() % width, '0');
    for (char& digit : text) digit = static_cast<char>('0' + judge() % 10);
    if (!fits(text)) text.pop_back();
    if (fits(text)) return text.empty() ? "0" : text;
  }
  return "0";
}

TEST(Random, ValuesFollowTheDraws) {
  std::mt19937 judge(1);
  mt_init(1);
  std::istringstream bounds("1 6  0 100  -5 5  -500 5  2 123456789  3 00012  50 60  95 10000");
  for (std::string low, high; bounds >> low >> high;) {
    const bool is_empty = low == "50";  // then the lower bound is returned, the object is 0
    for (int i = 0; i < (is_empty ? 1 : 700); ++i) {
      bignum r(0);
      const std::string returned = shown(r.rnd(value(low), value(high)));
      const std::string wanted = shown(value(drawn(judge, low, high)));
      EXPECT_EQ(returned, is_empty ? low : wanted) << low << " " << high << ", draw " << i;
      EXPECT_EQ(shown(r), wanted) << low << " " << high << ", draw " << i;
    }
  }
}

TEST(Random, TheObjectMayBeABoundAndIsPadded) {
  mt_init(1);
  bignum low(100), full = value(std::string(6499, '9'));
  low.rnd(low, bignum(600));  // its digits are cleared first: a bound without any
  EXPECT_NE(low.vlstr[0], '\0');
  std::fill_n(full.vlstr, BUFFER_BYTES, '7');
  full.rnd(bignum(7), bignum(7));
  EXPECT_EQ(std::count(full.vlstr + 1, full.vlstr + 6504, '\0'), 6503);
}

TEST(Values, SignOfTheLeftOperandAfterASumAndADifference) {
  // a, b, a + b, a afterwards, a - b, a afterwards.
  std::istringstream rows(R"(-5 3 -2 5 -8 -5  3 -5 -2 -3 8 3  -5 -3 -8 -5 -2 5  -5 5 0 5 -10 -5
      3 5 8 3 -2 -3  5 3 8 5 2 5  -1 -0 -1 -1 -1 1  -0 -0 0 0 0 0  -0 0 0 0 0 0  0 -0 0 0 0 0
      0 1 1 0 -1 -0  -3 5 2 3 -8 -3  5 -3 2 5 8 5  {} 0 0 0 -0 -0  - {} 0 0 0 -0  0 {} 0 0 0 0
      -x5 3 -2 x5 -8 -x5)");
  for (std::string a, b, sum, left, difference, rest;
       rows >> a >> b >> sum >> left >> difference >> rest;) {
    bignum x = value(a), y = value(a);
    EXPECT_EQ(shown(x + value(b), x), sum.append(" ").append(left)) << a << " + " << b;
    EXPECT_EQ(shown(y - value(b), y), difference.append(" ").append(rest)) << a << " - " << b;
  }
  bignum a(-5);
  EXPECT_EQ(shown(a + a, a), "-10 -5");
  EXPECT_EQ(shown(a - a, a), "0 5");
}

// The digits as they are stored, lowest first, and the sign.
std::string stored(const bignum& b) {
  EXPECT_EQ(std::string(b.vlstr).size(), static_cast<std::size_t>(b.length));
  return std::string(b.vlstr) + (b.negative != 0 ? "- " : " ");
}

TEST(Values, StoredDigitsAndTheirOrder) {
  const bignum nothing, minus = value("-");
  bignum shifted = value("-12"), full = value("1" + std::string(6498, '0'));
  std::string texts;
  for (const bignum& b :
       {value("-0042.9"), bignum(INT32_MIN), bignum("7", 1), bignum("+7", 1), bignum("", 1),
        value("100") - value("99"), value("5") + value("0005"), value("007") * value("-03"),
        nothing * value("123"), value("123") * nothing, value("-98").multiply_digit(9),
        value("9").multiply_digit(0), value("-15").div10(), shifted.shift_digits(2), shifted,
        value("1").div2(), nothing % value("7")}) {
    texts += stored(b);
  }
  EXPECT_EQ(texts, "2400- 8463847412- 7- 7  100 0100 1200- 00 0 288 0 1- 0021- 0021- 0 0 ");
  EXPECT_EQ(full.shift_digits(1).length, 6499);
  EXPECT_EQ(compare_digits(nullptr, "1") + compare_signed("21", 1, "3", 1), -1);
  EXPECT_EQ(compare_digits("1", nullptr) + compare_signed("2", 1, "3", 0), -1);
  EXPECT_EQ(compare_signed("2", 0, "3", 1) + shifted.compare(bignum(2), bignum(1)), 2);
  EXPECT_EQ(compare_signed("02", 0, "3", 0), 1);
  EXPECT_EQ(compare_digits("", "00") * 10 + compare_digits("00", ""), -9);
  // Not a byte behind a text is read, which the sanitizer sees.
  const HeapText one(::strdup("10")), ten(::strdup("0100"));
  EXPECT_EQ(compare_digits(one.get(), "1") * 10 + compare_digits("1", ten.get()), -1);
  // More than are kept for reuse, and what they leave in those.
  EXPECT_EQ(std::vector<bignum>(20, value(std::string(60, '7'))).size(), 20U);
  EXPECT_EQ(stored(value("1111") * value("11111")), "12344321 ");
  // An empty value takes only its length and sign along; the characters stay.
  EXPECT_EQ(shown(full = minus).size() + static_cast<std::size_t>(full.length), 6500U);
}

TEST(Values, WhatNoWordAsksFor) {
  bignum seven(7), nothing;
  const bignum &same = seven, minus = value("-");
  EXPECT_EQ(shown(seven = same) + shown(nothing = minus), "7-0");
  seven.set_remainder("");
  EXPECT_EQ(std::string(seven.get_remainder().vlstr), "0");
  EXPECT_EQ(shown(bignum::bintoint(nullptr)) + shown(value("-7") % value("0")), "0-0");
  EXPECT_EQ(bignum::fact(2229).length, 6497);
  for (const auto& [function, n] : {std::pair{&bignum::fact, 2230}, {&bignum::fib, 31102}}) {
    const auto call = [f = function, i = n] { return f(i).length; };
    EXPECT_EXIT(end_with(call), ::testing::ExitedWithCode(0), "ERROR Overflow");
  }
}

TEST(Values, OneMovedFromHasNoDigits) {
  bignum a = value("12x"), b(std::move(a));
  std::string all = shown(a) + shown(a.div2()) + shown(a.mul2()) + shown(~a) + shown(a * b);
  EXPECT_EQ(all + shown(a + b) + shown(b - a) + shown(a.div10()), "000001201200");
  EXPECT_TRUE(a < bignum(0) && a == bignum() && a.plain && !a.is_even());
  EXPECT_EQ(shown(a = b), "12x");
}

TEST(Division, RemainderTexts) {
  std::istringstream rows(R"(100 7 14 2  5 1 5 none  5 -1 -5 0  9 9 1 none  -9 -9 1 none  9 -9 -1 0
      0 7 0 none  -0 7 0 none  3 7 0 3  007 8 0 7  -1 -2 0 -1  1 -2 0 1  -3 7 0 3  -0 -5 0 -0
      {} 7 0 0  - 7 0 none  -7 2 -3 1  -7 -2 3 1  1000000000000000000 3 333333333333333333 1)");
  for (std::string a, d, q, r; rows >> a >> d >> q >> r;) {
    const bignum dividend = value(a), quotient = dividend / value(d);
    EXPECT_EQ(shown(quotient), q) << a << " / " << d;
    EXPECT_EQ(quotient.remainder_text == nullptr ? "none" : quotient.remainder_text, r) << a << d;
    EXPECT_EQ(shown(dividend), shown(value(a)));
  }
  bignum q = bignum(100) / bignum(7), copy(0);
  copy = q;
  const bignum kept = copy / bignum(1);  // a copy of the dividend, remainder text and all
  // A value newly made carries none; the remainder by 1 is what the dividend carries.
  const bignum one(1), longer = value(std::string(40, '7')) / bignum(10);
  for (const bignum& x : {copy, longer}) {
    EXPECT_EQ((x % value(std::string(50, '7'))).remainder_text, nullptr);
    EXPECT_EQ(x.remainder(value(std::string(50, '7'))).remainder_text, nullptr);
    EXPECT_EQ(x.quotient(one).remainder_text, nullptr);
    EXPECT_EQ(shown(x.remainder(one)), x.remainder_text);
  }
  q.set_remainder("3");
  copy.set_remainder(nullptr);
  EXPECT_EQ(shown(kept.get_remainder()) + shown(q.get_remainder()) + shown(copy.get_remainder()),
            "230");
}

// The marks of a division, whose answers and whose remainder must be those without a trace.
std::string traced(const std::string& a, const std::string& d) {
  std::string answers[2], marks;
  for (const int on : {0, 1}) {
    debug_switch = on;
    const bignum x = value(a), y = value(d);
    bignum q;
    marks = capture_output([&] { q = x / y; });
    capture_output([&] { answers[on] = shown(x % y) + " " + shown(q, q.get_remainder()); });
    debug_switch = 0;
  }
  EXPECT_EQ(answers[1], answers[0]) << a << " / " << d;
  return marks;
}

TEST(Division, TheTraceShowsTheSearchAndEndsAtTheSameAnswer) {
  const RecordingHost reset;
  const std::map<char, std::string> colours{
      {'d', "13"}, {'b', "11"}, {'D', "14"}, {'u', "10"}, {'1', "15"}};
  const Words rows = split(R"(100 -7 dddbDuDuuDuDu1 (1)  012 3 dddb {}  -3 7 dbDDuDuD {}  3 7 {} {}
      70 12 dbDDDDuuDuDu1 (1)  18041286016 64 dddbDuuDDDu^27_1111 (4)  -0 7 {} {}  5 1 {} {})");
  for (std::size_t i = 0; i < rows.size(); i += 4) {
    std::string marks;
    for (const char step : rows[i + 2]) marks += "{" + colours.at(step) + "}\xFE{7}";
    if (!rows[i + 3].empty()) marks += "{15}" + rows[i + 3] + "{7}";
    if (!marks.empty()) marks += "\r\n";
    EXPECT_EQ(traced(rows[i], rows[i + 1]), marks) << rows[i] << " / " << rows[i + 1];
  }
  // Products too long for any dividend; and the cap on single steps, which ends a search early.
  traced("-" + std::string(5000, '3'), std::string(5000, '7'));
  EXPECT_NE(traced(std::string(6000, '9'), "2").find("(9000)"), std::string::npos);
  debug_switch = 1;
  EXPECT_NE(RecordingHost().run({"big", "fdiv", "100", "7"}).output, "");
  debug_switch = 0;
}

// One version is chosen on this machine, and judged by every product; another one on others.
TEST(Rows, EveryVersionAddsTheSameProducts) {
  constexpr int ROOM = 64;
  std::mt19937 generator(8);
  for (int count = 1; count < 40; ++count) {
    Limb lanes[ROOM] = {}, m[ROWS], before[ROOM];
    std::generate_n(lanes + ROW_PADDING, count, generator);
    std::generate_n(m, ROWS, generator);
    std::generate_n(before, ROOM, generator);
    std::set<std::vector<Limb>> sums, limbs;
    for (const VectorFunctions& version : vector_versions()) {
      std::vector<Limb> columns(before, before + ROOM);
      version.add_rows(columns.data(), lanes + ROW_PADDING, count, m);
      sums.insert(columns);
      version.settle(columns.data(), columns.data(), count);
      version.carry(columns.data(), count);
      limbs.insert({columns.begin(), columns.begin() + count});
    }
    EXPECT_EQ(sums.size(), 1U) << count;
    EXPECT_EQ(limbs.size(), 1U) << count;
  }
}

}  // namespace
}  // namespace omrel::test
