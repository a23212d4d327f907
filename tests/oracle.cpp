// Calls that GMP judges: how they are drawn, and its answers.
#include <gmpxx.h>

#include <algorithm>

#include "bench/gmp_commands.h"
#include "bench/host.h"
#include "bignum/digit_text.h"
#include "commands/operator_table.h"
#include "tests/recording_host.h"

namespace omrel::test {
namespace {

constexpr std::size_t MAX_LENGTH = MAX_DIGITS - 1;
constexpr auto MAX_BITS = static_cast<long>(MAX_LENGTH * 3.3219281);  // 2 to that is the longest

std::size_t digit_count(const std::string& number) {
  return number.size() - std::min(number.find_first_of("123456789"), number.size());
}

long count_of(const std::string& number) { return std::strtol(number.c_str(), nullptr, 10); }

bool exceeds(const std::string& number, long limit) {
  return digit_count(number) > 9 || count_of(number) > limit;
}

// Whether a text is a number of the word's and GMP reads it as such.
bool is_number(const std::string& word, const std::string& text) {
  if (word == "bintoint") return !text.empty() && text.find_first_not_of("01") > text.size();
  const std::string digits = text.substr(text[0] == '-' ? 1 : 0);
  return !digits.empty() && digits.size() <= MAX_LENGTH &&
         digits.find_first_not_of("0123456789") > MAX_LENGTH;
}

// Whether the numbers are none of the word's, or GMP would work long on an answer that is too long.
bool has_no_answer(const std::string& word, const Words& numbers) {
  const std::string &a = numbers[0], &b = numbers[1];
  const bool is_power = is_one_of(word, " ** pow ");
  if (is_one_of(word, " sqrt inttobin ")) return a[0] == '-';
  if (word == "fib") return exceeds(a, 30000);
  if (word == "fact") return exceeds(a, 1000);
  if (word == "pow2") return exceeds(a, MAX_BITS + 9);
  if (word == "fdiv") return digit_count(b) > MAX_LENGTH - 60;
  const auto is_longest = [](const std::string& text) { return digit_count(text) >= MAX_LENGTH; };
  if (word == "mean") return std::any_of(numbers.begin(), numbers.end(), is_longest);
  if (is_one_of(word, " & | &= |= << >> ") && exceeds(numbers[2], MAX_BITS)) return true;
  if ((is_power || is_one_of(word, " << >> ")) && exceeds(b, MAX_BITS)) return true;
  return is_power && static_cast<long>(digit_count(a)) * count_of(b) > 2 * MAX_BITS;
}

std::string computed(const std::string& word, const Words& numbers, std::size_t count) {
  std::vector<const char*> argv{"big", word.c_str()};
  for (const std::string& number : numbers) argv.push_back(number.c_str());
  bench::Host host{numbers[0], ""};
  bench::gmp_command(word)(host, static_cast<int>(count), argv.data());
  const bool is_short = digit_count(host.result) <= MAX_LENGTH;
  return is_short || is_one_of(word, " inttobin fdiv mean ") ? host.result : ENDS;
}

using Integer = mpz_class;

int digits(const Integer& n) { return static_cast<int>(Integer(abs(n)).get_str().size()); }

struct Drawing {
  int below(int n) { return static_cast<int>(generator() % static_cast<unsigned>(n)); }

  // A number of at most `limit` digits: runs of digits, or a neighbour of a power of two.
  Integer natural(int limit) {
    const int boundary = 8 * below(limit / 8 + 1) + below(3);
    const int lengths[] = {below(20), boundary, limit - below(3), below(limit + 1)};
    const int length = std::clamp(lengths[below(4)], 1, limit);
    if (below(8) == 0)
      return (Integer(1) << static_cast<unsigned>(below(3 * length) + 1)) + (below(3) - 1);
    std::string text;
    while (static_cast<int>(text.size()) < length) {
      text.append(static_cast<unsigned>(1 + below(2) * below(30)), "0099123456789"[below(13)]);
    }
    return Integer(text.substr(0, static_cast<unsigned>(length)), 10);
  }
  Integer integer(int limit) { return natural(std::max(limit, 1)) * (1 - 2 * below(2)); }

  std::mt19937& generator;
};

}  // namespace

Words drawn_call(std::mt19937& generator) {
#define OMREL_ROW(word, admitted, function) word,
  static const Words WORDS{OMREL_OPERATORS(OMREL_ROW)};
  Drawing draw{generator};
  const std::string& word = WORDS[generator() % WORDS.size()];
  const int limit = draw.below(2) == 0 ? MAX_DIGITS - 2 : 20, near = draw.below(3) - 1;
  const int bits = draw.below(draw.below(2) == 0 ? 70 : 3 * limit / 2);
  Integer a = draw.integer(limit), b = draw.below(2) == 0 ? draw.integer(limit) : a + near;
  if (is_one_of(word, " / /= % fmod fdiv ")) {
    b = draw.integer(1 + draw.below(limit));
    if (b == 0) b = 7;
    if (draw.below(2) == 0) a = b * draw.integer(limit - digits(b)) + near;
  } else if (is_one_of(word, " * *= ")) {
    b = draw.integer(limit == 20 ? limit : limit + 2 - digits(a));
    if (draw.below(4) == 0) a = b = draw.integer(limit / 2);
  } else if (is_one_of(word, " & | ^ &= |= ^= << >> ")) {
    a = draw.integer(limit / 2);
    b = word == "<<" || word == ">>" ? Integer(bits) : draw.integer(limit / 2);
  } else if (is_one_of(word, " ** pow ")) {
    a = draw.integer(1 + draw.below(limit));
    b = draw.below(MAX_DIGITS / digits(a) + 1);
  } else if (is_one_of(word, " fact fib pow2 ")) {
    a = draw.below(word == "fact" ? 1001 : 3 * limit);
  } else if (is_one_of(word, " sqrt inttobin bintoint ")) {
    a = draw.natural(limit / 2);
    if (word == "sqrt") a = a * a + (a > 0 ? near : 0);
  }
  Words call{"big", word, a.get_str(word == "bintoint" ? 2 : 10)};
  if (!takes_one(word)) call.push_back(b.get_str());
  if (!takes_one(word) && draw.below(3) == 0) call.push_back(std::to_string(bits + 9));
  return call;
}

std::optional<std::string> answer_by_gmp(const Words& words, const std::string& variable) {
  if (words.size() < 3 || (words.size() == 3) != takes_one(words[1])) return std::nullopt;
  const std::string& word = words[1];
  if (bench::gmp_command(word) == nullptr) return std::nullopt;
  Words numbers{words.begin() + 2, words.end()};
  if (updates(word)) numbers[0] = variable;
  for (const auto& number : numbers) {
    if (!is_number(word, number)) return std::nullopt;
  }
  numbers.resize(std::max<std::size_t>(numbers.size(), 3), "0");
  if (has_no_answer(word, numbers)) return std::nullopt;
  const bool is_zero = digit_count(numbers[1]) == 0;
  if (is_zero && is_one_of(word, " /= fdiv fmod ")) return GUARD;
  if (is_zero && is_one_of(word, " / % ")) return numbers[1][0] == '-' ? GUARD : "0";
  // A number is narrowed after it has been shifted, and may be too long before.
  if (word == "<<" && computed(word, numbers, 4) == ENDS) return ENDS;
  return computed(word, numbers, words.size());
}

}  // namespace omrel::test
