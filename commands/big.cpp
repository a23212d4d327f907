// The frame of `big`: link check, argument count, choice of the operator, exception guard.
#include <cstdio>
#include <cstring>

#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "plugin/omrel_plugin.h"
#include "support/console.h"
#include "support/line_marker.h"

namespace omrel {
namespace {

enum Admitted { FOUR_OR_MORE, THREE, THREE_OR_FOUR };

struct Operator {
  const char* word;
  Admitted admitted;
  int (*function)(const Call& call);
};

const Operator OPERATORS[] = {
#define OMREL_ROW(word, admitted, function) {word, admitted, function},
    OMREL_OPERATORS(OMREL_ROW)
#undef OMREL_ROW
};

bool admits(Admitted admitted, int count) {
  switch (admitted) {
    case FOUR_OR_MORE:
      return count >= 4;
    case THREE:
      return count == 3;
    default:
      return count == 3 || count == 4;
  }
}

const Operator* find_operator(const char* word, int count) {
  for (const Operator& op : OPERATORS) {
    if (std::strcmp(op.word, word) == 0 && admits(op.admitted, count)) return &op;
  }
  return nullptr;
}

int print_syntax(const Call& call, const char* word) {
  std::printf("%s %s: Syntax is: %s <operator> value ?value?\n", call.name(), word, call.name());
  return 1;
}

int run(const Call& call) {
  const Operator* op = find_operator(call.word(), call.count);
  if (op != nullptr) return op->function(call);
  if (call.count >= 5) report_exception(call.name(), "Command undefined");
  if (call.count == 3) return print_syntax(call, call.word());
  std::printf("%s: %s not implemented\n", call.name(), call.word());
  return 1;
}

int run_guarded(const Call& call) {
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

int big(const Call& call) {
  mark_line();
  if (omrel_init(call.interp) != 0) return 1;
  if (call.count < 3) {
    print_syntax(call, "");
    set_result(call.interp, "");
    return 1;
  }
  return run_guarded(call);
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
