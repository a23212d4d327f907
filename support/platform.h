// Everything that the plug-in asks of an operating system.
//
// Implemented once for Win32 by the calls of the same names, once for POSIX, and by the tests'
// recording platform. Nothing here prints a diagnostic of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace omrel::platform {

// A standard output handle; 0 means none. POSIX: the file descriptor.
using Handle = std::intptr_t;
constexpr Handle NO_HANDLE = 0;

// Asks for a new console; false when the process has one already or none can be had.
bool allocate_console();

// Gives up the process's console.
void free_console();

// The process's standard output; may be invalid, see is_valid.
Handle standard_output();

// Whether the handle can be written to.
bool is_valid(Handle handle);

// Whether set_text_attribute changes anything there: whether it is a console, POSIX: a terminal.
bool has_colours(Handle handle);

// Sets the colours of what is written next. POSIX: a colour sequence when the handle is a
// terminal, else nothing. Buffered standard output goes out first, in its own colours.
void set_text_attribute(Handle handle, std::uint16_t attribute);

// Writes the bytes behind everything buffered so far; false when they could not all be written.
bool write(Handle handle, const char* bytes, std::size_t byte_count);

// The block character, code 254, as standard output takes it. POSIX: U+25A0 where that is a
// terminal whose locale is UTF-8.
const char* block();

// The calling thread's last system error, and the system's own text for a code.
std::uint32_t last_error();
std::string error_text(std::uint32_t code);

// Shows a message to the user. POSIX: one line on standard error.
void message_box(const char* text, const char* title);

// The time of day in UTC.
struct TimeOfDay {
  std::uint16_t hours, minutes, seconds, milliseconds;
};
TimeOfDay utc_time();

}  // namespace omrel::platform
