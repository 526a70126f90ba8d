#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace onnx_client {

// All bytes of a file of at most 2 GiB; a ClientError if it cannot be read.
std::string readFile(const std::string& path);

// Writes a file anew; a ClientError if that fails.
void writeFile(const std::string& path, std::span<const std::uint8_t> bytes);

}  // namespace onnx_client
