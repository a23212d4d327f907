// Calls every word of the loaded library while its first allocation fails, then its second, and so
// on until a call meets no failure: that one alone, and with all that follow. Each call has a
// process of its own, in which malloc is ours. It must give the right answer, or the word's answer
// for want of memory, or the message that ends the process, and leave no block behind.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/host.h"
#include "commands/operator_table.h"

namespace {

long calls_to_failure = 0;  // 0 or below: it has come, or none will
bool fails_on = false;
bool is_watching = false;  // from the call on
void* blocks[64];          // that the library holds

bool fails_now() {
  return is_watching && (--calls_to_failure == 0 || (fails_on && calls_to_failure < 0));
}

void replace(void* from, void* to) {
  void** const place = std::find(blocks, std::end(blocks), from);
  if (place != std::end(blocks)) *place = to;
}

void* noted(void* block) {
  if (is_watching) replace(nullptr, block);
  return block;
}

}  // namespace

// What the library is to call must be seen from it.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t n);
void* __libc_realloc(void* block, std::size_t n);
void __libc_free(void* block);

void* malloc(std::size_t n) { return fails_now() ? nullptr : noted(__libc_malloc(n)); }
void* realloc(void* block, std::size_t n) {
  if (fails_now()) return nullptr;
  if (block != nullptr) replace(block, nullptr);
  return noted(__libc_realloc(block, n));
}
void free(void* block) {
  if (block != nullptr) replace(block, nullptr);
  __libc_free(block);
}
}
#pragma GCC visibility pop

namespace {

using omrel::bench::the_host;
using Texts = std::vector<const char*>;

OmrelCommand big;
long failures_met = 0;

void tell(const char* how) {
  std::printf("|%s|%s|%s", how, the_host.result.c_str(), the_host.variable.c_str());
}

bool leaks_when_unloaded() {
  void* library = dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  dlclose(library);
  dlclose(library);
  return std::any_of(blocks, std::end(blocks), [](void* block) { return block != nullptr; });
}

// The child process; its status says whether a failure was met.
[[noreturn]] void call(const Texts& texts, long number) {
  static char buffer[BUFSIZ];
  std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
  std::atexit([] {
    is_watching = false;
    tell("ends");
  });
  calls_to_failure = number == 0 ? LONG_MAX : number;
  is_watching = true;
  const int code = big(nullptr, static_cast<int>(texts.size()), texts.data(), nullptr);
  is_watching = false;
  tell(leaks_when_unloaded() ? "leaks" : code == 0 ? "succeeds" : "fails");
  std::fflush(stdout);
  _exit(calls_to_failure > 0 ? 1 : 0);
}

// Calls in a child process, whose allocation of that number fails (0: none): what it wrote, how it
// went, result and variable. Returns whether it met no failure.
bool is_through(const Texts& texts, long number, std::string& outcome) {
  int ends[2], status = 0;
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    call(texts, number);
  }
  close(ends[1]);
  char piece[BUFSIZ];
  outcome.clear();
  for (ssize_t got; (got = read(ends[0], piece, sizeof piece)) > 0;) {
    outcome.append(piece, static_cast<std::size_t>(got));
  }
  close(ends[0]);
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) outcome += "|signal";
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

// How a word goes, and with which result, when there is no memory for its answer's text.
const char* fallback_of(const char* word) {
  const std::string padded = std::string(" ") + word + " ";
  constexpr const char* FALLBACKS[][2] = {
      {"|succeeds|", " & | fdiv mean fmod inttobin *= /= ^= &= |= += -= "},
      {"|fails|", " div2 pow2 div10 abs fib fact sqrt bintoint ~ "},
      {"|fails|0", " + - * / % ^ ** pow max min rnd << >> ++ -- "}};
  for (const auto& [outcome, words] : FALLBACKS) {
    if (std::strstr(words, padded.c_str()) != nullptr) return outcome;
  }
  return "|no fallback";
}

int sweep(const Texts& texts) {
  const std::string value = the_host.variable;
  std::string right, got, fallback = fallback_of(texts[1]);
  const bool is_update = std::strcmp(texts[2], "x") == 0;
  fallback += "|" + (is_update ? fallback.substr(fallback.rfind('|') + 1) : value);
  const std::string ending = "Exception: Out of memory in bignum()|ends|untouched|" + value;
  int failures = 0;
  const auto check = [&](bool is_good, long number) {
    if (is_good) return;
    std::fprintf(stderr, "big %s %.99s, allocation %ld: %.999s\n", texts[1], texts[2], number,
                 got.c_str());
    ++failures;
  };
  is_through(texts, 0, right);
  long number = 1;
  for (; !is_through(texts, number, got); ++number) {
    check(got == right || got.ends_with(ending) || got.ends_with(fallback), number);
  }
  check(got == right, number);
  failures_met += number - 1;
  return failures;
}

// The call of a word on two numbers and a width, the first number in the variable for a word that
// updates one.
int sweep_word(const char* word, bool takes_three, const std::string* numbers) {
  static const std::string BITS(300, '1');
  const std::string padded = std::string(" ") + word + " ";
  const auto is_one_of = [&](const char* words) {
    return std::strstr(words, padded.c_str()) != nullptr;
  };
  Texts texts{"big", word, numbers[0].c_str(), numbers[1].c_str(), "200"};
  if (is_one_of(" += -= *= /= &= |= ^= ++ -- ")) texts[2] = "x";
  if (is_one_of(" fact fib pow2 ")) texts[2] = "300";
  if (is_one_of(" bintoint ")) texts[2] = BITS.c_str();
  if (is_one_of(" ** pow << >> ")) texts[3] = "13";
  if (is_one_of(" rnd ")) texts = {"big", word, "7", "7"};  // the draw is 7
  if (takes_three) texts.resize(3);
  the_host.variable = numbers[0];
  return sweep(texts);
}

int sweep_words() {
#define OMREL_ROW(word, admitted, function) {word, #admitted},
  static constexpr const char* OPERATORS[][2] = {OMREL_OPERATORS(OMREL_ROW)};
  const std::string numbers[][2] = {{"5", "3"},
                                    {std::string(70, '7'), "13"},
                                    {std::string(130, '7'), std::string(61, '3')},
                                    {"5", std::string(70, '3')}};
  int failures = 0;
  for (const auto& pair : numbers) {
    for (const auto& [word, admitted] : OPERATORS) {
      failures += sweep_word(word, *admitted == 'T', pair);
    }
  }
  return failures;
}

}  // namespace

// The texts of the host have their room beforehand: the blocks that are counted are the library's.
int main() {
  big = omrel::bench::load_command(OMREL_LIBRARY);
  the_host.result.reserve(10000);
  the_host.variable.reserve(10000);
  the_host.result = "untouched";
  int failures = 0;
  for (const bool persistent : {false, true}) {
    fails_on = persistent;
    failures += sweep_words();
  }
  const char* const debug[] = {"big", "debug", "on"};
  big(nullptr, 3, debug, nullptr);
  failures += sweep({"big", "/", "100", "7"});  // searched step by step
  return failures == 0 && failures_met > 0 ? 0 : 1;
}
