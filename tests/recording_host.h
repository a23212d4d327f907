// A host for tests: keeps variables and commands by name, records every callback, and fails the
// test when a value text is outstanding. With it, what tables of calls need.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "plugin/omrel_plugin.h"

namespace omrel::test {

// Runs the function and returns what it wrote to standard output.
std::string capture_output(const std::function<void()>& function);

using Words = std::vector<std::string>;

// Words of a text: {} is the empty one, % stands for white space, 10^400 for 1 and 400 zeros.
Words split(const std::string& text);

// The words, shortened, for a failure's message.
std::string printable(const Words& words);

// The callbacks that the library calls.
inline const Words CALLBACKS{"getVar",     "setVar",    "setVarValue", "freeVarValue",
                             "getCommand", "setResult", "freeValue"};

// The result of a call that an exception ended.
inline const std::string GUARD = "lib omrel_bignum: Unhandled exception in omrel_bignum.dll";

struct Outcome {
  int code;
  std::optional<std::string> result;  // none: the command left the result as it was
  std::string output;                 // standard output, marks included, without line numbers
  // The callbacks: "getVar x -1", "setVarValue x 15 0", the latter with " over null" where the
  // record's value was null and not as freeVarValue had left it.
  std::vector<std::string> calls;
};

// How a call ended: its result, " error " for the code 1, and standard output.
std::string ended(const Outcome& outcome);

// Runs the function in a child process that exits with its result, unless the function ends the
// process itself. The code is its exit status, minus the signal's number when one ended it. Within
// it use RecordingHost::call, since run keeps the output to itself.
Outcome run_in_child(const std::function<int()>& function);

// Calls the command words[0] on a fresh host in a child process.
Outcome run_in_child(const Words& words);

class RecordingHost {
 public:
  // A host with the five commands, whose link check is over. Puts the library's console, its line
  // marker and the recording platform back to their start.
  RecordingHost();

  // Withdraws the callbacks.
  ~RecordingHost();

  // The variable now exists, with a copy of the value or with a null value text.
  void set(const std::string& name, const std::optional<std::string>& value);

  // The variable's value text; none when it is null or there is no such variable.
  std::optional<std::string> get(const std::string& name) const;
  bool has(const std::string& name) const { return variables.count(name) != 0; }

  // The address of the variable's record.
  const HostVar* record(const std::string& name) const { return variables.at(name).get(); }

  // Calls the command words[0]: bigtest, else big under that name. "(null)" makes a null text.
  Outcome run(const Words& words);

  // The same, but leaves standard output alone.
  Outcome call(const Words& words);

  // Settings, read when a call runs.
  std::set<std::string> commands{"eval", "vars", "subst", "set", "expr"};
  std::set<std::string> null_callbacks;  // by name: handed over as null; "all": none handed over
  std::string throwing_callback;         // by name: recorded, then throws
  int set_var_status = 0;                // not 0: setVar refuses
  bool set_var_creates = true;           // false: it does not do what it reports

 private:
  struct Variable : HostVar {
    std::string name;
  };
  struct Callbacks;

  void hand_over() const;
  void record_call(const std::string& callback, const Words& arguments);
  void own_value(Variable& variable, const char* value);
  void release_value(char* value);
  void check_outstanding(const Words& words) const;

  std::map<std::string, std::unique_ptr<Variable>> variables;
  std::optional<std::string> result;
  std::vector<std::string> calls;
  std::set<char*> outstanding;  // value texts allocated and not yet released
};

constexpr std::nullopt_t UNTOUCHED = std::nullopt;

}  // namespace omrel::test
