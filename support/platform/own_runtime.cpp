// For a library that has its own copy of the C++ runtime, in a process that may have others.
//
// The runtime sets some memory aside for exceptions that find none, and leaves giving it back to
// the process's end; a host may load and unload the library as often as it likes, so it goes with
// the library.
//
// On 32-bit Windows the compiler's start-up code asks the system for the runtime's shared unwinder
// by name. Where the process has that one loaded, for whatever reason, the library's unwind tables
// are given to it, and the library's own unwinder, which finds none, ends the process at the first
// throw. So the name is answered as if nothing had been loaded; the linker sends the question here.
#include <cstddef>

#ifdef __GLIBCXX__

namespace __gnu_cxx {
void __freeres();
}

namespace {

struct OwnRuntime {
  ~OwnRuntime() { __gnu_cxx::__freeres(); }
};
const OwnRuntime own_runtime;

}  // namespace

#endif

#if defined(_WIN32) && defined(__i386__)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstring>

using FindModule = decltype(&GetModuleHandleA);
extern const FindModule find_module __asm__("___real__imp__GetModuleHandleA@4");

static HMODULE WINAPI find_module_but_unwinder(const char* name) {
  const bool is_unwinder = name != nullptr && std::strcmp(name, "libgcc_s_dw2-1.dll") == 0;
  return is_unwinder ? nullptr : find_module(name);
}

extern const FindModule wrapped_find_module __asm__("___wrap__imp__GetModuleHandleA@4");
const FindModule wrapped_find_module = find_module_but_unwinder;

#endif
