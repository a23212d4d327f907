// The same command written with GMP, as one would: every call reads its texts, computes, writes
// the answer into fresh memory, hands it over and keeps nothing. Operands are well-formed whole
// numbers, divisors not zero, roots and binary digits asked of what has them; with those it also
// judges tests.
#pragma once

#include <map>
#include <string>

namespace omrel::bench {

// What a command sees of its host.
class GmpHost {
 public:
  virtual ~GmpHost() = default;
  virtual const char* variable_text() = 0;        // of the variable that an updating word changes
  virtual void set_result(const char* text) = 0;  // copies the text
  virtual void store_result() = 0;                // gives the variable the result, too
};

using GmpCommand = void (*)(GmpHost& host, int argc, const char* const* argv);

// The commands by their operator words.
const std::map<std::string, GmpCommand>& gmp_commands();

// The command for an operator word; null when there is none.
GmpCommand gmp_command(const std::string& word);

}  // namespace omrel::bench
