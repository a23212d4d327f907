// Square root, a limb at a time from the top: with the root so far s and the remainder n - s^2, the
// next limb x at position p takes (2 s x + x^2 B^p) B^p more. That is long division by a divisor
// that grows, and it is done as long division is (see divide.cpp and estimate.h):
// estimates from floating point that are never too large, columns that are not normalised and hold
// s^2 - n, rows of eight limbs added in one go.
//
// The first limbs, FIRST of them, find their own square among the leading columns and are taken
// one by one. Later ones cannot, and only add it when their eight are known.
#include <algorithm>
#include <cassert>
#include <cmath>

#include "bignum/magnitude/estimate.h"

namespace omrel {
namespace {

constexpr int FIRST = 12;       // limbs taken one by one
constexpr int GUARD_LIMBS = 5;  // columns below the head whose carries may be ignored

class LimbRoot {
 public:
  explicit LimbRoot(const Magnitude& n) : limb_count(n.count() / 2) {
    assert(n.count() % 2 == 0 && n.count() > 0);
    std::fill_n(storage, ROW_PADDING, 0);
    for (int i = 0; i < n.count(); ++i) columns()[i] = 0 - n.limb()[i];
    std::fill_n(columns() + n.count(), ROW_PADDING, 0);
    std::fill_n(twice_storage, limb_count + 2 * ROW_PADDING, 0);
    take_top_limb(n.limb()[n.count() - 1] * LIMB_BASE + n.limb()[n.count() - 2]);
  }

  // Finds the other limbs; columns below `cut` are left out.
  void run(int cut) {
    int p = limb_count - 2;
    for (; p >= 0 && (p >= limb_count - FIRST || p % ROWS != ROWS - 1); --p) take_limb(p);
    if (p >= 0) estimator.set_divisor(top);
    for (; p >= 0; p -= ROWS) take_group(p - ROWS + 1, cut);
  }

  // Whether the remainder is certainly at most twice the root.
  bool is_certain() const { return ratio < 1; }

  // Writes the root found, not above the true one.
  void root(Magnitude& s) {
    Limb carry = 0;
    for (int i = 0; i < limb_count; ++i) {
      const Limb total = twice()[i] / 2 + carry;
      carry = total / LIMB_BASE;
      s.limb()[i] = total - carry * LIMB_BASE;
    }
    assert(carry == 0);
    s.trim(limb_count);
  }

 private:
  void take_top_limb(Limb leading) {
    Limb x = Estimator::to_limb(std::sqrt(Estimator::real(leading)));
    // One too large at most, in whichever way the host has left the unit to round; or one too small
    // for a square just below, which makes the next limb just above LIMB_BASE, as any limb may.
    if (x * x > leading) --x;
    twice()[limb_count - 1] = 2 * x;
    // The head at the next position: everything from its column up.
    const int next = 2 * limb_count - 3;
    head = (leading - x * x) * LIMB_BASE + (next >= 0 ? 0 - columns()[next] : 0);
    for (int s = 0; s < Estimator::TOP; ++s) top[s] = 0;
    top[0] = 2 * x;
    estimator.set_top(top[0]);
    ratio = estimator.ratio(head, 0);
  }

  // One limb, its row and its square. At position p the head is the columns from p + limb_count
  // - 1.
  void take_limb(int p) {
    const Limb* near = columns() + p + limb_count - 2;
    double x_and_more = estimator.quotient(head, 0 - near[0], 0 - near[-1]);
    if (p == limb_count - 2) {
      // Here x^2 reaches the estimate: solve (top + x / B) x for x, starting from x itself. The
      // quotient by 1 + t is x - x t, but for 10^-6.
      x_and_more -= x_and_more * estimator.part_of_divisor(x_and_more);
    }
    const Limb x = Estimator::to_limb(x_and_more);
    for (int i = p + 1; i < limb_count; ++i) columns()[p + i] += twice()[i] * x;
    columns()[2 * p] += x * x;
    head = (head - x * top[0]) * LIMB_BASE - near[0];
    twice()[p] = 2 * x;
    const int place = limb_count - 1 - p;
    if (place < Estimator::TOP) top[place] = 2 * x;
    if (place == 1) estimator.set_next_to_top(top[1]);
    ratio = estimator.ratio(head, 0 - near[-1]);
  }

  void take_group(int j, int cut) {
    Limb x[ROWS];
    const Limb* next = columns() + j + ROWS - 1 + limb_count - 2;
    ratio = estimator.find_group(x + ROWS - 1, ROWS, head, next);
    const int lowest = std::max(j + ROWS, std::min(cut - j, limb_count));
    vectors.add_rows(columns() + j + lowest, twice() + lowest, limb_count - lowest, x);
    for (int i = 0; i < ROWS; ++i) {
      for (int k = 0; k < ROWS; ++k) columns()[2 * j + i + k] += x[i] * x[k];
      twice()[j + i] = 2 * x[i];
    }
  }

  Limb* columns() { return storage + ROW_PADDING; }
  Limb* twice() { return twice_storage + ROW_PADDING; }

  const int limb_count;
  Limb top[Estimator::TOP];
  Estimator estimator;
  Limb head = 0;
  double ratio = 0;
  Limb storage[MAX_LIMBS + 3 * ROW_PADDING];
  Limb twice_storage[MAX_LIMBS / 2 + 3 * ROW_PADDING];  // 2 s, limbs up to 2 * LIMB_BASE and more
};

}  // namespace

void square_root(Magnitude& s, const Magnitude& n) {
  LimbRoot limbs(n);
  limbs.run(n.count() / 2 - 1 - GUARD_LIMBS);
  limbs.root(s);
  if (limbs.is_certain()) return;
  // The root found is the true one or one below: see whether the next one's square fits.
  Magnitude next = s;
  add(next, Magnitude(1));
  Magnitude next_square;
  if (square(next_square, next) && compare(next_square, n) <= 0) s = next;
}

}  // namespace omrel
