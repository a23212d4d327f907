// Every operator word through the exported function. Whole numbers without oddities are left to the
// random calls of differential_test.cpp.
#include <sstream>

#include "bignum/bignum.h"
#include "tests/recording_host.h"

namespace omrel::test {
namespace {

const std::string GUARD_LINE = "lib omrel_bignum: Unhandled exception near line #\n";

std::string report(const std::string& message) {
  return "{12}\r\nException in [big] at line # (" + message + "){7}\n";
}

// Endings without an answer, by the names that tables give to them.
const std::map<std::string, std::string> ENDINGS{
    {"refused", "0 error " + report("Division by zero")},
    {"failed", GUARD + " error Error: big number division by zero\n" + GUARD_LINE},
    {"circles", GUARD + " error " + GUARD_LINE},
    {"fraction", "untouched error Error: big mean does not accept float values\r\n"},
    {"out-of-range", "untouched error big fib: Value 30001%s out of range\n"},
    {"too-big", "untouched error " + report("Argument too big")},
    {"barred", "untouched error " + report("Invalid variable")},
    {"no-variable", "untouched error " + report("Invalid variable argument")}};

// What ends the process has said.
const std::string TOO_LONG =
    "ERROR Overflow in big number > 6500 digits\nFatal error in big number constructor";

// What a table wants: an ending's name, or its text with # for the block, $ for the end of a line
// and _ for a blank.
std::string ending(const std::string& wanted) {
  if (ENDINGS.count(wanted) != 0) return ENDINGS.at(wanted);
  std::string text;
  for (const char c : wanted) {
    text += c == '#' ? "\xFE" : c == '$' ? "\r\n" : std::string(1, c == '_' ? ' ' : c);
  }
  return text;
}

// Runs calls written one after the other, "+ 5 -3 -> 2". The steps that a trace shows lead to the
// same answer.
void expect_answers(const std::string& table) {
  using ::testing::ExitedWithCode;
  Words words{"big"};
  const Words tokens = split(table);
  for (std::size_t i = 0; i < tokens.size(); words = {"big"}, ++i) {
    for (; tokens[i] != "->"; ++i) words.push_back(tokens[i]);
    if (tokens[++i] == "ends") {
      EXPECT_EXIT(end_with([&] { return RecordingHost().call(words).code; }), ExitedWithCode(0),
                  ::testing::Matcher<const std::string&>(TOO_LONG))
          << printable(words);
      continue;
    }
    const Outcome got = RecordingHost().run(words);
    EXPECT_EQ(ended(got), ending(tokens[i])) << printable(words);
    if (words[1] == "debug" || debug_switch != 0) continue;
    debug_switch = 1;
    EXPECT_EQ(RecordingHost().run(words).result, got.result) << "traced: " << printable(words);
    debug_switch = 0;
  }
}

TEST(Operators, TwoOperands) {
  expect_answers(R"(- {} 0 -> -0  + {} {} -> 0  + 1 2 3 -> 3  / 5 00 -> refused  % 5 0 -> refused
    / 5 (null) -> failed  % {} 7 -> 0)");
  // What stands behind a point is dropped; a character that is no digit counts as 0.
  expect_answers(R"(+ 12.99 -0.5 -> 12  - .5 +7. -> -7  + 1.2.3 1 -> 2  + +00042 0 -> 42
    + 1x2 0 -> 102  + --5 1 -> -4  * 1é2 3 -> 3006  - 1x 1y -> 0  % 3x 70 -> 30
    fmod -3x -70 -> -3x  fdiv 10 x1 -> 0.10^19  / 1 x -> failed  * 5 {} -> 0  * 5 x -> 0
    mean 5 x -> 2.50^17  fdiv x 5 -> 0.0^18)");
  // Characters compare as signed codes.
  expect_answers(R"(== 5 005.9 -> 1  < {} 0 -> 1  == {} {} -> 1  > - -0 -> 1  == 1x 1x -> 1
    < 1x 2x -> 1  < é 11 -> 1  > é è -> 1  abs -é -> é  max 1x 1y -> 1y  < 5 x -> 1)");
  // A quotient smaller than 18 places shows 36.
  expect_answers(R"(fdiv 1 -20 3 -> -0.050^16  fdiv 1 7^6490 -> 0.0^36
    mean 1 2 3 4 5 6 7 8 9 10 -> 5.50^17  mean 1 2.5 3 -> fraction  mean 1 2 3. -> fraction
    mean . 1 -> fraction)");
}

TEST(Operators, BitsAndPowers) {
  // A number without binary digits leaves the other one, a mask included.
  expect_answers(R"(& 255 1023 4 9 -> 15  & 12 10 x -> 8  & 12 10 -4 -> 8  & {} 6 -> 6
    | {} {} -> 0  << x 1 -> 0  << 1 4294967298 -> 4  << 00 2147483647 -> 0  << 1 (null) -> 1
    >> 9^6499 21600 -> 0  >> 9^6499 21589 -> 1  >> 8 -1 -> 8  >> 5 2147483647 -> 0
    >> x^20_524288 20 4 -> 0)");
  expect_answers(R"(pow 2 +10. -> 1024  ** 3 4294967298 -> 9  ** 2 -4294967294 -> 4  ** 2 x3 -> 1
    ** x1 9 -> 1  ** 1x 1 -> 1x  ** x 2 -> 0  ** 2 2147483648 -> 2  ** 2 %-3 -> 2
    ** 1 2147483647 -> 1  ** -1 2147483647 -> -1  rnd 7 7 -> 7  rnd 50 60 -> 0  rnd -10 -5 -> 0
    rnd 10 1 -> 0  rnd {} 5 -> 0  rnd 5 - -> 0)");
}

TEST(Operators, OneOperand) {
  // Roots of negative numbers: Newton's steps decide, or meet a zero divisor, or circle.
  expect_answers(R"(++ 9.9 -> 10  ++ {} -> 1  div2 {} -> 0  div10 {} -> 0  is_even {} -> 0
    fib 12abc -> 144  fib abc -> 0  fib -4294967286 -> 55  fib 30001%s -> out-of-range
    fact 1001 -> too-big  pow2 10.9 -> 1024  pow2 5x -> 32  pow2 %5 -> 32  pow2 % -> 1
    pow2 ++5 -> 32  pow2 +-5 -> 1  pow2 5- -> 32  pow2 !5 -> 1  bintoint 1x1 -> 5
    bintoint 1±1 -> 9  bintoint 1±1^70 -> 5902958103587056517119
    bintoint 1y1^70 -> 3541774862152233910271  bintoint 0^22000_11 -> 3  bintoint 0b101 -> 5
    bintoint 0B101 -> 5  bintoint {} -> 0  bintoint 0b -> 0  bintoint -12 -> 2  ~ (null) -> 0
    ! {} -> 0  sqrt -9 -> 1  sqrt -12345 -> 49  sqrt -1 -> failed  sqrt {} -> failed
    ~ xx -> 1  sqrt -0 -> failed  sqrt -17 -> circles  sqrt -100 -> circles  debug on -> untouched
    debug off -> untouched  / 100 7 -> 14  debug ON -> untouched  / 100 7 -> 14)");
  expect_answers(R"(inttobin 10 -NoPrefix -> 1010  inttobin 12.9 x -> 0b1100
    inttobin 5 -noprefixes -> 0b101  inttobin +00 -noprefix -> 0  inttobin {} -> {}
    inttobin -0 x -> untouched_error_big_inttobin_-0:_Error_-ve_numbers_not_handled$
    graph 0123456789 -> untouched{0}#{4}#{12}#{6}#{14}#{10}#{9}#{13}#{8}#{15}#{7}$
    graph 12a3- 2 -> untouched{4}#{12}#${7}a{6}#${7}-{7}$  graph {} -> untouched{7}$
    graph 12 -NoNewLine -> untouched{4}#{12}#{7}  graph 1 -1 -> untouched{4}#{7}$)");
  EXPECT_EQ(ended(RecordingHost().run({"big", "graph", "\xB1"})), "untouched{7}\xB1{7}\r\n");
}

// 9^6499 is the largest number.
TEST(Operators, LongestAnswersFitAndOneDigitMoreEndsTheProcess) {
  expect_answers(R"(+ -7^310 0 -> -7^310  + -7^320 0 -> -7^320  + 9^6499 0 -> 9^6499
    + 9^64 1 -> 10^64  ** 10 6498 -> 10^6498  - 9^6499 9^6499 -> 0  max 1.9^6490 1 -> 1
    fdiv 9^6481 10^6481 -> 0.9^18  fdiv 9^6482 10^6482 -> ends  + 9^6499 1 -> ends
    * 9^3250 9^3250 -> ends  * 9^3300 9^3300 -> ends  * 9^6400 9^6400 -> ends
    ** 10 6499 -> ends  ** 9^3300 2 -> ends  ** 9^3300 3 -> ends  ** -2 2147483647 -> ends
    << 1 21590 -> ends  << 1 2147483647 -> ends  << 9^6499 1 -> ends  << 9^6499 20 -> ends
    << 9^6499 21589 -> ends  << 7^30 21590 -> ends  << 7^850 20001 641 -> ends
    pow2 21590 -> ends  pow2 99999x -> ends  pow2 99999999999 -> ends  pow2 4294967298 -> ends
    == 1 9^6500 -> ends  ++ 9^6499 -> ends  - -1 9^6499 -> ends  bintoint 10^21591 -> ends
    abs 1.9^6499 -> ends  & 1 1 21590 -> ends  mean 9^6499 1 -> ends)");
}

// Whichever character is none, and wherever it stands in X.
TEST(Operators, ForeignCharactersCountAsZeros) {
  const std::string some = "7318294651973846279135468297531864297153", digits = some + some + some,
                    foreign = ":/x\xB1 \xB0\xF9";
  std::istringstream rows(R"(+ X Y; - Y X; * X Y; * Y X; / X Y; / Y X; % X Y; fdiv X Y; fdiv Y X;
      fmod Y X; mean X Y; & X Y; | Y X; ^ X Y; << X 3; >> X 3; ** X 3; ++ X; -- X; div2 X; sqrt X;
      ~ X; inttobin X; bintoint B; & -5 X; & X -5 999)");
  for (std::string row; std::getline(rows, row, ';');) {
    for (std::size_t n = 2; n <= digits.size(); n += 1 + n / 16) {
      // A division's exits compare the characters as they are.
      const std::size_t first = row.find_first_of("/%f") < row.size() ? 1 : 0;
      for (const std::size_t at : {first, n / 2, n - 1}) {
        const auto result = [&](char c) {
          Words words = split("big " + row);
          for (std::string& word : words) {
            if (word == "Y") word = digits.substr(n % 17, 1 + n / 2);
            if (word == "X") word = digits.substr(0, n).replace(at, 1, 1, c);
            if (word == "B") word = std::string(2 * n, '1').replace(at, 1, 1, c);
          }
          return RecordingHost().call(words).result;
        };
        EXPECT_EQ(result(foreign[(n + at) % foreign.size()]), result('0')) << row << at << n;
      }
    }
  }
}

// How a call ends whose word does not answer that count of texts.
std::string unanswered(const std::string& word, int count) {
  const std::string none = "big: " + word + " not implemented\n", name = count == 0 ? "" : "big";
  if (count > 3) return "untouched error " + (count > 4 ? report("Command undefined") : "") + none;
  return (count < 3 ? " error " + name + " " : "untouched error big " + word) +
         ": Syntax is: " + name + " <operator> value ?value?\n";
}

// Each word with 0 to 6 texts; it answers from one count, in front of it, to another.
TEST(Frame, AdmitsWordsByTheCountOfTexts) {
  int from = 0, to = 0;
  for (const std::string& word : split(R"(4-6 + - * / % == != > < >= <= *= /= ^= &= |= += -= & && |
      || ^ ** pow max min rnd << >> fdiv mean fmod  3-3 ++ -- div2 pow2 div10 abs is_even fib fact
      sqrt bintoint ~ ! debug  3-4 inttobin graph  9-9 ABS {} foo inttobinx xinttobin)")) {
    const bool is_range = word.size() == 3 && word[1] == '-';
    if (is_range) from = word[0] - '0', to = word[2] - '0';
    for (int count = 0; count <= 6 && !is_range; ++count) {
      RecordingHost host;
      host.set("1", "1");
      const Words words{"big", word, "1", "1", "1", "1"};
      const Outcome got = host.run({words.begin(), words.begin() + count});
      const bool admitted = from <= count && count <= to;
      EXPECT_TRUE(admitted ? got.code == 0 : ended(got) == unanswered(word, count))
          << word << " " << count << ": " << ended(got);
    }
  }
}

// Each row: word, the variable's value ("none": no variable, "null": no value text; neither
// "barred", which the host refuses to create, nor "vanishing", which it creates for no longer than
// that), the number, the answer or ending, and the callbacks: G getVar, C setVar to create, F
// freeVarValue, V freeValue, S setVarValue, N the same over a cleared record, R setResult.
TEST(Variables, CallbacksAndRefusals) {
  const Words rows = split(R"(+= 10 5 15 GFNR  -= 15 15 0 GFSR  *= 15 3 45 GFSR  /= 45 4 11 GFSR
      &= 12 10 8 GFSR  |= 12 10 14 GFSR  ^= 12 10 6 GFSR  *= -5 0 -0 GFSR  += 7.9 1 8 GFNR
      += none 5 5 GCGFNR  -= none 2 -2 GCGFSR  += barred 5 no-variable GC  -= barred 5 barred GC
      += vanishing 5 no-variable GCG  -= vanishing 5 barred GCG  -= null 2 -2 GFSR
      += null 3 no-variable G  *= none 3 no-variable G  &= null 3 no-variable G
      /= 9 0 failed GR  ++ 41 0 42 GVNR  -- {} 0 -1 GVNR  ++ null 0 0 GNR)");
  for (std::size_t i = 0; i < rows.size(); i += 5) {
    const std::string &word = rows[i], &value = rows[i + 1], &answer = rows[i + 3];
    const bool is_there = !is_one_of(value, " none barred vanishing "), is_null = value == "null";
    const auto start = is_there && !is_null ? std::optional(value) : std::nullopt;
    RecordingHost host;
    host.set_var_status = value == "barred" ? 1 : 0;
    host.set_var_creates = value != "vanishing";
    if (is_there) host.set("x", start);
    Words words{"big", word, "x", rows[i + 2]};
    if (word == "++" || word == "--") words.pop_back();
    const Outcome got = host.run(words);
    const std::string stored = "setVarValue x " + answer + " 0", now = got.result.value_or("");
    const std::map<char, std::string> texts{{'G', "getVar x -1"},
                                            {'C', "setVar x 0 -1"},
                                            {'F', "freeVarValue x"},
                                            {'V', "freeValue " + value},
                                            {'S', stored},
                                            {'N', stored + " over null"},
                                            {'R', "setResult " + now + " 0"}};
    Words calls;
    for (const char c : rows[i + 4]) calls.push_back(texts.at(c));
    EXPECT_EQ(got.calls, calls) << word << " " << value;
    EXPECT_EQ(ended(got), ending(answer)) << word << " " << value;
    EXPECT_EQ(host.get("x"), got.code != 0 ? start : answer) << word << " " << value;
  }
}

}  // namespace
}  // namespace omrel::test
