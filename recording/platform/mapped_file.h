#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace kiv::recording {

// A file as memory. Nothing is read before it is touched.
//
//   std::string why;
//   auto data = MappedFile::open("params.bin", MappedFile::Writes::kPrivate,
//                                why);
//   if (!data) return why;  // "No such file or directory"
//
// One thread at a time may open, move or release; any may read.
class MappedFile {
 public:
  enum class Writes : bool {
    kNone,
    // Writes stay in this process and never reach the file.
    kPrivate
  };

  // Nothing, with the system's words in `why`, for a file that is missing, no
  // regular file or not readable.
  static std::optional<MappedFile> open(const std::filesystem::path& path,
                                        Writes writes, std::string& why);

  MappedFile() = default;
  ~MappedFile();
  MappedFile(MappedFile&& other) noexcept;
  MappedFile& operator=(MappedFile&& other) noexcept;
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  std::span<std::byte> bytes() const { return bytes_; }

  // Gives pages in a range that were read back to the system, which brings them
  // again when they are touched. For files without private writes only.
  void release(std::size_t begin, std::size_t end) const;

 private:
  explicit MappedFile(std::span<std::byte> bytes) : bytes_(bytes) {}

  std::span<std::byte> bytes_;
};

}  // namespace kiv::recording
