#pragma once

// Element types and tensor values of ONNX in the terms of the Kiv API.

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "network.h"

namespace onnx_client {

// The element type that stands for an ONNX one; NotAccepted for text, complex
// numbers and the like. `what` names the tensor.
Kiv_DataType_t dataTypeOf(std::int32_t onnxType, const std::string& what);

// Bytes of one element.
std::size_t elementSize(Kiv_DataType_t dataType);

// Bytes of a tensor with the given sizes; NotAccepted beyond 32 bits.
std::uint32_t byteSize(Kiv_DataType_t dataType,
                       std::span<const std::uint32_t> dimensions,
                       const std::string& what);

// One size; NotAccepted if it is negative or beyond 32 bits.
std::uint32_t checkedDimension(std::int64_t size, const std::string& what);

// A static tensor with type, shape and data of the ONNX one. Reads every form
// in which ONNX keeps values, except those in other files.
Tensor readTensor(const onnx::TensorProto& proto, const std::string& name);

}  // namespace onnx_client
