// Multiplication adds rows into columns of 64 bits (Knuth, The Art of Computer Programming, vol.
// 2, 4.3.1, algorithm M, without its carries): a column has room for COLUMN_PRODUCTS of them, more
// than any operand has limbs, so one carry pass at the end is all the normalising there is.
#include <algorithm>

#include "bignum/magnitude/magnitude.h"

namespace omrel {
namespace {

// Fewer rows than this are not worth a group of them.
constexpr int FEW_ROWS = 3;

// The product column by column, each carried at once: for few limbs there is no better way.
void multiply_few(Limb* product, const Magnitude& a, const Magnitude& b) {
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
void square_few(Limb* product, const Magnitude& a) {
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

bool multiply(Magnitude& product, Magnitude& a, Magnitude& b) {
  if (a.count() < b.count()) return multiply(product, b, a);
  const int count = a.count() + b.count();
  if (count > MAX_LIMBS) return false;
  if (b.is_zero()) {
    product.trim(0);
    return true;
  }
  Limb* columns = product.limb();
  if (b.count() < FEW_ROWS || a.count() < ROWS) {
    multiply_few(columns, a, b);
  } else {
    std::fill_n(columns, count + ROW_PADDING, 0);
    const Limb* multiplicand = a.pad();
    const Limb* multipliers = b.pad();
    for (int j = 0; j < b.count(); j += ROWS) {
      vectors.add_rows(columns + j, multiplicand, a.count(), multipliers + j);
    }
    carry_columns(columns, count);
  }
  product.trim(count);
  return true;
}

// Rows of doubled limbs, each from the lanes above its own on. The rows of a group start together
// at the lane above the group, so row k of it brings the lanes from ROWS - k on; which of the
// products within the group are missing, and which are one too many, is put right by hand.
void square_columns(Limb* columns, Magnitude& a) {
  const bool is_one_group = a.count() <= ROWS;
  const Limb* limb = is_one_group ? a.limb() : a.pad();
  std::fill_n(columns, 2 * a.count() + (is_one_group ? 0 : ROW_PADDING), 0);
  for (int j = 0;; j += ROWS) {
    const Limb* m = limb + j;
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
    vectors.add_rows(c + ROWS, m + ROWS, a.count() - j - ROWS, twice);
  }
}

bool square(Magnitude& product, Magnitude& a) {
  const int count = 2 * a.count();
  if (count > MAX_LIMBS) return false;
  if (a.count() <= ROWS) {
    square_few(product.limb(), a);
  } else {
    square_columns(product.limb(), a);
    carry_columns(product.limb(), count);
  }
  product.trim(count);
  return true;
}

}  // namespace omrel
