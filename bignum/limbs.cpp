// Multiplication adds rows into columns of 64 bits (Knuth, The Art of Computer Programming, vol.
// 2, 4.3.1, algorithm M, without its carries): with limbs below 10^8 a column holds 1,844 products,
// more than any operand has limbs, so one carry pass at the end is all the normalising there is.
#include "bignum/limbs.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

#include "bignum/digit_text.h"

namespace omrel {
namespace {

// Fewer rows than this are not worth a group of them.
constexpr int FEW_ROWS = 3;

// The product column by column, each carried at once: for few limbs there is no better way.
void multiply_short(Limb* product, const Magnitude& a, const Magnitude& b) {
  const int last = a.count() + b.count() - 1;
  Limb carry = 0;
  for (int k = 0; k < last; ++k) {
    Limb sum = carry;
    const int end = std::min(k + 1, b.count());
    for (int j = std::max(k + 1 - a.count(), 0); j < end; ++j) sum += a.limb()[k - j] * b.limb()[j];
    carry = sum / LIMB_BASE;
    product[k] = sum - carry * LIMB_BASE;
  }
  product[last] = carry;
}

// The same for a square: every pair of unlike limbs counts twice.
void square_short(Limb* product, const Magnitude& a) {
  const int last = 2 * a.count() - 1;
  const Limb* limb = a.limb();
  Limb carry = 0;
  for (int k = 0; k < last; ++k) {
    Limb pairs = 0;
    int i = std::max(k + 1 - a.count(), 0);
    for (; 2 * i < k; ++i) pairs += limb[i] * limb[k - i];
    const Limb sum = carry + 2 * pairs + (2 * i == k ? limb[i] * limb[i] : 0);
    carry = sum / LIMB_BASE;
    product[k] = sum - carry * LIMB_BASE;
  }
  product[last] = carry;
}

}  // namespace

Magnitude::Magnitude(Limb value) {
  limb()[0] = value % LIMB_BASE;
  limb()[1] = value / LIMB_BASE % LIMB_BASE;
  limb()[2] = value / (LIMB_BASE * LIMB_BASE);
  set_count(3);
}

Magnitude& Magnitude::operator=(const Magnitude& m) {
  if (this == &m) return *this;
  std::copy_n(m.limb(), m.limb_count, limb());
  limb_count = m.limb_count;
  return *this;
}

void Magnitude::set_count(int at_most) {
  while (at_most > 0 && limb()[at_most - 1] == 0) --at_most;
  assert(at_most <= MAX_LIMBS);
  limb_count = at_most;
}

const Limb* Magnitude::padded() const {
  std::fill_n(storage, ROW_PADDING, 0);
  std::fill_n(storage + ROW_PADDING + limb_count, ROW_PADDING, 0);
  return limb();
}

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
  for (int i = 0; i < whole; ++i) limb[i] = number_of(load_word(digits + i * LIMB_DIGITS));
  limb += whole;
  const int rest = length % LIMB_DIGITS;
  if (rest > 0) *limb++ = number_of(load_few(digits + whole * LIMB_DIGITS, rest));
  m.set_count(static_cast<int>(limb - m.limb()));
}

int store(char* digits, const Magnitude& m) {
  std::uint64_t word = ASCII_ZEROS;
  for (int i = 0; i < m.count(); ++i) {
    word = word_of(m.limb()[i]);
    store_word(digits + i * LIMB_DIGITS, word);
  }
  return m.count() * LIMB_DIGITS - (m.is_zero() ? 0 : std::countl_zero(word ^ ASCII_ZEROS) / 8);
}

void carry_columns(Limb* columns, int count) {
  ColumnSettler settler;
  Limb carry = 0;
  for (int i = 0; i < count; ++i) {
    const Limb total = settler.settle(columns[i]) + carry;  // below twice the base
    carry = total >= LIMB_BASE ? 1 : 0;
    columns[i] = total - (carry != 0 ? LIMB_BASE : 0);
  }
  assert(settler.settle(0) == 0 && carry == 0);
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
  if (b.is_zero()) {
    product.set_count(0);
    return true;
  }
  Limb* columns = product.limb();
  if (b.count() < FEW_ROWS || a.count() < ROWS) {
    multiply_short(columns, a, b);
  } else {
    std::fill_n(columns, count + ROW_PADDING, 0);
    const Limb* lanes = a.padded();
    const Limb* m = b.padded();
    for (int j = 0; j < b.count(); j += ROWS) add_rows(columns + j, lanes, a.count(), m + j);
    carry_columns(columns, count);
  }
  product.set_count(count);
  return true;
}

// Rows of doubled limbs, each from the lanes above its own on. The rows of a group start together
// at the lane above the group, so row k of it brings the lanes from ROWS - k on; which of the
// products within the group are missing, and which are one too many, is put right by hand.
void square_columns(Limb* columns, const Magnitude& a) {
  const bool is_short = a.count() <= ROWS;
  const Limb* lanes = is_short ? a.limb() : a.padded();
  std::fill_n(columns, 2 * a.count() + (is_short ? 0 : ROW_PADDING), 0);
  for (int j = 0;; j += ROWS) {
    const Limb* m = lanes + j;
    Limb* c = columns + 2 * j;
    const bool rows_follow = a.count() - j > ROWS;
    const int group = std::min(a.count() - j, ROWS);
    for (int k = 0; k < group; ++k) {
      for (int l = 0; l <= k; ++l) {
        // Without rows each pair counts once; with them, those from column ROWS on are there
        // twice over (a square twice, a pair once from either side), and columns wrap round.
        const Limb pair = m[k] * m[l] << (k == l ? 0 : 1);
        c[k + l] += rows_follow && k + l >= ROWS ? 0 - pair : pair;
      }
    }
    if (!rows_follow) break;
    Limb twice[ROWS];
    for (int k = 0; k < ROWS; ++k) twice[k] = 2 * m[k];
    add_rows(c + ROWS, m + ROWS, a.count() - j - ROWS, twice);
  }
}

bool square(Magnitude& product, const Magnitude& a) {
  const int count = 2 * a.count();
  if (count > MAX_LIMBS) return false;
  if (a.count() <= ROWS) {
    square_short(product.limb(), a);
  } else {
    square_columns(product.limb(), a);
    carry_columns(product.limb(), count);
  }
  product.set_count(count);
  return true;
}

}  // namespace omrel
