// Calls every word of the loaded library while its first allocation fails, then its second, and so
// on until a call meets no failure: that one alone, and with all that follow. Each call has a
// process of its own, in which malloc is ours. It must give the right answer, or the word's answer
// for want of memory, or the message that ends the process, and leave no block behind.
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
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

}  // namespace

// What the library is to call must be seen from it.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_realloc(void* block, std::size_t n);
void __libc_free(void* block);

// Both go here: a compiler makes the call of one by the other a call of itself.
static void* allocate(void* block, std::size_t n) {
  if (fails_now()) return nullptr;
  if (block != nullptr) replace(block, nullptr);
  void* const moved = __libc_realloc(block, n);
  if (is_watching) replace(nullptr, moved);
  return moved;
}
void* realloc(void* block, std::size_t n) { return allocate(block, n); }
void* malloc(std::size_t n) { return allocate(nullptr, n); }
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
long failures_met = 0;  // of memory
long faults = 0;        // of the library

// What a call's process writes, the buffer of its standard output: all processes share it.
constexpr std::size_t ROOM = 1 << 16;
char* written;

void tell(const char* how) {
  std::printf("|%s|%s|%s%c", how, the_host.result.c_str(), the_host.variable.c_str(), '\0');
}

bool leaks_when_unloaded() {
  void* library = dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  dlclose(library);
  dlclose(library);
  return std::any_of(blocks, std::end(blocks), [](void* block) { return block != nullptr; });
}

// The child process; its status says whether a failure was met.
[[noreturn]] void call(const Texts& texts) {
  std::atexit([] {
    is_watching = false;
    tell("ends");
  });
  is_watching = true;
  const int code = big(nullptr, static_cast<int>(texts.size()), texts.data(), nullptr);
  is_watching = false;
  tell(leaks_when_unloaded() ? "leaks" : code == 0 ? "succeeds" : "fails");
  _exit(calls_to_failure > 0 ? 1 : 0);
}

// Calls in a child process, whose allocation of that number fails: what it wrote, how it went,
// result and variable. Returns whether it met no failure.
bool is_through(const Texts& texts, long number, std::string& outcome) {
  int status = 0;
  calls_to_failure = number;
  const pid_t child = fork();
  if (child == 0) call(texts);
  waitpid(child, &status, 0);
  outcome = WIFSIGNALED(status) ? "|signal" : written;
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

bool is_one_of(const std::string& word, const char* words) {
  return std::string(words).find(" " + word + " ") != std::string::npos;
}

// How a word goes, and with which result, when there is no memory for its answer's text.
std::string fallback_of(const char* word) {
  if (is_one_of(word, " & | fdiv mean fmod inttobin *= /= ^= &= |= += -= ")) return "|succeeds|";
  if (is_one_of(word, " div2 pow2 div10 abs fib fact sqrt bintoint ~ ")) return "|fails|";
  return is_one_of(word, " + - * / % ^ ** pow max min rnd << >> ++ -- ") ? "|fails|0" : "|none";
}

void sweep(const Texts& texts) {
  const std::string value = the_host.variable, fallback = fallback_of(texts[1]);
  const bool is_update = *texts[2] == 'x';
  const std::string stored = is_update ? fallback.substr(fallback.rfind('|') + 1) : value;
  const std::string without_text = fallback + "|" + stored;
  const std::string ending = "Exception: Out of memory in bignum()|ends|untouched|" + value;
  std::string right, got;
  is_through(texts, LONG_MAX, right);
  bool is_last = false;
  for (long number = 1; !is_last; ++number) {
    is_last = is_through(texts, number, got);
    failures_met += is_last ? 0 : 1;
    const bool is_excused = got.ends_with(ending) || got.ends_with(without_text);
    if (got == right || (!is_last && is_excused)) continue;
    std::fprintf(stderr, "big %s %.99s, allocation %ld: %.999s\n", texts[1], texts[2], number,
                 got.c_str());
    ++faults;
  }
}

// The call of a word on two numbers and a width, the first number in the variable for a word that
// updates one. Answers of up to 300 digits need no memory, so there are longer ones.
void sweep_word(const std::string& word, bool takes_three, const std::string* numbers) {
  static const std::string BITS(1200, '1');
  Texts texts{"big", word.c_str(), numbers[0].c_str(), numbers[1].c_str(), "200"};
  if (is_one_of(word, " += -= *= /= &= |= ^= ++ -- ")) texts[2] = "x";
  if (is_one_of(word, " fact fib pow2 ")) texts[2] = word == "fact" ? "300" : "2000";
  if (word == "bintoint") texts[2] = BITS.c_str();
  if (is_one_of(word, " ** pow << >> ")) texts[3] = "7";
  if (word == "rnd") texts[2] = texts[3] = "7";  // the draw is 7
  if (takes_three) texts.resize(3);
  the_host.variable = numbers[0];
  sweep(texts);
}

void sweep_words() {
  const std::string numbers[][2] = {{"5", "3"},
                                    {std::string(330, '7'), "13"},
                                    {std::string(700, '7'), std::string(400, '3')},
                                    {"5", std::string(330, '3')}};
  for (const auto& pair : numbers) {
#define OMREL_ROW(word, admitted, function) sweep_word(word, *#admitted == 'T', pair);
    OMREL_OPERATORS(OMREL_ROW)
  }
}

}  // namespace

// The texts of the host have their room beforehand: the blocks that are counted are the library's.
int main() {
  big = omrel::bench::load_command(OMREL_LIBRARY);
  the_host.result.reserve(10000);
  the_host.variable.reserve(10000);
  the_host.result = "untouched";
  written = static_cast<char*>(
      mmap(nullptr, ROOM, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  std::setvbuf(stdout, written, _IOFBF, ROOM);
  for (const bool persistent : {false, true}) {
    fails_on = persistent;
    sweep_words();
  }
  const char* const debug[] = {"big", "debug", "on"};
  big(nullptr, 3, debug, nullptr);
  sweep({"big", "/", "100", "7"});  // searched step by step
  return faults == 0 && failures_met > 0 ? 0 : 1;
}
