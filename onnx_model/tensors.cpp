#include "onnx_model/tensors.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

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

std::vector<std::int64_t> dimensionsOf(const Kiv_TensorV1_t& tensor) {
  return {tensor.dimensions, tensor.dimensions + tensor.rank};
}

bool isOpen(const Kiv_Tensor_t& tensor, std::uint32_t dimension) {
  return tensor.version == KIV_TENSOR_VERSION_2 &&
         tensor.v2.isDynamicDimensions != nullptr &&
         tensor.v2.isDynamicDimensions[dimension] != 0;
}

Fault faultOf(const Kiv_Tensor_t& tensor, Kiv_Status_t status,
              const std::string& why) {
  return {status, describe(tensor) + " " + why};
}

Fault invalid(const Kiv_Tensor_t& tensor, const std::string& why) {
  return faultOf(tensor, KIV_GRAPH_ERROR_INVALID_TENSOR, why);
}

}  // namespace

void storeInline(std::span<const std::byte> data, onnx::TensorProto& proto) {
  proto.set_raw_data(data.data(), data.size());
}

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

std::optional<std::uint64_t> sizeOfData(
    std::int32_t onnxType, std::span<const std::int64_t> dimensions) {
  if (std::ranges::count(dimensions, 0) > 0) return 0;
  std::uint64_t size = sizeOfElement(onnxType);
  for (const std::int64_t dimension : dimensions) {
    const auto factor = static_cast<std::uint64_t>(dimension);
    if (size > std::numeric_limits<std::uint64_t>::max() / factor)
      return std::nullopt;
    size *= factor;
  }
  return size;
}

std::string describe(const Kiv_Tensor_t& tensor) {
  const Kiv_TensorV1_t& fields = fieldsOf(tensor);
  if (fields.name == nullptr || *fields.name == '\0')
    return "tensor " + std::to_string(fields.id);
  return "tensor \"" + std::string(fields.name) + "\"";
}

std::optional<Fault> checkVersion(const Kiv_Tensor_t& tensor) {
  if (tensor.version == KIV_TENSOR_VERSION_1 ||
      tensor.version == KIV_TENSOR_VERSION_2)
    return std::nullopt;
  return Fault{KIV_COMMON_ERROR_NOT_SUPPORTED,
               "the tensor's record is of version " +
                   std::to_string(tensor.version) +
                   "; versions 1 and 2 are taken"};
}

std::optional<Fault> checkRecord(const Kiv_Tensor_t& tensor) {
  if (auto fault = checkVersion(tensor)) return fault;
  const Kiv_TensorV1_t& fields = fieldsOf(tensor);
  if (fields.memType != KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER)
    return invalid(tensor,
                   "is in a memory handle; only client buffers are taken");
  if (fields.dataFormat != KIV_TENSOR_DATA_FORMAT_DENSE)
    return faultOf(tensor, KIV_COMMON_ERROR_NOT_SUPPORTED,
                   "is not dense; only dense tensors are taken");
  if (fields.rank > 0 && fields.dimensions == nullptr)
    return invalid(tensor, "has a rank but no dimensions");
  if (!onnxTypeOf(fields.dataType))
    return faultOf(
        tensor, KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE,
        "has elements of the type " +
            std::to_string(static_cast<std::uint32_t>(fields.dataType)) +
            ", which ONNX does not have");
  return std::nullopt;
}

std::optional<Fault> checkData(const Kiv_Tensor_t& tensor) {
  const Kiv_TensorV1_t& fields = fieldsOf(tensor);
  const auto wanted =
      sizeOfData(*onnxTypeOf(fields.dataType), dimensionsOf(fields));
  if (!wanted) return invalid(tensor, "has more elements than memory can hold");
  const std::size_t size = bytesOf(fields).size();
  if (wanted == size) return std::nullopt;
  return invalid(tensor, "takes " + std::to_string(*wanted) +
                             " bytes of data, its buffer has " +
                             std::to_string(size));
}

std::span<const std::byte> bytesOf(const Kiv_TensorV1_t& tensor) {
  if (tensor.clientBuf.data == nullptr) return {};
  return {static_cast<const std::byte*>(tensor.clientBuf.data),
          tensor.clientBuf.dataSize};
}

void copyType(const Kiv_Tensor_t& tensor, onnx::TensorProto& proto) {
  const Kiv_TensorV1_t& fields = fieldsOf(tensor);
  proto.set_data_type(*onnxTypeOf(fields.dataType));
  for (const std::int64_t size : dimensionsOf(fields)) proto.add_dims(size);
}

void copyType(const Kiv_Tensor_t& tensor, onnx::ValueInfoProto& info) {
  const Kiv_TensorV1_t& fields = fieldsOf(tensor);
  auto& type = *info.mutable_type()->mutable_tensor_type();
  type.set_elem_type(*onnxTypeOf(fields.dataType));
  auto& shape = *type.mutable_shape();
  for (std::uint32_t i = 0; i < fields.rank; ++i) {
    auto& dimension = *shape.add_dim();
    if (!isOpen(tensor, i)) dimension.set_dim_value(fields.dimensions[i]);
  }
}

std::optional<Fault> tensorProtoOf(const Kiv_Tensor_t& tensor,
                                   std::string_view name,
                                   onnx::TensorProto& proto,
                                   const DataSink& sink) {
  if (auto fault = checkRecord(tensor)) return fault;
  if (auto fault = checkData(tensor)) return fault;
  copyType(tensor, proto);
  if (!name.empty()) proto.set_name(std::string(name));
  sink(bytesOf(fieldsOf(tensor)), proto);
  return std::nullopt;
}

}  // namespace kiv::onnx_model
