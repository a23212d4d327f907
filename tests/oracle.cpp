#include "tests/recording_host.h"

#include <algorithm>

#include "bench/gmp_commands.h"
#include "bench/host.h"
#include "bignum/digit_text.h"

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

}  // namespace

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
