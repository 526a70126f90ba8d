#include "output/output_stream.h"

#include <algorithm>
#include <utility>

namespace kiv::output {

bool OutputStream::failed(const char* format, MessageArgument argument) {
  Messages now;
  (messages_ == nullptr ? now : *messages_).error(format, std::move(argument));
  return false;
}

// The text's "pal::Directory::create" stands as it is known to users.
bool OutputStream::ensureDirectory(const std::string& path) {
  if (platform::pathExists(path)) {
    if (platform::isDirectory(path)) return true;
    return failed("%s already exists", path);
  }
  if (platform::createDirectory(path) || platform::isDirectory(path))
    return true;
  return failed("Could not create directory, pal::Directory::create failed");
}

OutputStream::~OutputStream() {
  if (stream_ != nullptr) close();
}

bool OutputStream::open(std::string& directory, const std::string& fileName,
                        platform::OpenMode mode) {
  if (stream_ != nullptr) return failed("File has already been opened");
  if (!directory.empty()) {
    if (!ensureDirectory(directory)) return false;
    if (directory.back() != '/') directory += '/';
  }
  stream_ = platform::openForWriting(directory + fileName, mode);
  damaged_ = false;
  if (stream_ == nullptr) return failed("Could not open file: %s", fileName);
  opened_ = platform::fileState(stream_);
  return true;
}

std::optional<std::size_t> OutputStream::write(const void* elements,
                                               std::size_t elementSize,
                                               std::size_t count) {
  if (stream_ == nullptr) {
    failed("Could not write data, FILE* is NULL");
    return std::nullopt;
  }
  if (damaged_) {
    failed("Could not write data, the file holds a call that is not whole");
    return std::nullopt;
  }
  if (count == 0 || elementSize == 0) return count;
  // There are systems that take less than 2 GiB at once.
  constexpr std::size_t kMostBytes = std::size_t{1} << 30;
  const std::size_t most = std::max<std::size_t>(kMostBytes / elementSize, 1);
  const auto* bytes = static_cast<const char*>(elements);
  std::size_t written = 0;
  while (written < count) {
    const std::size_t wanted = std::min(count - written, most);
    const std::size_t now = std::fwrite(bytes + written * elementSize,
                                        elementSize, wanted, stream_);
    written += now;
    if (now < wanted) break;
  }
  return written;
}

bool OutputStream::flush() {
  if (std::fflush(stream_) == 0) return true;
  return failed("Failed to flush the file stream");
}

bool OutputStream::close() {
  if (stream_ == nullptr) return failed("Could not close file, FILE* is NULL");
  if (!mark()) return failed("Failed to close the file");
  // The stream is gone even when closing it fails.
  if (platform::closeFile(std::exchange(stream_, nullptr))) return true;
  return failed("Failed to close the file");
}

// The stream's memory is left behind: closing it would close the client's file.
std::optional<std::uint64_t> OutputStream::mark() {
  if (stream_ == nullptr) return std::nullopt;
  const auto state = platform::fileState(stream_);
  if (state && opened_ && state->isSameFile(*opened_)) return state->size;
  stream_ = nullptr;
  return std::nullopt;
}

void OutputStream::restore(std::uint64_t mark) {
  if (stream_ == nullptr) return;
  std::clearerr(stream_);
  const auto state = platform::fileState(stream_);
  if (state && state->size == mark) return;
  if (platform::truncateFile(stream_, mark)) return;
  damaged_ = true;
  failed("Could not undo a failed write, nothing more is written to the file");
}

}  // namespace kiv::output
