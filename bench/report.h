// Tables and files of what was measured.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "bench/runner.h"

namespace omrel::bench {

// Ratios of one word, or of all.
struct Summary {
  std::string word;
  double least = INFINITY;
  double log_sum = 0;
  int count = 0;

  void add(double ratio);
  double geometric_mean() const { return std::exp(log_sum / count); }
};

// The words in the order of their rows, then "all".
std::vector<Summary> summarise(const std::vector<Row>& rows);

// Times of someone else for the same rows, in seconds; infinite where there is no counterpart.
struct Column {
  std::string name;
  std::vector<double> seconds;
};

void print_rows(const std::vector<Row>& rows, const std::vector<Column>& columns);
void print_summary(const std::vector<Row>& rows, const std::vector<Column>& columns);
void write_json(const std::string& path, const std::vector<Row>& rows,
                const std::vector<Column>& columns);

}  // namespace omrel::bench
