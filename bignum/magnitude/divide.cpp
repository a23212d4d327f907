// Long division on limbs (Knuth, The Art of Computer Programming, vol. 2, 4.3.1, algorithm D) with
// three changes.
//
// A quotient limb comes from floating point: the leading part H of the remainder, exact in an
// integer, plus the next two columns, times the reciprocal of the divisor's leading limbs. More
// than the error is taken off (see estimate.h), so an estimate is never too large, and too
// small by at most one, hardly ever. Nothing is corrected on the way: a remainder just above the
// divisor makes the next quotient limb just above LIMB_BASE, which one carry pass at the end puts
// right, together with at most one more subtraction of the divisor.
//
// The remainder is kept as columns that are not normalised, negated, so that subtracting a row is
// adding one: columns = q * d - a. Eight quotient limbs are found from the top columns alone, then
// their eight rows are added in one go.
//
// The divisor's top limb is at least LIMB_BASE / 10 because both operands are loaded with a shift
// by decimal digits. So H, of the order of a product of two limbs, resolves the quotient limb.
#include <algorithm>
#include <cassert>

#include "bignum/magnitude/estimate.h"

namespace omrel {
namespace {

using SignedLimb = std::int64_t;

constexpr int GUARD_LIMBS = 4;  // columns below the divisor's top whose carries may be ignored

class LongDivision {
 public:
  LongDivision(Magnitude& quotient, const Magnitude& a, Magnitude& divisor)
      : q(quotient),
        d(divisor),
        divisor_limb(divisor.pad()),
        position_count(a.count() - divisor.count() + 1) {
    assert(d.limb()[d.count() - 1] >= LIMB_BASE / 10);
    Limb top[Estimator::TOP];
    for (int s = 0; s < Estimator::TOP; ++s) top[s] = divisor_limb[d.count() - 1 - s];
    estimator.set_divisor(top);
    std::fill_n(storage, ROW_PADDING, 0);
    for (int i = 0; i < a.count(); ++i) columns()[i] = 0 - a.limb()[i];
    std::fill_n(columns() + a.count(), ROW_PADDING, 0);
    std::fill_n(q.limb() + position_count, ROWS, 0);
    head = a.limb()[a.count() - 1];
  }

  // Finds all quotient limbs; rows below column `cut` are left out, and those of the last limbs.
  void run(int cut) {
    for (int j = (position_count - 1) / ROWS * ROWS;; j -= ROWS) {
      find_limbs(j);
      if (j == 0) return;
      add_group(j, std::clamp(cut - j, 0, d.count()));
    }
  }

  // Whether the remainder is certainly below the divisor.
  bool is_certain() const { return ratio < 1; }

  // Turns what has been found, limbs just above LIMB_BASE at most, into the quotient.
  void carry_quotient() {
    vectors.carry(q.limb(), position_count);
    q.trim(position_count);
  }

  // Turns the columns into the remainder, below twice the divisor, when no rows have been left out
  // but those of the last limbs.
  void remainder(Magnitude& r) {
    add_group(0, 0);
    constexpr Limb OFFSET = Limb{1} << 37;  // OFFSET * LIMB_BASE is above any column's magnitude
    const int count = std::min(d.count() + 1, MAX_LIMBS);
    for (int i = 0; i < count; ++i) {
      r.limb()[i] = OFFSET * LIMB_BASE - (i == 0 ? 0 : OFFSET) - columns()[i];
    }
    carry_columns(r.limb(), count);
    r.trim(count);
  }

 private:
  // Finds the limbs at positions j + ROWS - 1 to j (fewer at the top) from the top columns.
  //
  // At position p the head is the remainder's columns from p + d.count() - 1 up.
  void find_limbs(int j) {
    const int first = std::min(j + ROWS, position_count) - 1;
    const Limb* next = columns() + first + d.count() - 2;
    ratio = estimator.find_group(q.limb() + first, first - j + 1, head, next);
  }

  // Adds the rows of the limbs from position j up, without the divisor's lowest `skipped` limbs.
  void add_group(int j, int skipped) {
    vectors.add_rows(columns() + j + skipped, divisor_limb + skipped, d.count() - skipped,
                     q.limb() + j);
  }

