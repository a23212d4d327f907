// Fuzzes the command `big`, one call per input, on the recording host; GMP judges the answer where
// it can. An input is a line of words: options, the value of the variable x ("none", "null" or the
// text), then the call's own, such as "- 41 ++ x". The texts are written as split reads them. Every
// other input is the seed of a call drawn for GMP, such as "@123".
//
// Options: 'e' lets the host refuse to create variables, 'd' turns the trace on.
#include <algorithm>
#include <cstring>
#include <random>

#include "bignum/bignum.h"
#include "commands/operator_table.h"
#include "tests/recording_host.h"

namespace {

bool is_calling = false;
bool has_ended = false;

}  // namespace

// The library ends the process only where its frame can still catch what is thrown instead.
extern "C" {
[[noreturn]] void __real_exit(int status);
[[noreturn]] void __wrap_exit(int status) {
  if (!is_calling) __real_exit(status);
  has_ended = true;
  throw status;
}
}

namespace omrel::test {
namespace {

// Searches step by step take too long on longer numbers.
constexpr std::size_t MAX_SEARCHED = 100;

// The answer that GMP wants of a host without faults.
std::optional<std::string> wanted(const RecordingHost& host, const Words& words) {
  if (words.size() < 3) return std::nullopt;
  if (words[2] == "x" && host.variables.count("x") != 0) {
    return answer_by_gmp(words, host.get("x").value_or(""));
  }
  return updates(words[1]) ? std::nullopt : answer_by_gmp(words, words[2]);
}

// A call either gives the answer or ends the process, and leaves a variable that it does not
// update as it was.
void check(RecordingHost& host, const Words& words, bool is_faultless) {
  const std::optional<std::string> before = host.get("x");
  const std::optional<std::string> answer = is_faultless ? wanted(host, words) : std::nullopt;
  has_ended = false;
  is_calling = true;
  const Outcome outcome = host.call(words);
  is_calling = false;
  ASSERT_TRUE(outcome.code == 0 || outcome.code == 1) << printable(words);
  if (answer) {
    ASSERT_EQ(has_ended, *answer == ENDS) << printable(words);
    ASSERT_TRUE(has_ended || outcome.result == answer) << printable(words) << *answer;
  }
  if (!is_faultless || words.size() < 3 || words[2] != "x") return;
  const bool is_updated =
      updates(words[1]) && !has_ended && outcome.code == 0 && host.variables.count("x") != 0;
  const std::optional<std::string> after = host.get("x");
  const bool is_kept = after == before || (!before && after == "0");  // created
  ASSERT_TRUE(is_updated ? after == outcome.result : is_kept) << printable(words);
}

}  // namespace
}  // namespace omrel::test

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  const std::string call = "@" + std::to_string(seed / 2);
  if (seed % 2 == 0 || call.size() > max_size) return LLVMFuzzerMutate(data, size, max_size);
  std::memcpy(data, call.data(), call.size());
  return call.size();
}

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  GTEST_FLAG_SET(throw_on_failure, true);
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace omrel::test;
  using omrel::debug_switch;
  std::string input(reinterpret_cast<const char*>(data), size);
  input.resize(std::min(input.find('\0'), size));
  Words words = split(input);
  if (input.starts_with('@')) {
    std::mt19937 generator(static_cast<unsigned>(std::strtoul(input.c_str() + 1, nullptr, 10)));
    const Words call = drawn_call(generator);
    words = {"-", call[2]};
    words.insert(words.end(), call.begin() + 1, call.end());
    if (updates(call[1])) words[3] = "x";
  }
  if (words.size() < 2 || words.size() > 9) return -1;
  const std::string options = words[0], value = words[1];
  words.erase(words.begin());
  words[0] = "big";
  debug_switch = options.find('d') == std::string::npos ? 0 : 1;
  for (std::string& word : words) {
    const bool is_slow = words[1] == "rnd" || (words[1] == "sqrt" && word[0] == '-');
    if (debug_switch != 0 || is_slow) word.resize(std::min(word.size(), MAX_SEARCHED));
  }
  RecordingHost host;
  host.set_var_status = options.find('e') == std::string::npos ? 0 : 1;
  if (value != "none") host.set("x", value == "null" ? std::nullopt : std::optional(value));
  check(host, words, options.find_first_not_of("-d") == std::string::npos);
  return 0;
}
