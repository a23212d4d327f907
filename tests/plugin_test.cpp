#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/line_marker.h"
#include "tests/recording_host.h"
#include "tests/recording_platform.h"

#include <gtest/gtest.h>

#include <sstream>

namespace omrel::test {
namespace {

using Calls = std::vector<std::string>;

const std::string SET_DLLVAR = "Setting var dllvar to 123\nresult was ";
const std::string NO_PI = "failed to retrieve test var pi\n";

std::string link_report(const std::string& location) {
  return "{12}\r\nException in [" + location + "] at line #{7}\n";
}

TEST(Link, LooksCommandsUpInOrderUntilOneIsMissing) {
  const Calls names{"eval", "vars", "subst", "set", "expr"};
  Calls looked_up;
  for (const std::string& missing : names) {
    looked_up.push_back("getCommand " + missing);
    RecordingHost host;
    RecordingHost::unlink();
    host.commands.erase(missing);
    // Too few words: the link check comes first, so no syntax message is printed.
    for (const Words& words : {Words{"bigtest"}, Words{"big"}}) {
      const Outcome outcome = host.run(words);
      EXPECT_EQ(outcome.code, 1) << missing;
      EXPECT_EQ(outcome.result, UNTOUCHED) << missing;
      EXPECT_EQ(outcome.calls, looked_up) << missing;
      EXPECT_EQ(outcome.output, link_report("omrel_init: " + missing + " not linked\n"));
    }
  }
}

TEST(Link, IsCheckedAgainUntilItSucceedsAndNeverAfter) {
  RecordingHost host;
  RecordingHost::unlink();
  host.commands.erase("expr");
  EXPECT_EQ(host.run({"bigtest"}).code, 1);
  host.commands.insert("expr");
  EXPECT_EQ(host.run({"bigtest"}).calls,
            (Calls{"getCommand eval", "getCommand vars", "getCommand subst", "getCommand set",
                   "getCommand expr", "getVar pi -1", "setVar dllvar 123 -1"}));
  host.commands.clear();
  EXPECT_EQ(host.run({"bigtest"}).calls, (Calls{"getVar pi -1", "setVar dllvar 123 -1"}));
}

TEST(Link, FaultsInTheLookupsAreReported) {
  struct {
    const char *throwing, *null, *location;
  } const cases[] = {
      {"getCommand", "", "omrel_init: Exception"},
      {"", "getCommand", "omrel_init: eval not linked\n"},
      {"", "all", "omrel_init: eval not linked\n"},  // the table was never handed over
  };
  for (const auto& fault : cases) {
    RecordingHost host;
    RecordingHost::unlink();
    host.throwing_callback = fault.throwing;
    host.null_callbacks = {fault.null};
    for (const char* command : {"big", "bigtest"}) {
      const Outcome outcome = host.run({command, "+", "1", "2"});
      EXPECT_EQ(outcome.code, 1);
      EXPECT_EQ(outcome.output, link_report(fault.location));
    }
    EXPECT_FALSE(host_linked);
  }
}

TEST(Report, Texts) {
  struct {
    const char *location, *message, *report;
  } const cases[] = {
      {nullptr, "Command undefined", "{12} (Command undefined){7}\n"},
      {"big", "", "{12}\r\nException in [big] at line -7{7}\n"},
      {"", "x", "{12}\r\nException in [] at line -7 (x){7}\n"},
      {"%s%n", "%n%d", "{12}\r\nException in [%s%n] at line -7 (%n%d){7}\n"},
      {nullptr, nullptr, "{12}{7}\n"},
  };
  const RecordingHost host;
  line_marker = -7;
  for (const auto& report : cases) {
    int code = 0;
    EXPECT_EQ(capture_output([&] { code = report_exception(report.location, report.message); }),
              report.report);
    EXPECT_EQ(code, 1);
  }
}

TEST(BigTest, ReadsPiAndSetsDllvar) {
  RecordingHost host;
  Outcome outcome = host.run({"bigtest", "ignored"});
  EXPECT_EQ(outcome.output, NO_PI + SET_DLLVAR + "0\n");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.result, UNTOUCHED);
  EXPECT_EQ(host.get("dllvar"), "123");

