#pragma once

// The binary of a context: its finalized graphs with their data.
//
//   binary    = "KIVORT01" graphs:u64 {graph} {padding data}
//   graph     = length:u64 model           an ONNX model, serialised
//   padding   = zero bytes up to a multiple of 64
//
// Numbers are little-endian. A model names its large data by the location
// "binary" and an offset from the binary's start. A binary may come from
// anywhere: whatever lies outside it is refused.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model_builder.h"

namespace kiv::ort {

// A Failure for a model of more than 2 GiB.
Bytes writeBinary(std::span<const onnx::ModelProto* const> models);

// The models of a binary. Their data stays in the binary, whose owner they
// share, or is copied into the models. A Failure for bytes that are no binary.
std::vector<Model> readBinary(std::span<const std::uint8_t> binary,
                              const std::shared_ptr<const void>& owner,
                              DataPlace place);

}  // namespace kiv::ort
