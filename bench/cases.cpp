#include "bench/cases.h"

#include <array>
#include <cmath>
#include <random>

namespace omrel::bench {
namespace {

constexpr int SIZES[] = {1, 2, 9, 18, 36, 100, 300, 1000, 3249, 6498};
constexpr int BETWEEN[] = {24, 50, 72, 150, 200, 500};  // where ways of computing meet
constexpr int MAX_RESULT = 6499;

std::mt19937 generator(20191206);

std::string number(int digit_count) {
  std::string text(1, static_cast<char>('1' + generator() % 9));
  while (static_cast<int>(text.size()) < digit_count) {
    text += static_cast<char>('0' + generator() % 10);
  }
  return text;
}

std::string bits(int bit_count) {
  std::string text = "1";
  while (static_cast<int>(text.size()) < bit_count) text += generator() % 2 != 0 ? '1' : '0';
  return text;
}

std::string by(int a, int b) { return std::to_string(a) + " x " + std::to_string(b); }

class Builder {
 public:
  // A word with two operands as long as each other, and with one long and one short.
  void pairs(const std::string& word) {
    for (int n : SIZES) pair(word, n, n);
    for (int n : {300, 6498}) pair(word, n, 9);
    pair(word, 6498, 1000);
  }

  // Besides random operands equal ones, every digit of which is looked at.
  void equals() {
    pairs("==");
    for (int n : SIZES) {
      const std::string text = number(n);
      add({"==", std::to_string(n) + " equal", {text, text}});
    }
  }

  void products(const std::string& word) {
    for (int n : SIZES) {
      if (2 * n < MAX_RESULT) pair(word, n, n);
    }
    pair(word, 300, 9);
    pair(word, 1000, 100);
    pair(word, 5400, 1000);
    pair(word, 6400, 36);
    for (int n : BETWEEN) pair(word, n, n);
  }

  void quotients(const std::string& word, int longest) {
    for (int n : {2, 9, 18, 36, 100, 300, 1000, 3249}) pair(word, n, (n + 1) / 2);
    pair(word, 18, 1);
    pair(word, 100, 9);
    pair(word, 1000, 18);
    pair(word, 1000, 990);
    pair(word, longest, 9);
    pair(word, longest, 300);
    pair(word, longest, 3249);
    pair(word, longest, longest - 98);
    for (int n : {24, 36, 50, 100, 200, 500}) {
      pair(word, 2 * n, n);
      pair(word, n + n / 2, n);
    }
    for (const auto& [divisor, zeros] : {std::pair{18, 30}, {50, 50}, {100, 300}}) {
      const std::string text = number(divisor);
      add({word,
           by(divisor + zeros, divisor) + " exact",
           {text + std::string(static_cast<unsigned>(zeros), '0'), text}});
    }
  }

  void singles(const std::string& word) {
    for (int n : SIZES) add({word, std::to_string(n), {number(n)}});
  }

  void singles_between(const std::string& word) {
    for (int n : BETWEEN) add({word, std::to_string(n), {number(n)}});
  }

  // Operands cut to so many bits.
  void widths(const std::string& word) {
    for (const auto& [n, width] : {std::pair{9, 8},
                                   {18, 40},
                                   {36, 64},
                                   {100, 100},
                                   {300, 512},
                                   {1000, 1000},
                                   {1000, 3000},
                                   {6000, 10000}}) {
      const std::string size = by(n, n) + " to " + std::to_string(width);
      add({word, size, {number(n), number(n), std::to_string(width)}});
    }
    for (int n : BETWEEN) pair(word, n, n);
  }

  void means() {
    for (int n : {1, 9, 36, 300, 1000, 6400}) {
      add({"mean", "3 of " + std::to_string(n), {number(n), number(n), number(n)}});
    }
    std::vector<std::string> many(20);
    for (std::string& text : many) text = number(18);
    add({"mean", "20 of 18", many});
  }

