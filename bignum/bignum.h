// bignum: a signed decimal integer of up to 6,499 digits, the value type of the engine.
//
// Library-wide state of the engine: the debug switch, written by the `debug` word and read by
// division (divide.cpp) and square root (root.cpp), the free list of digit buffers (buffers.cpp)
// and the random generator (random.cpp).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <utility>

#include "bignum/buffers.h"
#include "bignum/digit_text.h"
#include "support/line_marker.h"
#include "support/text.h"

namespace omrel {

// Decimal places of a fixed-point number, and one in machine words: the integer part, and the
// places as an integer.
constexpr int FIXED_PLACES = 18;
struct FixedWords {
  std::uint64_t whole;
  std::uint64_t places;
};

// The engine's failure: an operation has no answer. Thrown for a zero divisor, and for a square
// root of a negative number whose steps never end.
class EngineFailure : public std::exception {
 public:
  int code = 1;
};

// While set, division and square root write a trace of their search to standard output.
extern std::int32_t debug_switch;

// Prints the overflow report and ends the process: a value would have MAX_DIGITS digits or more.
[[noreturn]] void overflow();

// A signed decimal integer, held as a digit text and a sign flag.
//
// Zero has a sign flag of its own: "-0" is a value, prints as such and orders below zero. Leading
// zeros are kept in the digit text, ignored by comparison and dropped by to_string. An empty digit
// text counts as zero in arithmetic; it orders below zero among values of its sign. Characters
// other than digits are kept as they are by construction, copy, comparison and text form, and
// count as the digit 0 in arithmetic.
//
// Running out of memory for a digit buffer ends the process, as does a value of MAX_DIGITS digits.
class bignum {
 public:
  // An empty value: no digits, not negative.
  bignum();
  // Reads an optional sign, then digits up to the first '.'; what follows the point is dropped.
  // A text without a sign takes `default_sign`, an empty or null text gives an empty value.
  // Errors: MAX_DIGITS or more characters behind the sign end the process with overflow().
  bignum(const char* text, std::int16_t default_sign);
  explicit bignum(int value);
  explicit bignum(long value);
  bignum(const bignum& b);
  // Leaves `b` without digits.
  bignum(bignum&& b) noexcept;
  ~bignum();

  // Assigns and returns a copy of the assigned value. An empty `b` leaves the old characters in
  // the buffer behind a length of 0.
  bignum operator=(const bignum& b);
  // Exchanges the two values.
  void operator=(bignum&& b) noexcept;

  // Returns the value's DecimalText (text_form.h) as a heap text for free(), null without memory.
  char* to_string() const;

  std::int16_t get_sign() const { return negative; }
  void set_sign(int flag) { negative = flag != 0 ? 1 : 0; }

  // Replaces the remainder text by a copy of `text`, or by none when that is null.
  void set_remainder(const char* text);
  // Returns the value of the remainder text, 0 when there is none.
  bignum get_remainder() const;

  // Orders by sign flag first, then by magnitude; see compare_signed.
  bool operator==(const bignum& b) const { return compare(*this, b) == 0; }
  bool operator!=(const bignum& b) const { return compare(*this, b) != 0; }
  bool operator<(const bignum& b) const { return compare(*this, b) < 0; }
  bool operator>(const bignum& b) const { return compare(*this, b) > 0; }
  bool operator<=(const bignum& b) const { return compare(*this, b) <= 0; }
  bool operator>=(const bignum& b) const { return compare(*this, b) >= 0; }
  // Whether the value equals a digit, as operator== sees it: a negative zero does not equal 0.
  bool equals_digit(char digit) const;
  // Compares a with b; the object plays no part.
  int compare(const bignum& a, const bignum& b) const;

  // Return a + b and a - b, a being the object.
  // Result:  as many digits as the longer operand, one more on a final carry; not normalised.
  // Leaves:  b as it was; a's digits too, but its sign flag as the tables in add.cpp show.
  // Errors:  a sum of MAX_DIGITS digits ends the process.
  bignum operator+(const bignum& b);
  bignum operator-(const bignum& b);

  // Sets the value to the sum, in place where neither operand is negative.
  void add(const bignum& b);

  // Return the value plus and minus one, with the same effect on the object's sign flag.
  bignum increment() { return *this + bignum(1); }
  bignum decrement() { return *this - bignum(1); }
  // Does that in place, up or down, where no more than the lowest eight digits and no sign flag
  // change; false, and nothing done, elsewhere.
  bool step_lowest(bool up);

