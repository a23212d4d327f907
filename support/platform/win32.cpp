// Win32: the calls of the same names. Only a console has colours. Standard output is flushed before
// one changes and before a direct write, so that what is buffered keeps its place and its colour;
// its text mode, in which the C library writes a line's end as two characters, is the host's.
#include "support/platform.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdio>
#include <string>

namespace omrel::platform {
namespace {

HANDLE system_handle(Handle handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

bool allocate_console() { return AllocConsole() != 0; }
void free_console() { FreeConsole(); }

Handle standard_output() { return reinterpret_cast<Handle>(GetStdHandle(STD_OUTPUT_HANDLE)); }

bool is_valid(Handle handle) {
  return handle != NO_HANDLE && system_handle(handle) != INVALID_HANDLE_VALUE;
}

bool has_colours(Handle handle) { return GetFileType(system_handle(handle)) == FILE_TYPE_CHAR; }

void set_text_attribute(Handle handle, std::uint16_t attribute) {
  if (!has_colours(handle)) return;
  std::fflush(stdout);
  SetConsoleTextAttribute(system_handle(handle), attribute);
}

bool write(Handle handle, const char* bytes, std::size_t byte_count) {
  std::fflush(stdout);
  DWORD written = 0;
  const BOOL done =
      WriteFile(system_handle(handle), bytes, static_cast<DWORD>(byte_count), &written, nullptr);
  return done != 0 && written == byte_count;
}

const char* block() { return "\xFE"; }

std::uint32_t last_error() { return GetLastError(); }

std::string error_text(std::uint32_t code) {
  char* message = nullptr;
  // With FORMAT_MESSAGE_ALLOCATE_BUFFER the buffer argument takes the address of the new block.
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<char*>(&message),
      0, nullptr);
  const std::string text(message == nullptr ? "" : message, message == nullptr ? 0 : length);
  LocalFree(message);
  return text;
}

// The library that has it is loaded for this alone: it brings nine more into a process.
void message_box(const char* text, const char* title) {
  const HMODULE library = LoadLibraryA("user32.dll");
  if (library == nullptr) return;
  void* const found = reinterpret_cast<void*>(GetProcAddress(library, "MessageBoxA"));
  if (const auto show = reinterpret_cast<decltype(&MessageBoxA)>(found)) {
    show(nullptr, text, title, MB_OK | MB_ICONINFORMATION);
  }
  FreeLibrary(library);
}

TimeOfDay utc_time() {
  SYSTEMTIME now;
  GetSystemTime(&now);
  return {now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

}  // namespace omrel::platform
