// Times `big` against the same command written with GMP: text to text, each call through the
// exported function and a minimal host, until the host has copied the answer. Every answer is
// compared first. scripts/bench builds this and calls it:
//
//   bench LIBRARY ?option ...?
//
//   --quick             a short run
//   --word WORD         the cases of one word
//   --json FILE         the table as JSON, too
//   --column NAME FILE  another column: seconds per call or "-", one line a case
//   --cases FILE        writes the cases for such a column's program, and measures nothing
//   --check             fails when a word has become slow (see guard.h)
//   --least             ends with the table by which --check judges
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/cases.h"
#include "bench/guard.h"
#include "bench/host.h"
#include "bench/report.h"
#include "bench/runner.h"
#include "bignum/processor.h"

namespace omrel::bench {
namespace {

struct ColumnFile {
  std::string name;
  std::string path;
};

struct Options {
  bool quick = false;
  bool check = false;
  bool least = false;
  std::string word;
  std::string json;
  std::string cases;
  std::vector<ColumnFile> columns;
};

[[noreturn]] void fail(const std::string& message) {
  std::fprintf(stderr, "bench: %s\n", message.c_str());
  std::exit(2);
}

// The texts of an option: those behind it that it takes.
class Arguments {
 public:
  Arguments(int argc, char** argv) : rest(argv + 2, argv + argc) {}
  bool any() const { return next < rest.size(); }
  std::string take() { return any() ? rest[next++] : (fail("an option lacks its value"), ""); }

 private:
  std::vector<std::string> rest;
  std::size_t next = 0;
};

void read_option(Options& options, Arguments& arguments) {
  const std::string option = arguments.take();
  if (option == "--quick") {
    options.quick = true;
  } else if (option == "--check") {
    options.check = true;
  } else if (option == "--least") {
    options.least = true;
  } else if (option == "--word") {
    options.word = arguments.take();
  } else if (option == "--json") {
    options.json = arguments.take();
  } else if (option == "--cases") {
    options.cases = arguments.take();
  } else if (option == "--column") {
    const std::string name = arguments.take();
    options.columns.push_back({name, arguments.take()});
  } else {
    fail("unknown option " + option);
  }
}

std::vector<Case> chosen_cases(const Options& options) {
  std::vector<Case> cases = all_cases();
  if (!options.word.empty()) {
    std::erase_if(cases, [&](const Case& c) { return c.word != options.word; });
  }
  if (cases.empty()) fail("no cases of " + options.word);
  return cases;
}

// A line a case: its size, a tab, the word and its operands, a variable's value in place of its
// name.
int write_cases(const std::string& path, const std::vector<Case>& cases) {
  std::ofstream out(path);
  for (const Case& c : cases) {
    out << c.size << '\t' << c.word;
    for (const std::string& operand : c.operands) {
      out << ' ' << (operand == "x" ? c.variable : operand);
    }
    out << '\n';
  }
  return out.flush() ? 0 : 2;
}

Column read_column(const ColumnFile& file, std::size_t row_count) {
  Column column{file.name, {}};
  std::ifstream in(file.path);
  for (std::string text; in >> text;) {
    column.seconds.push_back(text == "-" ? INFINITY : std::strtod(text.c_str(), nullptr));
  }
  if (column.seconds.size() != row_count) fail(file.path + ": not one line a case");
  return column;
}

std::vector<Column> columns_beside(const Options& options, const std::vector<Row>& rows) {
  std::vector<Column> columns;
  for (const ColumnFile& file : options.columns) columns.push_back(read_column(file, rows.size()));
  return columns;
}

int run(OmrelCommand big, const Options& options) {
  const std::vector<Case> cases = chosen_cases(options);
  if (!options.cases.empty()) return write_cases(options.cases, cases);
  if (!same_answers(big, cases)) return 1;
  std::vector<Row> rows = measure(big, cases, options.quick ? QUICK : THOROUGH);
  const bool passed = !options.check || holds(big, rows);
  const std::vector<Column> columns = columns_beside(options, rows);
  const int bits = vector_bits();
  const char* vectors = bits >= 512 ? "AVX-512" : bits >= 256 ? "AVX2" : bits > 0 ? "SSE2" : "none";
  std::printf("vectors: %s\n", vectors);
  print_rows(rows, columns);
  print_summary(rows, columns);
  if (!options.json.empty()) write_json(options.json, rows, columns);
  if (options.least) print_least(rows);
  return passed ? 0 : 1;
}

}  // namespace
}  // namespace omrel::bench

int main(int argc, char** argv) {
  using namespace omrel::bench;
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s LIBRARY ?option ...?\n", argv[0]);
    return 2;
  }
  Options options;
  Arguments arguments(argc, argv);
  while (arguments.any()) read_option(options, arguments);
  return run(load_command(argv[1]), options);
}
