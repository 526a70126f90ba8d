#include <array>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "diagnostics/logger.h"
#include "platform/clock.h"
#include "platform/trace_events.h"

namespace kiv::log {
namespace {

std::atomic<std::uint64_t> printerStart{0};

const char* levelWord(KivLog_Level_t level) {
  switch (level) {
    case KIV_LOG_LEVEL_ERROR:
      return " ERROR ";
    case KIV_LOG_LEVEL_WARN:
      return "WARNING";
    case KIV_LOG_LEVEL_INFO:
      return "  INFO ";
    case KIV_LOG_LEVEL_VERBOSE:
      return "VERBOSE";
    case KIV_LOG_LEVEL_DEBUG:
      return " DEBUG ";
    case KIV_LOG_LEVEL_MAX:
      return "UNKNOWN";
  }
  return "";
}

// Milliseconds with one decimal, with a point in every locale, which "%.1f"
// does not promise.
const char* millisecondsText(std::uint64_t nanoseconds,
                             std::array<char, 32>& text) {
  const double milliseconds = static_cast<double>(nanoseconds) / 1e6;
  const auto end = std::to_chars(text.data(), text.data() + text.size() - 1,
                                 milliseconds, std::chars_format::fixed, 1);
  *end.ptr = '\0';
  return text.data();
}

}  // namespace

void setPrinterStart(std::uint64_t nanoseconds) { printerStart = nanoseconds; }

void printMessage(const char* format, KivLog_Level_t level,
                  std::uint64_t timestamp, va_list arguments) {
  if (timestamp == 0)
    timestamp = platform::monotonicNanoseconds() - printerStart;
  std::array<char, 32> time{};
  std::array<char, 1024> line{};
  std::snprintf(line.data(), line.size(), "%8sms [%-7s] ",
                millisecondsText(timestamp, time), levelWord(level));
  const std::size_t used = std::strlen(line.data());
  std::vsnprintf(line.data() + used, line.size() - used, format, arguments);
  std::printf("%s\n", line.data());
  platform::traceMessage(line.data());
}

}  // namespace kiv::log
