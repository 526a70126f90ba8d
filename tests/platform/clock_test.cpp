#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/local_time.h"

namespace kiv::platform {
namespace {

TEST(Clock, CountsNanoseconds) {
  const std::uint64_t before = monotonicNanoseconds();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  const std::uint64_t after = monotonicNanoseconds();
  EXPECT_GE(after - before, 20'000'000U);
  EXPECT_LT(after - before, 10'000'000'000U);
}

TEST(LocalTime, IsNow) {
  std::tm now = localTime();
  const double apart = std::difftime(std::time(nullptr), std::mktime(&now));
  EXPECT_GE(apart, 0);
  EXPECT_LT(apart, 60);
}

}  // namespace
}  // namespace kiv::platform
