// Loads plug-in libraries of the boundary in plugin/omrel_plugin.h into a Tcl 8.6 interpreter.
//
//   package require omrelhost
//   set about [omrelhost::load ./omrel_bignum.so]   ;# version 119 date ... comment ... commands
//   ... big + 1 2
//
// Each command of the library becomes a Tcl command of the same name. The handle that a plug-in
// sees is the interpreter's Home, which outlives every call; what belongs to one command call (the
// variable records, their texts, the result, the first failed variable access) is in its Call.
// Calls nest: a write may fire a trace whose script calls the plug-in again.
//
// Texts cross the boundary in Tcl's own UTF-8, in which a NUL character is the two bytes C0 80,
// so no text is cut short on the way in or out.
//
// A library is never unloaded. Its state is one for the whole process, and so is the lock that
// keeps two threads from being inside a plug-in at once.
#include <tcl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "plugin/omrel_plugin.h"

namespace {

struct Call;

// One interpreter, as plug-ins know it.
struct Home {
  Tcl_Interp* interp;
  Call* call;  // the innermost running call; null between calls
};

// A variable read during a call. Its text belongs to the call: a plug-in that has given the text
// back only no longer sees it, so giving it back twice or never does no harm.
struct Variable : HostVar {
  Home* home;
  std::string name;
  std::string text;
};

// Held while plug-in code runs; recursive because calls nest.
std::recursive_mutex plugin_lock;

// Calls running in the whole process. A plug-in may end the process inside one.
int active_calls = 0;

// Tcl and the plug-in each buffer what they write to the process's standard output. Whoever is
// about to give way to the other writes out first, so that the lines come in order.
void flush_tcl_output() {
  if (Tcl_Channel out = Tcl_GetStdChannel(TCL_STDOUT)) Tcl_Flush(out);
}
void flush_c_output() { std::fflush(stdout); }

// Channels that a script has open are written out even when a plug-in ends the process.
void finish_tcl_on_exit() {
  if (active_calls > 0) Tcl_FinalizeThread();
}

// Whether Tcl would read some byte of the text as no part of a character.
bool is_malformed(const char* text) {
  while (*text != '\0') {
    Tcl_UniChar character = 0;
    const int byte_count = Tcl_UtfToUniChar(text, &character);
    if (byte_count < 2 && (*text & 0x80) != 0) return true;
    text += byte_count;
  }
  return false;
}

// A copy of a plug-in's text. Stray bytes (half a character, say) become characters of their own.
Tcl_Obj* new_text(const char* text) {
  if (text == nullptr) return Tcl_NewObj();
  if (!is_malformed(text)) return Tcl_NewStringObj(text, -1);
  Tcl_DString repaired;
  Tcl_Encoding utf8 = Tcl_GetEncoding(nullptr, "utf-8");
  Tcl_ExternalToUtfDString(utf8, text, -1, &repaired);
  Tcl_FreeEncoding(utf8);
  Tcl_Obj* result = Tcl_NewStringObj(Tcl_DStringValue(&repaired), Tcl_DStringLength(&repaired));
  Tcl_DStringFree(&repaired);
  return result;
}

// Runs a command of a few words in the caller's scope; true when it succeeds.
bool evaluate(Tcl_Interp* interp, std::vector<Tcl_Obj*> words) {
  for (Tcl_Obj* word : words) Tcl_IncrRefCount(word);
  const int code = Tcl_EvalObjv(interp, static_cast<int>(words.size()), words.data(), 0);
  for (Tcl_Obj* word : words) Tcl_DecrRefCount(word);
  return code == TCL_OK;
}

// The answer of `info exists name` or `array exists name`; false when it cannot be had.
bool exists(Tcl_Interp* interp, const char* kind, const char* name) {
  int answer = 0;
  return evaluate(interp, {new_text(kind), new_text("exists"), new_text(name)}) &&
         Tcl_GetBooleanFromObj(nullptr, Tcl_GetObjResult(interp), &answer) == TCL_OK && answer != 0;
}

// One run of a plug-in's command. Locks the plug-in and keeps the interpreter and its Home alive
// until the end, whatever the scripts of traces delete meanwhile.
struct Call {
  explicit Call(Home& home) : home_(home), interp_(home.interp), outer_(home.call) {
    plugin_lock.lock();
    ++active_calls;
    Tcl_Preserve(interp_);
    Tcl_Preserve(&home_);
    home_.call = this;
  }

