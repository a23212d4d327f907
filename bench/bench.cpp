// Times `big` against the same command written with GMP: text to text, each call through the
// exported function and a minimal host, until the host has copied the answer.
//
//   bench LIBRARY ?--quick? ?--check? ?--json FILE? ?--word WORD?
//
// Both commands of a case are timed in turns within one process, and the best of several rounds
// counts, so that what else the machine does falls on both alike. Every answer is compared first.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bench/cases.h"
#include "bench/gmp_commands.h"
#include "plugin/omrel_plugin.h"

namespace omrel::bench {
namespace {

Host host;
struct Variable : HostVar {
} variable;

// The host: one variable x whose value text is in `host`, and a result that is copied.
HostVar* get_var(void*, const char* name, int) {
  if (std::strcmp(name, "x") != 0) return nullptr;
  variable.value = host.variable.data();
  return &variable;
}
int set_var(void*, const char*, const char*, int) { return 1; }
void set_var_value(HostVar*, const char* text, int) { host.variable = text; }
void free_var_value(HostVar*) {}
void free_value(char*) {}
HostCommand* get_command(void*, const char*) { return reinterpret_cast<HostCommand*>(&host); }
void set_result(void*, const char* text, int) { host.result = text; }

template <class Function>
Function find(void* library, const char* name) {
  void* found = dlsym(library, name);
  if (found == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(2);
  }
  return reinterpret_cast<Function>(found);
}

OmrelCommand load_command(const char* path) {
  void* library = dlopen(path, RTLD_NOW);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(2);
  }
  find<decltype(&_export_common_routines)>(library, "_export_common_routines")(
      get_var, set_var, set_var_value, free_var_value, nullptr, nullptr, get_command, nullptr,
      nullptr, set_result, nullptr, free_value, nullptr, nullptr, nullptr, nullptr, nullptr);
  return find<OmrelCommand>(library, "quarnCommandBigNum");
}

struct Options {
  bool quick = false;
  bool check = false;
  std::string json;
  std::string word;
};

struct Timing {
  double ours = INFINITY;  // seconds a call
  double gmp = INFINITY;
  double ratio() const { return gmp / ours; }
};

struct Row {
  Case c;
  Timing timing;
};

// One case, ready to be called either way.
class Runner {
 public:
  Runner(OmrelCommand command, const Case& c)
      : big(command), gmp(gmp_command(c.word)), variable_text(c.variable) {
    texts = {"big", c.word.c_str()};
    for (const std::string& operand : c.operands) texts.push_back(operand.c_str());
  }

  std::string answer_of_big() {
    start();
    call_big();
    return host.result + "|" + host.variable;
  }
  std::string answer_of_gmp() {
    start();
    call_gmp();
    return host.result + "|" + host.variable;
  }

  // Takes the better of what is known and one more round of about `seconds` for each.
  void time(Timing& timing, double seconds) {
    const auto our_call = [this] { call_big(); };
    const auto gmp_call = [this] { call_gmp(); };
    if (calls == 0) calls = calls_within(seconds, gmp_call);
    timing.ours = std::min(timing.ours, per_call(our_call));
    timing.gmp = std::min(timing.gmp, per_call(gmp_call));
  }

 private:
  static double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
  }

  void start() {
    host.variable = variable_text;
    host.result.clear();
  }
  // A word that updates its variable finds the same value at each call.
  void call_big() {
    if (!variable_text.empty()) host.variable = variable_text;
    big(nullptr, static_cast<int>(texts.size()), texts.data(), nullptr);
  }
  void call_gmp() {
    if (!variable_text.empty()) host.variable = variable_text;
    gmp(host, static_cast<int>(texts.size()), texts.data());
  }

  template <class Call>
  double per_call(Call call) {
    const double begin = now();
    for (long i = 0; i < calls; ++i) call();
    return (now() - begin) / static_cast<double>(calls);
  }
  template <class Call>
  long calls_within(double seconds, Call call) {
    calls = 1;
    double spent = per_call(call);
    while (spent * static_cast<double>(calls) < seconds / 4) {
      calls *= 2;
      spent = per_call(call);
    }
    return std::max(1L, static_cast<long>(seconds / spent));
  }

