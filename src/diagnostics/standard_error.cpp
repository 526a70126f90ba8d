#include "diagnostics/standard_error.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <string_view>

#include "platform/process.h"

namespace kiv::log {
namespace {

constexpr const char* kVariable = "KIV_SAVER_LOG";
constexpr std::array<std::string_view, 5> kLevels = {"error", "warn", "info",
                                                     "verbose", "debug"};
constexpr int kUnread = -1;
constexpr int kOff = 0;

std::atomic<int> wantedLevel = kUnread;
std::atomic<bool> hasFailed = false;

// Room for a path and a sentence.
using Text = std::array<char, 4600>;

// One write, so that lines of several processes do not mix.
void printLine(std::string_view text) {
  Text line{};
  std::size_t length = static_cast<std::size_t>(std::snprintf(
      line.data(), line.size(),
      "KivSaver[%lu]: ", static_cast<unsigned long>(platform::processId())));
  length += text.copy(&line[length], line.size() - length - 1);
  line[length] = '\n';
  std::fwrite(line.data(), 1, length + 1, stderr);
}

int readLevel() {
  const auto value = platform::environmentVariable(kVariable);
  if (!value) return kOff;
  for (std::size_t i = 0; i < kLevels.size(); ++i)
    if (*value == kLevels[i]) return static_cast<int>(i) + 1;
  Text text{};
  std::snprintf(text.data(), text.size(),
                "%s is \"%s\", but must be error, warn, info, verbose or debug",
                kVariable, value->c_str());
  printLine(text.data());
  return static_cast<int>(kLevels.size());
}

// Without memory for the variable it is tried again.
int level() noexcept {
  const int known = wantedLevel;
  if (known != kUnread) return known;
  try {
    return wantedLevel = readLevel();
  } catch (...) {
    return kOff;
  }
}

}  // namespace

bool usesStandardError() noexcept { return level() != kOff; }

void printToStandardError(Level wanted, const char* format,
                          va_list arguments) noexcept {
  if (static_cast<int>(wanted) > level()) return;
  Text text{};
  const std::string_view word =
      wanted == Level::kError ? "error: " : "warning: ";
  word.copy(text.data(), word.size());
  std::vsnprintf(text.data() + word.size(), text.size() - word.size(), format,
                 arguments);
  printLine(text.data());
}

void report(const char* format, ...) noexcept {
  if (!usesStandardError()) return;
  Text text{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  printLine(text.data());
}

void reportFailure(const char* path, const char* reason) noexcept {
  if (usesStandardError() && !hasFailed.exchange(true))
    report("error: %s: %s", path, reason);
}

}  // namespace kiv::log
