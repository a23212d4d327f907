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
void fail_within_a_test() {
  if (is_child || ::testing::UnitTest::GetInstance()->current_test_info() == nullptr) return;
  std::fputs("the process ended within a test\n", stderr);
  std::_Exit(1);
}

const int exit_guard = [] {
  ::testing::UnitTest::GetInstance();  // so that it outlives the guard
  return std::atexit(&fail_within_a_test);
}();

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File temporary_file() {
#ifdef _WIN32  // whose tmpfile is for administrators; binary, and so is standard output sent there
  return {std::fopen(::_tempnam(nullptr, "omrel"), "w+bTD"), &std::fclose};
#else
  return {std::tmpfile(), &std::fclose};
#endif
}

std::string read_from_start(std::FILE* file) {
  std::fseek(file, 0, SEEK_END);
  std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  return text;
}

// Sends standard output to a file for the object's lifetime.
class OutputToFile {
 public:
  explicit OutputToFile(int file) {
    std::fflush(stdout);
    saved = ::dup(STDOUT_FILENO);
    ::dup2(file, STDOUT_FILENO);
  }
  ~OutputToFile() {
    std::fflush(stdout);
    ::dup2(saved, STDOUT_FILENO);
    ::close(saved);
  }
  OutputToFile(const OutputToFile&) = delete;
  OutputToFile& operator=(const OutputToFile&) = delete;

 private:
  int saved;
};

HostCommand* some_command() {
  static int record;
  return reinterpret_cast<HostCommand*>(&record);
}

}  // namespace

std::string capture_output(const std::function<void()>& function) {
  const File file = temporary_file();
  {
    const OutputToFile redirected(::fileno(file.get()));
    function();
  }
  return read_from_start(file.get());
}

#ifdef _WIN32

// There is no fork: the program runs itself again, the one test alone, and goes on with the
// function where that test comes to the same child. What it prints before that ends in a mark.
ChildOutcome run_in_child(const std::function<int()>& function) {
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
  return {static_cast<int>(status), output.substr(output.rfind('\1') + 1)};
}

#else

ChildOutcome run_in_child(const std::function<int()>& function) {
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
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), output};
}

#endif

Outcome run_in_child(const Words& words) {
  const ChildOutcome child = run_in_child([&words] { return RecordingHost().call(words).code; });
  return {child.status, {}, child.output, {}};
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

std::string without_line_numbers(const std::string& text) {
  static const std::string MARK = "line ";
  std::string masked = text;
  for (std::size_t at = masked.find(MARK); at != std::string::npos; at = masked.find(MARK, at)) {
    at += MARK.size();
    const std::size_t end = masked.find_first_not_of("0123456789", at);
    if (end != at) masked.replace(at, end - at, "#");
  }
  return masked;
}

// What a value text points to between its release and the next value.
char released[] = "released";

// The functions that the library calls.
struct RecordingHost::Callbacks {
  static RecordingHost& host_of(void* interp) {
    EXPECT_EQ(interp, current) << "a callback got another interpreter";
    return *current;
  }
  static std::string name_of(HostVar* var) {
    return var == nullptr ? "(null)" : static_cast<Variable*>(var)->name;
  }
  static std::string text_of(const char* text) { return text == nullptr ? "(null)" : text; }

  static HostVar* getVar(void* interp, const char* name, int minus_one) {
    RecordingHost& self = host_of(interp);
    self.record_call("getVar", text_of(name) + " " + std::to_string(minus_one));
    const auto found = self.variables.find(text_of(name));
    return found == self.variables.end() ? nullptr : found->second.get();
  }
  static int setVar(void* interp, const char* name, const char* value, int minus_one) {
    RecordingHost& self = host_of(interp);
    self.record_call("setVar",
                     text_of(name) + " " + text_of(value) + " " + std::to_string(minus_one));
    if (self.set_var_status == 0 && self.set_var_creates) self.set(text_of(name), text_of(value));
    return self.set_var_status;
  }
  static void setVarValue(HostVar* var, const char* value, int zero) {
    const std::string over = var->value == nullptr ? " over null" : "";
    current->record_call("setVarValue",
                         name_of(var) + " " + text_of(value) + " " + std::to_string(zero) + over);
    current->own_value(*static_cast<Variable*>(var), value);
  }
  static void freeVarValue(HostVar* var) {
    current->record_call("freeVarValue", name_of(var));
    current->release_value(var->value);
    var->value = released;
  }
  static HostCommand* getCommand(void* interp, const char* name) {
    RecordingHost& self = host_of(interp);
    self.record_call("getCommand", text_of(name));
    return self.commands.count(text_of(name)) != 0 ? some_command() : nullptr;
  }
  static void setResult(void* interp, const char* text, int zero) {
    RecordingHost& self = host_of(interp);
    self.record_call("setResult", text_of(text) + " " + std::to_string(zero));
    self.result = text_of(text);
  }
  static void freeValue(char* value) {
    current->record_call("freeValue", text_of(value));
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

void RecordingHost::unlink() { host_linked = false; }

void RecordingHost::set(const std::string& name, const std::optional<std::string>& value) {
  std::unique_ptr<Variable>& variable = variables[name];
  if (variable == nullptr) {
    variable = std::make_unique<Variable>();
    variable->name = name;
  } else {
    release_value(variable->value);
  }
  own_value(*variable, value ? value->c_str() : nullptr);
}

std::optional<std::string> RecordingHost::get(const std::string& name) const {
  const auto found = variables.find(name);
  if (found == variables.end() || found->second->value == nullptr) return std::nullopt;
  return found->second->value;
}

Outcome RecordingHost::run(const Words& words) {
  Outcome outcome;
  const std::string output = capture_output([&] { outcome = call(words); });
  outcome.output = without_line_numbers(output);
  return outcome;
}

Outcome RecordingHost::call(const Words& words) {
  std::vector<const char*> argv;
  for (const std::string& word : words) {
    argv.push_back(word == "(null)" ? nullptr : word.c_str());
  }
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
  // Every second unused callback is null, the others fail the test when called.
  const OmrelUnused none = nullptr;
  const OmrelUnused unused = unless_null("unused", &Callbacks::unused);
  _export_common_routines(
      unless_null("getVar", &Callbacks::getVar), unless_null("setVar", &Callbacks::setVar),
      unless_null("setVarValue", &Callbacks::setVarValue),
      unless_null("freeVarValue", &Callbacks::freeVarValue), unused, none,
      unless_null("getCommand", &Callbacks::getCommand), unused, none,
      unless_null("setResult", &Callbacks::setResult), unused,
      unless_null("freeValue", &Callbacks::freeValue), unused, none, unused, none, unused);
}

void RecordingHost::record_call(const char* callback, const std::string& arguments) {
  calls.push_back(std::string(callback) + " " + arguments);
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
  bool releases = true;
  for (const char* name : {"all", "freeVarValue", "freeValue"}) {
    releases = releases && null_callbacks.count(name) == 0;
  }
  EXPECT_TRUE(!releases || outstanding.size() == held) << "not released by " << printable(words);
}

}  // namespace omrel::test
