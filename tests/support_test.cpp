#include "support/console.h"
#include "support/text.h"
#include "tests/recording_host.h"
#include "tests/recording_platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace omrel::test {
namespace {

RecordingPlatform& seen = recording_platform;
const std::string INVALID = "The handle is invalid.\n|";

// Each test starts as the library does, without a console handle.
struct Console : ::testing::Test {
  RecordingHost reset;
};

TEST_F(Console, Open) {
  // Before: a console, one can be had, ready, force, the output. After: asked for, given up, there.
  using Row = std::tuple<bool, bool, bool, bool, platform::Handle, int, int, bool>;
  for (const auto& [has_one, can_have, ready, force, output, allocated, freed, has_after] : {
           Row{true, true, false, false, 1, 1, 0, true},  // keeps the console that the process has
           Row{true, true, true, false, 1, 0, 0, true},   // ready: the system is not asked
           Row{true, true, true, true, 1, 2, 1, true},    // force replaces it, ready or not
           Row{false, true, false, true, 1, 1, 0, true},  // nothing to replace
           Row{false, false, false, true, 1, 2, 1, false},
           Row{true, true, true, true, INVALID_OUTPUT, 2, 1, true},
           Row{true, true, false, false, platform::NO_HANDLE, 1, 0, true},
       }) {
    seen = {};
    seen.has_console = has_one;
    seen.can_allocate = can_have;
    seen.output = output;
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
  using Row = std::tuple<std::size_t, std::vector<std::size_t>, int, std::size_t>;
  for (const auto& [byte_count, writes, until_failure, written] : {
           Row{0, {0}, -1, 0}, Row{52225, {52224, 1}, -1, 52225},
           Row{104448, {52224, 52224}, -1, 104448},  // no empty last piece
           Row{200000, {52224, 52224}, 1, 52224},    // the first failure ends it
       }) {
    seen.writes.clear();
    seen.writes_until_failure = until_failure;
    bool done = false;
    const std::string text(byte_count, 'x');
    EXPECT_EQ(capture_output([&] { done = SafeWriteFile(text.c_str()); }).size(), written);
    EXPECT_EQ(done, until_failure < 0);
    EXPECT_EQ(seen.writes, writes);
  }
  EXPECT_EQ(seen.message_boxes,
            Words{INVALID + "SafeWriteFile: Console not open: (GetLastError: 6)"});
  EXPECT_FALSE(SafeWriteFile(nullptr));
}

TEST_F(Console, TextNeedsAConsoleAndColourAnOutput) {
  seen.output = INVALID_OUTPUT;
  EXPECT_EQ(console_printf("%d", 5), 0);
  EXPECT_FALSE(SafeWriteFile("x"));
  const std::string box = INVALID + "Failed to open the console: (GetLastError: 6)";
  EXPECT_EQ(seen.message_boxes, (Words{box, box}));
  EXPECT_TRUE(seen.writes.empty());
  seen = {};
  seen.output = 5;
  EXPECT_EQ(capture_output([] { console_set_colour(13); }), "{13}");
  EXPECT_EQ(capture_output(console_reset_colour), "{7}");
  EXPECT_EQ(std::tuple(console_output, console_ready, seen.allocated), std::tuple(5, false, 0));
}

TEST_F(Console, ShowsTheLastError) {
  seen.error_text = "No. Not so...\n.\n";
  seen.error_code = 4000000000;
  show_last_error(std::string(300, 'x').c_str(), true);  // cut, code and all
  EXPECT_EQ(seen.message_boxes[0], seen.error_text + "|" + std::string(256, 'x'));
  seen.error_code = 5;
  const std::string output = capture_output([] { show_last_error("unused", false); });
  EXPECT_EQ(output, "GetLastError(5) [No. Not so]\n");
}

TEST_F(Console, FatalExitPrintsAndEndsTheProcess) {
  for (const auto& [message, status, output] :
       {std::tuple{"100%% gone", 3, "100% gone"}, {"", 0, ""}, {nullptr, 255, ""}}) {
    const Outcome child = run_in_child([m = message, s = status]() -> int { fatal_exit(m, s); });
    EXPECT_EQ(std::pair(child.code, child.output), std::pair(status, std::string(output)));
  }
}

// What an operation makes of a copy of the text, with a bar at the address that it returns. The
// byte behind the text's room must stay.
template <class Operation, class... Arguments>
std::string edited(const std::string& text, std::size_t room, Operation operation,
                   Arguments... arguments) {
  std::string buffer = text + std::string(room + 2 - text.size(), '#');
  buffer[text.size()] = '\0';
  const char* returned = operation(buffer.data(), arguments...);
  EXPECT_EQ(buffer[room + 1], '#') << text;
  return std::string(buffer.c_str())
      .insert(static_cast<std::size_t>(returned - buffer.data()), "|");
}

TEST(Text, CopyAppendAndRemove) {
  using Row = std::tuple<std::string, const char*, std::size_t, std::string, std::string>;
  for (const auto& [start, source, n, copied, appended] :
       {Row{"abc", "12345", 3, "|123", "abc123|"}, Row{"abc", "12", 3, "|12", "abc12|"},
        Row{"abc", "12345", 0, "|", "abc|"}, Row{"abc", nullptr, 3, "|abc", "abc|"},
        Row{"", "12345", 5, "|12345", "12345|"}}) {
    EXPECT_EQ(edited(start, std::max<std::size_t>(n, 3), copy_text_n, source, n), copied);
    EXPECT_EQ(edited(start, start.size() + n, append_text_n, source, n), appended);
  }
  const char unterminated[] = {'1', '2'};  // not a byte behind the first n is read
  EXPECT_EQ(edited("", 2, copy_text_n, unterminated, std::size_t{2}), "|12");
  using Removal = std::tuple<std::string, std::size_t, char, std::string>;
  for (const auto& [text, n, fill, left] :
       {Removal{"12345", 2, '\0', "|345"}, Removal{"12345", 2, 'x', "|345xx"},
        Removal{"123", 3, '\0', "|"}, Removal{"123", 3, 'x', "|xxx"},
        Removal{"123", 4, 'x', "|123"}, Removal{"123", 0, 'x', "|123"}, Removal{"", 1, 'x', "|"}}) {
    EXPECT_EQ(edited(text, text.size(), remove_leading, n, fill), left);
  }
}

TEST(Text, StripFindAndTest) {
  using Row = std::tuple<std::string, char, std::string, std::size_t, int>;
  for (const auto& [text, character, stripped, position, all] :
       {Row{"00120", '0', "|120", 1, 0}, Row{"000", '0', "|", 1, 1}, Row{"", '0', "|", 0, 0},
        Row{"12.5.", '.', "|12.5.", 3, 0}, Row{"", '\0', "|", 0, 0}, Row{"12", '\0', "|12", 0, 0},
        Row{"\xFE", '\xFE', "|", 1, 1}, Row{"12", '3', "|12", 0, 0}}) {
    EXPECT_EQ(edited(text, text.size(), strip_leading_char, character), stripped);
    EXPECT_EQ(char_position(text.c_str(), character), position) << text;
    EXPECT_EQ(all_chars_are(text.c_str(), character), all) << text;
  }
}

TEST(Text, GrowsOnTheHeapAndMayBeNull) {
  char* text = nullptr;
  EXPECT_EQ(string_append(&text, nullptr, 0), nullptr);
  EXPECT_STREQ(string_append(&text, "0b", 0), "0b");
  EXPECT_STREQ(string_append(&text, "10199", 3), "0b101");
  EXPECT_STREQ(string_append(&text, "1", 9), "0b1011");
  EXPECT_STREQ(string_append(&text, "", -1), "0b1011");
  EXPECT_EQ(string_append(&text, nullptr, 1), text);
  EXPECT_STREQ(string_append_char(&text, '0'), "0b10110");
  free_and_null(&text);
  EXPECT_EQ(text, nullptr);
  free_and_null(&text);
  // A null text is none, and nothing changes.
  for (const char* nothing : {copy_text_n(nullptr, "1", 1), append_text_n(nullptr, "1", 1),
                              remove_leading(nullptr, 1, 'x'), strip_leading_char(nullptr, '0'),
                              string_append(nullptr, "1", 1), string_append_char(nullptr, '1')}) {
    EXPECT_EQ(nothing, nullptr);
  }
  EXPECT_EQ(char_position(nullptr, '0'), 0U);
  EXPECT_EQ(all_chars_are(nullptr, '0'), 0);
  free_and_null(nullptr);
}

}  // namespace
}  // namespace omrel::test
