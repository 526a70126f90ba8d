#include <algorithm>
#include <array>

#include "onnx_model/model_builder.h"

namespace kiv::onnx_model {
namespace {

struct Row {
  Kiv_DataType_t type;
  onnx::TensorProto::DataType onnxType;
  std::size_t size;
};

constexpr std::array<Row, 18> kRows = {{
    {KIV_DATA_TYPE_INT_8, onnx::TensorProto::INT8, 1},
    {KIV_DATA_TYPE_INT_16, onnx::TensorProto::INT16, 2},
    {KIV_DATA_TYPE_INT_32, onnx::TensorProto::INT32, 4},
    {KIV_DATA_TYPE_INT_64, onnx::TensorProto::INT64, 8},
    {KIV_DATA_TYPE_UINT_8, onnx::TensorProto::UINT8, 1},
    {KIV_DATA_TYPE_UINT_16, onnx::TensorProto::UINT16, 2},
    {KIV_DATA_TYPE_UINT_32, onnx::TensorProto::UINT32, 4},
    {KIV_DATA_TYPE_UINT_64, onnx::TensorProto::UINT64, 8},
    {KIV_DATA_TYPE_FLOAT_16, onnx::TensorProto::FLOAT16, 2},
    {KIV_DATA_TYPE_FLOAT_32, onnx::TensorProto::FLOAT, 4},
    {KIV_DATA_TYPE_FLOAT_64, onnx::TensorProto::DOUBLE, 8},
    {KIV_DATA_TYPE_SFIXED_POINT_8, onnx::TensorProto::INT8, 1},
    {KIV_DATA_TYPE_SFIXED_POINT_16, onnx::TensorProto::INT16, 2},
    {KIV_DATA_TYPE_SFIXED_POINT_32, onnx::TensorProto::INT32, 4},
    {KIV_DATA_TYPE_UFIXED_POINT_8, onnx::TensorProto::UINT8, 1},
    {KIV_DATA_TYPE_UFIXED_POINT_16, onnx::TensorProto::UINT16, 2},
    {KIV_DATA_TYPE_UFIXED_POINT_32, onnx::TensorProto::UINT32, 4},
    {KIV_DATA_TYPE_BOOL_8, onnx::TensorProto::BOOL, 1},
}};

}  // namespace

std::optional<onnx::TensorProto::DataType> onnxTypeOf(Kiv_DataType_t type) {
  const auto found = std::ranges::find(kRows, type, &Row::type);
  if (found == kRows.end()) return std::nullopt;
  return found->onnxType;
}

std::size_t sizeOfElement(std::int32_t onnxType) {
  const auto found = std::ranges::find(kRows, onnxType, [](const Row& row) {
    return static_cast<std::int32_t>(row.onnxType);
  });
  return found == kRows.end() ? 0 : found->size;
}

}  // namespace kiv::onnx_model
