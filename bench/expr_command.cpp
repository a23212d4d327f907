// Library-wide state: the interpreter and the names of its two variables, made on first use and
// kept until the process ends.
#include "bench/expr_command.h"

#include <algorithm>
#include <array>

namespace omrel::bench {
namespace {

struct Interpreter {
  Interpreter() {
    Tcl_FindExecutable(nullptr);
    tcl = Tcl_CreateInterp();
    for (Tcl_Obj* name : names) Tcl_IncrRefCount(name);
  }
  Tcl_Interp* tcl;
  std::array<Tcl_Obj*, 2> names = {Tcl_NewStringObj("a", -1), Tcl_NewStringObj("b", -1)};
};

Interpreter& interpreter() {
  static Interpreter the_interpreter;
  return the_interpreter;
}

}  // namespace

bool ExprCommand::knows(const std::string& word) {
  static const std::array<std::string, 14> OPERATORS = {"+",  "-", "*", "/", "%", "==", "<",
                                                        "**", "&", "|", "^", "~", "<<", ">>"};
  return std::find(OPERATORS.begin(), OPERATORS.end(), word) != OPERATORS.end();
}

ExprCommand::ExprCommand(const Case& c) : operands(c.operands) {
  const std::string expression = operands.size() == 1 ? c.word + "$a" : "$a " + c.word + " $b";
  script = Tcl_NewStringObj(("expr {" + expression + "}").c_str(), -1);
  Tcl_IncrRefCount(script);
}

ExprCommand::~ExprCommand() { Tcl_DecrRefCount(script); }

void ExprCommand::operator()(Host& host) const {
  const Interpreter& in = interpreter();
  for (std::size_t i = 0; i < operands.size(); ++i) {
    const std::string& text = operands[i];
    Tcl_ObjSetVar2(in.tcl, in.names[i], nullptr,
                   Tcl_NewStringObj(text.data(), static_cast<int>(text.size())), 0);
  }
  Tcl_EvalObjEx(in.tcl, script, 0);
  host.result = Tcl_GetStringResult(in.tcl);
}

}  // namespace omrel::bench
