// Loads plug-in libraries with the boundary of plugin/omrel_plugin.h into Tcl, version 8.6 or 9.
//
//   package require omrelhost
//   set about [omrelhost::load ./omrel_bignum.so]   ;# version 119 date ... comment ... commands
//   ... big + 1 2
//
// Each command of the library becomes a Tcl command of the same name. What a plug-in's command
// costs beside Tcl's own dispatch is this file's doing, so a call pays for what it needs and for
// nothing else:
//
// Order of output. Tcl and the C library each buffer what they write to the process's standard
// output. Whoever is about to give way to the other writes out first, where anything is waiting:
// Tcl before plug-in code runs or goes on, the C library before Tcl or a script of it does. Which
// channel is Tcl's is asked once, and again when a script has closed it.
//
// Lifetimes. The handle that a plug-in sees is the interpreter's Home. Tcl keeps an interpreter,
// and with it the Home, for as long as a command runs in it, even one that a trace's script has
// deleted. What belongs to one run of a command (its words, the variable records, the result, the
// first failed variable access) is in its Call. Texts lie in Tcl's objects, on which the Call
// holds a reference, so no text is copied for the plug-in: an object with another holder is never
// changed by Tcl. A Command may be deleted by a trace while it runs, so a copy of it is run.
//
// Nesting. Only a variable access runs scripts, those of the variable's traces, and they may call
// the plug-in again, in this interpreter or another one. Such a Call has the one around it for its
// outer. Nothing of a Call is kept in the interpreter before the plug-in's function has returned:
// then its result is set, or the failed access restored. Tcl itself saves the interpreter's state
// around traces; a failed access alone leaves marks there, which are taken off or kept as failure.
//
// Texts cross the boundary in Tcl's own UTF-8, in which a NUL character is the two bytes C0 80,
// so no text is cut short on the way in or out.
//
// A library is never unloaded. Its state is one for the whole process, and so is the lock that
// keeps two threads from being inside a plug-in at once.
#include <tcl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <forward_list>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>
#if __has_include(<stdio_ext.h>)
#include <stdio_ext.h>
#endif

#include "plugin/omrel_plugin.h"

