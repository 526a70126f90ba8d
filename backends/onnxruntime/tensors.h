#pragma once

// Tensors as clients pass them to executions:
//
//   const TensorFields fields = readFields(record);
//
// Any thread may call the functions.

#include <cstdint>
#include <string>
#include <vector>

#include "KivTypes.h"
#include "onnx_model/tensors.h"

namespace kiv::ort {

// The fields that all versions of the record share; the buffer is the client's
// memory.
struct TensorFields {
  std::uint32_t id = 0;
  std::string name;
  // The tensor's name in quotes, or its id.
  std::string description;
  // The number of ONNX and of ONNX Runtime alike.
  int onnxType = 0;
  std::vector<std::int64_t> dimensions;
  Kiv_ClientBuffer_t buffer{};
};

// A Failure for a record that onnx_model::checkRecord finds fault with, and for
// fixed-point numbers: ONNX Runtime would compute with them as with integers.
void checkRecord(const Kiv_Tensor_t& record);

// A Failure for a record that checkRecord refuses.
TensorFields readFields(const Kiv_Tensor_t& record);

}  // namespace kiv::ort
