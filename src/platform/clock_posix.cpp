#include <ctime>

#include "platform/clock.h"

namespace kiv::platform {

std::uint64_t monotonicNanoseconds() {
  constexpr std::uint64_t kPerSecond = 1'000'000'000;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * kPerSecond +
         static_cast<std::uint64_t>(now.tv_nsec);
}

}  // namespace kiv::platform
