// Library-wide state: the host, and the record through which the plug-in sees its variable.
#include "bench/host.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace omrel::bench {

Host the_host;

namespace {

struct Variable : HostVar {
} variable;

HostVar* get_var(void*, const char* name, int) {
  if (std::strcmp(name, "x") != 0) return nullptr;
  variable.value = the_host.variable.data();
  return &variable;
}
int set_var(void*, const char*, const char*, int) { return 1; }
void set_var_value(HostVar*, const char* text, int) { the_host.variable = text; }
void free_var_value(HostVar*) {}
void free_value(char*) {}
HostCommand* get_command(void*, const char*) { return reinterpret_cast<HostCommand*>(&the_host); }
void set_result(void*, const char* text, int) { the_host.result = text; }

void* must(void* found) {
  if (found != nullptr) return found;
  std::fprintf(stderr, "%s\n", dlerror());
  std::exit(2);
}

}  // namespace

OmrelCommand load_command(const char* path) {
  void* library = must(dlopen(path, RTLD_NOW));
  const auto hand_over = reinterpret_cast<decltype(&_export_common_routines)>(
      must(dlsym(library, "_export_common_routines")));
  hand_over(get_var, set_var, set_var_value, free_var_value, nullptr, nullptr, get_command, nullptr,
            nullptr, set_result, nullptr, free_value, nullptr, nullptr, nullptr, nullptr, nullptr);
  return reinterpret_cast<OmrelCommand>(must(dlsym(library, "quarnCommandBigNum")));
}

}  // namespace omrel::bench
