#include "tests/recording_host.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "bignum/buffers.h"
#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/console.h"
#include "support/line_marker.h"

omrel::test::RecordingPlatform omrel::test::recording_platform;

namespace omrel::platform {

using test::recording_platform;

bool allocate_console() {
  ++recording_platform.allocated;
  if (recording_platform.has_console || !recording_platform.can_allocate) return false;
  return recording_platform.has_console = true;
}
void free_console() {
  ++recording_platform.freed;
  recording_platform.has_console = false;
}
Handle standard_output() { return recording_platform.output; }
bool is_valid(Handle handle) { return handle != NO_HANDLE && handle != test::INVALID_OUTPUT; }
bool has_colours(Handle) { return true; }
void set_text_attribute(Handle handle, std::uint16_t attribute) {
  if (is_valid(handle)) std::printf("{%u}", unsigned{attribute});
}
bool write(Handle handle, const char* bytes, std::size_t byte_count) {
  recording_platform.writes.push_back(byte_count);
  if (!is_valid(handle) || recording_platform.writes_until_failure-- == 0) return false;
  return std::fwrite(bytes, 1, byte_count, stdout) == byte_count;
}
const char* block() { return "\xFE"; }
std::uint32_t last_error() { return recording_platform.error_code; }
std::string error_text(std::uint32_t /*code*/) { return recording_platform.error_text; }
void message_box(const char* text, const char* title) {
  recording_platform.message_boxes.push_back(std::string(title) + "|" + text);
}
TimeOfDay utc_time() { return recording_platform.utc_time; }

}  // namespace omrel::platform

namespace omrel::test {
namespace {

// The host whose call is running; callbacks that get no interpreter find it here.
RecordingHost* current = nullptr;

// The library ends a process with status 0. When a test did not ask for that, it has failed.
const int exit_guard = [] {
  ::testing::UnitTest::GetInstance();  // so that it outlives the guard
  return std::atexit([] {
    const bool is_testing = ::testing::UnitTest::GetInstance()->current_test_info() != nullptr;
    if (is_testing && !::testing::internal::InDeathTestChild()) std::_Exit(1);
  });
}();

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

}  // namespace

void soil_buffers() {
  for (std::size_t i = 0; i < free_buffers.count; ++i) {
    std::fill_n(free_buffers.kept[i], BUFFER_BYTES, '\xF5');
  }
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
    for (std::size_t at = 1; (at = word.find('^', at)) != std::string::npos; ++at) {
      const std::size_t count = std::strtoul(word.c_str() + at + 1, nullptr, 10);
      const std::size_t end = std::min(word.find_first_not_of("0123456789", at + 1), word.size());
      const std::size_t rest = end < word.size() && word[end] == '_' ? end + 1 : end;
      if (count - 1 < 30000) word.replace(at, rest - at, count - 1, word[at - 1]);
    }
  }
  return words;
}

std::string printable(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += "{" + word.substr(0, 80) + "} ";
  return text;
}

bool is_one_of(const std::string& word, const char* words) {
  return std::string(words).find(" " + word + " ") != std::string::npos;
}

bool updates(const std::string& word) { return is_one_of(word, " += -= *= /= &= |= ^= ++ -- "); }

bool takes_one(const std::string& word) {
#define OMREL_ROW(row, admitted, function) \
  if (word == (row)) return *#admitted == 'T';
  OMREL_OPERATORS(OMREL_ROW)
  return false;
}

// The functions that the library calls.
struct RecordingHost::Callbacks {
  static RecordingHost& host_of(void* interp) {
    EXPECT_EQ(interp, current) << "a callback got another interpreter";
    return *current;
  }
  static HostVar* getVar(void* interp, const char* name, int minus_one) {
    RecordingHost& self = host_of(interp);
    self.record("getVar", shown(name) + " " + std::to_string(minus_one));
    const auto found = self.variables.find(shown(name));
    return found == self.variables.end() ? nullptr : &found->second;
  }
  static int setVar(void* interp, const char* name, const char* value, int minus_one) {
    RecordingHost& self = host_of(interp);
    self.record("setVar", shown(name) + " " + shown(value) + " " + std::to_string(minus_one));
    if (self.set_var_status == 0 && self.set_var_creates) self.set(shown(name), shown(value));
    return self.set_var_status;
  }
  static void setVarValue(HostVar* var, const char* value, int zero) {
    const std::string over = var->value == nullptr ? " over null" : "", text = shown(value);
    const std::string name = static_cast<Variable*>(var)->name;
    current->record("setVarValue", name + " " + text + " " + std::to_string(zero) + over);
    current->own_value(*var, value);
  }
  static void freeVarValue(HostVar* var) {
    current->record("freeVarValue", static_cast<Variable*>(var)->name);
    current->release_value(var->value);
    var->value = released;
  }
  static HostCommand* getCommand(void* interp, const char* name) {
    RecordingHost& self = host_of(interp);
    self.record("getCommand", shown(name));
    return self.commands.count(shown(name)) != 0 ? static_cast<HostCommand*>(interp) : nullptr;
  }
  static void setResult(void* interp, const char* text, int zero) {
    RecordingHost& self = host_of(interp);
    self.record("setResult", shown(text) + " " + std::to_string(zero));
    self.result = shown(text);
  }
  static void freeValue(char* value) {
    current->record("freeValue", shown(value));
    current->release_value(value);
  }
  template <int>
  static void unused() {
    ADD_FAILURE() << "an unused callback was called";
  }

