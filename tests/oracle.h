// What `big` answers to well-formed numbers, by the same command written with GMP.
#pragma once

#include <optional>
#include <string>

#include "tests/recording_host.h"

namespace omrel::test {

// The result of a call, the variable that it names having a value; ENDS when a number is too long.
// None when the call leaves no result, or GMP has no answer: operands that are not numbers, roots
// of negative numbers, random draws.
std::optional<std::string> answer_by_gmp(const Words& words, const std::string& variable);

// Whether the word's first operand is the name of a variable.
bool updates(const std::string& word);

inline const std::string ENDS = "ends";

}  // namespace omrel::test
