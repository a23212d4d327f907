#include "tests/recording_host.h"

#include "plugin/host_link.h"
#include "support/console.h"
#include "support/line_marker.h"
#include "tests/recording_platform.h"

#include <gtest/gtest.h>
#ifdef _WIN32
#include <process.h>
#else
#include <sys/wait.h>
#endif
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace omrel::test {
namespace {

// The host whose call is running; callbacks that get no interpreter find it here.
RecordingHost* current = nullptr;

bool is_child = false;

// The library ends a process with status 0. When a test does not run in a child process for that,
// it has failed, whatever the status.
const int exit_guard = [] {
  ::testing::UnitTest::GetInstance();  // so that it outlives the guard
  return std::atexit([] {
    if (is_child || ::testing::UnitTest::GetInstance()->current_test_info() == nullptr) return;
    std::fputs("the process ended within a test\n", stderr);
    std::_Exit(1);
  });
}();

std::FILE* temporary_file() {
#ifdef _WIN32  // whose tmpfile is for administrators; binary, and so is standard output sent there
  return std::fopen(::_tempnam(nullptr, "omrel"), "w+bTD");
#else
  return std::tmpfile();
#endif
}

}  // namespace

std::string capture_output(const std::function<void()>& function) {
  std::FILE* file = temporary_file();
  std::fflush(stdout);
  const int saved = ::dup(STDOUT_FILENO);
  ::dup2(::fileno(file), STDOUT_FILENO);
  function();
  std::fflush(stdout);
  ::dup2(saved, STDOUT_FILENO);
  ::close(saved);
  std::fseek(file, 0, SEEK_END);
  std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  std::fclose(file);
  return text;
}

#ifdef _WIN32

// There is no fork: the program runs itself again, the one test alone, and goes on with the
// function where that test comes to the same child. What it prints before that ends in a mark.
Outcome run_in_child(const std::function<int()>& function) {
  static const ::testing::TestInfo* test = nullptr;
  static int child_count = 0;
  const auto* running = ::testing::UnitTest::GetInstance()->current_test_info();
  child_count = test == running ? child_count + 1 : 1;
  test = running;
  const std::string child = std::to_string(child_count);
  if (const char* wanted = std::getenv("OMREL_TEST_CHILD")) {
    if (wanted != child) return {};
    is_child = true;
    std::fputc('\1', stdout);
    const int code = function();
    std::fflush(stdout);
    std::_Exit(code);
  }
  const std::string filter =
      std::string("--gtest_filter=") + test->test_suite_name() + "." + test->name();
  std::intptr_t status = 0;
  ::_putenv_s("OMREL_TEST_CHILD", child.c_str());
  const std::string output = capture_output([&] {
    status = ::_spawnl(_P_WAIT, _pgmptr, "test", filter.c_str(), static_cast<char*>(nullptr));
  });
  ::_putenv_s("OMREL_TEST_CHILD", "");
  return {static_cast<int>(status), {}, output.substr(output.rfind('\1') + 1), {}};
}

#else

Outcome run_in_child(const std::function<int()>& function) {
  int status = 0;
  const std::string output = capture_output([&] {
    const pid_t child = ::fork();
    if (child == 0) {
      is_child = true;
      const int code = function();
      std::fflush(stdout);
      ::_exit(code);
    }
    ::waitpid(child, &status, 0);
  });
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), {}, output, {}};
}

#endif

Outcome run_in_child(const Words& words) {
  return run_in_child([&words] { return RecordingHost().call(words).code; });
}

std::string ended(const Outcome& outcome) {
  return outcome.result.value_or("untouched") + (outcome.code == 0 ? "" : " error ") +
         outcome.output;
}

Words split(const std::string& text) {
  std::istringstream tokens(text);
  Words words;
  for (std::string word; tokens >> word; words.push_back(word == "{}" ? "" : word)) {
    if (word.size() > 1 && word[0] == '%') word.replace(0, 1, " \t\n\v\f\r");
    const std::size_t caret = word.find('^', 1);
    if (caret == std::string::npos) continue;
    const std::size_t count = std::strtoul(word.c_str() + caret + 1, nullptr, 10);
    if (count - 1 < 30000) word.replace(caret, std::string::npos, count - 1, word[caret - 1]);
  }
  return words;
}

std::string printable(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += "{" + word.substr(0, 80) + "} ";
  return text;
}

// The text with the number behind each "line " replaced by '#', since it is our source's.
std::string without_line_numbers(std::string text) {
  for (std::size_t at = 0; (at = text.find("line ", at)) != std::string::npos;) {
    at += std::string("line ").size();
    const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
    if (end != at) text.replace(at, end - at, "#");
  }
  return text;
}

std::string shown(const char* text) { return text == nullptr ? "(null)" : text; }

// What a value text points to between its release and the next value.
char released[] = "released";

