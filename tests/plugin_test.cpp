// The plug-in but for its words: link check, reports, `bigtest`, faults of callbacks, console,
// texts.
#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/console.h"
#include "support/line_marker.h"
#include "support/text.h"
#include "tests/recording_host.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <tuple>

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

RecordingPlatform& seen = recording_platform;
const std::string INVALID = "The handle is invalid.\n|";

// Each test starts as the library does, without a console handle.
struct Console : ::testing::Test {
  RecordingHost reset;
};

TEST_F(Console, Open) {
  // Before: has a console, can have one, is ready, force, the output. After: times asked for and
  // given up, has one.
  using Row = std::tuple<bool, bool, bool, bool, platform::Handle, int, int, bool>;
  for (const auto& [has_one, can_have, ready, force, output, allocated, freed, has_after] :
       {Row{1, 1, 0, 0, 1, 1, 0, 1},  // keeps the one that the process has
        Row{1, 1, 1, 0, 1, 0, 0, 1},  // ready: the system is not asked
        Row{1, 1, 1, 1, 1, 2, 1, 1},  // force replaces it, ready or not
        Row{0, 1, 0, 1, 1, 1, 0, 1},  // nothing to replace
        Row{0, 0, 0, 1, 1, 2, 1, 0}, Row{1, 1, 1, 1, INVALID_OUTPUT, 2, 1, 1},
        Row{1, 1, 0, 0, platform::NO_HANDLE, 1, 0, 1}}) {
    seen = {has_one, can_have, output};
    console_ready = ready;
    console_output = ready ? 1 : platform::NO_HANDLE;
    const bool valid = platform::is_valid(output);
    EXPECT_EQ(console_open(force), valid ? output : platform::NO_HANDLE);
    EXPECT_EQ(std::tuple(console_ready, seen.allocated, seen.freed, seen.has_console),
              std::tuple(valid, allocated, freed, has_after));
  }
}

TEST_F(Console, PrintfIsCutAt10204Characters) {
  for (const int width : {0, 3, 10204, 10205, 60000}) {
    int returned = 0;
    const std::string output = capture_output([&] { returned = console_printf("%*s", width, ""); });
    EXPECT_EQ(output, std::string(static_cast<std::size_t>(std::min(width, 10204)), ' '));
    EXPECT_EQ(returned, width > 10204 ? -1 : width);
  }
  const char* no_format = nullptr;
  EXPECT_EQ(console_printf(no_format, 1), 0);
}

TEST_F(Console, WritesInPieces) {
  const auto written = [](std::size_t byte_count, bool succeeds) {
    std::string text(byte_count, 'x');
    for (std::size_t i = 0; i < byte_count; i += 3) text[i] = 'y';
    const std::string output =
        capture_output([&] { EXPECT_EQ(SafeWriteFile(text.c_str()), succeeds); });
    EXPECT_TRUE(text.starts_with(output));
    return output.size();
  };
  EXPECT_EQ(written(0, true) + written(52225, true) + written(104448, true), 156673U);
  seen.writes_until_failure = 1;
  EXPECT_EQ(written(200000, false), 52224U);  // the first failure ends it
  EXPECT_EQ(seen.writes, (std::vector<std::size_t>{0, 52224, 1, 52224, 52224, 52224, 52224}));
  EXPECT_EQ(seen.message_boxes,
            Words{INVALID + "SafeWriteFile: Console not open: (GetLastError: 6)"});
  EXPECT_FALSE(SafeWriteFile(nullptr));
}

TEST_F(Console, TextNeedsAConsoleAndColourAnOutput) {
  seen.output = INVALID_OUTPUT;
  EXPECT_EQ(console_printf("%d", 5) + int{SafeWriteFile("x")}, 0);
  const std::string box = INVALID + "Failed to open the console: (GetLastError: 6)";
  EXPECT_EQ(seen.message_boxes, (Words{box, box}));
  EXPECT_TRUE(seen.writes.empty());
  seen = {true, true, 5};
  EXPECT_EQ(capture_output([] { console_set_colour(13); }), "{13}");
  EXPECT_EQ(capture_output(console_reset_colour), "{7}");
  EXPECT_EQ(std::tuple(console_output, console_ready, seen.allocated), std::tuple(5, false, 0));
}

