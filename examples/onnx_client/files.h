#ifndef ONNX_CLIENT_FILES_H
#define ONNX_CLIENT_FILES_H

#include <cstdint>
#include <span>
#include <string>

namespace onnx_client {

// All bytes of a file of at most 2 GiB; a ClientError if they can't be read.
std::string readFile(const std::string& path);

void writeFile(const std::string& path, std::span<const uint8_t> bytes);

}  // namespace onnx_client

#endif
