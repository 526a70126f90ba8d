#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "recording/platform/mapped_file.h"
#include "recording/recording.h"

// The recordings that verbs are given. From the main thread.
namespace kiv::tool {

// How a recording is named on the command line.
struct RecordingOptions {
  std::string path;
  std::string modelFile;
};

// The positional argument `name`, and --model-file.
void addRecording(CLI::App& verb, RecordingOptions& options,
                  const std::string& name = "DIR");

// A path from the command line, which is UTF-8, and back for messages.
std::filesystem::path pathOf(const std::string& text);
std::string textOf(const std::filesystem::path& path);

// A text of the API; empty for null.
inline std::string orEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

// Null, with the reason on standard error, for one that cannot be read.
std::shared_ptr<const recording::Recording> open(
    const RecordingOptions& options);

// The bytes of a recording's data file.
class DataFile {
 public:
  // Nothing, with the reason on standard error, where there is no data file.
  static std::optional<DataFile> open(const recording::Recording& recording);
  // The file, or where it has not all bytes zeros in their place: for verbs
  // that look at calls and not at data.
  static DataFile openOrZeros(const recording::Recording& recording);

  std::span<std::byte> bytes() const {
    return zeros_ ? std::span(zeros_.get(), size_) : file_.bytes();
  }

 private:
  DataFile() = default;

  struct Free {
    void operator()(std::byte* bytes) const;
  };

  recording::MappedFile file_;
  std::unique_ptr<std::byte, Free> zeros_;
  std::size_t size_ = 0;
};

// Writes a file of the text, or says on standard error why not.
bool writeFile(const std::filesystem::path& path, std::string_view text);

}  // namespace kiv::tool
