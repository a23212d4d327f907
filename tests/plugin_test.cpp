#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/console.h"
#include "support/line_marker.h"
#include "tests/recording_host.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

namespace omrel::test {
namespace {

std::string link_report(const std::string& location) {
  return "untouched error {12}\r\nException in [omrel_init: " + location + "] at line #{7}\n";
}

TEST(Link, LooksCommandsUpInOrderUntilOneIsMissingAndNeverAfter) {
  RecordingHost host;
  HostCommand** const end = std::end(host_commands);
  host_linked = false;
  std::fill(host_commands, end, nullptr);
  host.commands.clear();
  Words calls;
  for (const std::string missing : {"eval", "vars", "subst", "set", "expr"}) {
    calls.push_back("getCommand " + missing);
    // Too few words: the link check comes first, so no syntax message is printed.
    for (const char* command : {"bigtest", "big"}) {
      const Outcome outcome = host.run({command});
      EXPECT_EQ(ended(outcome), link_report(missing + " not linked\n"));
      EXPECT_EQ(outcome.calls, calls);
      EXPECT_EQ(std::find(host_commands, end, nullptr) - host_commands, std::ssize(host.commands));
    }
    host.commands.insert(missing);
  }
  host.throwing_callback = "getCommand";
  line_marker = 7;
  EXPECT_EQ(ended(host.run({"big", "+", "1", "2"})), link_report("Exception"));
  EXPECT_TRUE(line_marker != 7 && !host_linked);
  host.throwing_callback.clear();
  const Words test{"getVar pi -1", "setVar dllvar 123 -1"};
  calls.insert(calls.end(), test.begin(), test.end());
  EXPECT_EQ(host.run({"bigtest"}).calls, calls);
  host.commands.clear();
  EXPECT_EQ(host.run({"bigtest"}).calls, test);
  EXPECT_EQ(std::count(host_commands, end, nullptr), 0);
}

TEST(Report, TextsAreNoFormats) {
  const RecordingHost reset;
  line_marker = -7;
  const std::string all = capture_output([] { EXPECT_EQ(report_exception("%s%n", "%n%d"), 1); });
  EXPECT_EQ(all, "{12}\r\nException in [%s%n] at line -7 (%n%d){7}\n");
  EXPECT_EQ(capture_output([] { report_exception(nullptr, ""); }), "{12}{7}\n");
  EXPECT_EQ(capture_output([] { report_exception(nullptr, "x"); }), "{12} (x){7}\n");
}

// Not that of what the word has called before.
TEST(Report, NamesTheLineOfTheWord) {
  std::set<std::string> reports;
  for (const std::string words : {"big / 5 0", "big % 5 0", "big *= x 5", "big /= x 5",
                                  "big &= x 5", "big += x 5", "big -= x 5", "big fact 1001"}) {
    RecordingHost host;
    host.set_var_status = 1;
    reports.insert(capture_output([&] { host.call(split(words)); }));
  }
  EXPECT_EQ(reports.size(), 8U);
}

TEST(BigTest, ReadsPiAndSetsDllvar) {
  const std::string no_pi = "untouchedfailed to retrieve test var pi\n";
  const std::string set = "Setting var dllvar to 123\nresult was ";
  RecordingHost host;
  EXPECT_EQ(ended(host.run({"bigtest", "ignored"})), no_pi + set + "0\n");
  EXPECT_EQ(host.get("dllvar"), "123");
  host.set("pi", std::nullopt);
  host.set_var_status = -5;
  EXPECT_EQ(ended(host.run({"bigtest"})), no_pi + set + "-5\n");
  host.set("pi", "%s 3.14");
  host.null_callbacks = {"setVar"};
  std::ostringstream wanted;
  wanted << "untouchedPi is " << static_cast<const void*>(&host.variables["pi"]) << " '%s 3.14'\n";
  EXPECT_EQ(ended(host.run({"bigtest"})), wanted.str() + set + "1\n");
}

// Whatever callback is missing or throws, a call returns and keeps its hands off what it does not
// own. What a callback throws is the guard's.
TEST(Callbacks, AnyOneMayBeNullOrThrowInAnyWord) {
#define OMREL_ROW(word, admitted, function) {"big", word, "x", "5"},
  for (Words words : {OMREL_OPERATORS(OMREL_ROW) Words{"bigtest", "", "", ""}}) {
    if (takes_one(words[1])) words.pop_back();
    for (const auto& [name, place] : CALLBACKS) {
      const auto run = [&words](RecordingHost host) {
        host.set("x", "10");
        host_linked = false;
        return host.run(words);
      };
      RecordingHost throwing, lacking;
      throwing.throwing_callback = name;
      lacking.null_callbacks = {name};
      const Outcome wanted = run({}), got = run(throwing);
      const bool is_called = printable(got.calls).find("{" + name + " ") != std::string::npos;
      EXPECT_EQ(got.code, is_called ? 1 : wanted.code) << words[1] << " " << name;
      EXPECT_TRUE(!is_called || got.result.value_or(GUARD) == GUARD) << words[1] << " " << name;
      EXPECT_TRUE(run(lacking).code == wanted.code || name.starts_with("get")) << words[1] << name;
    }
  }
}

TEST(Callbacks, TextsMayBeLong) {
  const std::string megabyte(1 << 20, '7');
  for (const std::string word : {megabyte.c_str(), "(null)", "+=", "++", "fib", "graph", "debug",
                                 "bintoint", "sqrt", "inttobin"}) {
    for (const Words& words : {Words{"big", word, megabyte, "5"}, {"big", word, megabyte}}) {
      EXPECT_EXIT(end_with([&] { return RecordingHost().call(words).code; }), is_sound, "");
    }
  }
}

// A colour takes an output without asking whether it is open.
TEST(Callbacks, TheGuardOpensTheConsole) {
  RecordingHost host;
  console_output = 1;
  EXPECT_EQ(host.run({"big", "sqrt", "-17"}).code, 1);
  EXPECT_EQ(recording_platform.allocated, 1);
}

}  // namespace
}  // namespace omrel::test
