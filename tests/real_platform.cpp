// The calls of this system themselves, on its consoles, terminals, pipes and clock.
#include <gtest/gtest.h>

#include "support/console.h"
#ifdef _WIN32
#include <windows.h>
#else
#include <pty.h>
#include <unistd.h>

#include <cerrno>
#endif

#include <cstring>
#include <ctime>

namespace omrel::platform {
namespace {

TEST(Platform, TheClock) {
  const TimeOfDay now = utc_time();
  const long of_day = (now.hours * 60L + now.minutes) * 60 + now.seconds;
  EXPECT_LE((std::time(nullptr) - of_day + 86402) % 86400, 4);
  EXPECT_LT(now.milliseconds, 1000);
}

TEST(Platform, AFileGetsPlainBytesInTheirOrder) {
  ::testing::internal::CaptureStdout();
  std::printf("a%s", block());
  set_text_attribute(standard_output(), 12);
  EXPECT_TRUE(write(standard_output(), "b", 1));
  std::printf("c");
  EXPECT_FALSE(has_colours(standard_output()));
  EXPECT_TRUE(is_valid(standard_output()) && !is_valid(NO_HANDLE) && !has_colours(NO_HANDLE));
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "a\xFE\x62\x63");
}

#ifdef _WIN32

std::string title() {
  char text[80] = "";
  ::GetConsoleTitleA(text, sizeof text);
  return text;
}

// Its title tells a console that is kept from a new one, where there is a screen to show it.
TEST(Platform, ConsoleIsMadeThenKeptThenReplacedByForce) {
  for (const bool force : {false, false, true}) {
    const bool titled = ::SetConsoleTitleA("kept") != 0 && title() == "kept";
    console_ready = false;
    EXPECT_TRUE(is_valid(console_open(force)));
    EXPECT_FALSE(allocate_console()) << "there is none";
    EXPECT_EQ(title() == "kept", titled && !force);
  }
}

// As the console's own buffer has them, where standard output is one.
TEST(Platform, Colours) {
  CONSOLE_SCREEN_BUFFER_INFO info;
  const HANDLE console = ::GetStdHandle(STD_OUTPUT_HANDLE);
  if (!::GetConsoleScreenBufferInfo(console, &info)) GTEST_SKIP() << "no console here";
  std::printf("\na");
  set_text_attribute(standard_output(), 4);
  std::printf("b");
  set_text_attribute(standard_output(), 7);
  WORD colours[2] = {};
  DWORD count = 0;
  ASSERT_TRUE(::GetConsoleScreenBufferInfo(console, &info));
  ::ReadConsoleOutputAttribute(console, colours, 2, {0, info.dwCursorPosition.Y}, &count);
  EXPECT_EQ(colours[0] * 100 + colours[1] * 10 + info.wAttributes, 747);
}

TEST(Platform, DirectWritesLeaveBytesAlone) {
  HANDLE reading = nullptr, writing = nullptr;
  const std::string text = std::string(52223, 'x') + "\n\r\n" + std::string(60000, '\n');
  ASSERT_TRUE(::CreatePipe(&reading, &writing, nullptr, 200000));
  console_output = reinterpret_cast<Handle>(writing);
  EXPECT_TRUE(SafeWriteFile(text.c_str()));
  ::CloseHandle(writing);
  std::string got;
  char piece[4096];
  for (DWORD count = 0; ::ReadFile(reading, piece, sizeof piece, &count, nullptr);) {
    got.append(piece, count);
  }
  EXPECT_EQ(got, text);
  EXPECT_FALSE(write(console_output, "x", 1));
  EXPECT_EQ(last_error(), DWORD{ERROR_INVALID_HANDLE});
  EXPECT_TRUE(error_text(ERROR_INVALID_HANDLE).ends_with("\r\n"));
  EXPECT_EQ(error_text(0x2FFFFFFF), "");
}

#else

// What the function writes to a terminal.
template <class Function>
std::string on_terminal(Function function) {
  int master = -1, slave = -1;
  if (::openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) return "no terminal here";
  const int saved = ::dup(STDOUT_FILENO);
  std::fflush(stdout);
  ::dup2(slave, STDOUT_FILENO);
  function();
  std::fflush(stdout);
  ::dup2(saved, STDOUT_FILENO);
  for (const int done : {saved, slave}) ::close(done);
  std::string output;
  for (char c = 0; ::read(master, &c, 1) == 1; output += c) continue;
  ::close(master);
  return output;
}

TEST(Platform, Colours) {
  std::string wanted;
  for (const char* sequence : {"0;30;40", "0;34", "0;32", "0;36", "0;31", "0;35", "0;33", "0",
                               "0;90", "0;94", "0;92", "0;96", "0;91", "0;95", "0;93", "0;97"}) {
    wanted += std::string("a\033[") + sequence + "mbc";
  }
  const auto write_all = [] {
    for (std::uint16_t attribute = 0; attribute < 16; ++attribute) {
      std::printf("a");
      set_text_attribute(STDOUT_FILENO, attribute);
      std::printf("b");
      write(STDOUT_FILENO, "c", 1);
    }
  };
  EXPECT_EQ(on_terminal(write_all), wanted);
}

TEST(Platform, TheBlockDependsOnTheLocale) {
  using Row = std::tuple<const char*, const char*, const char*, bool>;
  for (const auto& [all, characters, language, is_utf8] :
       {Row{"", "", "C.UTF-8", true}, Row{"", "de_DE.utf8@euro", "C", true},
        Row{"C", "C.UTF-8", "C.UTF-8", false}, Row{"", "C", "C.UTF-8", false},
        Row{"de_DE.ISO-8859-15@utf8", "", "", false}, Row{"utf8", "", "", false}}) {
    ::setenv("LC_ALL", all, 1);
    ::setenv("LC_CTYPE", characters, 1);
    ::setenv("LANG", language, 1);
    EXPECT_EQ(on_terminal([] { std::fputs(block(), stdout); }), is_utf8 ? "\u25A0" : "\xFE") << all;
  }
}

TEST(Platform, AClosedOutputIsNone) {
  EXPECT_FALSE(is_valid(99));
  EXPECT_FALSE(write(99, "x", 1));
  EXPECT_EQ(error_text(last_error()), std::strerror(EBADF));
  ::testing::internal::CaptureStderr();
  message_box("text", "title");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "text [title]\n");
}

#endif

}  // namespace
}  // namespace omrel::platform
