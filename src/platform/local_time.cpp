#include "platform/local_time.h"

#include <chrono>

namespace kiv::platform {

std::tm localTime(int* milliseconds) {
  using std::chrono::system_clock;
  const auto time = system_clock::now();
  const std::time_t now = system_clock::to_time_t(time);
  const auto rest = time - system_clock::from_time_t(now);
  if (milliseconds != nullptr) {
    *milliseconds = static_cast<int>(
        std::chrono::duration_cast<std::chrono::milliseconds>(rest).count());
  }
  std::tm result{};
#ifdef _WIN32
  ::localtime_s(&result, &now);
#else
  ::localtime_r(&now, &result);
#endif
  return result;
}

}  // namespace kiv::platform
