#include "output/recorded_file.h"

#include <algorithm>
#include <utility>

#include "diagnostics/standard_error.h"
#include "output/output_settings.h"

namespace kiv::output {
namespace {

// Says so by the way: nothing else fails if there is no memory for it.
void reportFailure(const std::string& path) noexcept try {
  if (log::usesStandardError())
    log::reportFailure(platform::absolutePath(path).c_str(),
                       platform::lastFailure().c_str());
} catch (...) {
}

// The text's "pal::Directory::create" stands as it is known to users.
Failed ensureDirectory(const std::string& path) {
  if (platform::pathExists(path)) {
    if (platform::isDirectory(path)) return std::nullopt;
    log::reportFailure(path.c_str(), "this is no directory");
    return Message{"%s already exists", path};
  }
  if (platform::createDirectory(path) || platform::isDirectory(path))
    return std::nullopt;
  reportFailure(path);
  return Message{"Could not create directory, pal::Directory::create failed"};
}

}  // namespace

RecordedFile::~RecordedFile() {
  if (stream_ == nullptr) return;
  Messages messages;
  messages.add(close());
}

Failed RecordedFile::open(const std::string& directory,
                          const std::string& fileName,
                          platform::OpenMode mode) {
  heldByAnother_ = false;
  if (stream_ != nullptr) return Message{"File has already been opened"};
  if (!directory.empty()) {
    if (Failed failed = ensureDirectory(directory)) return failed;
  }
  path_ = platform::absolutePath(pathOf(directory, fileName));
  const auto opened =
      platform::openForWriting(pathOf(directory, fileName), mode);
  heldByAnother_ = opened.isHeldByAnother;
  if (heldByAnother_)
    log::reportFailure(path_.c_str(), "another recorder has it");
  if (opened.stream == nullptr) {
    reportFailure(path_);
    return Message{"Could not open file: %s", fileName};
  }
  stream_ = opened.stream;
  damaged_ = false;
  opened_ = platform::fileState(stream_);
  end_ = opened_ ? opened_->size : 0;
  return std::nullopt;
}

Failed RecordedFile::failed(const char* message) const {
  reportFailure(path_);
  return Message{message};
}

Failed RecordedFile::write(const void* elements, std::size_t elementSize,
                           std::size_t count, std::size_t& written) {
  written = 0;
  if (stream_ == nullptr) return Message{"Could not write data, FILE* is NULL"};
  if (damaged_) {
    return Message{
        "Could not write data, the file holds a call that is not whole"};
  }
  if (count == 0 || elementSize == 0) {
    written = count;
    return std::nullopt;
  }
  // There are systems that take less than 2 GiB at once.
  constexpr std::size_t kMostBytes = std::size_t{1} << 30;
  const std::size_t most =
      elementSize == 1 ? kMostBytes
                       : std::max<std::size_t>(kMostBytes / elementSize, 1);
  const auto* bytes = static_cast<const char*>(elements);
  while (written < count) {
    const std::size_t wanted = std::min(count - written, most);
    const std::size_t now = std::fwrite(bytes + written * elementSize,
                                        elementSize, wanted, stream_);
    written += now;
    if (now < wanted) {
      reportFailure(path_);
      break;
    }
  }
  end_ += written * elementSize;
  return std::nullopt;
}

Failed RecordedFile::flush() {
  if (std::fflush(stream_) == 0) return std::nullopt;
  return failed("Failed to flush the file stream");
}

Failed RecordedFile::close() {
  if (stream_ == nullptr) return Message{"Could not close file, FILE* is NULL"};
  // The stream is gone even when closing it fails.
  if (isStillOurs() && platform::closeFile(std::exchange(stream_, nullptr)))
    return std::nullopt;
  return failed("Failed to close the file");
}

// The stream's memory is left behind: closing it would close the client's file.
bool RecordedFile::isStillOurs() {
  if (stream_ == nullptr) return false;
  const auto state = platform::fileState(stream_);
  if (state && opened_ && state->isSameFile(*opened_)) return true;
  stream_ = nullptr;
  return false;
}

// Part of an element may have been written beyond end_.
Failed RecordedFile::restore(std::uint64_t end) {
  if (!isStillOurs()) return std::nullopt;
  std::clearerr(stream_);
  end_ = end;
  const auto state = platform::fileState(stream_);
  if ((state && state->size == end) || platform::truncateFile(stream_, end))
    return std::nullopt;
  damaged_ = true;
  return failed(
      "Could not undo a failed write, nothing more is written to the file");
}

}  // namespace kiv::output
