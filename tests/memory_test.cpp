// Every word while its first allocation fails, then its second, and so on until a call meets no
// failure: that one alone, and with all that follow. A call gives the right answer, or the word's
// answer for want of memory, or the message that ends the process, and leaves no block behind.
#include "bignum/bignum.h"
#include "commands/operator_table.h"
#include "tests/recording_host.h"

#include <climits>

namespace {

long calls_to_failure = LONG_MAX;  // 0 or below: it has come
bool fails_on = false;
bool is_watching = false;
int block_count = 0;

}  // namespace

// The library's allocations, and few of the tests' own, come here (see --wrap in CMakeLists.txt).
extern "C" {
void* __real_realloc(void* block, std::size_t n);
void __real_free(void* block);
void* __wrap_realloc(void* block, std::size_t n) {
  const bool fails = is_watching && (--calls_to_failure == 0 || (fails_on && calls_to_failure < 0));
  if (fails) return nullptr;
  block_count += block == nullptr ? 1 : 0;
  return __real_realloc(block, n);
}
void* __wrap_malloc(std::size_t n) { return __wrap_realloc(nullptr, n); }
void __wrap_free(void* block) {
  block_count -= block == nullptr ? 0 : 1;
  __real_free(block);
}
}

namespace omrel::test {
namespace {

using Ending = std::tuple<int, std::optional<std::string>, std::optional<std::string>>;

void release_buffers() {
  while (free_buffers.count > 0) std::free(free_buffers.kept[--free_buffers.count]);
}

// Code, result and variable of a call, which must leave no block behind.
Ending ending_of(const Words& words, const std::string& value) {
  RecordingHost host;
  host.set("x", value);
  release_buffers();
  const int blocks_before = block_count;
  is_watching = true;
  const Outcome got = host.call(words);
  is_watching = false;
  release_buffers();
  EXPECT_EQ(block_count, blocks_before);
  return {got.code, got.result, host.get("x")};
}

// How a word goes when there is no memory for its answer's text.
Ending fallback_of(const std::string& word, const std::string& value) {
  const bool succeeds =
      is_one_of(word, " & | fdiv mean fmod inttobin ") || (updates(word) && !takes_one(word));
  const std::string result = succeeds || (takes_one(word) && !updates(word)) ? "" : "0";
  return {succeeds ? 0 : 1, result, updates(word) ? result : value};
}

void sweep(const Words& words, const Ending& fallback, const std::string& value) {
  Ending right;
  calls_to_failure = LONG_MAX;
  capture_output([&] { right = ending_of(words, value); });
  // 0 for a call without a failure, 1 for one as it must be with one.
  const auto attempt = [&] {
    const Ending got = ending_of(words, value);
    const bool has_failed = calls_to_failure <= 0;
    const bool is_right = got == right || (has_failed && got == fallback);
    std::printf("returned");
    return !is_right || ::testing::Test::HasFailure() ? 2 : has_failed ? 1 : 0;
  };
  bool is_last = false;
  const auto is_expected = [&is_last](int status) {
    is_last = ::testing::ExitedWithCode(RETURNED)(status);
    return is_sound(status);
  };
  for (long number = 1; !is_last && !::testing::Test::HasFailure(); ++number) {
    calls_to_failure = number;
    EXPECT_EXIT(end_with(attempt), is_expected, "(returned|Out of memory in bignum\\(\\))$")
        << printable(words) << number;
  }
}

// The call of a word on two numbers and a width, the first number in the variable for a word that
// updates one. Answers of up to 300 digits need no memory, so there are longer ones.
void sweep_word(const std::string& word, const Words& numbers) {
  Words words{"big", word, numbers[0], numbers[1], "2000"};
  if (updates(word)) words[2] = "x";
  if (is_one_of(word, " fact fib pow2 ")) words[2] = word == "fact" ? "300" : "2000";
  if (word == "bintoint") words[2] = std::string(1200, '1');
  if (is_one_of(word, " ** pow << >> ")) words[3] = "7";
  if (word == "rnd") words[2] = words[3] = "7";  // the draw is 7
  if (takes_one(word)) words.resize(3);
  sweep(words, fallback_of(word, numbers[0]), numbers[0]);
}

TEST(Extremes, MemoryRunsOutAnywhere) {
  for (const bool persistent : {false, true}) {
    fails_on = persistent;
    for (const char* pair : {"5 3", "7^330 13", "7^700 3^400", "5 3^330"}) {
      const Words numbers = split(pair);
#define OMREL_ROW(word, admitted, function) sweep_word(word, numbers);
      OMREL_OPERATORS(OMREL_ROW)
    }
    debug_switch = 1;
    sweep({"big", "/", "100", "7"}, {1, "0", "0"}, "0");  // searched step by step
    debug_switch = 0;
  }
}

}  // namespace
}  // namespace omrel::test