  // Whether the lowest stored character has an even code; false for an empty value.
  bool is_even() const { return length >= 1 && (vlstr[0] & 1) == 0; }

  // Returns a * b. A zero product of unlike signs is a negative zero.
  // Result:  both lengths less one digits, one more if the top digit is not zero.
  // Errors:  a product of MAX_DIGITS digits ends the process.
  bignum operator*(const bignum& b) const;
  // Returns the magnitude times a digit m from 0 to 9, never negative.
  bignum multiply_digit(int m) const;
  // Multiplies the magnitude by 10^n in place, n >= 1; changes nothing when the length would
  // reach MAX_DIGITS. Returns a copy.
  bignum shift_digits(int n);

  // Returns the quotient a / d truncated toward zero. It carries the remainder as a text, unless
  // divisor, dividend or their equality made the search needless; see divide.cpp.
  // Errors:  a zero divisor prints a line on standard output and throws EngineFailure.
  bignum operator/(const bignum& d) const;
  // As operator/, but the quotient carries no remainder text.
  bignum quotient(const bignum& d) const;
  // Sets q to the magnitude of a * 10^FIXED_PLACES / d, truncated. False, with q as it was, where
  // the steps of that must be shown, it may be too long or meets other characters than digits, and
  // for places that are all zeros although something may be left.
  bool fixed_quotient(bignum& q, const bignum& d) const;
  // The same for values of few digits; false for others.
  bool fixed_quotient(FixedWords& q, const bignum& d) const;
  // Returns the value of the remainder text that operator/ leaves: the remainder of the magnitudes,
  // not negative; but of two negative operands the dividend itself when it is nearer to zero.
  bignum remainder(const bignum& d) const;
  // Returns the remainder of the magnitudes with the sign flag of the dividend, zero included.
  // A divisor that equals 0 gives zero; one that is a negative zero fails as operator/ does.
  bignum operator%(const bignum& b) const;
  // Returns half the magnitude, truncated; never negative.
  bignum div2() const;
  // As div2, in place.
  void halve() { set_to_half(*this); }

  // Returns x to the power n: 1 for n = 0, x itself for a negative n.
  // Errors: a power of MAX_DIGITS digits ends the process, at once; so for the next three.
  static bignum pow(const bignum& x, std::int32_t n);
  // Returns 2 to the power n, 1 for a negative n.
  static bignum pow2(const bignum& n);
  static bignum pow2(std::int32_t n);
  // Returns n factorial, 1 for a negative n.
  static bignum fact(std::int32_t n);
  // Returns the n-th Fibonacci number, 1 for a negative n.
  static bignum fib(std::int32_t n);
  // Returns the largest value whose square does not exceed n, for n >= 0.
  // Negative n: what Newton's steps lead to, a root of no use; see root.cpp.
  // Errors:     steps that meet a zero divisor fail as operator/ does, steps that circle throw
  //             EngineFailure.
  static bignum sqrt(const bignum& n);
  // Return the larger and the smaller value, b when they are equal.
  static const bignum& max(const bignum& a, const bignum& b) { return a > b ? a : b; }
  static const bignum& min(const bignum& a, const bignum& b) { return a < b ? a : b; }

  // Whether the value has a binary form: neither negative, nor a negative zero, nor without digits.
  bool has_binary_form() const { return negative == 0 && length > 0; }
  // Returns the value's BinaryText (text_form.h) as a heap text for free(), null without a binary
  // form and without memory.
  static char* inttobin(const bignum& x);
  // Returns the value of binary digits, with or without a leading "0b". Every character but '1'
  // counts as a zero; a null text is 0.
  // Errors: as pow.
  static bignum bintoint(const char* text);
  // Bitwise operations on values with a binary form. If one operand has none, the answer is the
  // other; if neither has, it is 0.
  bignum operator|(const bignum& b) const { return bit_or(b, 0); }
  bignum operator&(const bignum& b) const { return bit_and(b, 0); }
  bignum operator^(const bignum& b) const;
  // As the operators, but for a width of 1 or more of the values' low_bits.
  bignum bit_or(const bignum& b, std::int32_t width) const;
  bignum bit_and(const bignum& b, std::int32_t width) const;
  // Returns a & (2^width - 1), width >= 1: the mask itself without a binary form.
  // Errors: a mask of MAX_DIGITS digits ends the process, whatever the value.
  bignum low_bits(std::int32_t width) const;
  // Returns the complement over the value's own bits, so ~12 is 3; 0 without a binary form.
  bignum operator~() const;
  // Return the magnitude times 2^n, or divided by it and truncated, n >= 1; never negative.
  // Errors: as pow.
  bignum shift_left(std::int32_t n) const;
  bignum shift_right(std::int32_t n) const;
  // The same, and of what comes out the low_bits, width >= 1.
  bignum shift_left(std::int32_t n, std::int32_t width) const;
  bignum shift_right(std::int32_t n, std::int32_t width) const;
  // Returns twice the magnitude; never negative.
  bignum mul2() const;
  // Drops the lowest digit in place, keeping the sign flag, and returns a copy.
  bignum div10();
  // As div10, without the copy.
  void drop_digit();

