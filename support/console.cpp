#include "support/console.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace omrel {

platform::Handle console_output = platform::NO_HANDLE;
bool console_ready = false;

namespace {

constexpr int MAX_FORMATTED = 10204;        // characters of one console_printf
constexpr std::size_t MAX_WRITTEN = 52224;  // bytes of one write

// Whether there is a console to write to, after opening one if need be; tells the user if not.
bool have_console() {
  if (console_output == platform::NO_HANDLE) console_open(false);
  if (console_output != platform::NO_HANDLE) return true;
  show_last_error("Failed to open the console", true);
  return false;
}

platform::Handle handle_in_use() {
  if (console_output == platform::NO_HANDLE) console_output = platform::standard_output();
  return console_output;
}

}  // namespace

platform::Handle console_open(bool force) {
  if (console_ready && !force) return console_output;
  if (!platform::allocate_console() && force) {
    platform::free_console();
    platform::allocate_console();
  }
  const platform::Handle handle = platform::standard_output();
  console_ready = platform::is_valid(handle);
  console_output = console_ready ? handle : platform::NO_HANDLE;
  return console_output;
}

void console_set_colour(std::uint16_t attribute) {
  platform::set_text_attribute(handle_in_use(), attribute);
}

bool console_has_colours() { return platform::has_colours(handle_in_use()); }

int console_printf(const char* format, ...) {
  if (!have_console() || format == nullptr) return 0;
  char text[MAX_FORMATTED + 1] = "";
  std::va_list values;
  va_start(values, format);
  const int length = std::vsnprintf(text, sizeof text, format, values);
  va_end(values);
  SafeWriteFile(text);
  return length > MAX_FORMATTED ? -1 : length;
}

bool SafeWriteFile(const char* text) {
  if (!have_console() || text == nullptr) return false;
  std::size_t rest = std::strlen(text);
  do {
    const std::size_t piece = std::min(rest, MAX_WRITTEN);
    if (!platform::write(console_output, text, piece)) {
      show_last_error("SafeWriteFile: Console not open", true);
      return false;
    }
    text += piece;
    rest -= piece;
  } while (rest > 0);
  return true;
}

void show_last_error(const char* text, bool in_message_box) {
  const std::uint32_t code = platform::last_error();
  std::string error = platform::error_text(code);
  if (in_message_box) {
    char message[257] = "";
    std::snprintf(message, sizeof message, "%s: (GetLastError: %lu)", text,
                  static_cast<unsigned long>(code));
    platform::message_box(message, error.c_str());
    return;
  }
  error.erase(error.find_last_not_of("\n.") + 1);
  // The code is asked for again, as the one that is current when the line is printed.
  std::printf("GetLastError(%li) [%s]\n", static_cast<long>(platform::last_error()), error.c_str());
}

void fatal_exit(const char* message, int status) {
  if (message != nullptr && *message != '\0') {
// The message is a format text of ours; those in use have no directives.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    std::printf(message);
#pragma GCC diagnostic pop
  }
  std::exit(status);
}

}  // namespace omrel