// The functions that the library calls.
struct RecordingHost::Callbacks {
  static RecordingHost& host_of(void* interp) {
    EXPECT_EQ(interp, current) << "a callback got another interpreter";
    return *current;
  }
  static HostVar* getVar(void* interp, const char* name, int minus_one) {
    RecordingHost& self = host_of(interp);
    self.record_call("getVar", {shown(name), std::to_string(minus_one)});
    const auto found = self.variables.find(shown(name));
    return found == self.variables.end() ? nullptr : found->second.get();
  }
  static int setVar(void* interp, const char* name, const char* value, int minus_one) {
    RecordingHost& self = host_of(interp);
    self.record_call("setVar", {shown(name), shown(value), std::to_string(minus_one)});
    if (self.set_var_status == 0 && self.set_var_creates) self.set(shown(name), shown(value));
    return self.set_var_status;
  }
  static void setVarValue(HostVar* var, const char* value, int zero) {
    auto& variable = *static_cast<Variable*>(var);
    const std::string over = var->value == nullptr ? " over null" : "";
    current->record_call("setVarValue", {variable.name, shown(value), std::to_string(zero) + over});
    current->own_value(variable, value);
  }
  static void freeVarValue(HostVar* var) {
    current->record_call("freeVarValue", {static_cast<Variable*>(var)->name});
    current->release_value(var->value);
    var->value = released;
  }
  static HostCommand* getCommand(void* interp, const char* name) {
    RecordingHost& self = host_of(interp);
    self.record_call("getCommand", {shown(name)});
    return self.commands.count(shown(name)) != 0 ? static_cast<HostCommand*>(interp) : nullptr;
  }
  static void setResult(void* interp, const char* text, int zero) {
    RecordingHost& self = host_of(interp);
    self.record_call("setResult", {shown(text), std::to_string(zero)});
    self.result = shown(text);
  }
  static void freeValue(char* value) {
    current->record_call("freeValue", {shown(value)});
    current->release_value(value);
  }
  static void unused() { ADD_FAILURE() << "an unused callback was called"; }
};

RecordingHost::RecordingHost() {
  recording_platform = {};
  console_output = platform::NO_HANDLE;
  console_ready = false;
  line_marker = 0;
  host_linked = true;
}

RecordingHost::~RecordingHost() {
  host = {};
  for (char* value : outstanding) std::free(value);
}

void RecordingHost::set(const std::string& name, const std::optional<std::string>& value) {
  std::unique_ptr<Variable>& variable = variables[name];
  if (variable == nullptr) variable = std::make_unique<Variable>(Variable{{nullptr}, name});
  release_value(variable->value);
  own_value(*variable, value ? value->c_str() : nullptr);
}

std::optional<std::string> RecordingHost::get(const std::string& name) const {
  const char* value = has(name) ? record(name)->value : nullptr;
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

Outcome RecordingHost::run(const Words& words) {
  Outcome outcome;
  outcome.output = without_line_numbers(capture_output([&] { outcome = call(words); }));
  return outcome;
}

Outcome RecordingHost::call(const Words& words) {
  std::vector<const char*> argv;
  for (const auto& word : words) argv.push_back(word == "(null)" ? nullptr : word.c_str());
  argv.push_back(nullptr);
  const bool is_bigtest = !words.empty() && words[0] == "bigtest";
  const OmrelCommand command = is_bigtest ? &quarnCommandBigTest : &quarnCommandBigNum;
  current = this;
  calls.clear();
  result.reset();
  hand_over();
  const int code = command(this, static_cast<int>(words.size()), argv.data(), nullptr);
  check_outstanding(words);
  return {code, result, {}, calls};
}

void RecordingHost::hand_over() const {
  const auto unless_null = [this](const char* name, auto callback) {
    const bool is_null = null_callbacks.count("all") + null_callbacks.count(name) != 0;
    return is_null ? nullptr : callback;
  };
  // Some unused callbacks are null, at the next call the others; they fail the test when called.
  static OmrelUnused none = &Callbacks::unused, unused = nullptr;
  std::swap(none, unused);
  const int count = _export_common_routines(
      unless_null("getVar", &Callbacks::getVar), unless_null("setVar", &Callbacks::setVar),
      unless_null("setVarValue", &Callbacks::setVarValue),
      unless_null("freeVarValue", &Callbacks::freeVarValue), unused, none,
      unless_null("getCommand", &Callbacks::getCommand), unused, none,
      unless_null("setResult", &Callbacks::setResult), unused,
      unless_null("freeValue", &Callbacks::freeValue), unused, none, unused, none, unused);
  EXPECT_EQ(omrel::host.unused16, unused);
  EXPECT_TRUE(!null_callbacks.empty() || count == (unused == nullptr ? 11 : 13)) << count;
}

void RecordingHost::record_call(const std::string& callback, const Words& arguments) {
  calls.push_back(callback);
  for (const std::string& argument : arguments) calls.back() += " " + argument;
  if (throwing_callback == callback) throw std::runtime_error("thrown by the host");
}

void RecordingHost::own_value(Variable& variable, const char* value) {
  variable.value = value == nullptr ? nullptr : ::strdup(value);
  if (value != nullptr) outstanding.insert(variable.value);
}

void RecordingHost::release_value(char* value) {
  if (value == nullptr || value == released) return;
  EXPECT_EQ(outstanding.erase(value), 1U) << "a text released that is not the host's";
  std::free(value);
}

// A text overwritten or dropped without its release, by a host that releases, leaves one too many.
void RecordingHost::check_outstanding(const Words& words) const {
  std::size_t held = 0;
  for (const auto& [name, variable] : variables) held += outstanding.count(variable->value);
  const bool keeps = null_callbacks.count("all") + null_callbacks.count("freeVarValue") +
                         null_callbacks.count("freeValue") !=
                     0;
  EXPECT_TRUE(keeps || outstanding.size() == held) << "not released by " << printable(words);
}

}  // namespace omrel::test
