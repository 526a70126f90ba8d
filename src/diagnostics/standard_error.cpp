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

// One write, so that lines of several processes do not mix.
void printLine(const std::string& text) {
  const std::string line =
      "KivSaver[" + std::to_string(platform::processId()) + "]: " + text + "\n";
  std::fputs(line.c_str(), stderr);
}

int readLevel() {
  const auto value = platform::environmentVariable(kVariable);
  if (!value) return kOff;
  for (std::size_t i = 0; i < kLevels.size(); ++i)
    if (*value == kLevels[i]) return static_cast<int>(i) + 1;
  printLine(std::string(kVariable) + " is \"" + *value +
            "\", but must be error, warn, info, verbose or debug");
  return static_cast<int>(kLevels.size());
}

int level() {
  int known = wantedLevel;
  if (known != kUnread) return known;
  const int read = readLevel();
  wantedLevel.compare_exchange_strong(known, read);
  return read;
}

}  // namespace

bool usesStandardError() { return level() != kOff; }

void printToStandardError(Level wanted, const char* format, va_list arguments) {
  const auto number = static_cast<int>(wanted);
  if (number > level()) return;
  std::array<char, 1024> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  printLine(std::string(wanted == Level::kError ? "error: " : "warning: ") +
            text.data());
}

void report(const std::string& text) {
  if (usesStandardError()) printLine(text);
}

void reportFailure(const std::string& path, const std::string& reason) {
  if (usesStandardError() && !hasFailed.exchange(true))
    printLine("error: " + path + ": " + reason);
}

}  // namespace kiv::log
