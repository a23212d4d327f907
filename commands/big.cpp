// The frame of `big`: link check, argument count, choice of the operator, exception guard.
#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>

#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "plugin/omrel_plugin.h"
#include "support/console.h"
#include "support/line_marker.h"

namespace omrel {
namespace {

// Numbers of texts that admit a word.
struct Admitted {
  bool admits(int count) const { return least <= count && count <= most; }

  int least;
  int most;
};
constexpr Admitted FOUR_OR_MORE = {4, INT_MAX};
constexpr Admitted THREE = {3, 3};
constexpr Admitted THREE_OR_FOUR = {3, 4};

struct Operator {
  const char* word;
  Admitted admitted;
  int (*function)(const Call& call);
};

constexpr Operator OPERATORS[] = {
#define OMREL_ROW(word, admitted, function) {word, admitted, function},
    OMREL_OPERATORS(OMREL_ROW)
#undef OMREL_ROW
};

// A word of up to eight characters as a number; 0 for a longer one.
constexpr std::uint64_t key_of(const char* word) {
  std::uint64_t key = 0;
  for (int i = 0; word[i] != '\0'; ++i) {
    if (i == 8) return 0;
    key = (key << 8) | static_cast<unsigned char>(word[i]);
  }
  return key;
}

// A word's row is found by hashing its key, so that every word costs the same.
struct Slot {
  std::uint64_t key = 0;
  const Operator* row = nullptr;
};
using Slots = std::array<Slot, 256>;

// The slot of a key, at its hash or behind; an empty one for a key without a row, as 0 is.
constexpr std::size_t slot_of(const Slots& slots, std::uint64_t key) {
  auto i = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15) >> 56);  // Fibonacci hashing
  while (slots[i].key != key && slots[i].key != 0) i = (i + 1) % slots.size();
  return i;
}

// A word that could not be found, being too long or having a row already, does not compile.
constexpr Slots INDEX = [] {
  Slots slots;
  for (const Operator& row : OPERATORS) {
    const std::uint64_t key = key_of(row.word);
    if (key == 0) throw "an operator word has one to eight letters";
    Slot& slot = slots[slot_of(slots, key)];
    if (slot.key == key) throw "an operator word has one row";
    slot = {key, &row};
  }
  return slots;
}();

int print_syntax(const Call& call, const char* word) {
  std::printf("%s %s: Syntax is: %s <operator> value ?value?\n", call.name(), word, call.name());
  return 1;
}

int run(const Call& call) {
  const Operator* op = INDEX[slot_of(INDEX, key_of(call.word()))].row;
  if (op != nullptr && op->admitted.admits(call.count)) return op->function(call);
  if (call.count >= 5) report_exception(call.name(), "Command undefined");
  if (call.count == 3) return print_syntax(call, call.word());
  std::printf("%s: %s not implemented\n", call.name(), call.word());
  return 1;
}

int big(const Call& call) {
  mark_line();
  if (omrel_init(call.interp) != 0) return 1;
  if (call.count < 3) {
    print_syntax(call, "");
    set_result(call.interp, "");
    return 1;
  }
  try {
    return run(call);
  } catch (...) {
    console_open(false);
    console_printf("lib omrel_bignum: Unhandled exception near line %li\n",
                   static_cast<long>(line_marker));
    set_result(call.interp, "lib omrel_bignum: Unhandled exception in omrel_bignum.dll");
    return 1;
  }
}

}  // namespace
}  // namespace omrel

int quarnCommandBigNum(void* interp, int argc, const char* const* argv, void* /*private_data*/) {
  // A host whose setResult throws even for the guard's own text must not unwind through C.
  try {
    return omrel::big({interp, argc, argv});
  } catch (...) {
    return 1;
  }
}
