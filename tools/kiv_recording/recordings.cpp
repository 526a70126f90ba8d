#include "kiv_recording/recordings.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <system_error>

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using recording::MappedFile;
using recording::Recording;

std::optional<MappedFile> openDataFile(const Recording& recording,
                                       std::string& why) {
  const std::optional<fs::path> path = recording.dataPath();
  if (path) {
    auto file = MappedFile::open(*path, MappedFile::Writes::kPrivate, why);
    if (!file) why = fmt::format("{}: {}", textOf(*path), why);
    return file;
  }
  why = textOf(recording.modelPath()) +
        ": its header names no data file beside it";
  return std::nullopt;
}

}  // namespace

void addRecording(CLI::App& verb, RecordingOptions& options,
                  const std::string& name) {
  verb.add_option(name, options.path,
                  "Directory of the recording, or its C file")
      ->required()
      ->type_name("");
  if (verb.get_option_no_throw("--model-file") == nullptr)
    verb.add_option("--model-file", options.modelFile,
                    "The C file, where the directory holds several")
        ->type_name("NAME");
}

fs::path pathOf(const std::string& text) {
  return std::u8string(text.begin(), text.end());
}

std::string textOf(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::shared_ptr<const Recording> open(const RecordingOptions& options) {
  fs::path path = pathOf(options.path);
  if (!options.modelFile.empty()) path /= pathOf(options.modelFile);
  recording::OpenResult result = Recording::open(path);
  if (!result.recording) fmt::print(stderr, "{}\n", toString(result.problem));
  return result.recording;
}

std::optional<DataFile> DataFile::open(const Recording& recording) {
  std::string why;
  std::optional<MappedFile> file = openDataFile(recording, why);
  if (!file) {
    fmt::print(stderr, "{}\n", why);
    return std::nullopt;
  }
  DataFile data;
  data.file_ = std::move(*file);
  return data;
}

// Zeros that nobody touches take no memory.
DataFile DataFile::openOrZeros(const Recording& recording) {
  DataFile data;
  std::string why;
  std::optional<MappedFile> file = openDataFile(recording, why);
  if (file) data.file_ = std::move(*file);
  const auto size = static_cast<std::size_t>(recording.dataSize());
  if (data.file_.bytes().size() >= size) return data;
  data.zeros_.reset(static_cast<std::byte*>(std::calloc(size, 1)));
  data.size_ = data.zeros_ ? size : 0;
  return data;
}

void DataFile::Free::operator()(std::byte* bytes) const { std::free(bytes); }

bool writeFile(const fs::path& path, std::string_view text) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  if (file) return true;
  fmt::print(stderr, "{}: cannot be written ({})\n", textOf(path),
             std::generic_category().message(errno));
  return false;
}

}  // namespace kiv::tool
