#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace kiv::platform {

enum class OpenMode { kTruncate, kAppend };

// Opens a file for writing without a buffer, so that what was written is with
// the system and what could not be written leaves nothing behind. Others may
// read and write the file meanwhile. Null on failure, also when the file has
// been opened by this function and not been closed, in whichever process.
std::FILE* openForWriting(const std::string& path, OpenMode mode);

// Closes a file and lets others have it; false if that fails. The stream is
// gone in either case.
bool closeFile(std::FILE* stream);

// Null on failure, and for what is no file with an end: a device or a pipe.
std::FILE* openForReading(const std::string& path);

// An open file's size in bytes, and what tells it from other files. The latter
// is 0 where a client cannot close our files and open its own in their place.
struct FileState {
  std::uint64_t size = 0;
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  bool isSameFile(const FileState& other) const {
    return device == other.device && number == other.number;
  }
};
std::optional<FileState> fileState(std::FILE* stream);

// Cuts an open file to `size` bytes; later writes go on there.
bool truncateFile(std::FILE* stream, std::uint64_t size);

bool pathExists(const std::string& path);
bool isDirectory(const std::string& path);

// Creates one level; false if it fails, also if the directory exists.
bool createDirectory(const std::string& path);

}  // namespace kiv::platform
