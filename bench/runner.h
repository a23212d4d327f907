// Measures cases: `big` and what it is compared with, in turns.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "bench/cases.h"
#include "plugin/omrel_plugin.h"

namespace omrel::bench {

// Seconds a call takes; infinite while not measured.
struct Timing {
  double big = INFINITY;
  double gmp = INFINITY;
  double ratio() const { return gmp / big; }
};

struct Row {
  Case c;
  Timing timing;
};

// How many rounds there are, and how long GMP is called in each.
struct Effort {
  int rounds;
  double seconds;
};
constexpr Effort QUICK = {8, 0.003};
constexpr Effort THOROUGH = {30, 0.01};

// Whether all answers are the same; says which are not.
bool same_answers(OmrelCommand big, const std::vector<Case>& cases);

// The best times of several rounds through all cases.
std::vector<Row> measure(OmrelCommand big, const std::vector<Case>& cases, const Effort& effort);

}  // namespace omrel::bench