  OmrelCommand big;
  GmpCommand gmp;
  std::vector<const char*> texts;
  const std::string variable_text;
  long calls = 0;
};

std::string without_end_of_line(std::string text) { return text.substr(0, 60); }

bool same_answers(OmrelCommand big, const std::vector<Case>& cases) {
  bool same = true;
  for (const Case& c : cases) {
    Runner runner(big, c);
    const std::string ours = runner.answer_of_big();
    const std::string theirs = runner.answer_of_gmp();
    if (ours != theirs) {
      std::fprintf(stderr, "big %s (%s): %s..., GMP: %s...\n", c.word.c_str(), c.size.c_str(),
                   without_end_of_line(ours).c_str(), without_end_of_line(theirs).c_str());
      same = false;
    }
  }
  return same;
}

// The cases are gone through round by round, not one after the other.
std::vector<Row> measure(OmrelCommand big, const std::vector<Case>& cases, int rounds,
                         double seconds) {
  std::vector<Row> rows;
  std::vector<Runner> runners;
  for (const Case& c : cases) {
    rows.push_back({c, {}});
    runners.emplace_back(big, c);
  }
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < rows.size(); ++i) runners[i].time(rows[i].timing, seconds);
  }
  return rows;
}

struct Summary {
  double least = INFINITY;
  double log_sum = 0;
  int count = 0;

  void add(double ratio) {
    least = std::min(least, ratio);
    log_sum += std::log(ratio);
    ++count;
  }
  double geometric_mean() const { return std::exp(log_sum / count); }
};

std::map<std::string, Summary> summarise(const std::vector<Row>& rows) {
  std::map<std::string, Summary> summaries;
  for (const Row& row : rows) {
    summaries[row.c.word].add(row.timing.ratio());
    summaries["all"].add(row.timing.ratio());
  }
  return summaries;
}

void print(const std::vector<Row>& rows) {
  std::printf("%-9s %-12s %12s %12s %8s\n", "word", "digits", "big ns", "GMP ns", "ratio");
  for (const Row& row : rows) {
    std::printf("%-9s %-12s %12.1f %12.1f %8.2f\n", row.c.word.c_str(), row.c.size.c_str(),
                row.timing.ours * 1e9, row.timing.gmp * 1e9, row.timing.ratio());
  }
}

void print_summary(const std::map<std::string, Summary>& summaries) {
  std::printf("\n%-9s %8s %8s   (speed of GMP = 1)\n", "word", "least", "mean");
  for (const auto& [word, summary] : summaries) {
    std::printf("%-9s %8.2f %8.2f\n", word.c_str(), summary.least, summary.geometric_mean());
  }
}

void write_json(const std::string& path, const std::vector<Row>& rows) {
  std::ofstream out(path);
  out << "[";
  for (const Row& row : rows) {
    out << (&row == rows.data() ? "" : ",") << "\n  {\"word\": \"" << row.c.word
        << "\", \"digits\": \"" << row.c.size << "\", \"big_ns\": " << row.timing.ours * 1e9
        << ", \"gmp_ns\": " << row.timing.gmp * 1e9 << ", \"ratio\": " << row.timing.ratio() << "}";
  }
  out << "\n]\n";
}

int run(OmrelCommand big, const Options& options) {
  std::vector<Case> cases = all_cases();
  if (!options.word.empty()) {
    std::erase_if(cases, [&](const Case& c) { return c.word != options.word; });
  }
  if (!same_answers(big, cases)) return 1;
  const std::vector<Row> rows =
      options.quick ? measure(big, cases, 8, 0.003) : measure(big, cases, 30, 0.01);
  print(rows);
  print_summary(summarise(rows));
  if (!options.json.empty()) write_json(options.json, rows);
  return 0;
}

}  // namespace
}  // namespace omrel::bench

int main(int argc, char** argv) {
  using namespace omrel::bench;
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s LIBRARY ?--quick? ?--json FILE? ?--word WORD?\n", argv[0]);
    return 2;
  }
  Options options;
  for (int i = 2; i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--quick") options.quick = true;
    if (option == "--json" && i + 1 < argc) options.json = argv[++i];
    if (option == "--word" && i + 1 < argc) options.word = argv[++i];
  }
  return run(load_command(argv[1]), options);
}
