// Writes the Tcl package index of a plug-in library into the current directory.
//
//   make_index HOST-VERSION ./omrel_bignum.so
//
// pkgIndex.tcl tells `package require` how to load the host, the plug-in and the proc omrel::help,
// which lie beside it. tclIndex lets tclsh load them by itself when a script first uses one of the
// commands, where the directory itself is in auto_path.
// Version and commands are asked of the library: 119 becomes 1.19.
#include <dlfcn.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "plugin/omrel_plugin.h"

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

template <class Function>
Function find(void* library, const char* name) {
  return reinterpret_cast<Function>(dlsym(library, name));
}

// "./omrel_bignum.so" is package "omrel_bignum".
std::string stem(std::string path) {
  path.erase(0, path.find_last_of('/') + 1);
  return path.substr(0, path.find('.'));
}

bool write_index(const char* host_version, const std::string& package, int version) {
  const File out(std::fopen("pkgIndex.tcl", "w"), std::fclose);
  if (!out) return false;
  return std::fprintf(out.get(),
                      "package ifneeded omrelhost %s [list load [file join $dir omrelhost.so]]\n"
                      "package ifneeded %s %d.%02d [list apply {{dir} {\n"
                      "    package require omrelhost\n"
                      "    omrelhost::load [file join $dir %s.so]\n"
                      "    source -encoding utf-8 [file join $dir omrel_help.tcl]\n"
                      "    package provide %s %d.%02d\n"
                      "}} $dir]\n",
                      host_version, package.c_str(), version / 100, version % 100, package.c_str(),
                      package.c_str(), version / 100, version % 100) > 0;
}

bool write_autoload(const std::string& package, int count, const char* const* commands) {
  const File out(std::fopen("tclIndex", "w"), std::fclose);
  if (!out || std::fputs("# Tcl autoload index file, version 2.0\n", out.get()) < 0) return false;
  std::vector<std::string> names(commands, commands + count);
  names.push_back("::omrel::help");
  for (const std::string& name : names) {
    if (std::fprintf(out.get(), "set auto_index(%s) {package require %s}\n", name.c_str(),
                     package.c_str()) < 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fputs("usage: make_index host-version library\n", stderr), 2;
  const std::string package = stem(argv[2]);
  void* library = dlopen(argv[2], RTLD_NOW);
  if (library == nullptr) return std::fprintf(stderr, "%s\n", dlerror()), 1;
  const auto version = find<decltype(&_get_dll_version)>(library, "_get_dll_version");
  const auto count = find<decltype(&_get_export_count)>(library, "_get_export_count");
  const auto commands = find<decltype(&_get_command_list)>(library, "_get_command_list");
  if (version == nullptr || count == nullptr || commands == nullptr) {
    return std::fprintf(stderr, "%s does not describe itself\n", argv[2]), 1;
  }
  const bool written =
      write_index(argv[1], package, version()) && write_autoload(package, count(), commands());
  return written ? 0 : (std::perror("make_index"), 1);
}
