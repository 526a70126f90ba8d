#ifndef ONNX_CLIENT_TENSOR_RECORDS_H
#define ONNX_CLIENT_TENSOR_RECORDS_H

// Tensors as records of the API. A record points into its Tensor.

#include <cstdint>
#include <span>

#include "network.h"

namespace onnx_client {

// A record without data, as nodes refer to tensors. Of version 2 if a size is
// dynamic.
Kiv_Tensor_t tensorRecord(Tensor& tensor);

// The same with data; none if the span is empty.
Kiv_Tensor_t tensorRecord(Tensor& tensor, std::span<uint8_t> data);

// An optional tensor that is not there.
Kiv_Tensor_t absentRecord();

// The id in a record, whatever its version.
uint32_t tensorId(const Kiv_Tensor_t& record);

}  // namespace onnx_client

#endif
