#pragma once

// A file with the data of static tensors. ONNX Runtime maps it into memory
// instead of copying it, and it may be larger than a model's 2 GiB:
//
//   DataFile file;
//   const DataPlace place = file.append(bytes);
//   file.read(place, buffer);
//
// The file is memory without a name, which nothing is left of when the process
// ends. One thread at a time may append, any may read.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

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
  DataPlace append(std::span<const std::byte> bytes);
  void read(const DataPlace& place, void* buffer) const;

  // Where ONNX Runtime finds the file: a link to it, or a copy, beside the
  // model's own file, by this name.
  static constexpr const char* kName = "data";
  void linkInto(const std::string& directory) const;
  void copyInto(const std::string& directory) const;

 private:
  int file_ = -1;
  std::uint64_t size_ = 0;
};

}  // namespace kiv::ort
