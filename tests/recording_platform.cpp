#include "tests/recording_platform.h"

#include <cstdio>

omrel::test::RecordingPlatform omrel::test::recording_platform;

namespace omrel::platform {

using test::recording_platform;

bool allocate_console() {
  ++recording_platform.allocated;
  if (recording_platform.has_console || !recording_platform.can_allocate) return false;
  recording_platform.has_console = true;
  return true;
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
  if (!is_valid(handle) || recording_platform.writes_until_failure == 0) return false;
  if (recording_platform.writes_until_failure > 0) --recording_platform.writes_until_failure;
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
