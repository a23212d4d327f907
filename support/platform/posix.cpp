// POSIX: the console is whatever file descriptor 1 is. Colours and the block's Unicode form are
// for a terminal only; a pipe or a file gets the plain bytes. The locale is read from the
// environment and never set, because it belongs to the host's process.
#include "support/platform.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

namespace omrel::platform {
namespace {

constexpr const char* UTF8_BLOCK = "\xE2\x96\xA0";  // U+25A0

int descriptor_of(Handle handle) { return static_cast<int>(handle); }

// Grey on black is the terminal's own look, and its background stays, but for black on black, which
// must be invisible on a light terminal too. The bright half of the colours stands 60 higher.
std::string colour_sequence(std::uint16_t attribute) {
  if (attribute == 7) return "\033[0m";
  // A console colour has red in bit 2 and blue in bit 0, a terminal colour the other way round.
  const unsigned colour = (attribute & 1U) << 2U | (attribute & 2U) | (attribute & 4U) >> 2U;
  const unsigned black = (attribute & 8U) != 0 ? 90 : 30;
  return "\033[0;" + std::to_string(black + colour) + (attribute == 0 ? ";40m" : "m");
}

// The locale that governs characters: the first of the three that is set and not empty.
std::string_view character_locale() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return "";
}

// Whether a locale such as "de_DE.utf8@euro" names the UTF-8 code set.
bool is_utf8(std::string_view locale) {
  const std::size_t point = locale.find('.');
  if (point == std::string_view::npos) return false;
  std::string code_set;
  for (const char c : locale.substr(point + 1, locale.find('@', point) - point - 1)) {
    if (c != '-') code_set += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  }
  return code_set == "utf8";
}

}  // namespace

// A process keeps the terminal that it was started on.
bool allocate_console() { return false; }
void free_console() {}

Handle standard_output() { return STDOUT_FILENO; }

bool is_valid(Handle handle) {
  return handle != NO_HANDLE && ::fcntl(descriptor_of(handle), F_GETFD) != -1;
}

bool has_colours(Handle handle) {
  return handle != NO_HANDLE && ::isatty(descriptor_of(handle)) != 0;
}

void set_text_attribute(Handle handle, std::uint16_t attribute) {
  if (!has_colours(handle)) return;
  const std::string sequence = colour_sequence(attribute);
  write(handle, sequence.data(), sequence.size());
}

bool write(Handle handle, const char* bytes, std::size_t byte_count) {
  std::fflush(stdout);
  while (byte_count > 0) {
    const ssize_t written = ::write(descriptor_of(handle), bytes, byte_count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes += written;
    byte_count -= static_cast<std::size_t>(written);
  }
  return true;
}

const char* block() {
  return has_colours(STDOUT_FILENO) && is_utf8(character_locale()) ? UTF8_BLOCK : "\xFE";
}

std::uint32_t last_error() { return static_cast<std::uint32_t>(errno); }

std::string error_text(std::uint32_t code) {
  return std::system_category().message(static_cast<int>(code));
}

void message_box(const char* text, const char* title) {
  std::fprintf(stderr, "%s [%s]\n", text, title);
}

TimeOfDay utc_time() {
  using namespace std::chrono;
  const auto now = floor<milliseconds>(system_clock::now());
  const hh_mm_ss time{now - floor<days>(now)};
  return {static_cast<std::uint16_t>(time.hours().count()),
          static_cast<std::uint16_t>(time.minutes().count()),
          static_cast<std::uint16_t>(time.seconds().count()),
          static_cast<std::uint16_t>(time.subseconds().count())};
}

}  // namespace omrel::platform
