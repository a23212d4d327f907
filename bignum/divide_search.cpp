// The search: a first estimate from the dividend's leading digits, doubling until the product with
// the divisor reaches the dividend, bisection with a halving step, single steps to the exact
// quotient. Every step leaves a coloured block: 13 for a product of the doubling, 11 when the
// bisection starts, 14 and 10 for its steps down and up, 15 for a single step.
//
// Each trial is a multiplication and a comparison, so this is for watching, not for use: a
// quotient of n digits takes some 3.3 n trials.
#include "bignum/divide_search.h"

#include <cstdio>

#include "support/console.h"

namespace omrel {
namespace {

constexpr int UNIT_ROUNDS = 6;  // rounds of the bisection with a step of one
constexpr long MAX_UNIT_STEPS = 9000;

enum MarkColour : std::uint16_t {
  STEP_UP = 10,
  BISECTION = 11,
  DOUBLING = 13,
  STEP_DOWN = 14,
  UNIT_STEP = 15,
};

void mark(std::uint16_t colour) {
  console_set_colour(colour);
  std::fputs(platform::block(), stdout);
  console_reset_colour();
}

class Search {
 public:
  Search(Magnitude& quotient, const Magnitude& dividend, Magnitude& divisor)
      : q(quotient), a(dividend), d(divisor) {}

  void estimate(const char* a_digits, int a_length, int d_length) {
    const int k = a_length > d_length ? a_length - d_length : a_length;
    load(q, a_digits + (a_length - k), k, 0);
    halve(q);
    if (q.is_zero()) q = Magnitude(1);  // the leading digits were 1, or none of them counts
  }

  void double_up() {
    for (try_product(DOUBLING); order < 0; try_product(DOUBLING)) multiply_add(q, 2, 0);
  }

  void bisect() {
    Magnitude step = q;
    halve(step);
    mark(BISECTION);
    for (int unit_rounds = 0; order != 0 && unit_rounds < UNIT_ROUNDS;) {
      if (order > 0) {
        subtract(q, step);
        try_product(STEP_DOWN);
      } else {
        add(q, step);
        try_product(STEP_UP);
      }
      halve(step);
      if (step.is_zero()) {
        ++unit_rounds;
        step = Magnitude(1);
      }
    }
  }

  // Steps q by one until q d <= a < (q + 1) d, and leaves a - q d in r. False when that took more
  // steps than are allowed.
  bool correct(Magnitude& r) {
    long steps = 0;
    const Magnitude one(1);
    for (; steps < MAX_UNIT_STEPS && order > 0; ++steps) {
      subtract(q, one);
      try_product(UNIT_STEP);
    }
    bool exact = order <= 0;
    if (exact) {
      r = a;
      subtract(r, product);
      for (; steps < MAX_UNIT_STEPS && omrel::compare(d, r) <= 0; ++steps) {
        add(q, one);
        subtract(r, d);
        mark(UNIT_STEP);
      }
      exact = omrel::compare(r, d) < 0;
    }
    if (steps > 0) {
      console_set_colour(UNIT_STEP);
      std::printf("(%li)", steps);
      console_reset_colour();
    }
    return exact;
  }

 private:
  // Compares q d with a. A product too long for a magnitude is longer than any dividend.
  void try_product(std::uint16_t colour) {
    order = multiply(product, q, d) ? omrel::compare(product, a) : 1;
    mark(colour);
  }

  Magnitude& q;
  const Magnitude& a;
  Magnitude& d;
  Magnitude product;
  int order = 0;
};

}  // namespace

bool search_quotient(Magnitude& q, Magnitude& r, const Magnitude& a, Magnitude& d,
                     const char* a_digits, int a_length, int d_length) {
  Search search(q, a, d);
  search.estimate(a_digits, a_length, d_length);
  search.double_up();
  search.bisect();
  return search.correct(r);
}

}  // namespace omrel
