#include "bignum/magnitude/power_table.h"

namespace omrel {
namespace {

// Writes twice the number, which has a digit more when its top one is 5 or more; returns how many.
constexpr int write_double(char* twice, const char* text, int digit_count) {
  const int longer = text[0] >= '5' ? 1 : 0;
  int carry = 0;
  for (int i = digit_count - 1; i >= 0; --i) {
    const int sum = 2 * (text[i] - '0') + carry;
    carry = sum >= 10 ? 1 : 0;
    twice[i + longer] = static_cast<char>('0' + sum - 10 * carry);
  }
  if (longer != 0) twice[0] = '1';
  return digit_count + longer;
}

constexpr std::array<PowerOfTwo, POWER_OF_TWO_COUNT> powers_of_two() {
  std::array<PowerOfTwo, POWER_OF_TWO_COUNT> table{};
  table[0][0] = '1';
  int digit_count = 1;
  for (unsigned i = 1; i < POWER_OF_TWO_COUNT; ++i) {
    digit_count = write_double(table[i].data(), table[i - 1].data(), digit_count);
  }
  return table;
}

}  // namespace

constexpr std::array<PowerOfTwo, POWER_OF_TWO_COUNT> PowerOfTwoTable = powers_of_two();

}  // namespace omrel
