#pragma once

// A directory of its own, removed with all that is in it.

#include <cstdint>
#include <string>

namespace kiv::ort {

class ScratchDirectory {
 public:
  // Where the directory lies: with temporary files, or in memory where the
  // system has a place for that.
  enum class Place : std::uint8_t { kTemporary, kMemory };

  // A Failure if it cannot be made.
  explicit ScratchDirectory(Place place);
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace kiv::ort
