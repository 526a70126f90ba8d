#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace kiv::platform {

enum class OpenMode { kTruncate, kAppend };

// Opens a file for writing without a buffer, so that what was written is with
// the system and what could not be written leaves nothing behind. Other
// processes may read and write the file meanwhile. Null on failure, also when
// another process has it open by this function, on systems that can tell.
std::FILE* openForWriting(const std::string& path, OpenMode mode);

// The size in bytes of an open file.
std::optional<std::uint64_t> fileSize(std::FILE* stream);

// Cuts an open file to `size` bytes; later writes go on there.
bool truncateFile(std::FILE* stream, std::uint64_t size);

bool pathExists(const std::string& path);
bool isDirectory(const std::string& path);

// Creates one level; false if it fails, also if the directory exists.
bool createDirectory(const std::string& path);

}  // namespace kiv::platform
