// Ratios of one run are compared, never times, so the guard does not ask how fast a machine is.
// How big and GMP compare still depends on the processor, hence the tolerance.
#include "bench/guard.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

#include "bench/report.h"

namespace omrel::bench {
namespace {

constexpr double TOLERANCE = 0.85;
constexpr int ATTEMPTS = 3;
constexpr double MARGIN = 0.97;        // what the table keeps of the ratios it is made from
constexpr double WITHOUT_AVX2 = 0.75;  // of the ratios that processors with AVX2 reach

struct Least {
  const char* word;
  double ratio;
};

// Least ratio of each word over its cases. To renew: scripts/bench --least, on a quiet machine
// with AVX2.
constexpr Least LEAST[] = {
    {"+", 3.11},     {"-", 2.76},        {"*", 2.07},        {"/", 1.52},    {"%", 1.39},
    {"==", 2.20},    {"<", 2.23},        {"max", 3.60},      {"fdiv", 1.44}, {"mean", 1.64},
    {"fmod", 1.40},  {"**", 1.44},       {"pow2", 1.69},     {"fact", 1.32}, {"fib", 1.40},
    {"sqrt", 1.42},  {"inttobin", 1.26}, {"bintoint", 1.50}, {"&", 1.02},    {"|", 1.02},
    {"^", 1.02},     {"~", 1.18},        {"<<", 1.75},       {">>", 1.29},   {"div2", 3.21},
    {"div10", 3.59}, {"++", 1.89},       {"+=", 2.30},       {"*=", 1.99},
};

double processor_factor() {
#if defined(__x86_64__) || defined(__i386__)
  return __builtin_cpu_supports("avx2") ? 1.0 : WITHOUT_AVX2;
#else
  return WITHOUT_AVX2;
#endif
}

// The least ratio that is accepted of a word; null where the table does not have it.
const Least* figure_of(const std::string& word) {
  const auto* found = std::find_if(std::begin(LEAST), std::end(LEAST),
                                   [&](const Least& l) { return word == l.word; });
  return found == std::end(LEAST) ? nullptr : found;
}

std::vector<Row*> rows_below(std::vector<Row>& rows, const std::string& word, double floor) {
  std::vector<Row*> below;
  for (Row& row : rows) {
    if (row.c.word == word && row.timing.ratio() < floor) below.push_back(&row);
  }
  return below;
}

void measure_again(const Contestants& contestants, const std::vector<Row*>& rows) {
  std::vector<Case> cases;
  cases.reserve(rows.size());
  for (const Row* row : rows) cases.push_back(row->c);
  const std::vector<Row> again = measure(contestants, cases, QUICK);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (again[i].timing.ratio() > rows[i]->timing.ratio()) rows[i]->timing = again[i].timing;
  }
}

bool word_holds(const Contestants& contestants, std::vector<Row>& rows, const std::string& word) {
  const Least* figure = figure_of(word);
  if (figure == nullptr) {
    std::fprintf(stderr, "big %s: no figure in the table of least ratios\n", word.c_str());
    return false;
  }
  const double floor = figure->ratio * TOLERANCE * processor_factor();
  std::vector<Row*> below = rows_below(rows, word, floor);
  for (int attempt = 0; attempt < ATTEMPTS && !below.empty(); ++attempt) {
    measure_again(contestants, below);
    below = rows_below(rows, word, floor);
  }
  for (const Row* row : below) {
    std::fprintf(stderr, "big %s (%s): %.2f times the speed of GMP, expected %.2f or more\n",
                 word.c_str(), row->c.size.c_str(), row->timing.ratio(), floor);
  }
  return below.empty();
}

}  // namespace

bool holds(const Contestants& contestants, std::vector<Row>& rows) {
  bool all = true;
  for (const Summary& summary : summarise(rows)) {
    if (summary.word != "all") all = word_holds(contestants, rows, summary.word) && all;
  }
  return all;
}

void print_least(const std::vector<Row>& rows) {
  std::printf("constexpr Least LEAST[] = {\n");
  for (const Summary& summary : summarise(rows)) {
    if (summary.word != "all") {
      std::printf("    {\"%s\", %.2f},\n", summary.word.c_str(), summary.least * MARGIN);
    }
  }
  std::printf("};\n");
}

}  // namespace omrel::bench