TEST_F(Console, ShowsTheLastErrorAndEndsTheProcess) {
  seen.error_text = "No. Not so...\n.\n";
  seen.error_code = 4000000000;
  show_last_error(std::string(300, 'x').c_str(), true);  // cut, code and all
  EXPECT_EQ(seen.message_boxes[0], seen.error_text + "|" + std::string(256, 'x'));
  seen.error_code = 5;
  const std::string output = capture_output([] { show_last_error("unused", false); });
  EXPECT_EQ(output, "GetLastError(5) [No. Not so]\n");
  for (const auto& [message, status, shown] :
       {std::tuple{"100%% gone", 3, "100% gone"}, {"", 0, ""}, {nullptr, 255, ""}}) {
    EXPECT_EXIT(end_with([&, m = message, s = status]() -> int { fatal_exit(m, s); }),
                ::testing::ExitedWithCode(status), ::testing::Matcher<const std::string&>(shown));
  }
}

TEST(Text, IsEditedInPlace) {
  const char unterminated[] = {'1', '2'};  // not a byte behind the first n is read
  char copied[] = "abc", appended[7] = "abc", digits[] = "12345", zeros[] = "00120";
  EXPECT_STREQ(copy_text_n(copied, "1", 3), "1");
  EXPECT_STREQ(copy_text_n(copied, unterminated, 2), "12");
  EXPECT_STREQ(copy_text_n(copied, nullptr, 1), "12");
  EXPECT_EQ(append_text_n(appended, "12345", 3), appended + 6);
  EXPECT_STREQ(appended, "abc123");
  EXPECT_STREQ(remove_leading(digits, 2, 'x'), "345xx");
  EXPECT_STREQ(remove_leading(digits, 6, 'x'), "345xx");
  EXPECT_STREQ(remove_leading(digits, 5, '\0'), "");
  EXPECT_STREQ(strip_leading_char(zeros, '\0'), "00120");
  EXPECT_STREQ(strip_leading_char(zeros, '0'), "120");
  EXPECT_EQ(char_position("12.5.", '.') * 100 + char_position("\xFE", '\xFE') * 10, 310U);
  EXPECT_EQ(char_position("12", '\0') + char_position("12", '3'), 0U);
  EXPECT_EQ(all_chars_are("\xFE\xFE", '\xFE') * 10 + all_chars_are("001", '0'), 10);
  EXPECT_EQ(all_chars_are("", '\0') + all_chars_are("12", '\0'), 0);
}

TEST(Text, GrowsOnTheHeapAndMayBeNull) {
  char* text = nullptr;
  EXPECT_EQ(string_append(&text, nullptr, 0), nullptr);
  EXPECT_STREQ(string_append(&text, "0b", 0), "0b");
  EXPECT_STREQ(string_append(&text, "10199", 3), "0b101");
  EXPECT_STREQ(string_append_char(&text, '0'), "0b1010");
  EXPECT_STREQ(string_append(&text, text, 0), "0b10100b1010");
  EXPECT_STREQ(string_append(&text, text + 10, 9), "0b10100b101010");
  EXPECT_EQ(string_append(&text, nullptr, 1), text);
  free_and_null(&text);
  free_and_null(&text);
  free_and_null(nullptr);
  // A null text is none, and nothing changes.
  for (const char* nothing : {copy_text_n(nullptr, "1", 1), append_text_n(nullptr, "1", 1),
                              remove_leading(nullptr, 1, 'x'), strip_leading_char(nullptr, '0'),
                              string_append(nullptr, "1", 1), string_append_char(nullptr, '1')}) {
    EXPECT_EQ(nothing, text);
  }
  EXPECT_EQ(char_position(nullptr, '0') + static_cast<unsigned>(all_chars_are(nullptr, '0')), 0U);
}

}  // namespace
}  // namespace omrel::test
