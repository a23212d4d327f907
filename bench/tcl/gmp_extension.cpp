// A Tcl extension with one command a word, gmp::+ and so on, each as one would write it: texts by
// Tcl_GetString, the calculation by GMP, a new object for the answer. The commands that update a
// variable reach it through the object of its name, as Tcl's own commands do.
#include <tcl.h>

#include <string>

#include "bench/gmp_commands.h"

namespace omrel::bench {
namespace {

constexpr int MAX_WORDS = 32;

class TclHost final : public GmpHost {
 public:
  TclHost(Tcl_Interp* tcl, Tcl_Obj* variable) : interp(tcl), name(variable) {}

  const char* variable_text() override {
    Tcl_Obj* value = Tcl_ObjGetVar2(interp, name, nullptr, TCL_LEAVE_ERR_MSG);
    if (value == nullptr) code = TCL_ERROR;
    return value == nullptr ? "0" : Tcl_GetString(value);
  }
  void set_result(const char* text) override { result = Tcl_NewStringObj(text, -1); }
  void store_result() override {
    Tcl_IncrRefCount(result);
    if (Tcl_ObjSetVar2(interp, name, nullptr, result, TCL_LEAVE_ERR_MSG) == nullptr) {
      code = TCL_ERROR;
    }
    if (code == TCL_OK) Tcl_SetObjResult(interp, result);
    Tcl_DecrRefCount(result);
    result = nullptr;
  }
  int finish() {
    if (result != nullptr) Tcl_SetObjResult(interp, result);
    return code;
  }

 private:
  Tcl_Interp* interp;
  Tcl_Obj* name;
  Tcl_Obj* result = nullptr;
  int code = TCL_OK;
};

// The calculation takes its operands behind two words.
int run(ClientData data, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  if (objc < 2 || objc >= MAX_WORDS) {
    Tcl_WrongNumArgs(interp, 1, objv, "operand ?operand ...?");
    return TCL_ERROR;
  }
  const char* words[MAX_WORDS] = {"gmp"};
  for (int i = 0; i < objc; ++i) words[i + 1] = Tcl_GetString(objv[i]);
  TclHost host(interp, objv[1]);
  (*static_cast<const GmpCommand*>(data))(host, objc + 1, words);
  return host.finish();
}

}  // namespace
}  // namespace omrel::bench

extern "C" DLLEXPORT int Gmp_Init(Tcl_Interp* interp) {
  if (Tcl_InitStubs(interp, "8.6", 0) == nullptr) return TCL_ERROR;
  for (const auto& [word, command] : omrel::bench::gmp_commands()) {
    auto* data = const_cast<omrel::bench::GmpCommand*>(&command);
    Tcl_CreateObjCommand(interp, ("gmp::" + word).c_str(), omrel::bench::run, data, nullptr);
  }
  return TCL_OK;
}
