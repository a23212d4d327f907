// Fuzzes the command `big`, one call per input, on the recording host; GMP judges the answer where
// it can. An input is a line of words: options, the value of the variable x ("none", "null" or the
// text), then the call's own, such as "- 41 ++ x". The texts are written as split reads them.
//
// Options: a letter of LETTERS takes that callback away, in lower case it throws; 'e' lets the
// host refuse to create variables, 'u' withdraws the link, 'd' turns the trace on.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>

#include "bignum/bignum.h"
#include "plugin/host_link.h"
#include "tests/oracle.h"

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

const std::string LETTERS = "GSVFCRW";  // of CALLBACKS

// Searches step by step take too long on longer numbers.
constexpr std::size_t MAX_SEARCHED = 100;

void set_up(RecordingHost& host, const std::string& options, const std::string& value) {
  for (const char option : options) {
    const std::size_t i = LETTERS.find(static_cast<char>(std::toupper(option)));
    if (i == std::string::npos) continue;
    if (option == LETTERS[i]) host.null_callbacks.insert(CALLBACKS[i]);
    if (option != LETTERS[i]) host.throwing_callback = CALLBACKS[i];
  }
  host.set_var_status = options.find('e') == std::string::npos ? 0 : 1;
  debug_switch = options.find('d') == std::string::npos ? 0 : 1;
  if (options.find('u') != std::string::npos) host_linked = false;
  if (value == "null") host.set("x", std::nullopt);
  if (value != "null" && value != "none") host.set("x", value);
}

// The answer that GMP wants of a host without faults.
std::optional<std::string> wanted(const RecordingHost& host, const Words& words) {
  if (words.size() < 3) return std::nullopt;
  if (words[2] == "x" && host.has("x")) return answer_by_gmp(words, host.get("x").value_or(""));
  if (!updates(words[1])) return answer_by_gmp(words, words[2]);
  const bool is_created = words[1] == "+=" || words[1] == "-=";
  return is_created ? answer_by_gmp(words, "0") : std::nullopt;
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
  const bool is_update = updates(words[1]) || words[1] == "++" || words[1] == "--";
  const bool is_updated = is_update && !has_ended && outcome.code == 0 && host.has("x");
  const std::optional<std::string> after = host.get("x");
  const bool is_kept = after == before || (!before && after == "0");  // created
  ASSERT_TRUE(is_updated ? after == outcome.result : is_kept) << printable(words);
}

}  // namespace
}  // namespace omrel::test

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  GTEST_FLAG_SET(throw_on_failure, true);
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace omrel::test;
  std::string input(reinterpret_cast<const char*>(data), size);
  input.resize(std::min(input.find('\0'), size));
  Words words = split(input);
  if (words.size() < 2 || words.size() > 9) return -1;
  const std::string options = words[0], value = words[1];
  words.erase(words.begin());
  words[0] = "big";
  const bool is_searching = options.find('d') != std::string::npos;
  for (std::string& word : words) {
    const bool is_slow = words[1] == "rnd" || (words[1] == "sqrt" && word[0] == '-');
    if (is_searching || is_slow) word.resize(std::min(word.size(), MAX_SEARCHED));
  }
  RecordingHost host;
  set_up(host, options, value);
  check(host, words, options.find_first_not_of("-du") == std::string::npos);
  return 0;
}