  Limb* columns() { return storage + ROW_PADDING; }

  Magnitude& q;
  const Magnitude& d;
  const Limb* const divisor_limb;  // with zeros around them
  const int position_count;
  Estimator estimator;
  Limb head;
  double ratio = 0;
  Limb storage[MAX_LIMBS + 3 * ROW_PADDING];
};

#ifdef __SIZEOF_INT128__

// d * LIMB_BASE is below 3/4 of 2^64.
constexpr std::uint64_t MAX_RECIPROCAL_DIVISOR = std::uint64_t{1} << 37;

// As divide_by_word, for machines that have the upper half of a product of words: the quotient by a
// reciprocal in 64 bits is right or one too small.
std::uint64_t divide_by_reciprocal(Magnitude& q, const Magnitude& a, std::uint64_t d) {
  __extension__ using Wide = unsigned __int128;
  const Wide reciprocal = ~std::uint64_t{0} / d;
  std::uint64_t r = 0;
  for (int i = a.count() - 1; i >= 0; --i) {
    const std::uint64_t dividend = r * LIMB_BASE + a.limb()[i];
    auto quotient = static_cast<std::uint64_t>(dividend * reciprocal >> 64);
    r = dividend - quotient * d;
    if (r >= d) {
      r -= d;
      ++quotient;
    }
    q.limb()[i] = quotient;
  }
  q.trim(a.count());
  return r;
}

#endif

}  // namespace

void divide(Magnitude& q, Magnitude& r, const Magnitude& a, Magnitude& d) {
  if (a.count() < d.count()) {
    q = Magnitude(0);
    r = a;
    return;
  }
  LongDivision division(q, a, d);
  division.run(0);
  division.remainder(r);
  const bool one_more = compare(r, d) >= 0;
  if (one_more) subtract(r, d);
  assert(compare(r, d) < 0);
  if (one_more) ++q.limb()[0];
  division.carry_quotient();
}

bool divide_quotient(Magnitude& q, const Magnitude& a, Magnitude& d) {
  if (a.count() < d.count()) {
    q = Magnitude(0);
    return a.is_zero();
  }
  LongDivision division(q, a, d);
  division.run(d.count() - 1 - GUARD_LIMBS);
  division.carry_quotient();
  // More than nothing is taken off an estimate, so an exact quotient has come out one too small.
  if (division.is_certain()) return false;
  // It is the true one or one below: see whether the next one fits.
  Magnitude next = q;
  Magnitude product;
  add(next, Magnitude(1));
  const int excess = multiply(product, next, d) ? compare(product, a) : 1;
  if (excess <= 0) q = next;
  return excess == 0;
}

std::uint64_t divide_by_word(Magnitude& q, const Magnitude& a, std::uint64_t d) {
#ifdef __SIZEOF_INT128__
  if (d < MAX_RECIPROCAL_DIVISOR) return divide_by_reciprocal(q, a, d);
#endif
  const double per_divisor = 1.0 / static_cast<double>(d);
  const double base_per_divisor = static_cast<double>(LIMB_BASE) * per_divisor;
  SignedLimb r = 0;
  const auto divisor = static_cast<SignedLimb>(d);
  for (int i = a.count() - 1; i >= 0; --i) {
    // 0 <= r < d. The estimate is below LIMB_BASE + 1, so its five roundings, in any mode, come to
    // less than 10^-6, and truncated it is right or off by one; the new r, which is computed modulo
    // 2^64, lies between -d and 2 d. Limb and estimate are converted as the 32 bits that they are.
    const Limb limb = a.limb()[i];
    const double guess = static_cast<double>(r) * base_per_divisor +
                         static_cast<double>(static_cast<std::int32_t>(limb)) * per_divisor;
    Limb estimate = static_cast<std::uint32_t>(static_cast<std::int32_t>(guess));
    r = static_cast<SignedLimb>(static_cast<Limb>(r) * LIMB_BASE + limb - estimate * d);
    if (r < 0) {
      r += divisor;
      --estimate;
    } else if (r >= divisor) {
      r -= divisor;
      ++estimate;
    }
    q.limb()[i] = estimate;
  }
  q.trim(a.count());
  return static_cast<std::uint64_t>(r);
}

}  // namespace omrel
