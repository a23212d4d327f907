// The host as the plug-in sees it: the received callbacks, the link check and the error report.
#pragma once

#include "plugin/omrel_plugin.h"

namespace omrel {

// The callbacks received by _export_common_routines; all null until the host hands them over.
extern HostCallbackTable host;

// Set by the first link check that succeeds, and never cleared but by tests.
extern bool host_linked;

// The host's commands "eval", "vars", "subst", "set" and "expr" as the last link check found them,
// up to the first one missing. Kept, and not used.
extern HostCommand* host_commands[5];

// Returns 0 when the host offers the five commands that the plug-in is built on, else 1 after a
// report that names the first one missing. A success is remembered for the library's lifetime.
int omrel_init(void* interp);

// Prints "\r\nException in [location] at line N (message)\n" in bright red on standard output and
// returns 1. A null location leaves out the first part, a null or empty message the second.
int report_exception(const char* location, const char* message);

// The host's callbacks, each safe when the host passed null: no variable, failure, or nothing.
inline HostVar* get_var(void* interp, const char* name) {
  return host.getVar == nullptr ? nullptr : host.getVar(interp, name, -1);
}

inline int set_var(void* interp, const char* name, const char* value) {
  return host.setVar == nullptr ? 1 : host.setVar(interp, name, value, -1);
}

inline void set_var_value(HostVar* var, const char* value) {
  if (host.setVarValue != nullptr) host.setVarValue(var, value, 0);
}

inline void free_var_value(HostVar* var) {
  if (host.freeVarValue != nullptr) host.freeVarValue(var);
}

inline void set_result(void* interp, const char* text) {
  if (host.setResult != nullptr) host.setResult(interp, text, 0);
}

inline void free_value(char* value) {
  if (host.freeValue != nullptr) host.freeValue(value);
}

}  // namespace omrel
