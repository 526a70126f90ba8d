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

std::vector<std::uint64_t> times;

void noteTime(const char*, KivLog_Level_t, std::uint64_t time, va_list) {
  times.push_back(time);
}

TEST(LoggerTest, TimesCountFromItsCreationInNanoseconds) {
  const std::uint64_t before = platform::monotonicNanoseconds();
  ASSERT_EQ(Logger::create(noteTime, 5), Status::kOk);
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  log(Level::kError, "a");
  log(Level::kError, "b");
  const std::uint64_t after = platform::monotonicNanoseconds();
  ASSERT_EQ(times.size(), 2u);
  EXPECT_GE(times[0], 2000000u);
  EXPECT_GE(times[1], times[0]);
  EXPECT_LE(times[1], after - before);
  EXPECT_EQ(Logger::free(), Status::kOk);
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

TEST(LoggerTest, PrinterShowsTimeLevelAndMessage) {
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

TEST(LoggerTest, PrinterCutsALineAtItsBuffer) {
  const std::string text(2000, 'x');
  const std::string start = "     1.0ms [ ERROR ] ";
  EXPECT_EQ(printed(1, 1'000'000, "%s", text.c_str()),
            start + text.substr(0, 1023 - start.size()) + "\n");
}

TEST(LoggerTest, ANullCallbackSelectsThePrinterAndItsStart) {
  ASSERT_EQ(Logger::create(nullptr, 1), Status::kOk);
  testing::internal::CaptureStdout();
  log(Level::kWarning, "dropped");
  log(Level::kError, "%s", "shown");
  const std::string text = testing::internal::GetCapturedStdout();
  const std::regex line(" +\\d{1,4}\\.\\dms \\[ ERROR \\] shown\n");
  EXPECT_TRUE(std::regex_match(text, line)) << text;
  EXPECT_TRUE(std::regex_match(printed(1, 0, "shown"), line));
  EXPECT_EQ(Logger::free(), Status::kOk);
  // A message without a time of its own gets one from the start.
  setPrinterStart(platform::monotonicNanoseconds() - 5'000'000'000);
  EXPECT_TRUE(printed(1, 0, "m").starts_with("  5"));
}

}  // namespace
}  // namespace kiv::log::test
