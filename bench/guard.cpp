// Ratios of one run are compared, never times, so the guard does not ask how fast a machine is.
// How big and GMP compare still depends on the processor, hence the tolerance.
#include "bench/guard.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

#include "bench/report.h"
#include "bignum/processor.h"

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

// Least ratio of each word over its cases, the worst of a few runs, since some short calls depend
// on where a build and a process lay their buffers. To renew: scripts/bench --quick --least, on a
// quiet machine with AVX2.
constexpr Least LEAST[] = {
    {"+", 3.22},     {"-", 2.92},        {"*", 1.79},        {"/", 1.39},    {"%", 1.31},
    {"==", 2.53},    {"<", 2.69},        {"max", 3.40},      {"fdiv", 1.56}, {"mean", 2.10},
    {"fmod", 1.34},  {"**", 1.81},       {"pow2", 1.72},     {"fact", 1.64}, {"fib", 1.39},
    {"sqrt", 1.41},  {"inttobin", 1.58}, {"bintoint", 1.95}, {"&", 1.07},    {"|", 1.06},
    {"^", 1.15},     {"~", 1.56},        {"<<", 1.51},       {">>", 1.31},   {"div2", 2.87},
    {"div10", 2.88}, {"++", 1.92},       {"+=", 2.45},       {"*=", 1.79},   {"&=", 1.07},
    {"|=", 1.07},
};

double processor_factor() { return vector_bits() >= 256 ? 1.0 : WITHOUT_AVX2; }

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

void measure_again(OmrelCommand big, const std::vector<Row*>& rows) {
  std::vector<Case> cases;
  cases.reserve(rows.size());
  for (const Row* row : rows) cases.push_back(row->c);
  const std::vector<Row> again = measure(big, cases, QUICK);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (again[i].timing.ratio() > rows[i]->timing.ratio()) rows[i]->timing = again[i].timing;
  }
}

bool word_holds(OmrelCommand big, std::vector<Row>& rows, const std::string& word) {
  const Least* figure = figure_of(word);
  if (figure == nullptr) {
    std::fprintf(stderr, "big %s: no figure in the table of least ratios\n", word.c_str());
    return false;
  }
  const double floor = figure->ratio * TOLERANCE * processor_factor();
  std::vector<Row*> below = rows_below(rows, word, floor);
  for (int attempt = 0; attempt < ATTEMPTS && !below.empty(); ++attempt) {
    measure_again(big, below);
    below = rows_below(rows, word, floor);
  }
  for (const Row* row : below) {
    std::fprintf(stderr, "big %s (%s): %.2f times the speed of GMP, expected %.2f or more\n",
                 word.c_str(), row->c.size.c_str(), row->timing.ratio(), floor);
  }
  return below.empty();
}

}  // namespace

bool holds(OmrelCommand big, std::vector<Row>& rows) {
  bool all = true;
  for (const Summary& summary : summarise(rows)) {
    if (summary.word != "all") all = word_holds(big, rows, summary.word) && all;
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
