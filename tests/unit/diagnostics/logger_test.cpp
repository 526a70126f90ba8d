#include "diagnostics/logger.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <regex>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "support/comma_locale.h"

namespace kiv::log::test {
namespace {

struct Received {
  std::string format;
  std::int32_t level;
  std::uint64_t time;
  int argument;
};

std::vector<Received> received;

void receive(const char* format, KivLog_Level_t level, std::uint64_t time,
             va_list arguments) {
  const int argument =
      std::string_view(format).find('%') == std::string_view::npos
          ? 0
          : va_arg(arguments, int);
  received.push_back({format, level, time, argument});
}

class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { received.clear(); }
  ~LoggerTest() override {
    while (ok(Logger::free())) continue;
  }
};

TEST_F(LoggerTest, PassesOnWhatIsNotAboveItsLevel) {
  log(Level::kError, "nobody listens");
  ASSERT_EQ(Logger::create(receive, 1), Status::kOk);
  for (int allowed = 1; allowed <= 5; ++allowed) {
    EXPECT_TRUE(Logger::setLevel(allowed));
    received.clear();
    for (int level = 1; level <= 5; ++level)
      log(static_cast<Level>(level), "%d", level);
    ASSERT_EQ(received.size(), static_cast<std::size_t>(allowed));
    EXPECT_EQ(received.back().level, allowed);
    EXPECT_EQ(received.back().argument, allowed);
    EXPECT_EQ(received.back().format, "%d");
  }
}

TEST_F(LoggerTest, TimesCountFromItsCreationInNanoseconds) {
  const std::uint64_t before = platform::monotonicNanoseconds();
  ASSERT_EQ(Logger::create(receive, 5), Status::kOk);
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  log(Level::kError, "a");
  log(Level::kError, "b");
  const std::uint64_t after = platform::monotonicNanoseconds();
  ASSERT_EQ(received.size(), 2u);
  EXPECT_GE(received[0].time, 2000000u);
  EXPECT_GE(received[1].time, received[0].time);
  EXPECT_LE(received[1].time, after - before);
}

// ---- the printer ----

std::string printed(int level, std::uint64_t time, const char* format, ...) {
  testing::internal::CaptureStdout();
  va_list arguments;
  va_start(arguments, format);
  KivLog_Level_t apiLevel{};
  std::memcpy(&apiLevel, &level, sizeof(apiLevel));
  printMessage(format, apiLevel, time, arguments);
  va_end(arguments);
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

TEST_F(LoggerTest, PrinterShowsTimeLevelAndMessage) {
  const struct {
    int level;
    const char* word;
  } levels[] = {{1, " ERROR "}, {2, "WARNING"},         {3, "  INFO "},
                {4, "VERBOSE"}, {5, " DEBUG "},         {6, "       "},
                {0, "       "}, {0x7FFFFFFF, "UNKNOWN"}};
  for (const auto& level : levels)
    EXPECT_EQ(printed(level.level, 1'234'567'890, "%s is %ld", "x", 7L),
              "  1234.6ms [" + std::string(level.word) + "] x is 7\n");
  const kiv::test::CommaLocale locale;
  EXPECT_EQ(printed(1, 50'000, "m"), "     0.1ms [ ERROR ] m\n");
  EXPECT_EQ(printed(1, 123'456'789'012'345, "m"),
            "123456789.0ms [ ERROR ] m\n");
}

TEST_F(LoggerTest, PrinterCutsALineAtItsBuffer) {
  const std::string text(2000, 'x');
  const std::string start = "     1.0ms [ ERROR ] ";
  EXPECT_EQ(printed(1, 1'000'000, "%s", text.c_str()),
            start + text.substr(0, 1023 - start.size()) + "\n");
}

TEST_F(LoggerTest, ANullCallbackSelectsThePrinterAndItsStart) {
  ASSERT_EQ(Logger::create(nullptr, 1), Status::kOk);
  testing::internal::CaptureStdout();
  log(Level::kWarning, "dropped");
  log(Level::kError, "%s", "shown");
  const std::string text = testing::internal::GetCapturedStdout();
  const std::regex line(" +\\d{1,4}\\.\\dms \\[ ERROR \\] shown\n");
  EXPECT_TRUE(std::regex_match(text, line)) << text;
  EXPECT_TRUE(std::regex_match(printed(1, 0, "shown"), line));
  // A message without a time of its own gets one from the start.
  setPrinterStart(platform::monotonicNanoseconds() - 5'000'000'000);
  EXPECT_TRUE(printed(1, 0, "m").starts_with("  5"));
}

}  // namespace
}  // namespace kiv::log::test
