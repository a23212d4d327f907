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

// Each test starts as the library does, without a console handle.
class Console : public ::testing::Test {
 private:
  RecordingHost reset;
};

TEST_F(Console, Open) {
  struct {
    bool has_console, can_allocate, ready, force;
    platform::Handle output;
    int allocated, freed;
    bool has_console_after;
  } const cases[] = {
      {true, true, false, false, 1, 1, 0, true},  // keeps the console that the process has
      {true, true, true, false, 1, 0, 0, true},   // ready: the system is not asked
      {true, true, true, true, 1, 2, 1, true},    // force replaces it, ready or not
      {false, true, false, true, 1, 1, 0, true},  // nothing to replace
      {false, false, false, true, 1, 2, 1, false},
      {true, true, true, true, INVALID_OUTPUT, 2, 1, true},
      {true, true, false, false, platform::NO_HANDLE, 1, 0, true},
  };
  for (const auto& row : cases) {
    recording_platform = {};
    recording_platform.has_console = row.has_console;
    recording_platform.can_allocate = row.can_allocate;
    recording_platform.output = row.output;
    console_ready = row.ready;
    console_output = row.ready ? 1 : platform::NO_HANDLE;
    const bool valid = platform::is_valid(row.output);
    EXPECT_EQ(console_open(row.force), valid ? row.output : platform::NO_HANDLE);
    EXPECT_EQ(console_ready, valid);
    EXPECT_EQ(recording_platform.allocated, row.allocated);
    EXPECT_EQ(recording_platform.freed, row.freed);
    EXPECT_EQ(recording_platform.has_console, row.has_console_after);
  }
}

TEST_F(Console, ColourTakesTheOutputWithoutOpeningAConsole) {
  recording_platform.output = 5;
  EXPECT_EQ(capture_output([] {
              console_set_colour(13);
              console_reset_colour();
            }),
            "{13}{7}");
  EXPECT_EQ(console_output, 5);
  EXPECT_FALSE(console_ready);
  EXPECT_EQ(recording_platform.allocated, 0);
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
  using Sizes = std::vector<std::size_t>;
  struct {
    std::size_t byte_count;
    Sizes writes;
    int until_failure;
    std::size_t written;
  } const cases[] = {
      {0, {0}, -1, 0},
      {52224, {52224}, -1, 52224},
      {52225, {52224, 1}, -1, 52225},
      {104448, {52224, 52224}, -1, 104448},  // no empty last piece
      {200000, {52224, 52224}, 1, 52224},    // the first failure ends it
  };
  for (const auto& row : cases) {
    recording_platform = {};
    recording_platform.writes_until_failure = row.until_failure;
    bool done = false;
    const std::string text(row.byte_count, 'x');
    EXPECT_EQ(capture_output([&] { done = SafeWriteFile(text.c_str()); }).size(), row.written);
    EXPECT_EQ(done, row.until_failure < 0);
    EXPECT_EQ(recording_platform.writes, row.writes);
  }
  const std::vector<std::string> box{
      "The handle is invalid.\n|SafeWriteFile: Console not open: (GetLastError: 6)"};
  EXPECT_EQ(recording_platform.message_boxes, box);
  EXPECT_FALSE(SafeWriteFile(nullptr));
}

TEST_F(Console, TellsWhenThereIsNone) {
  recording_platform.output = INVALID_OUTPUT;
  EXPECT_EQ(capture_output([] {
              EXPECT_EQ(console_printf("%d", 5), 0);
              EXPECT_FALSE(SafeWriteFile("x"));
            }),
            "");
  const std::string box = "The handle is invalid.\n|Failed to open the console: (GetLastError: 6)";
  EXPECT_EQ(recording_platform.message_boxes, (std::vector<std::string>{box, box}));
  EXPECT_TRUE(recording_platform.writes.empty());
}

TEST_F(Console, ShowsTheLastError) {
  recording_platform.error_text = "No. Not so...\n.\n";
  recording_platform.error_code = 4000000000;
  show_last_error(std::string(300, 'x').c_str(), true);
  EXPECT_EQ(recording_platform.message_boxes[0],
            "No. Not so...\n.\n|" + std::string(256, 'x'));  // cut, code and all
  recording_platform.error_code = 5;
  EXPECT_EQ(capture_output([] { show_last_error("unused", false); }),
            "GetLastError(5) [No. Not so]\n");
}

