#pragma once

// Tensors whose data is in a file beside the network's.

#include <onnx/onnx_pb.h>

#include <filesystem>

namespace onnx_client {

// Puts data of other files into the model: of initialisers and attributes, in
// all graphs. A ClientError for a file that is not in the directory or below
// it, or that does not have the bytes.
void readExternalData(onnx::ModelProto& model,
                      const std::filesystem::path& directory);

}  // namespace onnx_client
