#include "tests/oracle.h"

#include <algorithm>
#include <cstdlib>

#include "bench/gmp_commands.h"

namespace omrel::test {
namespace {

constexpr std::size_t MAX_LENGTH = 6499;
constexpr long MAX_BITS = 21589;  // 2 to that power is the longest

constexpr const char* WITH_WIDTH = " & | &= |= << >> ";
constexpr const char* SINGLES =
    " ++ -- div2 pow2 div10 abs is_even fib fact sqrt bintoint ~ ! inttobin ";

bool is_one_of(const std::string& word, const char* words) {
  return std::string(words).find(" " + word + " ") != std::string::npos;
}

// A number as GMP reads it, without a plus sign and a fraction; empty when it is none.
std::string plain(const std::string& text) {
  const std::size_t from = text[0] == '+' || text[0] == '-' ? 1 : 0;
  const std::string digits = text.substr(from, text.find('.') - from);
  const bool is_number = !digits.empty() && digits.find_first_not_of("0123456789") > MAX_LENGTH;
  return is_number && text.size() - from <= MAX_LENGTH ? (text[0] == '-' ? "-" : "") + digits : "";
}

std::size_t digit_count(const std::string& number) {
  return number.size() - std::min(number.find_first_of("123456789"), number.size());
}

long count_of(const std::string& text) { return std::strtol(text.c_str(), nullptr, 10); }

// Whether GMP would work long on an answer that is too long.
bool is_huge(const std::string& word, const Words& numbers) {
  const long n = count_of(numbers[1]);
  const auto digits = static_cast<long>(digit_count(numbers[0]));
  if (is_one_of(word, WITH_WIDTH) && count_of(numbers[2]) > MAX_BITS) return true;
  if (word == "<<") return digits != 0 && n > MAX_BITS;
  if (word == "pow2") return count_of(numbers[0]) > MAX_BITS;
  if (!is_one_of(word, " ** pow ") || (digits < 2 && std::abs(count_of(numbers[0])) < 2))
    return false;
  return n > MAX_BITS || (digits - 1) * n > static_cast<long>(MAX_LENGTH);
}

// Whether the numbers are none of the word's, or what it says of them is not a number.
bool has_no_answer(const std::string& word, const Words& numbers) {
  const std::string& a = numbers[0];
  if (is_one_of(word, " sqrt inttobin ")) return a[0] == '-';
  if (is_one_of(word, " fib fact ")) {
    return digit_count(a) > 9 || count_of(a) > (word == "fib" ? 30000 : 1000);
  }
  if (word == "fdiv") return digit_count(numbers[1]) > MAX_LENGTH - 60;
  if (word == "mean") {
    return std::any_of(numbers.begin(), numbers.end(),
                       [](const std::string& number) { return digit_count(number) >= MAX_LENGTH; });
  }
  if (is_one_of(word, WITH_WIDTH) && digit_count(numbers[2]) > 9) return true;
  return is_one_of(word, " ** pow << >> ") && digit_count(numbers[1]) > 9;
}

// A text that is a number of the word's, as GMP reads it; else empty.
std::string read(const std::string& word, const std::string& text) {
  if (word == "mean" && text.find('.') != std::string::npos) return "";
  if (word != "bintoint") return plain(text);
  const std::string digits = text.substr(text.rfind("0b", 0) == 0 ? 2 : 0);
  return digits.find_first_not_of("01") == std::string::npos ? digits : "";
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

bool updates(const std::string& word) { return is_one_of(word, " += -= *= /= &= |= ^= "); }

std::optional<std::string> answer_by_gmp(const Words& words, const std::string& variable) {
  const std::string& word = words[1];
  const bool is_single = is_one_of(word, SINGLES);
  if (words.size() < 3 || (words.size() == 3) != is_single) return std::nullopt;
  if (bench::gmp_command(word) == nullptr) return std::nullopt;
  Words numbers{words.begin() + 2, words.end()};
  if (updates(word) || is_one_of(word, " ++ -- ")) numbers[0] = variable;
  for (std::string& number : numbers) {
    number = read(word, number);
    if (number.empty()) return std::nullopt;
  }
  numbers.resize(std::max<std::size_t>(numbers.size(), 3), "0");
  if (has_no_answer(word, numbers)) return std::nullopt;
  if (is_huge(word, numbers)) return ENDS;
  const bool is_zero = digit_count(numbers[1]) == 0;
  if (is_zero && is_one_of(word, " /= fdiv fmod ")) return GUARD;
  if (is_zero && is_one_of(word, " / % ")) return numbers[1][0] == '-' ? GUARD : "0";
  return computed(word, numbers, words.size());
}

}  // namespace omrel::test
