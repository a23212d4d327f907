// The same calculation as Tcl's own `expr`.
#pragma once

#include <tcl.h>

#include <string>
#include <vector>

#include "bench/cases.h"
#include "bench/host.h"

namespace omrel::bench {

// A compiled expression over variables that get fresh texts at each call, so that every call reads
// decimal digits and writes them, as `big` does. What is between is a script's usual cost.
class ExprCommand {
 public:
  // Whether Tcl has an operator for the word. All but `~` give the same answer for the operands
  // measured here; Tcl's `~` is -x - 1, which costs no less.
  static bool knows(const std::string& word);

  explicit ExprCommand(const Case& c);
  ~ExprCommand();
  ExprCommand(const ExprCommand&) = delete;
  ExprCommand& operator=(const ExprCommand&) = delete;

  void operator()(Host& host) const;

 private:
  const std::vector<std::string>& operands;
  Tcl_Obj* script;
};

}  // namespace omrel::bench