  host.set("pi", std::nullopt);
  EXPECT_EQ(host.run({"bigtest"}).output, NO_PI + SET_DLLVAR + "0\n");

  host.set("pi", "%s 3.14");
  std::ostringstream record;
  record << static_cast<const void*>(host.record("pi"));
  host.set_var_status = -5;
  outcome = host.run({"bigtest"});
  EXPECT_EQ(outcome.output, "Pi is " + record.str() + " '%s 3.14'\n" + SET_DLLVAR + "-5\n");
  EXPECT_EQ(outcome.code, 0);
}

// Whatever callback is missing or throws, a call returns and keeps its hands off what it does not
// own. What a callback throws is the guard's.
TEST(Callbacks, AnyOneMayBeNullOrThrowInAnyWord) {
#define OMREL_ROW(word, admitted, function) {word, #admitted},
  const Words operators[] = {OMREL_OPERATORS(OMREL_ROW){"bigtest", ""}};
  for (const Words& row : operators) {
    Words words{row[1].empty() ? "bigtest" : "big", row[0], "x", "5"};
    if (row[1] == "THREE") words.pop_back();
    for (const char* name : {"getVar", "setVar", "setVarValue", "freeVarValue", "getCommand",
                             "setResult", "freeValue"}) {
      RecordingHost sound, throwing, lacking;
      throwing.throwing_callback = name;
      lacking.null_callbacks = {name};
      for (RecordingHost* host : {&sound, &throwing, &lacking}) host->set("x", "10");
      const Outcome wanted = sound.run(words), got = throwing.run(words);
      const bool is_called = std::any_of(got.calls.begin(), got.calls.end(), [&](const auto& call) {
        return call.rfind(std::string(name) + " ", 0) == 0;
      });
      EXPECT_EQ(got.code, is_called ? 1 : wanted.code) << row[0] << " " << name;
      EXPECT_TRUE(!is_called || got.result.value_or(GUARD) == GUARD) << row[0] << " " << name;
      EXPECT_TRUE(lacking.run(words).code == wanted.code || name == std::string("getVar"));
    }
  }
}

TEST(Callbacks, VariablesMayVanishAndTextsBeLong) {
  RecordingHost host;
  host.set_var_creates = false;  // although it reports success
  EXPECT_EQ(host.run({"big", "+=", "x", "1"}).code, 1);
  EXPECT_EQ(host.run({"big", "-=", "x", "1"}).code, 1);
  const std::string megabyte(1 << 20, '7');
  for (const Words& words : {Words{"big", megabyte, "1", "2"}, {"big", "(null)", "1", "2"}}) {
    EXPECT_EQ(host.run(words).code, 1);
  }
  for (const char* word : {"+=", "++", "fib", "graph", "debug", "bintoint", "sqrt", "inttobin"}) {
    EXPECT_LE(run_in_child({"big", word, megabyte, "5"}).code, 1) << word;
    EXPECT_LE(run_in_child({"big", word, megabyte}).code, 1) << word;
  }
}

TEST(Callbacks, AreCountedAndStoredInOrder) {
  const OmrelUnused some = [] {};
  const auto as = [some](auto kind) { return reinterpret_cast<decltype(kind)>(some); };
  const auto hand_over = [&](OmrelUnused unused) {
    return _export_common_routines(as(OmrelGetVar{}), as(OmrelSetVar{}), as(OmrelSetVarValue{}),
                                   as(OmrelFreeVarValue{}), unused, unused, as(OmrelGetCommand{}),
                                   unused, unused, as(OmrelSetResult{}), unused,
                                   as(OmrelFreeValue{}), unused, unused, unused, unused, unused);
  };
  EXPECT_EQ(hand_over(some), 17);
  EXPECT_EQ(omrel::host.unused16, some);
  EXPECT_EQ(hand_over(nullptr), 7);
  EXPECT_EQ(omrel::host.unused16, nullptr);  // a later call replaces nulls too
  omrel::host = {};
}

}  // namespace
}  // namespace omrel::test