  void powers() {
    const int CASES[][2] = {{1, 10},   {2, 9},    {9, 4},    {1, 1000}, {2, 500},
                            {9, 30},   {9, 300},  {18, 20},  {36, 100}, {100, 3},
                            {100, 60}, {1000, 2}, {1000, 6}, {3249, 2}, {2, 3000}};
    for (const auto& [digit_count, exponent] : CASES) {
      add({"**", by(digit_count, exponent), {number(digit_count), std::to_string(exponent)}});
    }
  }

  void counts(const std::string& word, const std::vector<int>& arguments) {
    for (int n : arguments) add({word, std::to_string(n), {std::to_string(n)}});
  }

  void binary_texts() {
    for (int n : SIZES) {
      add({"bintoint", std::to_string(n), {bits(std::max(1, static_cast<int>(n * 3.3219)))}});
    }
    for (int n : BETWEEN) {
      add({"bintoint", std::to_string(n), {bits(static_cast<int>(n * 3.3219))}});
    }
  }

  void shifts() {
    for (int n : SIZES) {
      for (int count : {1, 20, 500}) {
        if (n + count / 3 < MAX_RESULT) shift("<<", n, count);
      }
    }
    shift("<<", 36, 20000);
    for (int n : SIZES) {
      for (int count : {1, 20, 500}) shift(">>", n, count);
    }
    shift(">>", 6498, 10000);
    for (const char* word : {"<<", ">>"}) {
      for (const auto& [n, count, width] :
           {std::array{18, 20, 60}, {36, 20, 128}, {300, 100, 512}, {3000, 500, 3000}}) {
        const std::string size = by(n, count) + " to " + std::to_string(width);
        add({word, size, {number(n), std::to_string(count), std::to_string(width)}});
      }
    }
  }

  void updates(const std::string& word, bool product) {
    for (int n : SIZES) {
      if (!product || 2 * n < MAX_RESULT) {
        add({word, std::to_string(n), {"x", number(n)}, number(n)});
      }
    }
    add({word, by(6400, 18), {"x", number(18)}, number(6400)});
  }

  void updates_cut(const std::string& word) {
    for (const auto& [n, width] : {std::pair{18, 40}, {100, 100}, {1000, 1000}, {6000, 10000}}) {
      const std::string size = std::to_string(n) + " to " + std::to_string(width);
      add({word, size, {"x", number(n), std::to_string(width)}, number(n)});
    }
  }

  void increments() {
    for (int n : SIZES) add({"++", std::to_string(n), {"x"}, number(n)});
  }

  std::vector<Case> cases;

 private:
  void add(Case c) { cases.push_back(std::move(c)); }
  void pair(const std::string& word, int a, int b) {
    add({word, by(a, b), {number(a), number(b)}});
  }
  void shift(const std::string& word, int n, int count) {
    add({word, by(n, count), {number(n), std::to_string(count)}});
  }
};

}  // namespace

std::vector<Case> all_cases() {
  Builder b;
  for (const char* word : {"+", "-"}) b.pairs(word);
  b.products("*");
  for (const char* word : {"/", "%"}) b.quotients(word, 6498);
  b.equals();
  for (const char* word : {"<", "max"}) b.pairs(word);
  b.quotients("fdiv", 6400);
  b.means();
  b.quotients("fmod", 6498);
  b.powers();
  b.counts("pow2", {10, 500, 513, 1000, 5000, 10000, 21500});
  b.counts("fact", {5, 20, 50, 100, 200, 300, 1000});
  b.counts("fib", {10, 90, 100, 300, 1000, 3000, 10000, 30000});
  for (const char* word : {"sqrt", "inttobin"}) {
    b.singles(word);
    b.singles_between(word);
  }
  b.binary_texts();
  for (const char* word : {"&", "|", "^"}) b.pairs(word);
  for (const char* word : {"&", "|"}) b.widths(word);
  b.singles("~");
  b.shifts();
  b.singles("div2");
  b.singles("div10");
  b.increments();
  b.updates("+=", false);
  b.updates("*=", true);
  for (const char* word : {"&=", "|="}) b.updates_cut(word);
  return b.cases;
}

}  // namespace omrel::bench
