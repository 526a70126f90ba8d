#pragma once

// The binary of a context: its finalized graphs with their data.
//
//   binary    = "KIVORT01" graphs:u64 {graph} {padding data}
//   graph     = length:u64 model           an ONNX model, serialised
//   padding   = zero bytes up to a multiple of 64
//
// Numbers are little-endian. The binary is its models' data file, to which they
// refer by offsets from its start. A binary may come from anywhere: a reference
// to anything else is refused.

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "model.h"

namespace kiv::ort {

using Bytes = std::vector<std::uint8_t>;

// A Failure for a model of more than 2 GiB.
Bytes writeBinary(std::span<const Model* const> models);

// The models of a binary, of which a copy becomes their data file. A Failure
// for bytes that are no binary.
std::vector<Model> readBinary(std::span<const std::uint8_t> binary);

}  // namespace kiv::ort
