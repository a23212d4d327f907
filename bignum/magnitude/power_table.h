// The powers of two from 2^0 to 2^512, as decimal texts.
#pragma once

#include <array>

namespace omrel {

constexpr int POWER_OF_TWO_COUNT = 513;
constexpr int POWER_OF_TWO_DIGITS = 155;  // of 2^512

using PowerOfTwo = std::array<char, POWER_OF_TWO_DIGITS + 1>;

// Entry i is the text of 2^i. Made at compile time; any entry is twice the one before.
extern const std::array<PowerOfTwo, POWER_OF_TWO_COUNT> PowerOfTwoTable;

}  // namespace omrel
