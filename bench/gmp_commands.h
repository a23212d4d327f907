// The same command written with GMP, as one would: every call reads its texts, computes, writes
// the answer into fresh memory, hands it over and keeps nothing. Operands are well-formed whole
// numbers, divisors not zero, roots and binary digits asked of what has them; with those it also
// judges tests.
#pragma once

#include <string>

#include "bench/host.h"

namespace omrel::bench {

using GmpCommand = void (*)(Host& host, int argc, const char* const* argv);

// The command for an operator word; null when there is none.
GmpCommand gmp_command(const std::string& word);

}  // namespace omrel::bench
