#pragma once

// Data of static tensors in a file, which ONNX Runtime maps into memory instead
// of copying it, and which may be larger than a model's 2 GiB:
//
//   DataFile file;
//   const DataPlace place = file.append(bytes);
//   file.read(place, buffer);
//
// The file lies in memory where the system has a directory for that, and is
// removed with the object. One thread at a time may append, any may read.

#include <cstdint>
#include <span>
#include <string>

#include "scratch_directory.h"

namespace kiv::ort {

struct DataPlace {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

class DataFile {
 public:
  DataFile();
  ~DataFile();
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;

  // A Failure if there is no room.
  DataPlace append(std::span<const std::uint8_t> bytes);
  void read(const DataPlace& place, void* buffer) const;

  const std::string& directory() const { return directory_.path(); }
  // The file's name in its directory.
  static constexpr const char* kName = "data";

 private:
  ScratchDirectory directory_;
  int file_ = -1;
  std::uint64_t size_ = 0;
};

}  // namespace kiv::ort