  ~Call() {
    if (failure_ != nullptr) Tcl_DiscardInterpState(failure_);
    set_result(nullptr);
    home_.call = outer_;
    Tcl_Release(&home_);
    Tcl_Release(interp_);
    --active_calls;
    plugin_lock.unlock();
  }

  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  // The record of a readable scalar variable, or null. Where there is simply no such variable (or
  // an array of that name) the interpreter is left as it was. A variable that exists but whose
  // read fails makes the whole call fail: taken for missing, it would be created over its value.
  Variable* read(const char* name) {
    flush_c_output();
    Tcl_InterpState before = Tcl_SaveInterpState(interp_, TCL_OK);
    Tcl_Obj* value = Tcl_GetVar2Ex(interp_, name, nullptr, TCL_LEAVE_ERR_MSG);
    Variable* variable = nullptr;
    if (value != nullptr) {
      variable = &variables_.emplace_back(Variable{{nullptr}, &home_, name, Tcl_GetString(value)});
      variable->value = variable->text.data();
    } else {
      keep_failure_of_existing(name);
    }
    Tcl_RestoreInterpState(interp_, before);
    flush_tcl_output();
    return variable;
  }

  // Sets a variable; false when Tcl refuses. After a failure nothing more is written.
  bool write(const char* name, const char* text) {
    if (failure_ != nullptr) return false;
    flush_c_output();
    Tcl_Obj* value = new_text(text);
    Tcl_IncrRefCount(value);
    const bool written = Tcl_SetVar2Ex(interp_, name, nullptr, value, TCL_LEAVE_ERR_MSG) != nullptr;
    Tcl_DecrRefCount(value);
    if (!written) {
      failure_ = Tcl_SaveInterpState(interp_, TCL_ERROR);
      Tcl_ResetResult(interp_);
    }
    flush_tcl_output();
    return written;
  }

  // Keeps the object as the call's result; null forgets what was kept.
  void set_result(Tcl_Obj* result) {
    if (result != nullptr) Tcl_IncrRefCount(result);
    if (result_ != nullptr) Tcl_DecrRefCount(result_);
    result_ = result;
  }

  // Turns the command's status into Tcl's. A failed variable access outweighs the status.
  int finish(int status, const char* command, const char* word) {
    if (failure_ != nullptr) {
      Tcl_InterpState failure = failure_;
      failure_ = nullptr;
      return Tcl_RestoreInterpState(interp_, failure);
    }
    if (status != 0) return fail(command, word);
    if (result_ != nullptr) Tcl_SetObjResult(interp_, result_);
    return TCL_OK;
  }

 private:
  void keep_failure_of_existing(const char* name) {
    Tcl_InterpState failed_read = Tcl_SaveInterpState(interp_, TCL_ERROR);
    if (failure_ == nullptr && exists(interp_, "::info", name) &&
        !exists(interp_, "::array", name)) {
      failure_ = failed_read;
    } else {
      Tcl_DiscardInterpState(failed_read);
    }
  }

  // The plug-in's result is the message. Where there is none, its message is on standard output.
  int fail(const char* command, const char* word) {
    Tcl_Obj* message = result_;
    if (message == nullptr || *Tcl_GetString(message) == '\0') {
      message = Tcl_ObjPrintf("\"%s%s%s\" failed; standard output says why", command,
                              *word == '\0' ? "" : " ", word);
    }
    Tcl_SetObjResult(interp_, message);
    Tcl_Obj* code[] = {Tcl_NewStringObj("OMREL", -1), new_text(command), new_text(word)};
    Tcl_SetObjErrorCode(interp_, Tcl_NewListObj(3, code));
    return TCL_ERROR;
  }

