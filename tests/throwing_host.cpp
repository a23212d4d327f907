// A host written in C++, with a C++ runtime of its own, whose callbacks throw into the library.
#include "plugin/omrel_plugin.h"

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
