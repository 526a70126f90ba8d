#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

// Files as the recording needs them, and the directory that they are in. Any
// thread may call these functions; one at a time may use a stream.
//
//   const OpenedFile file = openForWriting("params.bin", OpenMode::kTruncate);
//   if (file.stream == nullptr) return false;
//   ...
//   return closeFile(file.stream);
namespace kiv::platform {

enum class OpenMode { kTruncate, kAppend };

// A file opened for writing, or null and whether the reason is that another
// recorder has it.
struct OpenedFile {
  std::FILE* stream = nullptr;
  bool isHeldByAnother = false;
};

// Opens a file for writing without a buffer, so that bytes that were written
// are with the system and bytes that could not be written leave nothing behind.
// Others may read and write the file meanwhile, but nobody can open it by this
// function, in whichever process, until it is closed.
//
// The stream's descriptor is a high one where the system has descriptors: a
// client that closes all of them, and then opens files of its own, does not get
// the recording's bytes into these.
OpenedFile openForWriting(const std::string& path, OpenMode mode);

// Closes a file and lets others have it; false if that fails. The stream is
// gone in either case.
bool closeFile(std::FILE* stream);

// Opens a file for reading. Null on failure, and for devices and pipes, which
// have no end.
std::FILE* openForReading(const std::string& path);

// An open file's size in bytes, and the device and number that no other file
// has. The latter are 0 where a client cannot close the library's files and
// open its own in their place.
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

// Creates an empty file; false if it fails, also if there is such a file.
bool createFile(const std::string& path);

// The path from the system's root; as it is where that cannot be found out.
std::string absolutePath(const std::string& path);

// Why the last of these functions or of the C library's failed on this thread,
// in the system's words.
std::string lastFailure();

bool pathExists(const std::string& path);
bool isDirectory(const std::string& path);

// Creates one level; false if it fails, also if the directory exists.
bool createDirectory(const std::string& path);

}  // namespace kiv::platform