TEST_F(Console, FatalExitPrintsAndEndsTheProcess) {
  for (const auto& [message, status, output] :
       {std::tuple{"100%% gone", 3, "100% gone"}, {"", 0, ""}, {nullptr, 255, ""}}) {
    const ChildOutcome child =
        run_in_child([m = message, s = status]() -> int { fatal_exit(m, s); });
    EXPECT_EQ(child.status, status);
    EXPECT_EQ(child.output, output);
  }
}

// Runs an operation on a copy of the text with a guard byte behind it, which must stay.
template <typename Operation>
std::string edited(const std::string& text, std::size_t room, Operation operation) {
  std::vector<char> buffer(room + 2, '#');
  std::memcpy(buffer.data(), text.c_str(), text.size() + 1);
  operation(buffer.data());
  EXPECT_EQ(buffer[room + 1], '#') << text;
  return buffer.data();
}

TEST(Text, BoundedCopyAndAppend) {
  struct {
    const char *start, *source;
    std::size_t n;
    const char *copied, *appended;
  } const cases[] = {
      {"abc", "12345", 3, "123", "abc123"}, {"abc", "12", 3, "12", "abc12"},
      {"abc", "12345", 0, "", "abc"},       {"abc", nullptr, 3, "abc", "abc"},
      {"", "12345", 5, "12345", "12345"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(edited(row.start, std::max<std::size_t>(row.n, 3),
                     [&](char* text) { EXPECT_EQ(copy_text_n(text, row.source, row.n), text); }),
              row.copied);
    EXPECT_EQ(edited(row.start, std::strlen(row.start) + row.n,
                     [&](char* text) {
                       EXPECT_EQ(append_text_n(text, row.source, row.n),
                                 text + std::strlen(row.appended));
                     }),
              row.appended);
  }
  const char unterminated[] = {'1', '2'};  // not a byte behind the first n is read
  EXPECT_EQ(edited("", 2, [&](char* text) { copy_text_n(text, unterminated, 2); }), "12");
}

TEST(Text, RemoveLeading) {
  struct {
    const char* text;
    std::size_t n;
    char fill;
    const char* left;
  } const cases[] = {
      {"12345", 2, '\0', "345"}, {"12345", 2, 'x', "345xx"}, {"123", 3, '\0', ""},
      {"123", 3, 'x', "xxx"},    {"123", 4, 'x', "123"},     {"123", 0, 'x', "123"},
      {"", 1, 'x', ""},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(edited(row.text, std::strlen(row.text),
                     [&](char* text) { EXPECT_EQ(remove_leading(text, row.n, row.fill), text); }),
              row.left);
  }
}

TEST(Text, StripFindAndTest) {
  struct {
    const char* text;
    char character;
    const char* stripped;
    std::size_t position;
    int all;
  } const cases[] = {
      {"00120", '0', "120", 1, 0}, {"000", '0', "", 1, 1},  {"12.5.", '.', "12.5.", 3, 0},
      {"", '0', "", 0, 0},         {"", '\0', "", 0, 0},    {"12", '\0', "12", 0, 0},
      {"\xFE", '\xFE', "", 1, 1},  {"12", '3', "12", 0, 0},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(edited(row.text, std::strlen(row.text),
                     [&](char* text) { EXPECT_EQ(strip_leading_char(text, row.character), text); }),
              row.stripped);
    EXPECT_EQ(char_position(row.text, row.character), row.position) << row.text;
    EXPECT_EQ(all_chars_are(row.text, row.character), row.all) << row.text;
  }
}

TEST(Text, GrowsOnTheHeap) {
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
}

TEST(Text, NullTextsChangeNothing) {
  EXPECT_EQ(copy_text_n(nullptr, "1", 1), nullptr);
  EXPECT_EQ(append_text_n(nullptr, "1", 1), nullptr);
  EXPECT_EQ(remove_leading(nullptr, 1, 'x'), nullptr);
  EXPECT_EQ(strip_leading_char(nullptr, '0'), nullptr);
  EXPECT_EQ(char_position(nullptr, '0'), 0U);
  EXPECT_EQ(all_chars_are(nullptr, '0'), 0);
  EXPECT_EQ(string_append(nullptr, "1", 1), nullptr);
  EXPECT_EQ(string_append_char(nullptr, '1'), nullptr);
  free_and_null(nullptr);
}

}  // namespace
}  // namespace omrel::test
