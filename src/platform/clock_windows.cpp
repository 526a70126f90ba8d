#include <windows.h>

#include "platform/clock.h"

namespace kiv::platform {

std::uint64_t monotonicNanoseconds() {
  constexpr std::uint64_t kPerSecond = 1'000'000'000;
  LARGE_INTEGER now{};
  LARGE_INTEGER frequency{};
  ::QueryPerformanceCounter(&now);
  ::QueryPerformanceFrequency(&frequency);
  const auto ticks = static_cast<std::uint64_t>(now.QuadPart);
  const auto perSecond = static_cast<std::uint64_t>(frequency.QuadPart);
  // In two steps, since the product of ticks and nanoseconds would overflow.
  return ticks / perSecond * kPerSecond +
         ticks % perSecond * kPerSecond / perSecond;
}

}  // namespace kiv::platform
