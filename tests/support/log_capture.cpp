#include "support/log_capture.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <utility>

namespace kiv::test {
namespace {

// The callback has no argument of its own, so its messages land here.
std::mutex mutex;
std::vector<std::string> messages;

void collect(const char* format, KivLog_Level_t level, uint64_t,
             va_list arguments) {
  std::array<char, 4096> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  const std::lock_guard lock(mutex);
  messages.push_back(std::to_string(level) + ": " + text.data());
}

}  // namespace

LogCapture::LogCapture(const KivInterface_Implementation_t& api,
                       KivLog_Level_t level)
    : api_(api) {
  api_.logCreate(collect, level, &handle_);
}

LogCapture::~LogCapture() {
  api_.logFree(handle_);
  take();
}

std::vector<std::string> LogCapture::take() {
  const std::lock_guard lock(mutex);
  return std::exchange(messages, {});
}

}  // namespace kiv::test
