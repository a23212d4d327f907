// Comparison.
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"

namespace omrel {
namespace {

// The index of the highest character that is not a leading zero: -1 of no text, 0 of zeros only.
int top_index(const char* text) {
  int top = static_cast<int>(std::strlen(text)) - 1;
  while (top > 0 && text[top] == '0') --top;
  return top;
}

}  // namespace

int compare_digits(const char* x, const char* y) {
  if (x == nullptr || y == nullptr) return 0;
  const int top = top_index(x);
  const int y_top = top_index(y);
  if (top != y_top) return top < y_top ? -1 : 1;
  for (int i = top; i >= 0; --i) {
    const auto a = static_cast<signed char>(x[i]);
    const auto b = static_cast<signed char>(y[i]);
    if (a != b) return a < b ? -1 : 1;
  }
  return 0;
}

int compare_signed(const char* x, int x_negative, const char* y, int y_negative) {
  if (x_negative != 0 && y_negative == 0) return -1;
  if (x_negative == 0 && y_negative != 0) return 1;
  return x_negative != 0 ? -compare_digits(x, y) : compare_digits(x, y);
}

int bignum::compare(const bignum& a, const bignum& b) const {
  if ((a.negative != 0) != (b.negative != 0)) return a.negative != 0 ? -1 : 1;
  const bignum& x = a.negative != 0 ? b : a;
  const bignum& y = a.negative != 0 ? a : b;
  return x.plain && y.plain ? compare_magnitudes(x, y) : compare_digits(x.vlstr, y.vlstr);
}

bool bignum::equals_digit(char digit) const {
  return negative == 0 && vlstr[0] == digit && significant_length(vlstr, text_length()) <= 1;
}

}  // namespace omrel
