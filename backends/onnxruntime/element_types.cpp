#include "element_types.h"

#include <onnx/onnx_pb.h>

#include <algorithm>
#include <array>

#include "failure.h"

namespace kiv::ort {
namespace {

using onnx::TensorProto;

constexpr std::array<ElementType, 12> kElementTypes = {{
    {KIV_DATA_TYPE_FLOAT_32, TensorProto::FLOAT, 4},
    {KIV_DATA_TYPE_FLOAT_16, TensorProto::FLOAT16, 2},
    {KIV_DATA_TYPE_FLOAT_64, TensorProto::DOUBLE, 8},
    {KIV_DATA_TYPE_INT_8, TensorProto::INT8, 1},
    {KIV_DATA_TYPE_INT_16, TensorProto::INT16, 2},
    {KIV_DATA_TYPE_INT_32, TensorProto::INT32, 4},
    {KIV_DATA_TYPE_INT_64, TensorProto::INT64, 8},
    {KIV_DATA_TYPE_UINT_8, TensorProto::UINT8, 1},
    {KIV_DATA_TYPE_UINT_16, TensorProto::UINT16, 2},
    {KIV_DATA_TYPE_UINT_32, TensorProto::UINT32, 4},
    {KIV_DATA_TYPE_UINT_64, TensorProto::UINT64, 8},
    {KIV_DATA_TYPE_BOOL_8, TensorProto::BOOL, 1},
}};

}  // namespace

const ElementType& elementType(Kiv_DataType_t dataType,
                               const std::string& what) {
  for (const ElementType& row : kElementTypes)
    if (row.dataType == dataType) return row;
  throw Failure(KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE,
                what + " has elements of the type " +
                    std::to_string(static_cast<std::uint32_t>(dataType)) +
                    ", which ONNX Runtime cannot be given");
}

const ElementType* findOnnxType(int onnxType) {
  const auto* found = std::find_if(
      kElementTypes.begin(), kElementTypes.end(),
      [&](const ElementType& row) { return row.onnxType == onnxType; });
  return found == kElementTypes.end() ? nullptr : found;
}

std::uint64_t byteSize(const ElementType& type,
                       std::span<const std::int64_t> dimensions,
                       const std::string& what) {
  if (std::count(dimensions.begin(), dimensions.end(), 0) > 0) return 0;
  std::uint64_t size = type.size;
  for (const std::int64_t dimension : dimensions) {
    if (__builtin_mul_overflow(size, static_cast<std::uint64_t>(dimension),
                               &size)) {
      throw Failure(KIV_GRAPH_ERROR_INVALID_TENSOR,
                    what + " has more elements than memory can hold");
    }
  }
  return size;
}

}  // namespace kiv::ort
