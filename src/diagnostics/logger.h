#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <memory>

#include "KivLog.h"
#include "diagnostics/status.h"

namespace kiv::log {

enum class Level : std::int32_t { kError = 1, kWarning = 2 };

// The process's logger: passes messages on to the client's callback, or prints
// them. There is one at most; its functions may be called from any thread, also
// from within the callback.
class Logger {
 public:
  // Installs a logger in the place of the one there is, and counts one handle
  // more. A null callback selects the printer. A level outside 1 to 5 is
  // refused and changes nothing.
  static Status create(KivLog_Callback_t callback, std::int32_t maxLevel);
  static bool exists();
  static bool setLevel(std::int32_t level);
  // Counts one handle less; the last one drops the logger. Messages under way
  // on other threads come to their end.
  static Status free();

  Logger(KivLog_Callback_t callback, std::int32_t maxLevel);

 private:
  friend void log(Level level, const char* format, ...);

  KivLog_Callback_t callback_;
  std::atomic<std::int32_t> maxLevel_;
  std::uint64_t startTime_;
};

bool isValidLevel(std::int32_t level);

// Sends one message, in the form of printf; without a logger, or above its
// level, nothing happens. The callback gets the format and the arguments as
// they are, so nothing is formatted that nobody wants.
void log(Level level, const char* format, ...);

// The printer: "%8.1fms [%-7s] " and the message on a line of standard output.
void printMessage(const char* format, KivLog_Level_t level,
                  std::uint64_t timestamp, va_list arguments);

// The printer counts its times from here when it is passed none.
void setPrinterStart(std::uint64_t nanoseconds);

}  // namespace kiv::log
