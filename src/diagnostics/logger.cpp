#include "diagnostics/logger.h"

#include <mutex>
#include <utility>

#include "diagnostics/spin_lock.h"
#include "diagnostics/standard_error.h"
#include "platform/clock.h"

namespace kiv::log {
namespace {

// Holds the one logger and the number of its handles. Being
// constant-initialised, it is there before and after everything else in the
// library: closing the files may still log.
class Slot {
 public:
  constexpr Slot() = default;
  // Other threads may be logging.
  ~Slot() {
    std::shared_ptr<Logger> last;
    const std::lock_guard lock(lock_);
    last.swap(logger_);
  }

  std::shared_ptr<Logger> get() {
    const std::lock_guard lock(lock_);
    return logger_;
  }

  // The logger that is replaced dies when the argument does, outside the lock.
  void install(std::shared_ptr<Logger> logger) {
    const std::lock_guard lock(lock_);
    logger_.swap(logger);
    ++handles_;
  }

  bool release() {
    std::shared_ptr<Logger> last;
    const std::lock_guard lock(lock_);
    if (logger_ == nullptr || handles_ == 0) return false;
    if (--handles_ == 0) last.swap(logger_);
    return true;
  }

 private:
  SpinLock lock_;
  std::shared_ptr<Logger> logger_;
  std::uint32_t handles_ = 0;
};

constinit Slot slot;

}  // namespace

bool isValidLevel(std::int32_t level) { return level >= 1 && level <= 5; }

Logger::Logger(KivLog_Callback_t callback, std::int32_t maxLevel)
    : callback_(callback),
      maxLevel_(maxLevel),
      startTime_(platform::monotonicNanoseconds()) {
  if (callback_ == nullptr) {
    callback_ = printMessage;
    setPrinterStart(startTime_);
  }
}

Status Logger::create(KivLog_Callback_t callback, std::int32_t maxLevel) {
  if (!isValidLevel(maxLevel)) return Status::kLogLevelInvalid;
  slot.install(std::make_shared<Logger>(callback, maxLevel));
  return Status::kOk;
}

bool Logger::exists() { return slot.get() != nullptr; }

bool Logger::setLevel(std::int32_t level) {
  const auto logger = slot.get();
  if (logger == nullptr || !isValidLevel(level)) return false;
  logger->maxLevel_ = level;
  return true;
}

Status Logger::free() {
  return slot.release() ? Status::kOk : Status::kLoggerMissing;
}

void log(Level level, const char* format, ...) {
  va_list arguments;
  if (usesStandardError()) {
    va_start(arguments, format);
    printToStandardError(level, format, arguments);
    va_end(arguments);
  }
  const auto logger = slot.get();
  const auto number = static_cast<std::int32_t>(level);
  if (logger == nullptr || number > logger->maxLevel_) return;
  va_start(arguments, format);
  logger->callback_(format, static_cast<KivLog_Level_t>(number),
                    platform::monotonicNanoseconds() - logger->startTime_,
                    arguments);
  va_end(arguments);
}

}  // namespace kiv::log
