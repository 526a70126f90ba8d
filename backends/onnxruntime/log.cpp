#include "log.h"

#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <mutex>

namespace kiv::ort {
namespace {

using Clock = std::chrono::steady_clock;

struct Logger {
  std::mutex mutex;
  int creations = 0;
  KivLog_Callback_t callback = nullptr;
  KivLog_Level_t level = KIV_LOG_LEVEL_ERROR;
  Clock::time_point start;
};

Logger& logger() {
  static auto* const kLogger = new Logger;
  return *kLogger;
}

const char* nameOf(KivLog_Level_t level) {
  switch (level) {
    case KIV_LOG_LEVEL_ERROR:
      return "ERROR";
    case KIV_LOG_LEVEL_WARN:
      return "WARN";
    case KIV_LOG_LEVEL_INFO:
      return "INFO";
    case KIV_LOG_LEVEL_VERBOSE:
      return "VERBOSE";
    default:
      return "DEBUG";
  }
}

void print(std::FILE* file, KivLog_Level_t level, const std::string& message) {
  std::fprintf(file, "[KivOnnxRuntime] %s: %s\n", nameOf(level),
               message.c_str());
}

// The callback takes its arguments as a va_list.
void deliver(KivLog_Callback_t callback, KivLog_Level_t level,
             std::uint64_t timestamp, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  callback(format, level, timestamp, arguments);
  va_end(arguments);
}

}  // namespace

void log(KivLog_Level_t level, const std::string& message) noexcept {
  Logger& instance = logger();
  std::unique_lock lock(instance.mutex);
  const bool exists = instance.creations > 0;
  if (level > instance.level) return;
  const KivLog_Callback_t callback = instance.callback;
  const auto age = Clock::now() - instance.start;
  lock.unlock();
  if (!exists) return print(stderr, level, message);
  if (callback == nullptr) return print(stdout, level, message);
  const auto nanoseconds =
      std::chrono::duration_cast<std::chrono::nanoseconds>(age).count();
  deliver(callback, level, static_cast<std::uint64_t>(nanoseconds), "%s",
          message.c_str());
}

KivLog_Level_t logLevel() noexcept {
  const std::scoped_lock lock(logger().mutex);
  return logger().level;
}

Kiv_LogHandle_t createLogger(KivLog_Callback_t callback, KivLog_Level_t level) {
  Logger& instance = logger();
  const std::scoped_lock lock(instance.mutex);
  ++instance.creations;
  instance.callback = callback;
  instance.level = level;
  instance.start = Clock::now();
  return &instance;
}

bool setLogLevel(KivLog_Level_t level) {
  Logger& instance = logger();
  const std::scoped_lock lock(instance.mutex);
  if (instance.creations == 0) return false;
  instance.level = level;
  return true;
}

bool freeLogger() {
  Logger& instance = logger();
  const std::scoped_lock lock(instance.mutex);
  if (instance.creations == 0) return false;
  if (--instance.creations == 0) {
    instance.callback = nullptr;
    instance.level = KIV_LOG_LEVEL_ERROR;
  }
  return true;
}

}  // namespace kiv::ort
