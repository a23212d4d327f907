#include "support/console.h"
#include "support/text.h"
#include "tests/recording_host.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace omrel::test {
namespace {

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
