#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/line_marker.h"
#include "tests/recording_host.h"
#include "tests/recording_platform.h"

#include <gtest/gtest.h>

#include <sstream>

namespace omrel::test {
namespace {

const std::string SET_DLLVAR = "Setting var dllvar to 123\nresult was ";
const std::string NO_PI = "failed to retrieve test var pi\n";

std::string link_report(const std::string& location) {
  return "untouched error {12}\r\nException in [omrel_init: " + location + "] at line #{7}\n";
}

TEST(Link, LooksCommandsUpInOrderUntilOneIsMissingAndNeverAfter) {
  RecordingHost host;
  host_linked = false;
  host.commands.clear();
  Words calls;
  for (const std::string missing : {"eval", "vars", "subst", "set", "expr"}) {
    calls.push_back("getCommand " + missing);
    // Too few words: the link check comes first, so no syntax message is printed.
    for (const char* command : {"bigtest", "big"}) {
      const Outcome outcome = host.run({command});
      EXPECT_EQ(ended(outcome), link_report(missing + " not linked\n"));
      EXPECT_EQ(outcome.calls, calls);
    }
    host.commands.insert(missing);
  }
  const Words test{"getVar pi -1", "setVar dllvar 123 -1"};
  calls.insert(calls.end(), test.begin(), test.end());
  EXPECT_EQ(host.run({"bigtest"}).calls, calls);
  host.commands.clear();
  EXPECT_EQ(host.run({"bigtest"}).calls, test);
}

TEST(Link, FaultsInTheLookupsAreReported) {
  for (const auto& [throwing, null, location] :
       {std::tuple{"getCommand", "", "Exception"},
        {"", "getCommand", "eval not linked\n"},
        {"", "all", "eval not linked\n"}}) {  // the table was never handed over
    RecordingHost host;
    host_linked = false;
    host.throwing_callback = throwing;
    host.null_callbacks = {null};
    for (const char* command : {"big", "bigtest"}) {
      EXPECT_EQ(ended(host.run({command, "+", "1", "2"})), link_report(location));
    }
    EXPECT_FALSE(host_linked);
  }
}

TEST(Report, Texts) {
  using Row = std::tuple<const char*, const char*, std::string>;
  const RecordingHost host;
  line_marker = -7;
  for (const auto& [location, message, report] :
       {Row{nullptr, "Command undefined", " (Command undefined)"},
        Row{"big", "", "\r\nException in [big] at line -7"},
        Row{"", "x", "\r\nException in [] at line -7 (x)"},
        Row{"%s%n", "%n%d", "\r\nException in [%s%n] at line -7 (%n%d)"},
        Row{nullptr, nullptr, ""}}) {
    int code = 0;
    const auto write = [&code, l = location, m = message] { code = report_exception(l, m); };
    EXPECT_EQ(capture_output(write), "{12}" + report + "{7}\n");
    EXPECT_EQ(code, 1);
  }
}

TEST(BigTest, ReadsPiAndSetsDllvar) {
  RecordingHost host;
  EXPECT_EQ(ended(host.run({"bigtest", "ignored"})), "untouched" + NO_PI + SET_DLLVAR + "0\n");
  EXPECT_EQ(host.get("dllvar"), "123");
  host.set("pi", std::nullopt);
  EXPECT_EQ(host.run({"bigtest"}).output, NO_PI + SET_DLLVAR + "0\n");
  host.set("pi", "%s 3.14");
  host.set_var_status = -5;
  std::ostringstream wanted;
  wanted << "untouchedPi is " << static_cast<const void*>(host.record("pi")) << " '%s 3.14'\n";
  EXPECT_EQ(ended(host.run({"bigtest"})), wanted.str() + SET_DLLVAR + "-5\n");
}

// Whatever callback is missing or throws, a call returns and keeps its hands off what it does not
// own. What a callback throws is the guard's.
TEST(Callbacks, AnyOneMayBeNullOrThrowInAnyWord) {
#define OMREL_ROW(word, admitted, function) {word, #admitted},
  const Words operators[] = {OMREL_OPERATORS(OMREL_ROW){"bigtest", ""}};
  for (const Words& row : operators) {
    Words words{row[1].empty() ? "bigtest" : "big", row[0], "x", "5"};
    if (row[1] == "THREE") words.pop_back();
    for (const std::string& name : CALLBACKS) {
      RecordingHost sound, throwing, lacking;
      throwing.throwing_callback = name;
      lacking.null_callbacks = {name};
      for (RecordingHost* host : {&sound, &throwing, &lacking}) host->set("x", "10");
      const Outcome wanted = sound.run(words), got = throwing.run(words);
      const bool is_called = printable(got.calls).find("{" + name + " ") != std::string::npos;
      EXPECT_EQ(got.code, is_called ? 1 : wanted.code) << row[0] << " " << name;
      EXPECT_TRUE(!is_called || got.result.value_or(GUARD) == GUARD) << row[0] << " " << name;
      EXPECT_TRUE(lacking.run(words).code == wanted.code || name == "getVar");
    }
  }
}

TEST(Callbacks, VariablesMayVanishAndTextsBeLong) {
  RecordingHost host;
  host.set_var_creates = false;  // although it reports success
  EXPECT_EQ(host.run({"big", "+=", "x", "1"}).code, 1);
  EXPECT_EQ(host.run({"big", "-=", "x", "1"}).code, 1);
  const std::string megabyte(1 << 20, '7');
  for (const std::string word : {megabyte.c_str(), "(null)", "+=", "++", "fib", "graph", "debug",
                                 "bintoint", "sqrt", "inttobin"}) {
    EXPECT_LE(run_in_child({"big", word, megabyte, "5"}).code, 1) << word.substr(0, 9);
    EXPECT_LE(run_in_child({"big", word, megabyte}).code, 1) << word.substr(0, 9);
  }
}

}  // namespace
}  // namespace omrel::test
