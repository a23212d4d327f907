// A host written in C++, with a C++ runtime of its own, whose callbacks throw into the library.
#include "plugin/omrel_plugin.h"

#include <dlfcn.h>

#include <stdexcept>

namespace {

HostVar* throwing_get_var(void*, const char*, int) { throw std::runtime_error("getVar"); }
HostCommand* throwing_get_command(void*, const char*) { throw std::runtime_error("getCommand"); }
HostCommand* get_command(void* interp, const char*) { return static_cast<HostCommand*>(interp); }

}  // namespace

int main() {
  void* library = dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return 1;
  const auto hand_over = reinterpret_cast<decltype(&_export_common_routines)>(
      dlsym(library, "_export_common_routines"));
  for (const OmrelGetCommand lookup : {&throwing_get_command, &get_command}) {
    hand_over(&throwing_get_var, nullptr, nullptr, nullptr, nullptr, nullptr, lookup, nullptr,
              nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    const char* const words[] = {"bigtest", "+=", "x", "1", nullptr};
    for (const char* name : {"quarnCommandBigTest", "quarnCommandBigNum"}) {
      const auto command = reinterpret_cast<OmrelCommand>(dlsym(library, name));
      if (command(library, 4, words, nullptr) != 1) return 1;
    }
  }
  return 0;
}
