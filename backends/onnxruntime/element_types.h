#pragma once

// Element types that the Kiv API and ONNX share. Any thread may ask.

#include <cstdint>
#include <span>
#include <string>

#include "KivTypes.h"

namespace kiv::ort {

struct ElementType {
  Kiv_DataType_t dataType;
  // The number of ONNX and of ONNX Runtime alike.
  int onnxType;
  std::uint32_t size;
};

// A Failure for a type without a match; `what` names the tensor.
const ElementType& elementType(Kiv_DataType_t dataType,
                               const std::string& what);

// Null for a type without a match.
const ElementType* findOnnxType(int onnxType);

// The size of a tensor's data; a Failure if it is beyond 64 bits.
std::uint64_t byteSize(const ElementType& type,
                       std::span<const std::int64_t> dimensions,
                       const std::string& what);

}  // namespace kiv::ort
