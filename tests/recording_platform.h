// The platform layer as tests see it: colours and direct writes become marks and bytes on standard
// output, in the order of a real console, and failures are settings.
//
// An attribute is written as its number in braces, "{12}"; the block is the byte FE.
#pragma once

#include <string>
#include <vector>

#include "support/platform.h"

namespace omrel::test {

struct RecordingPlatform {
  // Settings.
  bool has_console = true;        // the process has one: no second can be allocated
  bool can_allocate = true;       // false: AllocConsole fails without one, too
  platform::Handle output = 1;    // what the system gives as standard output
  int writes_until_failure = -1;  // direct writes that still succeed; -1 = all
  std::uint32_t error_code = 6;   // the last error and its text
  std::string error_text = "The handle is invalid.\n";
  platform::TimeOfDay utc_time{};

  // What happened.
  int allocated = 0;                       // calls of allocate_console
  int freed = 0;                           // calls of free_console
  std::vector<std::size_t> writes;         // byte counts of the direct writes tried
  std::vector<std::string> message_boxes;  // "title|text"
};

// The platform in use. Assign a fresh one to put every setting back.
extern RecordingPlatform recording_platform;

constexpr platform::Handle INVALID_OUTPUT = -1;

}  // namespace omrel::test
