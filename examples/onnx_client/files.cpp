#include "files.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <limits>

#include "errors.h"

namespace onnx_client {
namespace {

constexpr std::size_t kLargestFile = std::numeric_limits<std::int32_t>::max();

}  // namespace

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw ClientError("cannot open " + path);
  std::string bytes;
  std::array<char, 1 << 16> block;
  while (file.read(block.data(), block.size()), file.gcount() > 0) {
    bytes.append(block.data(), static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > kLargestFile)
      throw ClientError(path + " is larger than 2 GiB");
  }
  if (file.bad()) throw ClientError("cannot read " + path);
  return bytes;
}

void writeFile(const std::string& path, std::span<const std::uint8_t> bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw ClientError("cannot write " + path);
}

}  // namespace onnx_client
