// The regression guard: words that have become slow beside GMP.
#pragma once

#include <vector>

#include "bench/runner.h"

namespace omrel::bench {

// Whether every word of the rows keeps TOLERANCE of its figure in the table of least ratios. Cases
// of a word that does not are measured again, a few times at most; the best ratio of a case counts
// and stays in its row. Words that fail all the same, or have no figure, are reported.
bool holds(OmrelCommand big, std::vector<Row>& rows);

// Prints the table of least ratios, as its source, with what these rows show.
void print_least(const std::vector<Row>& rows);

}  // namespace omrel::bench