  Home& home_;
  Tcl_Interp* interp_;
  Call* outer_;
  std::deque<Variable> variables_;     // a deque: records stay where they are
  Tcl_Obj* result_ = nullptr;          // null while the plug-in has not set it
  Tcl_InterpState failure_ = nullptr;  // the first failed variable access
};

Call* running_call(void* interp) { return static_cast<Home*>(interp)->call; }

// The callbacks. Outside a command call there are no variables and no result. None lets an
// exception out: like Tcl itself they end the process when memory runs out.
extern "C" {

static HostVar* get_var(void* interp, const char* name, int) noexcept {
  Call* call = running_call(interp);
  return call != nullptr ? call->read(name) : nullptr;
}

static int set_var(void* interp, const char* name, const char* value, int) noexcept {
  Call* call = running_call(interp);
  return call != nullptr && call->write(name, value) ? 0 : 1;
}

static void set_var_value(HostVar* var, const char* value, int) noexcept {
  auto* variable = static_cast<Variable*>(var);
  Call* call = variable->home->call;
  if (call == nullptr || !call->write(variable->name.c_str(), value)) return;
  variable->text = value != nullptr ? value : "";
  variable->value = variable->text.data();
}

static void free_var_value(HostVar* var) noexcept { var->value = nullptr; }

static void free_value(char*) noexcept {}  // the call frees its variables' texts

static HostCommand* get_command(void* interp, const char* name) noexcept {
  Tcl_Interp* tcl = static_cast<Home*>(interp)->interp;
  Tcl_Command command = Tcl_FindCommand(tcl, name, nullptr, TCL_GLOBAL_ONLY);
  return reinterpret_cast<HostCommand*>(command);
}

static void set_result(void* interp, const char* text, int) noexcept {
  if (Call* call = running_call(interp)) call->set_result(new_text(text));
}

}  // extern "C"

// A Tcl command that a plug-in implements.
struct Command {
  Home* home;
  OmrelCommand function;
};

int run_command(ClientData data, Tcl_Interp*, int objc, Tcl_Obj* const objv[]) {
  const Command command = *static_cast<Command*>(data);  // a trace may delete the command
  std::vector<const char*> words;
  words.reserve(static_cast<std::size_t>(objc) + 1);
  for (int i = 0; i < objc; ++i) words.push_back(Tcl_GetString(objv[i]));
  words.push_back(nullptr);
  Call call(*command.home);
  flush_tcl_output();
  const int status = command.function(command.home, objc, words.data(), nullptr);
  flush_c_output();
  return call.finish(status, words[0], objc > 1 ? words[1] : "");
}

void delete_command(ClientData data) { delete static_cast<Command*>(data); }

// What a library exports for its host.
struct Exports {
  decltype(&_get_dll_version) version;
  decltype(&_get_dll_date) date;
  decltype(&_get_dll_comment) comment;
  decltype(&_get_command_list) commands;
  decltype(&_get_function_list) functions;
  decltype(&_get_export_count) count;
  decltype(&_export_common_routines) take_callbacks;
};

// These leave Tcl's message where a function is missing.
bool find_exports(Tcl_Interp* interp, Tcl_LoadHandle library, Exports& exports) {
  struct Needed {
    const char* name;
    void* function;  // the address of a pointer to one
  };
  const Needed all[] = {{"_get_dll_version", &exports.version},
                        {"_get_dll_date", &exports.date},
                        {"_get_dll_comment", &exports.comment},
                        {"_get_command_list", &exports.commands},
                        {"_get_function_list", &exports.functions},
                        {"_get_export_count", &exports.count},
                        {"_export_common_routines", &exports.take_callbacks}};
  return std::all_of(std::begin(all), std::end(all), [&](const Needed& needed) {
    void* const found = Tcl_FindSymbol(interp, library, needed.name);
    std::memcpy(needed.function, &found, sizeof found);
    return found != nullptr;
  });
}

// Finds every command's function, so that a library is taken whole or not at all.
bool find_functions(Tcl_Interp* interp, Tcl_LoadHandle library, const Exports& exports,
                    std::vector<OmrelCommand>& functions) {
  functions.resize(static_cast<std::size_t>(exports.count()));
  std::size_t k = 0;
  for (OmrelCommand& function : functions) {
    function =
        reinterpret_cast<OmrelCommand>(Tcl_FindSymbol(interp, library, exports.functions()[k++]));
    if (function == nullptr) return false;
  }
  return true;
}

// Hands over the callbacks; the ten entries that no plug-in calls have nothing behind them.
void hand_over_callbacks(const Exports& exports) {
  exports.take_callbacks(get_var, set_var, set_var_value, free_var_value, nullptr, nullptr,
                         get_command, nullptr, nullptr, set_result, nullptr, free_value, nullptr,
                         nullptr, nullptr, nullptr, nullptr);
}

void put(Tcl_Obj* dict, const char* key, Tcl_Obj* value) {
  Tcl_DictObjPut(nullptr, dict, new_text(key), value);
}

// Creates the library's commands; returns its description.
Tcl_Obj* create_commands(Home* home, const Exports& exports,
                         const std::vector<OmrelCommand>& functions) {
  Tcl_Obj* names = Tcl_NewListObj(0, nullptr);
  std::size_t k = 0;
  for (OmrelCommand function : functions) {
    const char* name = exports.commands()[k++];
    Tcl_CreateObjCommand(home->interp, name, run_command, new Command{home, function},
                         delete_command);
    Tcl_ListObjAppendElement(nullptr, names, new_text(name));
  }
  Tcl_Obj* description = Tcl_NewDictObj();
  put(description, "version", Tcl_NewIntObj(exports.version()));
  put(description, "date", new_text(exports.date()));
  put(description, "comment", new_text(exports.comment()));
  put(description, "commands", names);
  return description;
}

// vars ?pattern?: as `info vars`, in the caller's scope. Plug-ins expect the command of a host.
int vars_command(ClientData, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  std::vector<Tcl_Obj*> words = {new_text("::info"), new_text("vars")};
  words.insert(words.end(), objv + 1, objv + objc);
  return evaluate(interp, std::move(words)) ? TCL_OK : TCL_ERROR;
}

void supply_missing_commands(Tcl_Interp* interp) {
  if (Tcl_FindCommand(interp, "vars", nullptr, TCL_GLOBAL_ONLY) == nullptr) {
    Tcl_CreateObjCommand(interp, "::vars", vars_command, nullptr, nullptr);
  }
}

// omrelhost::load path
int load_command(ClientData data, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  if (objc != 2) {
    Tcl_WrongNumArgs(interp, 1, objv, "path");
    return TCL_ERROR;
  }
  Tcl_LoadHandle library = nullptr;
  if (Tcl_LoadFile(interp, objv[1], nullptr, 0, nullptr, &library) != TCL_OK) return TCL_ERROR;
  Exports exports{};
  std::vector<OmrelCommand> functions;
  if (!find_exports(interp, library, exports) ||
      !find_functions(interp, library, exports, functions)) {
    Tcl_FSUnloadFile(nullptr, library);
    return TCL_ERROR;
  }
  const std::lock_guard guard(plugin_lock);
  hand_over_callbacks(exports);
  supply_missing_commands(interp);
  Tcl_SetObjResult(interp, create_commands(static_cast<Home*>(data), exports, functions));
  return TCL_OK;
}

void free_home(char* home) { delete reinterpret_cast<Home*>(home); }

// The interpreter goes; a call that is still running in it keeps its Home a little longer.
void release_home(ClientData home, Tcl_Interp*) { Tcl_EventuallyFree(home, free_home); }

// The interpreter's Home, made on the first call.
Home* home_of(Tcl_Interp* interp) {
  constexpr const char* KEY = "omrelhost";
  if (void* home = Tcl_GetAssocData(interp, KEY, nullptr)) return static_cast<Home*>(home);
  auto* home = new Home{interp, nullptr};
  Tcl_SetAssocData(interp, KEY, release_home, home);
  return home;
}

}  // namespace

extern "C" {

DLLEXPORT int Omrelhost_Init(Tcl_Interp* interp) {
  if (Tcl_InitStubs(interp, "8.6", 0) == nullptr) return TCL_ERROR;
  [[maybe_unused]] static const int once = std::atexit(finish_tcl_on_exit);
  Tcl_CreateObjCommand(interp, "::omrelhost::load", load_command, home_of(interp), nullptr);
  return Tcl_PkgProvide(interp, "omrelhost", OMRELHOST_VERSION);
}

// An untrusted script could end its host with one long number.
DLLEXPORT int Omrelhost_SafeInit(Tcl_Interp* interp) {
  if (Tcl_InitStubs(interp, "8.6", 0) == nullptr) return TCL_ERROR;
  Tcl_SetObjResult(interp, new_text("omrelhost refuses safe interpreters: a plug-in's command can "
                                    "end the whole process"));
  return TCL_ERROR;
}
}
