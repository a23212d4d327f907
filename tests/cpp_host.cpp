// A host in C++. On Windows it is abi_test.c's with a C++ runtime shared with others, as MinGW's
// compilers link one unless told otherwise: it throws and catches beside the library, before and
// after. Elsewhere it has a runtime of its own, and its callbacks throw into the library.
#include "plugin/omrel_plugin.h"

#ifdef _WIN32
#include <cstdlib>
#include <stdexcept>

static void throw_and_catch() {
  try {
    throw std::runtime_error("the host's own");
  } catch (const std::exception&) {
    return;
  }
}
[[maybe_unused]] static const int registered = (throw_and_catch(), std::atexit(throw_and_catch));
#else
#include <dlfcn.h>

#include <initializer_list>

int main() {
  void* library = dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return 1;
  const auto hand_over = reinterpret_cast<decltype(&_export_common_routines)>(
      dlsym(library, "_export_common_routines"));
  const OmrelGetCommand lookups[] = {
      [](void*, const char*) -> HostCommand* { throw 1; },
      [](void* interp, const char*) { return static_cast<HostCommand*>(interp); }};
  for (const OmrelGetCommand lookup : lookups) {
    hand_over([](void*, const char*, int) -> HostVar* { throw 1; }, nullptr, nullptr, nullptr,
              nullptr, nullptr, lookup, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
              nullptr, nullptr, nullptr, nullptr);
    const char* const words[] = {"bigtest", "+=", "x", "1", nullptr};
    for (const char* name : {"quarnCommandBigTest", "quarnCommandBigNum"}) {
      const auto command = reinterpret_cast<OmrelCommand>(dlsym(library, name));
      if (command(library, 4, words, nullptr) != 1) return 1;
    }
  }
  return 0;
}
#endif
