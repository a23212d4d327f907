#include "bench/report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

namespace omrel::bench {
namespace {

constexpr double NANOSECONDS = 1e9;  // in a second

Summary& summary_of(std::vector<Summary>& summaries, const std::string& word) {
  const auto found = std::find_if(summaries.begin(), summaries.end(),
                                  [&](const Summary& s) { return s.word == word; });
  return found != summaries.end() ? *found : summaries.emplace_back(Summary{word});
}

// How many times as long as `big` someone else takes, over the rows of a word, or over all.
Summary compare(const std::vector<Row>& rows, const Column& column, const std::string& word) {
  Summary summary{word};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const bool counts = word == "all" || word == rows[i].c.word;
    if (counts && std::isfinite(column.seconds[i])) {
      summary.add(column.seconds[i] / rows[i].timing.big);
    }
  }
  return summary;
}

}  // namespace

void Summary::add(double ratio) {
  least = std::min(least, ratio);
  log_sum += std::log(ratio);
  ++count;
}

std::vector<Summary> summarise(const std::vector<Row>& rows) {
  std::vector<Summary> summaries;
  Summary all{"all"};
  for (const Row& row : rows) {
    summary_of(summaries, row.c.word).add(row.timing.ratio());
    all.add(row.timing.ratio());
  }
  summaries.push_back(all);
  return summaries;
}

void print_rows(const std::vector<Row>& rows, const std::vector<Column>& columns) {
  std::printf("%-9s %-12s %12s %12s %8s", "word", "digits", "big ns", "GMP ns", "ratio");
  for (const Column& column : columns) std::printf(" %12s", (column.name + " ns").c_str());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Timing& t = rows[i].timing;
    std::printf("\n%-9s %-12s %12.1f %12.1f %8.2f", rows[i].c.word.c_str(), rows[i].c.size.c_str(),
                t.big * NANOSECONDS, t.gmp * NANOSECONDS, t.ratio());
    for (const Column& column : columns) {
      const double seconds = column.seconds[i];
      std::isfinite(seconds) ? std::printf(" %12.1f", seconds * NANOSECONDS)
                             : std::printf(" %12s", "-");
    }
  }
  std::printf("\n");
}

void print_summary(const std::vector<Row>& rows, const std::vector<Column>& columns) {
  std::printf("\nspeed of big, the other's being 1: least and geometric mean\n");
  std::printf("%-9s %8s %8s", "word", "GMP", "mean");
  for (const Column& column : columns) std::printf(" %8s %8s", column.name.c_str(), "mean");
  for (const Summary& summary : summarise(rows)) {
    std::printf("\n%-9s %8.2f %8.2f", summary.word.c_str(), summary.least,
                summary.geometric_mean());
    for (const Column& column : columns) {
      const Summary other = compare(rows, column, summary.word);
      other.count > 0 ? std::printf(" %8.2f %8.2f", other.least, other.geometric_mean())
                      : std::printf(" %8s %8s", "-", "-");
    }
  }
  std::printf("\n");
}

void write_json(const std::string& path, const std::vector<Row>& rows,
                const std::vector<Column>& columns) {
  std::ofstream out(path);
  out << "[";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row& row = rows[i];
    out << (i == 0 ? "" : ",") << "\n  {\"word\": \"" << row.c.word << "\", \"digits\": \""
        << row.c.size << "\", \"big_ns\": " << row.timing.big * NANOSECONDS
        << ", \"gmp_ns\": " << row.timing.gmp * NANOSECONDS
        << ", \"ratio\": " << row.timing.ratio();
    for (const Column& column : columns) {
      const double seconds = column.seconds[i];
      if (std::isfinite(seconds)) {
        out << ", \"" << column.name << "_ns\": " << seconds * NANOSECONDS;
      }
    }
    out << "}";
  }
  out << "\n]\n";
  if (!out.flush()) std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
}

}  // namespace omrel::bench
