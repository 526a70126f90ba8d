#pragma once

// Tensors as records of the API. A record points into its Tensor.

#include <cstdint>
#include <span>

#include "network.h"

namespace onnx_client {

// A record without data, as nodes refer to tensors. Its version is 2 if a size
// is dynamic.
Kiv_Tensor_t tensorRecord(Tensor& tensor);

// The same with data; none if the span is empty.
Kiv_Tensor_t tensorRecord(Tensor& tensor, std::span<std::uint8_t> data);

// The record of an optional tensor that a node leaves out.
Kiv_Tensor_t absentRecord();

// The id in a record, whatever its version.
std::uint32_t tensorId(const Kiv_Tensor_t& record);

}  // namespace onnx_client
