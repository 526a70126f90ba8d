#include "platform/local_time.h"

namespace kiv::platform {

std::tm localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm result{};
  ::localtime_s(&result, &now);
  return result;
}

}  // namespace kiv::platform
