// State: the callback table, written by _export_common_routines, and the linked flag with the
// references to the host's commands, written by omrel_init.
#include "plugin/host_link.h"

#include <cstdio>

#include "support/console.h"
#include "support/line_marker.h"

namespace omrel {

HostCallbackTable host{};
bool host_linked = false;
HostCommand* host_commands[5] = {};

namespace {

int look_up_commands(void* interp) {
  HostCommand** command = host_commands;
  for (const char* name : {"eval", "vars", "subst", "set", "expr"}) {
    *command = host.getCommand == nullptr ? nullptr : host.getCommand(interp, name);
    if (*command++ == nullptr) {
      char location[40];
      std::snprintf(location, sizeof location, "omrel_init: %s not linked\n", name);
      return report_exception(location, nullptr);
    }
  }
  host_linked = true;
  return 0;
}

}  // namespace

int omrel_init(void* interp) {
  if (host_linked) return 0;
  try {
    return look_up_commands(interp);
  } catch (...) {
    return report_exception("omrel_init: Exception", nullptr);
  }
}

int report_exception(const char* location, const char* message) {
  console_set_colour(BRIGHT_RED);
  if (location != nullptr) {
    std::printf("\r\nException in [%s] at line %li", location, static_cast<long>(line_marker));
  }
  if (message != nullptr && *message != '\0') std::printf(" (%s)", message);
  console_reset_colour();
  std::printf("\n");
  return 1;
}

}  // namespace omrel
