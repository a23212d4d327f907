#include "bignum/magnitude/magnitude.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

#include "bignum/digit_text.h"

namespace omrel {
Magnitude::Magnitude(Limb value) {
  limb()[0] = value % LIMB_BASE;
  limb()[1] = value / LIMB_BASE % LIMB_BASE;
  limb()[2] = value / (LIMB_BASE * LIMB_BASE);
  trim(3);
}

Limbs& Limbs::operator=(const Limbs& x) {
  if (this != &x) std::copy_n(x.limb(), x.limb_count, limb());
  limb_count = x.limb_count;
  return *this;
}

void Limbs::trim(int at_most) {
  while (at_most > 0 && limb()[at_most - 1] == 0) --at_most;
  assert(at_most <= MAX_LIMBS);
  limb_count = at_most;
}

const Limb* Limbs::pad() {
  std::fill_n(storage, ROW_PADDING, 0);
  std::fill_n(storage + ROW_PADDING + limb_count, ROW_PADDING, 0);
  return limb();
}

// From so many limbs on a call of the vector functions pays.
constexpr int MANY = 6;

void load(Magnitude& m, const char* digits, int length, int shift) {
  Limb* limb = m.limb();
  for (; shift >= LIMB_DIGITS; shift -= LIMB_DIGITS) *limb++ = 0;
  if (shift > 0 && length > 0) {
    const int first = std::min(LIMB_DIGITS - shift, length);
    *limb++ = number_of(load_few(digits, first) << (8 * shift));
    digits += first;
    length -= first;
  }
  const int whole = length / LIMB_DIGITS;
  if (whole >= MANY) {
    vectors.load(limb, digits, whole);
  } else {
    for (int i = 0; i < whole; ++i) limb[i] = number_of(load_word(digits + i * LIMB_DIGITS));
  }
  limb += whole;
  const int rest = length % LIMB_DIGITS;
  if (rest > 0) *limb++ = number_of(load_few(digits + whole * LIMB_DIGITS, rest));
  m.trim(static_cast<int>(limb - m.limb()));
}

int store(char* digits, const Magnitude& m) {
  if (m.count() >= MANY) {
    vectors.store(digits, m.limb(), m.count());
  } else {
    for (int i = 0; i < m.count(); ++i) store_word(digits + i * LIMB_DIGITS, word_of(m.limb()[i]));
  }
  return m.is_zero() ? 0 : digit_count(m);
}

void carry_columns(Limb* columns, int count) {
  if (count >= MANY_COLUMNS) {
    vectors.settle(columns, columns, count);
    return vectors.carry(columns, count);
  }
  Limb carry = 0;
  for (int i = 0; i < count; ++i) {
    const Limb total = columns[i] + carry;
    carry = total / LIMB_BASE;
    columns[i] = total - carry * LIMB_BASE;
  }
}

int digit_count(const Magnitude& m) {
  const std::uint64_t top = word_of(m.limb()[m.count() - 1]) ^ ASCII_ZEROS;
  return m.count() * LIMB_DIGITS - std::countl_zero(top) / 8;
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
  a.trim(count + 1);
}

void subtract(Magnitude& a, const Magnitude& b) {
  Limb borrow = 0;
  for (int i = 0; i < a.count(); ++i) {
    const Limb taken = (i < b.count() ? b.limb()[i] : 0) + borrow;
    borrow = a.limb()[i] < taken ? 1 : 0;
    a.limb()[i] += (borrow != 0 ? LIMB_BASE : 0) - taken;
  }
  assert(borrow == 0 && b.count() <= a.count());
  a.trim(a.count());
}

void halve(Magnitude& a) {
  for (int i = 0; i < a.count(); ++i) {
    const Limb above = i + 1 < a.count() ? a.limb()[i + 1] & 1 : 0;
    a.limb()[i] = a.limb()[i] / 2 + above * (LIMB_BASE / 2);
  }
  a.trim(a.count());
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
  a.trim(count + 2);
}

}  // namespace omrel
