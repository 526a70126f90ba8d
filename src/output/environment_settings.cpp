#include "output/environment_settings.h"

#include <array>
#include <charconv>
#include <ctime>
#include <string_view>
#include <utility>

#include "format/literals.h"
#include "platform/files.h"
#include "platform/local_time.h"
#include "platform/process.h"

namespace kiv::output {
namespace {

constexpr const char* kNotANumber =
    "KIV_SAVER_BACKEND_ID must be a number, and is passed over: %s";
constexpr const char* kNotAFlag =
    "KIV_SAVER_APPEND_TIMESTAMP must be 0 or 1, and is passed over: %s";
constexpr const char* kPathForName =
    "KIV_SAVER_MODEL_FILE and KIV_SAVER_DATA_FILE must be names without a "
    "directory, and are passed over: %s";
constexpr const char* kSameNames =
    "KIV_SAVER_MODEL_FILE and KIV_SAVER_DATA_FILE must differ, and are passed "
    "over: %s";
constexpr const char* kUnsafeName =
    "KIV_SAVER_DATA_FILE stands in the generated program as it is and will not "
    "read back so: %s";

using platform::environmentVariable;

// As in 2026-11-22_17-04-59.123.
std::string timeText() {
  int milliseconds = 0;
  const std::tm now = platform::localTime(&milliseconds);
  std::array<char, 32> text{};
  const std::size_t size =
      std::strftime(text.data(), text.size(), "%Y-%m-%d_%H-%M-%S", &now);
  const std::string digits = std::to_string(1000 + milliseconds);
  return std::string(text.data(), size) + "." + digits.substr(1);
}

// What stands behind another percent sign stays as it is.
std::string expanded(std::string_view pattern, const std::string& time,
                     std::uint32_t number) {
  std::string text;
  while (!pattern.empty()) {
    const std::string_view sign = pattern.substr(0, 2);
    pattern.remove_prefix(sign[0] == '%' ? sign.size() : 1);
    if (sign == "%p") {
      text += std::to_string(platform::processId());
    } else if (sign == "%t") {
      text += time;
    } else if (sign == "%n") {
      text += std::to_string(number);
    } else if (sign == "%%") {
      text += '%';
    } else {
      text += sign[0] == '%' ? sign : sign.substr(0, 1);
    }
  }
  return text;
}

bool hasNumber(std::string_view pattern) {
  return expanded(pattern, "", 0) != expanded(pattern, "", 1);
}

void takeBackendId(OutputChanges& changes, Messages& messages) {
  const auto text = environmentVariable("KIV_SAVER_BACKEND_ID");
  if (!text) return;
  std::uint32_t id = 0;
  const char* end = text->data() + text->size();
  const auto result = std::from_chars(text->data(), end, id);
  if (result.ec == std::errc() && result.ptr == end) {
    changes.backendId = id;
  } else {
    messages.warn(kNotANumber, *text);
  }
}

void takeTimeStamp(OutputChanges& changes, Messages& messages) {
  const auto text = environmentVariable("KIV_SAVER_APPEND_TIMESTAMP");
  if (!text || *text == "0") return;
  if (*text == "1") {
    stampFileNames(changes);
  } else {
    messages.warn(kNotAFlag, *text);
  }
}

// Empty if the names will not do.
std::optional<FileNames> fileNames(const OutputSettings& settings,
                                   Messages& messages) {
  const auto model = environmentVariable("KIV_SAVER_MODEL_FILE");
  const auto data = environmentVariable("KIV_SAVER_DATA_FILE");
  if (!model && !data) return std::nullopt;
  FileNames names = {model.value_or(settings.modelFileName),
                     data.value_or(settings.dataFileName)};
  const std::string both = names.model + ", " + names.data;
  if (both.find_first_of("/\\") != std::string::npos) {
    messages.warn(kPathForName, both);
    return std::nullopt;
  }
  if (names.model == names.data) {
    messages.warn(kSameNames, both);
    return std::nullopt;
  }
  return names;
}

// The patterns of a recording's paths, with fixed texts where the environment
// names nothing.
class Patterns {
 public:
  Patterns(OutputSettings settings, const OutputChanges& outside)
      : settings_(std::move(settings)),
        hasDirectory_(outside.directory),
        hasNames_(outside.fileNames && !outside.stampedNames),
        numbersDirectory_(hasDirectory_ && hasNumber(settings_.directory)),
        numbersModel_(hasNames_ && hasNumber(settings_.modelFileName)),
        numbersData_(hasNames_ && hasNumber(settings_.dataFileName)) {}

  // The settings with the least number that is free.
  OutputSettings claim() const {
    const std::string time = timeText();
    const bool isNumbered = numbersDirectory_ || numbersModel_ || numbersData_;
    for (std::uint32_t number = 0;; ++number) {
      OutputSettings settings = expand(time, number);
      if (!isNumbered || !isTaken(settings)) return settings;
    }
  }

 private:
  OutputSettings expand(const std::string& time, std::uint32_t number) const {
    OutputSettings settings = settings_;
    if (hasDirectory_)
      settings.directory = expanded(settings.directory, time, number);
    if (hasNames_) {
      settings.modelFileName = expanded(settings.modelFileName, time, number);
      settings.dataFileName = expanded(settings.dataFileName, time, number);
    }
    return settings;
  }

  // Makes what the number names, the directory or a file in it, and says
  // whether it was there already. Any other failure is left to the start.
  bool isTaken(const OutputSettings& settings) const {
    if (numbersDirectory_) {
      return !platform::createDirectory(settings.directory) &&
             platform::pathExists(settings.directory);
    }
    (void)platform::createDirectory(settings.directory);
    if (numbersModel_ && numbersData_ &&
        platform::pathExists(settings.dataPath()))
      return true;
    const std::string path =
        numbersModel_ ? settings.modelPath() : settings.dataPath();
    return !platform::createFile(path) && platform::pathExists(path);
  }

  OutputSettings settings_;
  bool hasDirectory_;
  bool hasNames_;
  bool numbersDirectory_;
  bool numbersModel_;
  bool numbersData_;
};

}  // namespace

OutputSettings withEnvironment(OutputSettings settings,
                               const OutputChanges& given, Messages& messages) {
  OutputChanges outside;
  if (!given.directory)
    outside.directory = environmentVariable("KIV_SAVER_OUTPUT_DIRECTORY");
  if (!given.backendId) takeBackendId(outside, messages);
  if (!given.fileNames && !given.saysTimeStamp) {
    outside.fileNames = fileNames(settings, messages);
    takeTimeStamp(outside, messages);
  }
  settings = Patterns(changed(std::move(settings), outside), outside).claim();
  if (outside.fileNames && format::isUnsafeInLiteral(settings.dataFileName))
    messages.warn(kUnsafeName, settings.dataFileName);
  return settings;
}

}  // namespace kiv::output
