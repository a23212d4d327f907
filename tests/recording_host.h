// A host and a platform for tests. The host keeps variables and commands by name, records every
// callback, and fails the test when a value text is outstanding. The platform makes marks and bytes
// on standard output, in the order of a real console, of colours ("{12}") and direct writes; its
// block is the byte FE. With them, what tables of calls need.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "plugin/omrel_plugin.h"
#include "support/platform.h"

namespace omrel::test {

using Words = std::vector<std::string>;

// Words of a text: {} is the empty one, % stands for white space, 0^400_7 for 400 zeros and 7.
Words split(const std::string& text);

std::string printable(const Words& words);  // shortened, for a failure's message

// Of operator words: whether one is among those of a text with blanks around each, names a variable
// that it updates, takes no second operand.
bool is_one_of(const std::string& word, const char* words);
bool updates(const std::string& word);
bool takes_one(const std::string& word);

// The callbacks that the library calls, and their places among the 17.
inline const std::map<std::string, int> CALLBACKS{
    {"getVar", 0},     {"setVar", 1},    {"setVarValue", 2}, {"freeVarValue", 3},
    {"getCommand", 6}, {"setResult", 9}, {"freeValue", 11}};

// The result of a call that an exception ended.
inline const std::string GUARD = "lib omrel_bignum: Unhandled exception in omrel_bignum.dll";

// What the function writes to standard output.
template <class Function>
std::string capture_output(Function function) {
  ::testing::internal::CaptureStdout();
  function();
  return ::testing::internal::GetCapturedStdout();
}

// Fills the buffers kept for reuse: what earlier calls have left in them decides nothing.
void soil_buffers();

// In a death test: standard output becomes the error output that is judged. A function that returns
// ends the process with RETURNED and its code, which is no sanitizer's.
constexpr int RETURNED = 40;
template <class Function>
[[noreturn]] void end_with(Function function) {
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  const int code = function();
  std::fflush(stdout);
  std::_Exit(RETURNED + code);
}

// Whether the child's function has returned 0 or 1, or the library has ended the process.
bool is_sound(int status);

struct Outcome {
  int code;
  std::optional<std::string> result;  // none: the command left the result as it was
  std::string output;                 // standard output, marks included, without line numbers
  // The callbacks: "getVar x -1", "setVarValue x 15 0", the latter with " over null" where the
  // record's value was null and not as freeVarValue had left it.
  Words calls;
};

// How a call ended: its result, " error " for the code 1, and standard output.
std::string ended(const Outcome& outcome);

struct RecordingPlatform {
  bool has_console = true;        // the process has one: no second can be allocated
  bool can_allocate = true;       // false: AllocConsole fails without one, too
  platform::Handle output = 1;    // what the system gives as standard output
  int writes_until_failure = -1;  // direct writes that still succeed; -1 = all
  std::uint32_t error_code = 6;   // the last error and its text
  std::string error_text = "The handle is invalid.\n";
  platform::TimeOfDay utc_time{};

  int allocated = 0, freed = 0;       // calls of allocate_console and free_console
  std::vector<std::size_t> writes{};  // byte counts of the direct writes tried
  Words message_boxes{};              // "title|text"
};

// The platform in use. Assign a fresh one to put every setting back.
extern RecordingPlatform recording_platform;
constexpr platform::Handle INVALID_OUTPUT = -1;

class RecordingHost {
 public:
  // A host with the five commands, whose link check is over. Puts the library's console, its line
  // marker and the recording platform back to their start.
  RecordingHost();
  ~RecordingHost();  // withdraws the callbacks

  // Of a variable: no value stands for a null value text, and for no variable.
  void set(const std::string& name, const std::optional<std::string>& value);
  std::optional<std::string> get(const std::string& name) const;

  // Calls the command words[0]: bigtest, else big under that name. "(null)" makes a null text.
  // `call` leaves standard output alone.
  Outcome run(const Words& words);
  Outcome call(const Words& words);

  // Settings, read when a call runs.
  std::set<std::string> commands{"eval", "vars", "subst", "set", "expr"};
  std::set<std::string> null_callbacks;  // by name: handed over as null
  std::string throwing_callback;         // by name: recorded, then throws
  int set_var_status = 0;                // not 0: setVar refuses
  bool set_var_creates = true;           // false: it does not do what it reports

  struct Variable : HostVar {
    std::string name;
  };
  std::map<std::string, Variable> variables;

 private:
  struct Callbacks;

  void own_value(HostVar& variable, const char* value);
  void release_value(char* value);

  std::optional<std::string> result;
  Words calls;
  std::list<std::string> outstanding;  // value texts not yet released
};

// What `big` answers to well-formed numbers, by the same command written with GMP: the result of a
// call, the variable that it names having a value; ENDS when a number is too long. None when the
// call leaves no result, or GMP has no answer: operands that are not numbers, roots of negative
// numbers, random draws.
std::optional<std::string> answer_by_gmp(const Words& words, const std::string& variable);
inline const std::string ENDS = "ends";

// A call that GMP has an answer to, as a rule. Operands run long in 0s and 9s, their lengths lie
// next to limb boundaries and to the capacity, and one lies next to the other or a multiple of it.
Words drawn_call(std::mt19937& generator);

}  // namespace omrel::test