namespace {

class Call;

// A reference on an object of Tcl's, or none.
class Object {
 public:
  Object(Tcl_Obj* object = nullptr) : object_(object) {
    if (object_ != nullptr) Tcl_IncrRefCount(object_);
  }
  ~Object() {
    if (object_ != nullptr) Tcl_DecrRefCount(object_);
  }
  Object(const Object& other) : Object(other.object_) {}
  Object(Object&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Object& operator=(Object other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  Tcl_Obj* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Tcl_Obj* object_;
};

// The object's text, which most objects have at hand. It stays while the object has two holders.
char* text_of(Tcl_Obj* object) {
  return object->bytes != nullptr ? object->bytes : Tcl_GetString(object);
}

// One interpreter, as plug-ins know it.
struct Home {
  explicit Home(Tcl_Interp* its_interp) : interp(its_interp) {}
  ~Home() {
    if (output != nullptr) Tcl_DeleteCloseHandler(output, forget_output, this);
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  static void forget_output(ClientData home) { static_cast<Home*>(home)->output = nullptr; }

  Tcl_Interp* interp;
  Tcl_Channel output = nullptr;     // Tcl's standard output, once found and until it is closed
  Call* call = nullptr;             // the innermost running call; null between calls
  std::array<Object, 10> digits{};  // answers of one digit, made once
  // Words of commands, in which Tcl keeps the commands that it has found.
  Object info = Tcl_NewStringObj("::info", -1);
  Object array = Tcl_NewStringObj("::array", -1);
  Object exists = Tcl_NewStringObj("exists", -1);
};

// A variable as a plug-in sees it. Its text belongs to the call: a plug-in that has given the text
// back only no longer sees it, so giving it back twice or never does no harm.
struct Variable : HostVar {
  Variable(Home& owner, Object its_name, Object text) : home(&owner), name(std::move(its_name)) {
    show(std::move(text));
  }
  void show(Object text) {
    held = std::move(text);
    value = text_of(held.get());
  }

  Home* home;
  Object name;
  Object held;
};

// Held while plug-in code runs; recursive because calls nest.
std::recursive_mutex plugin_lock;

// Calls running in the whole process. A plug-in may end the process inside one.
int active_calls = 0;

// A script may have closed the channel and opened another one in its place.
void flush_tcl_output(Home& home) {
  if (home.output == nullptr) {
    home.output = Tcl_GetStdChannel(TCL_STDOUT);
    if (home.output == nullptr) return;
    Tcl_CreateCloseHandler(home.output, Home::forget_output, &home);
  }
  if (Tcl_OutputBuffered(home.output) > 0) Tcl_Flush(home.output);
}

void flush_c_output() {
#if __has_include(<stdio_ext.h>)
  if (__fpending(stdout) == 0) return;
#endif
  std::fflush(stdout);
}

// Channels that a script has open are written out even when a plug-in ends the process.
void finish_tcl_on_exit() {
  if (active_calls > 0) Tcl_FinalizeThread();
}

bool is_ascii(const char* text, std::size_t length) {
  std::uint64_t seen = 0;
  for (; length >= sizeof seen; text += sizeof seen, length -= sizeof seen) {
    std::uint64_t word = 0;
    std::memcpy(&word, text, sizeof word);
    seen |= word;
  }
  for (; length > 0; ++text, --length) seen |= static_cast<unsigned char>(*text);
  return (seen & 0x8080'8080'8080'8080) == 0;
}

// Whether Tcl would read some byte of the text as no part of a character.
bool is_malformed(const char* text) {
  while (*text != '\0') {
    Tcl_UniChar character = 0;
    const auto byte_count = Tcl_UtfToUniChar(text, &character);
    if (byte_count < 2 && (*text & 0x80) != 0) return true;
    text += byte_count;
  }
  return false;
}

// Stray bytes (half a character, say) become characters of their own.
Tcl_Obj* new_repaired_text(const char* text) {
  Tcl_DString repaired;
  Tcl_Encoding utf8 = Tcl_GetEncoding(nullptr, "utf-8");
  Tcl_ExternalToUtfDString(utf8, text, -1, &repaired);
  Tcl_FreeEncoding(utf8);
  Tcl_Obj* result = Tcl_NewStringObj(Tcl_DStringValue(&repaired), Tcl_DStringLength(&repaired));
  Tcl_DStringFree(&repaired);
  return result;
}

// A copy of a plug-in's text.
Tcl_Obj* new_text(const char* text) {
  if (text == nullptr) return Tcl_NewObj();
  const std::size_t length = std::strlen(text);
  if (!is_ascii(text, length) && is_malformed(text)) return new_repaired_text(text);
  return Tcl_NewStringObj(text, static_cast<decltype(Tcl_Obj::length)>(length));
}

// The same for an answer. Truth values and other single digits are objects that all answers share.
Object new_answer(const Home& home, const char* text) {
  const bool is_digit = text != nullptr && *text >= '0' && *text <= '9' && text[1] == '\0';
  return is_digit ? home.digits[static_cast<std::size_t>(*text - '0')] : new_text(text);
}

// The answer of `info exists name` or `array exists name`; false when it cannot be had.
bool exists(const Home& home, const Object& kind, const Object& name) {
  Tcl_Obj* const words[] = {kind.get(), home.exists.get(), name.get()};
  int answer = 0;
  return Tcl_EvalObjv(home.interp, 3, words, 0) == TCL_OK &&
         Tcl_GetBooleanFromObj(nullptr, Tcl_GetObjResult(home.interp), &answer) == TCL_OK &&
         answer != 0;
}

// The texts of a command's words, and a null behind them.
class Texts {
 public:
  Texts(int count, Tcl_Obj* const objects[]) : objects_(objects), count_(count) {
    if (count >= FEW) many_ = std::make_unique<const char*[]>(static_cast<std::size_t>(count) + 1);
    texts_ = many_ != nullptr ? many_.get() : few_;
    for (int i = 0; i < count; ++i) texts_[i] = text_of(objects[i]);
    texts_[count] = nullptr;
  }

  const char* const* get() const { return texts_; }

  // The object of a name: the word itself where it is one, in which Tcl keeps what it has found
  // out about the variable, as it does for compiled code.
  Object object_of(const char* name) const {
    for (int i = 0; i < count_; ++i) {
      if (texts_[i] == name) return objects_[i];
    }
    return new_text(name);
  }

 private:
  static constexpr int FEW = 8;

  Tcl_Obj* const* objects_;
  int count_;
  const char** texts_;
  const char* few_[FEW];
  std::unique_ptr<const char*[]> many_;
};

// One run of a plug-in's command.
class Call {
 public:
  Call(Home& home, int objc, Tcl_Obj* const objv[])
      : lock_(plugin_lock),
        home_(home),
        interp_(home.interp),
        outer_(std::exchange(home.call, this)),
        texts_(objc, objv) {
    ++active_calls;
  }

  ~Call() {
    --active_calls;
    if (failure_ != nullptr) Tcl_DiscardInterpState(failure_);
    home_.call = outer_;
  }

  const char* const* texts() const { return texts_.get(); }

  // The record of a readable scalar variable, or null. Where there is simply no such variable (or
  // an array of that name) the interpreter is left without marks. A variable that exists but whose
  // read fails makes the whole call fail: taken for missing, it would be created over its value.
  Variable* read(const char* name_text) {
    Object name = texts_.object_of(name_text);
    flush_c_output();
    Object value = Tcl_ObjGetVar2(interp_, name.get(), nullptr, TCL_LEAVE_ERR_MSG);
    if (!value) keep_failure_of_existing(name);
    flush_tcl_output(home_);
    return value ? new_record(std::move(name), std::move(value)) : nullptr;
  }

  // Sets a variable; false when Tcl refuses. After a failure nothing more is written.
  bool write(const Object& name, const Object& value) {
    if (failure_ != nullptr) return false;
    flush_c_output();
    const bool written =
        Tcl_ObjSetVar2(interp_, name.get(), nullptr, value.get(), TCL_LEAVE_ERR_MSG) != nullptr;
    if (!written) {
      failure_ = Tcl_SaveInterpState(interp_, TCL_ERROR);
      Tcl_ResetResult(interp_);
    }
    flush_tcl_output(home_);
    return written;
  }

  bool write(const char* name, const char* text) {
    return write(texts_.object_of(name), new_text(text));
  }

  // The record shows what it was given, whatever a trace has made of the variable.
  void update(Variable& variable, const char* text) {
    const Object value = new_answer(home_, text);
    if (!write(variable.name, value)) return;
    written_ = value;
    variable.show(value);
  }

  // Words that update a variable answer with the text that they have just written.
  void set_result(const char* text) {
    const bool same =
        written_ && text != nullptr && std::strcmp(text_of(written_.get()), text) == 0;
    result_ = same ? written_ : new_answer(home_, text);
  }

  // Turns the command's status into Tcl's. A failed variable access outweighs the status.
  int finish(int status, const char* command, const char* word) {
    if (failure_ != nullptr) {
      return Tcl_RestoreInterpState(interp_, std::exchange(failure_, nullptr));
    }
    if (status != 0) return fail(command, word);
    if (result_) Tcl_SetObjResult(interp_, result_.get());
    return TCL_OK;
  }

 private:
  // The first record lies in the call itself. Records stay where they are.
  Variable* new_record(Object name, Object value) {
    if (!first_) return &first_.emplace(home_, std::move(name), std::move(value));
    return &others_.emplace_front(home_, std::move(name), std::move(value));
  }

  void keep_failure_of_existing(const Object& name) {
    Tcl_InterpState failed_read = Tcl_SaveInterpState(interp_, TCL_ERROR);
    if (failure_ == nullptr && exists(home_, home_.info, name) &&
        !exists(home_, home_.array, name)) {
      failure_ = failed_read;
    } else {
      Tcl_DiscardInterpState(failed_read);
    }
    Tcl_ResetResult(interp_);
  }

  // The plug-in's result is the message. Where there is none, its message is on standard output.
  int fail(const char* command, const char* word) {
    Tcl_Obj* message = result_.get();
    if (message == nullptr || *text_of(message) == '\0') {
      message = Tcl_ObjPrintf("\"%s%s%s\" failed; standard output says why", command,
                              *word == '\0' ? "" : " ", word);
    }
    Tcl_SetObjResult(interp_, message);
    Tcl_Obj* code[] = {Tcl_NewStringObj("OMREL", -1), new_text(command), new_text(word)};
    Tcl_SetObjErrorCode(interp_, Tcl_NewListObj(3, code));
    return TCL_ERROR;
  }

  std::unique_lock<std::recursive_mutex> lock_;
  Home& home_;
  Tcl_Interp* interp_;
  Call* outer_;
  Texts texts_;
  std::optional<Variable> first_;
  std::forward_list<Variable> others_;
  Object written_;                     // what a record has last been set to
  Object result_;                      // none while the plug-in has not set it
  Tcl_InterpState failure_ = nullptr;  // the first failed variable access
};

// The callbacks. Outside a command call there are no variables and no result. None lets an
// exception out: like Tcl itself they end the process when memory runs out.
extern "C" {

static HostVar* get_var(void* interp, const char* name, int) noexcept {
  Call* call = static_cast<Home*>(interp)->call;
  return call != nullptr ? call->read(name) : nullptr;
}

static int set_var(void* interp, const char* name, const char* value, int) noexcept {
  Call* call = static_cast<Home*>(interp)->call;
  return call != nullptr && call->write(name, value) ? 0 : 1;
}

static void set_var_value(HostVar* var, const char* value, int) noexcept {
  auto* variable = static_cast<Variable*>(var);
  if (Call* call = variable->home->call) call->update(*variable, value);
}

static void free_var_value(HostVar* var) noexcept { var->value = nullptr; }

static void free_value(char*) noexcept {}  // the call frees its variables' texts

static HostCommand* get_command(void* interp, const char* name) noexcept {
  Tcl_Interp* tcl = static_cast<Home*>(interp)->interp;
  Tcl_Command command = Tcl_FindCommand(tcl, name, nullptr, TCL_GLOBAL_ONLY);
  return reinterpret_cast<HostCommand*>(command);
}

static void set_result(void* interp, const char* text, int) noexcept {
  if (Call* call = static_cast<Home*>(interp)->call) call->set_result(text);
}

}  // extern "C"

// A Tcl command that a plug-in implements.
struct Command {
  Home* home;
  OmrelCommand function;
};

int run_command(ClientData data, Tcl_Interp*, int objc, Tcl_Obj* const objv[]) noexcept {
  const auto [home, function] = *static_cast<Command*>(data);  // which a trace may delete
  Call call(*home, objc, objv);
  flush_tcl_output(*home);
  const int status = function(home, objc, call.texts(), nullptr);
  flush_c_output();
  return call.finish(status, call.texts()[0], objc > 1 ? call.texts()[1] : "");
}

// What a library exports for its host.
struct Exports {
  decltype(&_get_dll_version) version;
  decltype(&_get_dll_date) date;
  decltype(&_get_dll_comment) comment;
  decltype(&_get_command_list) commands;
  decltype(&_get_function_list) functions;
  decltype(&_get_export_count) count;
  decltype(&_export_common_routines) take_callbacks;
  std::vector<OmrelCommand> run;  // the commands' functions
};

// Finds all of them, for a library is taken whole or not at all; leaves Tcl's message otherwise.
bool find_exports(Tcl_Interp* interp, Tcl_LoadHandle library, Exports& exports) {
  const auto find = [&]<class Function>(const char* name, Function& function) {
    function = reinterpret_cast<Function>(Tcl_FindSymbol(interp, library, name));
    return function != nullptr;
  };
  if (!find("_get_dll_version", exports.version) || !find("_get_dll_date", exports.date) ||
      !find("_get_dll_comment", exports.comment) || !find("_get_command_list", exports.commands) ||
      !find("_get_function_list", exports.functions) || !find("_get_export_count", exports.count) ||
      !find("_export_common_routines", exports.take_callbacks)) {
    return false;
  }
  exports.run.resize(static_cast<std::size_t>(exports.count()));
  const char* const* name = exports.functions();
  return std::all_of(exports.run.begin(), exports.run.end(),
                     [&](OmrelCommand& function) { return find(*name++, function); });
}

// Creates the library's commands; returns its description, a dictionary.
Tcl_Obj* create_commands(Home* home, const Exports& exports) {
  Tcl_Obj* names = Tcl_NewListObj(0, nullptr);
  for (std::size_t k = 0; k < exports.run.size(); ++k) {
    const char* name = exports.commands()[k];
    Tcl_CreateObjCommand(home->interp, name, run_command, new Command{home, exports.run[k]},
                         [](ClientData command) { delete static_cast<Command*>(command); });
    Tcl_ListObjAppendElement(nullptr, names, new_text(name));
  }
  Tcl_Obj* description[] = {new_text("version"),  Tcl_NewIntObj(exports.version()),
                            new_text("date"),     new_text(exports.date()),
                            new_text("comment"),  new_text(exports.comment()),
                            new_text("commands"), names};
  return Tcl_NewListObj(8, description);
}

// vars ?pattern?: as `info vars`, in the caller's scope. Plug-ins expect the command of a host.
int vars_command(ClientData, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
  const Object info = new_text("::info");
  const Object vars = new_text("vars");
  std::vector<Tcl_Obj*> words = {info.get(), vars.get()};
  words.insert(words.end(), objv + 1, objv + objc);
  return Tcl_EvalObjv(interp, objc + 1, words.data(), 0) == TCL_OK ? TCL_OK : TCL_ERROR;
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
  if (!find_exports(interp, library, exports)) {
    Tcl_FSUnloadFile(nullptr, library);
    return TCL_ERROR;
  }
  const std::lock_guard guard(plugin_lock);
  // The ten entries that no plug-in calls have nothing behind them.
  exports.take_callbacks(get_var, set_var, set_var_value, free_var_value, nullptr, nullptr,
                         get_command, nullptr, nullptr, set_result, nullptr, free_value, nullptr,
                         nullptr, nullptr, nullptr, nullptr);
  if (Tcl_FindCommand(interp, "vars", nullptr, TCL_GLOBAL_ONLY) == nullptr) {
    Tcl_CreateObjCommand(interp, "::vars", vars_command, nullptr, nullptr);
  }
  Tcl_SetObjResult(interp, create_commands(static_cast<Home*>(data), exports));
  return TCL_OK;
}

// The interpreter's Home, made on the first call.
Home* home_of(Tcl_Interp* interp) {
  constexpr const char* KEY = "omrelhost";
  if (void* home = Tcl_GetAssocData(interp, KEY, nullptr)) return static_cast<Home*>(home);
  auto* home = new Home(interp);
  for (std::size_t i = 0; i < home->digits.size(); ++i) {
    home->digits[i] = Tcl_NewIntObj(static_cast<int>(i));
  }
  Tcl_SetAssocData(
      interp, KEY, [](ClientData data, Tcl_Interp*) { delete static_cast<Home*>(data); }, home);
  return home;
}

}  // namespace

extern "C" {

DLLEXPORT int Omrelhost_Init(Tcl_Interp* interp) {
  if (Tcl_InitStubs(interp, "8.6-", 0) == nullptr) return TCL_ERROR;
  [[maybe_unused]] static const int once = std::atexit(finish_tcl_on_exit);
  Tcl_CreateObjCommand(interp, "::omrelhost::load", load_command, home_of(interp), nullptr);
  return Tcl_PkgProvide(interp, "omrelhost", OMRELHOST_VERSION);
}

// An untrusted script could end its host with one long number.
DLLEXPORT int Omrelhost_SafeInit(Tcl_Interp* interp) {
  if (Tcl_InitStubs(interp, "8.6-", 0) == nullptr) return TCL_ERROR;
  Tcl_SetObjResult(interp, new_text("omrelhost refuses safe interpreters: a plug-in's command can "
                                    "end the whole process"));
  return TCL_ERROR;
}
}