  // Hands them over but for those that the host lacks; each is kept in its place.
  static void hand_over(const RecordingHost& self) {
    const auto is_null = [&lacking = self.null_callbacks](const std::string& name) {
      return lacking.count("all") + lacking.count(name) != 0;
    };
    const auto unless_null = [is_null](const char* name, auto callback) {
      return is_null(name) ? nullptr : callback;
    };
    const OmrelUnused idle[] = {unused<0>, unused<1>, unused<2>, unused<3>, unused<4>,
                                unused<5>, unused<6>, unused<7>, unused<8>, unused<9>};
    const int count = _export_common_routines(
        unless_null("getVar", &getVar), unless_null("setVar", &setVar),
        unless_null("setVarValue", &setVarValue), unless_null("freeVarValue", &freeVarValue),
        idle[0], idle[1], unless_null("getCommand", &getCommand), idle[2], idle[3],
        unless_null("setResult", &setResult), idle[4], unless_null("freeValue", &freeValue),
        idle[5], idle[6], idle[7], idle[8], idle[9]);
    EXPECT_EQ(17 - count, std::count_if(CALLBACKS.begin(), CALLBACKS.end(), is_null));
    const OmrelUnused kept[] = {host.unused4,  host.unused5,  host.unused7,  host.unused8,
                                host.unused10, host.unused12, host.unused13, host.unused14,
                                host.unused15, host.unused16};
    EXPECT_TRUE(std::equal(std::begin(kept), std::end(kept), idle));
  }
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
  Variable& variable = variables[name];
  variable.name = name;
  release_value(variable.value);
  own_value(variable, value ? value->c_str() : nullptr);
}

std::optional<std::string> RecordingHost::get(const std::string& name) const {
  const auto found = variables.find(name);
  const char* value = found == variables.end() ? nullptr : found->second.value;
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

Outcome RecordingHost::run(const Words& words) {
  Outcome outcome;
  const std::string output = capture_output([&] { outcome = call(words); });
  outcome.output = without_line_numbers(output);
  return outcome;
}

Outcome RecordingHost::call(const Words& words) {
  std::vector<const char*> argv;
  // One text for equal words, as a script has for a value that it passes twice.
  for (const auto& word : words) {
    const char* text = std::find(words.begin(), words.end(), word)->c_str();
    argv.push_back(word == "(null)" ? nullptr : text);
  }
  argv.push_back("no word of the call");
  const bool is_bigtest = !words.empty() && words[0] == "bigtest";
  const OmrelCommand command = is_bigtest ? &quarnCommandBigTest : &quarnCommandBigNum;
  current = this;
  calls.clear();
  soil_buffers();
  result.reset();
  Callbacks::hand_over(*this);
  const int code = command(this, static_cast<int>(words.size()), argv.data(), nullptr);
  // A text overwritten or dropped without its release, by a host that releases, is one too many.
  std::size_t held = 0;
  for (const auto& [name, variable] : variables) held += outstanding.count(variable.value);
  const bool keeps = std::any_of(null_callbacks.begin(), null_callbacks.end(),
                                 [](const auto& name) { return name[0] == 'f' || name == "all"; });
  EXPECT_TRUE(keeps || outstanding.size() == held) << "not released by " << printable(words);
  return {code, result, {}, calls};
}

void RecordingHost::record(const std::string& callback, const std::string& arguments) {
  calls.push_back(callback + " " + arguments);
  if (throwing_callback == callback) throw std::runtime_error("thrown by the host");
}

void RecordingHost::own_value(HostVar& variable, const char* value) {
  variable.value = value == nullptr ? nullptr : ::strdup(value);
  if (value != nullptr) outstanding.insert(variable.value);
}

void RecordingHost::release_value(char* value) {
  if (value == nullptr || value == released) return;
  EXPECT_EQ(outstanding.erase(value), 1U) << "a text released that is not the host's";
  std::free(value);
}

}  // namespace omrel::test
