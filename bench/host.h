// A minimal host that loads the plug-in: what a command costs beside it is next to nothing.
#pragma once

#include <string>
#include <utility>

#include "bench/gmp_commands.h"
#include "plugin/omrel_plugin.h"

namespace omrel::bench {

// What a command sees of its host: one variable, x, and a result that is copied.
struct Host final : GmpHost {
  explicit Host(std::string value = "", std::string answer = "")
      : variable(std::move(value)), result(std::move(answer)) {}
  const char* variable_text() override { return variable.c_str(); }
  void set_result(const char* text) override { result = text; }
  void store_result() override { variable = result; }

  std::string variable;
  std::string result;
};

// The one host, which both commands of a case write to.
extern Host the_host;

// Loads the plug-in, hands over the host's callbacks and returns its command `big`. Ends the
// process with a message when that fails.
OmrelCommand load_command(const char* path);

}  // namespace omrel::bench
