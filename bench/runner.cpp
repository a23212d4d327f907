// Contestants of a case are timed in turns within one process, the cases round by round, and the
// best of the rounds counts, so that what else the machine does falls on all alike. Each round runs
// at another depth of the stack: where a command's buffers lie within a page, as against the texts
// on the heap, changes the time of some short calls by up to 40 %, and would otherwise be the luck
// of the process.
#include "bench/runner.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <deque>

#include "bench/gmp_commands.h"
#include "bench/host.h"

namespace omrel::bench {
namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

template <class Call>
double per_call(long calls, const Call& call) {
  const double begin = now();
  for (long i = 0; i < calls; ++i) call();
  return (now() - begin) / static_cast<double>(calls);
}

// Makes the call at another place of the stack.
template <class Call>
void at_depth(int frames, const Call& call) {
  [[maybe_unused]] volatile char frame[272];  // its writes keep each call a frame of its own
  frame[0] = 0;
  if (frames == 0) {
    call();
  } else {
    at_depth(frames - 1, call);
  }
  frame[1] = 0;
}

// How many calls take about so many seconds.
template <class Call>
long calls_within(double seconds, const Call& call) {
  long calls = 1;
  double spent = per_call(calls, call);
  while (spent * static_cast<double>(calls) < seconds / 4) {
    calls *= 2;
    spent = per_call(calls, call);
  }
  return std::max(1L, static_cast<long>(seconds / spent));
}

// One case, ready to be called each way.
class Runner {
 public:
  Runner(OmrelCommand command, const Case& c)
      : big(command), gmp(gmp_command(c.word)), variable_text(c.variable) {
    texts = {"big", c.word.c_str()};
    for (const std::string& operand : c.operands) texts.push_back(operand.c_str());
  }

  std::string answer_of_big() {
    return answer([this] { call_big(); });
  }
  std::string answer_of_gmp() {
    return answer([this] { call_gmp(); });
  }

  // Takes the better of what is known and one more round.
  void time(Timing& timing, double seconds) {
    const auto gmp_call = [this] { call_gmp(); };
    if (calls == 0) calls = calls_within(seconds, gmp_call);
    timing.big = std::min(timing.big, per_call(calls, [this] { call_big(); }));
    timing.gmp = std::min(timing.gmp, per_call(calls, gmp_call));
  }

 private:
  // A word that updates its variable finds the same value at each call.
  void call_big() {
    if (!variable_text.empty()) the_host.variable = variable_text;
    big(nullptr, static_cast<int>(texts.size()), texts.data(), nullptr);
  }
  void call_gmp() {
    if (!variable_text.empty()) the_host.variable = variable_text;
    gmp(the_host, static_cast<int>(texts.size()), texts.data());
  }

  template <class Call>
  std::string answer(const Call& call) {
    the_host.variable = variable_text;
    the_host.result.clear();
    call();
    return the_host.result + "|" + the_host.variable;
  }

  OmrelCommand big;
  GmpCommand gmp;
  std::vector<const char*> texts;
  const std::string variable_text;
  long calls = 0;
};

bool same(const Case& c, const std::string& ours, const std::string& other) {
  constexpr std::size_t SHOWN = 60;
  if (ours == other) return true;
  std::fprintf(stderr, "big %s (%s): %s..., GMP: %s...\n", c.word.c_str(), c.size.c_str(),
               ours.substr(0, SHOWN).c_str(), other.substr(0, SHOWN).c_str());
  return false;
}

}  // namespace

bool same_answers(OmrelCommand big, const std::vector<Case>& cases) {
  bool all = true;
  for (const Case& c : cases) {
    Runner runner(big, c);
    all = same(c, runner.answer_of_big(), runner.answer_of_gmp()) && all;
  }
  return all;
}

std::vector<Row> measure(OmrelCommand big, const std::vector<Case>& cases, const Effort& effort) {
  std::vector<Row> rows;
  std::deque<Runner> runners;
  for (const Case& c : cases) {
    rows.push_back({c, {}});
    runners.emplace_back(big, c);
  }
  for (int round = 0; round < effort.rounds; ++round) {
    at_depth(round, [&] {
      for (std::size_t i = 0; i < rows.size(); ++i) runners[i].time(rows[i].timing, effort.seconds);
    });
  }
  return rows;
}

}  // namespace omrel::bench
