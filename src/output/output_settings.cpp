#include "output/output_settings.h"

#include <array>
#include <ctime>
#include <utility>

#include "platform/local_time.h"

namespace kiv::output {

std::string pathOf(const std::string& directory, const std::string& fileName) {
  const bool needsSlash = !directory.empty() && directory.back() != '/';
  return directory + (needsSlash ? "/" : "") + fileName;
}

OutputSettings changed(OutputSettings settings, const OutputChanges& changes) {
  if (changes.directory) settings.directory = *changes.directory;
  if (changes.backendId) settings.backendId = *changes.backendId;
  if (changes.writeHeader) settings.writeHeader = *changes.writeHeader;
  if (changes.writeFooter) settings.writeFooter = *changes.writeFooter;
  const auto& names =
      changes.stampedNames ? changes.stampedNames : changes.fileNames;
  if (names) {
    settings.modelFileName = names->model;
    settings.dataFileName = names->data;
    settings.timeStamp = changes.timeStamp;
  }
  return settings;
}

void stampFileNames(OutputChanges& changes) {
  const std::tm now = platform::localTime();
  std::array<char, 32> text{};
  const auto format = [&](const char* pattern) {
    return std::string(text.data(),
                       std::strftime(text.data(), text.size(), pattern, &now));
  };
  changes.timeStamp = format("%m-%d-%Y_%H:%M:%S");
  const std::string stamp = format("%m-%d-%Y_%H_%M_%S");
  changes.stampedNames =
      FileNames{"saver_output_" + stamp + ".c", "params_" + stamp + ".bin"};
}

}  // namespace kiv::output