  // Sets the digits of the object to those of a random value from low to high and returns it; its
  // sign flag stays. See random.cpp for how values are drawn: not evenly in general, and not at
  // all when no draw falls between the bounds, which makes the object 0 and returns low.
  bignum rnd(const bignum& low, const bignum& high);

  // Ends the digits that an operation has written into vlstr.
  // Errors: MAX_DIGITS or more of them end the process with overflow().
  void end_digits(int digit_count, std::int16_t sign);

  // Characters in vlstr up to its NUL: `length`, but for an emptied value that kept its old ones.
  int text_length() const { return plain ? length : static_cast<int>(std::strlen(vlstr)); }

  char* vlstr;            // the digits, least significant first, padded; owned (digit_text.h)
  std::int32_t length;    // characters in vlstr
  std::int16_t negative;  // the sign flag: 1 or 0
  char* remainder_text;   // what the division that made this value left over, or null; owned
  bool plain = true;      // whether vlstr is `length` characters, all of them digits

 private:
  [[gnu::noinline]] void read(const char* text);
  [[gnu::cold, gnu::noinline]] void read_up_to_point(const char* text);
  void set_to_half(const bignum& b);
};

// Here, since every call makes and releases a few values.
inline bignum::bignum() : vlstr(acquire_digits()), length(0), negative(0), remainder_text(nullptr) {
  store_word(vlstr, 0);
}

inline bignum::bignum(bignum&& b) noexcept : bignum() { *this = std::move(b); }

inline bignum::~bignum() {
  mark_line();
  if (remainder_text != nullptr) free_and_null(&remainder_text);
  release_digits(std::exchange(vlstr, nullptr));
  length = 0;
  negative = 0;
}

inline void bignum::end_digits(int digit_count, std::int16_t sign) {
  if (digit_count >= MAX_DIGITS) overflow();
  // In one store with the last digits, which are read next as one word.
  const auto n = static_cast<unsigned>(digit_count);
  char* last = vlstr + (n & ~7U);
  store_word(last, load_few(last, static_cast<int>(n & 7U)));
  length = digit_count;
  negative = sign;
  plain = true;
}

// A value's digits as arithmetic reads them: a foreign character counts as the digit 0.
class Digits {
 public:
  explicit Digits(const bignum& b);
  ~Digits();
  Digits(const Digits&) = delete;
  void operator=(const Digits&) = delete;

  const char* text;
  int length;

 private:
  [[gnu::cold, gnu::noinline]] void clean();

  char* cleaned = nullptr;
};

// Compares two magnitudes given as digit texts: -1, 0 or 1. Leading zeros are ignored; an empty
// text orders below one of zeros; null texts compare as equal.
[[gnu::cold, gnu::noinline]] int compare_digits(const char* x, const char* y);

// Compares the magnitudes of two values that hold digits only; as compare_digits.
inline int compare_magnitudes(const bignum& a, const bignum& b) {
  if (a.length == b.length) return compare_padded(a.vlstr, b.vlstr, a.length);
  // An empty text has its NUL, below any digit.
  const int a_length = std::max(significant_length(a.vlstr, a.length), 1);
  const int b_length = std::max(significant_length(b.vlstr, b.length), 1);
  return compare_significant(a.vlstr, a_length, b.vlstr, b_length);
}

// Compares signed values given as digit text and sign flag: a set flag orders below a clear one
// whatever the magnitudes, so a negative zero is below zero.
int compare_signed(const char* x, int x_negative, const char* y, int y_negative);

}  // namespace omrel
