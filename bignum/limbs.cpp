// Multiplication adds rows into columns of 64 bits (Knuth, The Art of Computer Programming, vol.
// 2, 4.3.1, algorithm M, without its carries): with limbs below 10^8 a column holds 1,844 products,
// more than any operand has limbs, so one carry pass at the end is all the normalising there is.
#include "bignum/limbs.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "bignum/digit_text.h"

namespace omrel {
namespace {

// Eight digits of a digit text, as one limb: digits, then pairs, then fours.
Limb limb_of(std::uint64_t word) {
  word &= 0x0F0F0F0F0F0F0F0F;
  word = (word + (word >> 8) * 10) & 0x00FF00FF00FF00FF;
  word = (word + (word >> 16) * 100) & 0x0000FFFF0000FFFF;
  return (word + (word >> 32) * 10000) & 0xFFFFFFFF;
}

// One limb as eight digits. The divisions by 100 and 10 are multiplications that are exact for
// fields below 10^4 and 10^2.
std::uint64_t word_of(Limb limb) {
  const std::uint64_t high = limb / 10000;
  std::uint64_t word = (limb - high * 10000) | (high << 32);
  const std::uint64_t hundreds = ((word * 10486) >> 20) & 0x0000007F0000007F;
  word = (word - hundreds * 100) | (hundreds << 16);
  const std::uint64_t tens = ((word * 103) >> 10) & 0x000F000F000F000F;
  return (word - tens * 10) | (tens << 8) | ASCII_ZEROS;
}

void multiply_short(Limb* columns, const Magnitude& a, const Magnitude& b) {
  for (int j = 0; j < b.count(); ++j) {
    for (int i = 0; i < a.count(); ++i) columns[i + j] += a.limb()[i] * b.limb()[j];
  }
}

}  // namespace

Magnitude::Magnitude(Limb value) {
  std::fill_n(storage, ROW_PADDING, 0);
  limb()[0] = value % LIMB_BASE;
  limb()[1] = value / LIMB_BASE;
  set_count(2);
}

Magnitude::Magnitude(const Magnitude& m) {
  std::fill_n(storage, ROW_PADDING, 0);
  *this = m;
}

Magnitude& Magnitude::operator=(const Magnitude& m) {
  if (this == &m) return *this;
  std::copy_n(m.limb(), m.limb_count + ROW_PADDING, limb());
  limb_count = m.limb_count;
  return *this;
}

void Magnitude::set_count(int at_most) {
  while (at_most > 0 && limb()[at_most - 1] == 0) --at_most;
  assert(at_most <= MAX_LIMBS);
  limb_count = at_most;
  std::fill_n(limb() + at_most, ROW_PADDING, 0);
}

void load(Magnitude& m, const char* digits, int length, int shift) {
  Limb* limb = m.limb();
  for (; shift >= LIMB_DIGITS; shift -= LIMB_DIGITS) *limb++ = 0;
  int i = 0;
  if (shift > 0 && length > 0) {
    const int first = std::min(LIMB_DIGITS - shift, length);
    const std::uint64_t word = load_tail(digits, first);
    *limb++ = limb_of((word & 0x0F0F0F0F0F0F0F0F) << (8 * shift));
    i = first;
  }
  for (; i + LIMB_DIGITS <= length; i += LIMB_DIGITS) *limb++ = limb_of(load_word(digits + i));
  if (i < length) *limb++ = limb_of(load_tail(digits + i, length - i));
  m.set_count(static_cast<int>(limb - m.limb()));
}

int store(char* digits, const Magnitude& m) {
  for (int i = 0; i < m.count(); ++i) store_word(digits + i * LIMB_DIGITS, word_of(m.limb()[i]));
  return digit_count(m);
}

void carry_columns(Limb* columns, int count) {
  Limb carry = 0;
  for (int i = 0; i < count; ++i) {
    const Limb total = columns[i] + carry;
    carry = total / LIMB_BASE;
    columns[i] = total - carry * LIMB_BASE;
  }
  assert(carry == 0);
}

int digit_count(const Magnitude& m) {
  if (m.is_zero()) return 0;
  int count = (m.count() - 1) * LIMB_DIGITS;
  for (Limb top = m.limb()[m.count() - 1]; top > 0; top /= 10) ++count;
  return count;
}

int compare(const Magnitude& a, const Magnitude& b) {
  if (a.count() != b.count()) return a.count() < b.count() ? -1 : 1;
  for (int i = a.count() - 1; i >= 0; --i) {
    if (a.limb()[i] != b.limb()[i]) return a.limb()[i] < b.limb()[i] ? -1 : 1;
  }
  return 0;
}

void add(Magnitude& a, const Magnitude& b) {
  const int count = std::max(a.count(), b.count());
  if (count > a.count()) std::fill_n(a.limb() + a.count(), count - a.count(), 0);
  Limb carry = 0;
  for (int i = 0; i < count; ++i) {
    const Limb total = a.limb()[i] + (i < b.count() ? b.limb()[i] : 0) + carry;
    carry = total >= LIMB_BASE ? 1 : 0;
    a.limb()[i] = total - (carry != 0 ? LIMB_BASE : 0);
  }
  a.limb()[count] = carry;
  a.set_count(count + 1);
}

void subtract(Magnitude& a, const Magnitude& b) {
  Limb borrow = 0;
  for (int i = 0; i < a.count(); ++i) {
    const Limb taken = (i < b.count() ? b.limb()[i] : 0) + borrow;
    borrow = a.limb()[i] < taken ? 1 : 0;
    a.limb()[i] += (borrow != 0 ? LIMB_BASE : 0) - taken;
  }
  assert(borrow == 0 && b.count() <= a.count());
  a.set_count(a.count());
}

void halve(Magnitude& a) {
  for (int i = 0; i < a.count(); ++i) {
    const Limb above = i + 1 < a.count() ? a.limb()[i + 1] & 1 : 0;
    a.limb()[i] = a.limb()[i] / 2 + above * (LIMB_BASE / 2);
  }
  a.set_count(a.count());
}

void multiply_add(Magnitude& a, Limb m, Limb addend) {
  for (int i = 0; i < a.count(); ++i) {
    const Limb total = a.limb()[i] * m + addend;
    addend = total / LIMB_BASE;
    a.limb()[i] = total - addend * LIMB_BASE;
  }
  const int count = a.count();
  a.limb()[count] = addend % LIMB_BASE;
  a.limb()[count + 1] = addend / LIMB_BASE;
  a.set_count(count + 2);
}

bool multiply(Magnitude& product, const Magnitude& a, const Magnitude& b) {
  if (a.count() < b.count()) return multiply(product, b, a);
  const int count = a.count() + b.count();
  if (count > MAX_LIMBS) return false;
  Limb* columns = product.limb();
  std::fill_n(columns, count + ROW_PADDING, 0);
  if (b.count() < ROWS) {
    multiply_short(columns, a, b);
  } else {
    for (int j = 0; j < b.count(); j += ROWS) {
      add_rows(columns + j, a.limb(), a.count(), b.limb() + j);
    }
  }
  carry_columns(columns, count);
  product.set_count(count);
  return true;
}

// Rows of doubled limbs, each from the lanes above its own on; four at a time start at lane j + 4,
// so row k of the four brings the lanes from j + 4 - k, where lane k itself and those below belong
// to the square only once or to another row. The first seven columns put that right.
bool square(Magnitude& product, const Magnitude& a) {
  const int count = 2 * a.count();
  if (count > MAX_LIMBS) return false;
  Limb* columns = product.limb();
  std::fill_n(columns, count + ROW_PADDING, 0);
  for (int j = 0; j < a.count(); j += ROWS) {
    const Limb* m = a.limb() + j;
    Limb* c = columns + 2 * j;
    c[0] += m[0] * m[0];
    c[1] += 2 * m[0] * m[1];
    c[2] += 2 * m[0] * m[2] + m[1] * m[1];
    c[3] += 2 * (m[0] * m[3] + m[1] * m[2]);
    if (a.count() - j <= ROWS) {
      c[4] += 2 * m[1] * m[3] + m[2] * m[2];
      c[5] += 2 * m[2] * m[3];
      c[6] += m[3] * m[3];
    } else {
      c[4] -= 2 * m[1] * m[3] + m[2] * m[2];  // columns count modulo 2^64
      c[5] -= 2 * m[2] * m[3];
      c[6] -= m[3] * m[3];
      const Limb twice[ROWS] = {2 * m[0], 2 * m[1], 2 * m[2], 2 * m[3]};
      add_rows(c + ROWS, m + ROWS, a.count() - j - ROWS, twice);
    }
  }
  carry_columns(columns, count);
  product.set_count(count);
  return true;
}

}  // namespace omrel
