// Comparison, and parity.
#include <algorithm>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"

namespace omrel {
namespace {

// The length without leading zeros, but one at least: an empty text has its NUL, below any digit.
int top_length(const char* text, int length) {
  return std::max(significant_length(text, length), 1);
}

// Compares characters as signed codes from the top, and reads no byte behind them.
int compare_texts(const char* x, int x_length, const char* y, int y_length) {
  while (x_length > 1 && x[x_length - 1] == '0') --x_length;
  while (y_length > 1 && y[y_length - 1] == '0') --y_length;
  if (x_length != y_length) return x_length < y_length ? -1 : 1;
  for (int i = x_length - 1; i >= 0; --i) {
    const auto a = static_cast<signed char>(x[i]);
    const auto b = static_cast<signed char>(y[i]);
    if (a != b) return a < b ? -1 : 1;
  }
  return 0;
}

[[gnu::cold, gnu::noinline]] int compare_foreign(const bignum& a, const bignum& b) {
  return compare_texts(a.vlstr, a.text_length(), b.vlstr, b.text_length());
}

int compare_values(const bignum& a, const bignum& b) {
  if ((a.negative != 0) != (b.negative != 0)) return a.negative != 0 ? -1 : 1;
  const bignum& x = a.negative != 0 ? b : a;
  const bignum& y = a.negative != 0 ? a : b;
  return x.plain && y.plain ? compare_magnitudes(x, y) : compare_foreign(x, y);
}

}  // namespace

int compare_magnitudes(const bignum& a, const bignum& b) {
  return a.length == b.length ? compare_padded(a.vlstr, b.vlstr, a.length)
                              : compare_significant(a.vlstr, top_length(a.vlstr, a.length), b.vlstr,
                                                    top_length(b.vlstr, b.length));
}

int compare_digits(const char* x, const char* y) {
  if (x == nullptr || y == nullptr) return 0;
  const auto length = [](const char* text) { return static_cast<int>(std::strlen(text)); };
  return compare_texts(x, length(x), y, length(y));
}

int compare_signed(const char* x, int x_negative, const char* y, int y_negative) {
  if (x_negative != 0 && y_negative == 0) return -1;
  if (x_negative == 0 && y_negative != 0) return 1;
  return x_negative != 0 ? -compare_digits(x, y) : compare_digits(x, y);
}

int bignum::compare(const bignum& a, const bignum& b) const { return compare_values(a, b); }
bool bignum::equals_digit(char digit) const {
  return negative == 0 && vlstr[0] == digit && top_length(vlstr, text_length()) == 1;
}

bool bignum::operator==(const bignum& b) const { return compare_values(*this, b) == 0; }
bool bignum::operator!=(const bignum& b) const { return compare_values(*this, b) != 0; }
bool bignum::operator<(const bignum& b) const { return compare_values(*this, b) < 0; }
bool bignum::operator>(const bignum& b) const { return compare_values(*this, b) > 0; }
bool bignum::operator<=(const bignum& b) const { return compare_values(*this, b) <= 0; }
bool bignum::operator>=(const bignum& b) const { return compare_values(*this, b) >= 0; }

bool bignum::is_even() const { return length >= 1 && (vlstr[0] & 1) == 0; }

}  // namespace omrel
