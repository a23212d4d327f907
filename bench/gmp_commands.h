// The same command written with GMP, as one would: every call reads its texts, computes, writes
// the answer into fresh memory, hands it over and keeps nothing.
#pragma once

#include <string>

namespace omrel::bench {

// What both commands see of their host: one variable, and a result that is copied.
struct Host {
  std::string variable;
  std::string result;
};

using GmpCommand = void (*)(Host& host, int argc, const char* const* argv);

// The command for an operator word; null when there is none.
GmpCommand gmp_command(const std::string& word);

}  // namespace omrel::bench
