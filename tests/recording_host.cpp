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
    at += std::strlen("line ");
    const std::size_t digit_count = std::strspn(text.c_str() + at, "0123456789");
    if (digit_count > 0) text.replace(at, digit_count, "#");
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

bool is_sound(int status) {
  const auto is = [status](int code) { return ::testing::ExitedWithCode(code)(status); };
  return is(0) || is(RETURNED) || is(RETURNED + 1);
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
      if (word.size() > 30000) break;
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
  static RecordingHost& record(void* interp, const std::string& callback,
                               const std::string& arguments) {
    EXPECT_EQ(interp, current) << "a callback got another interpreter";
    current->calls.push_back(callback + " " + arguments);
    if (current->throwing_callback == callback) throw std::runtime_error("thrown by the host");
    return *current;
  }
  static HostVar* getVar(void* interp, const char* name, int minus_one) {
    const std::string arguments = shown(name) + " " + std::to_string(minus_one);
    RecordingHost& self = record(interp, "getVar", arguments);
    const auto found = self.variables.find(shown(name));
    return found == self.variables.end() ? nullptr : &found->second;
  }
  static int setVar(void* interp, const char* name, const char* value, int minus_one) {
    const std::string arguments = shown(name) + " " + shown(value) + " ";
    RecordingHost& self = record(interp, "setVar", arguments + std::to_string(minus_one));
    if (self.set_var_status == 0 && self.set_var_creates) self.set(shown(name), shown(value));
    return self.set_var_status;
  }
  static void setVarValue(HostVar* var, const char* value, int zero) {
    const std::string over = var->value == nullptr ? " over null" : "",
                      arguments = static_cast<Variable*>(var)->name + " " + shown(value) + " ";
    record(current, "setVarValue", arguments + std::to_string(zero) + over);
    current->own_value(*var, value);
  }
  static void freeVarValue(HostVar* var) {
    record(current, "freeVarValue", static_cast<Variable*>(var)->name).release_value(var->value);
    var->value = released;
  }
  static HostCommand* getCommand(void* interp, const char* name) {
    const RecordingHost& self = record(interp, "getCommand", shown(name));
    return self.commands.count(shown(name)) != 0 ? static_cast<HostCommand*>(interp) : nullptr;
  }
  static void setResult(void* interp, const char* text, int zero) {
    record(interp, "setResult", shown(text) + " " + std::to_string(zero)).result = shown(text);
  }
  static void freeValue(char* value) {
    record(current, "freeValue", shown(value)).release_value(value);
  }
  template <int>
  static void unused() {
    ADD_FAILURE() << "an unused callback was called";
  }

  // Hands them over, each to be kept in its place, and takes away those that the host lacks.
  static void hand_over(const RecordingHost& self) {
    const auto all =
        std::make_tuple(getVar, setVar, setVarValue, freeVarValue, unused<4>, unused<5>, getCommand,
                        unused<7>, unused<8>, setResult, unused<10>, freeValue, unused<12>,
                        unused<13>, unused<14>, unused<15>, unused<16>);
    EXPECT_EQ(std::apply(_export_common_routines, all), 17);
    const auto table = std::apply([](auto... one) { return HostCallbackTable{one...}; }, all);
    EXPECT_EQ(std::memcmp(&host, &table, sizeof host), 0) << "a callback is not in its place";
    for (const std::string& name : self.null_callbacks) {
      std::memset(reinterpret_cast<OmrelUnused*>(&host) + CALLBACKS.at(name), 0,
                  sizeof(OmrelUnused));
    }
  }
};

RecordingHost::RecordingHost() {
  recording_platform = {};
  console_output = platform::NO_HANDLE;
  console_ready = false;
  line_marker = 0;
  host_linked = true;
}

RecordingHost::~RecordingHost() { host = {}; }

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
  const auto held = std::count_if(variables.begin(), variables.end(), [](const auto& variable) {
    return variable.second.value != nullptr && variable.second.value != released;
  });
  const bool keeps = null_callbacks.count("freeValue") + null_callbacks.count("freeVarValue") > 0;
  EXPECT_TRUE(keeps || std::ssize(outstanding) == held) << "not released by " << printable(words);
  return {code, result, {}, calls};
}

void RecordingHost::own_value(HostVar& variable, const char* value) {
  variable.value = value == nullptr ? nullptr : outstanding.emplace_back(value).data();
}

void RecordingHost::release_value(char* value) {
  if (value == nullptr || value == released) return;
  const auto is_value = [value](const std::string& text) { return text.data() == value; };
  EXPECT_EQ(outstanding.remove_if(is_value), 1U) << "a text released that is not the host's";
}

}  // namespace omrel::test
