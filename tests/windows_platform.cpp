// The calls of 32-bit Windows themselves, on the consoles and handles of this process.
#include "support/console.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <ctime>

namespace omrel::test {
namespace {

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
    EXPECT_TRUE(platform::is_valid(console_open(force)));
    EXPECT_FALSE(platform::allocate_console()) << "there is none";
    EXPECT_EQ(title() == "kept", titled && !force);
  }
}

TEST(Platform, DirectWritesLeaveBytesAlone) {
  HANDLE reading = nullptr, writing = nullptr;
  const std::string text = std::string(52223, 'x') + "\n\r\n" + std::string(60000, '\n');
  ASSERT_TRUE(::CreatePipe(&reading, &writing, nullptr, 200000));
  console_output = reinterpret_cast<platform::Handle>(writing);
  EXPECT_FALSE(platform::has_colours(console_output));
  EXPECT_TRUE(SafeWriteFile(text.c_str()));
  ::CloseHandle(writing);
  std::string got;
  char piece[4096];
  for (DWORD count = 0; ::ReadFile(reading, piece, sizeof piece, &count, nullptr);) {
    got.append(piece, count);
  }
  EXPECT_EQ(got, text);
  EXPECT_FALSE(platform::write(console_output, "x", 1));
  EXPECT_EQ(platform::last_error(), DWORD{ERROR_INVALID_HANDLE});
}

TEST(Platform, ErrorTextsAndTheClock) {
  EXPECT_TRUE(platform::error_text(ERROR_INVALID_HANDLE).ends_with("\r\n"));
  EXPECT_EQ(platform::error_text(0x2FFFFFFF), "");
  const auto now = platform::utc_time();
  const long of_day = (now.hours * 60L + now.minutes) * 60 + now.seconds;
  EXPECT_LE((std::time(nullptr) - of_day + 86402) % 86400, 4);
}

}  // namespace
}  // namespace omrel::test
