// Console output: colours, formatted text straight to the console, system errors, process end.
//
// State: the output handle and the console-ready flag. Ordinary messages go to standard output
// with printf instead; colours act on both.
#pragma once

#include <cstdint>

#include "support/platform.h"

namespace omrel {

// Console text attributes by name.
enum Colour : std::uint16_t { NORMAL_COLOUR = 7, BRIGHT_RED = 12 };

// The output handle in use, and whether console_open has found it valid. Written by console.cpp,
// and put back to their first values by tests.
extern platform::Handle console_output;
extern bool console_ready;

// Makes sure that the process has a console; with `force`, a new one. Returns its output handle,
// or NO_HANDLE.
platform::Handle console_open(bool force);

// Sets the text attribute of what is written next; reset returns to grey on black.
void console_set_colour(std::uint16_t attribute);
inline void console_reset_colour() { console_set_colour(NORMAL_COLOUR); }

// Whether setting it changes anything.
bool console_has_colours();

// Writes formatted text, cut at 10,204 characters, straight to the console. Returns the
// formatter's result, negative when the text was cut, or 0 when nothing was formatted.
[[gnu::format(printf, 1, 2)]] int console_printf(const char* format, ...);

// Writes a text straight to the console; false when that failed or the text is null.
bool SafeWriteFile(const char* text);

// Shows the last system error: in a message box headed by `text`, or on standard output.
void show_last_error(const char* text, bool in_message_box);

// Prints the message, if there is one, and ends the process with exit(status).
[[noreturn]] void fatal_exit(const char* message, int status);

}  // namespace omrel
