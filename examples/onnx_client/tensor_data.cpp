#include "tensor_data.h"

#include <array>
#include <cstring>
#include <limits>

#include "errors.h"

namespace onnx_client {
namespace {

struct ElementType {
  std::int32_t onnxType;
  Kiv_DataType_t dataType;
  std::size_t size;
};

constexpr std::array<ElementType, 12> kElementTypes = {{
    {onnx::TensorProto::FLOAT, KIV_DATA_TYPE_FLOAT_32, 4},
    {onnx::TensorProto::UINT8, KIV_DATA_TYPE_UINT_8, 1},
    {onnx::TensorProto::INT8, KIV_DATA_TYPE_INT_8, 1},
    {onnx::TensorProto::UINT16, KIV_DATA_TYPE_UINT_16, 2},
    {onnx::TensorProto::INT16, KIV_DATA_TYPE_INT_16, 2},
    {onnx::TensorProto::INT32, KIV_DATA_TYPE_INT_32, 4},
    {onnx::TensorProto::INT64, KIV_DATA_TYPE_INT_64, 8},
    {onnx::TensorProto::BOOL, KIV_DATA_TYPE_BOOL_8, 1},
    {onnx::TensorProto::FLOAT16, KIV_DATA_TYPE_FLOAT_16, 2},
    {onnx::TensorProto::DOUBLE, KIV_DATA_TYPE_FLOAT_64, 8},
    {onnx::TensorProto::UINT32, KIV_DATA_TYPE_UINT_32, 4},
    {onnx::TensorProto::UINT64, KIV_DATA_TYPE_UINT_64, 8},
}};

std::string typeName(std::int32_t onnxType) {
  if (!onnx::TensorProto::DataType_IsValid(onnxType))
    return std::to_string(onnxType);
  return onnx::TensorProto::DataType_Name(
      static_cast<onnx::TensorProto::DataType>(onnxType));
}

[[noreturn]] void throwWrongSize(const std::string& name) {
  throw ClientError("tensor " + name + " has more or less data than its shape");
}

// Appends the low `size` bytes of each value. ONNX keeps narrow integers, and
// the bits of 16-bit floats, one a 32-bit integer.
template <typename Values>
std::vector<std::uint8_t> narrowed(const Values& values, std::size_t size) {
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(values.size()) *
                                  size);
  std::uint8_t* to = bytes.data();
  for (const auto value : values) {
    std::memcpy(to, &value, size);
    to += size;
  }
  return bytes;
}

std::vector<std::uint8_t> fieldBytes(const onnx::TensorProto& proto,
                                     std::size_t size) {
  switch (proto.data_type()) {
    case onnx::TensorProto::FLOAT:
      return narrowed(proto.float_data(), size);
    case onnx::TensorProto::DOUBLE:
      return narrowed(proto.double_data(), size);
    case onnx::TensorProto::INT64:
      return narrowed(proto.int64_data(), size);
    case onnx::TensorProto::UINT32:
    case onnx::TensorProto::UINT64:
      return narrowed(proto.uint64_data(), size);
    default:
      return narrowed(proto.int32_data(), size);
  }
}

std::vector<std::uint8_t> tensorBytes(const onnx::TensorProto& proto,
                                      std::size_t size) {
  const std::string& raw = proto.raw_data();
  if (!raw.empty()) return {raw.begin(), raw.end()};
  return fieldBytes(proto, size);
}

}  // namespace

Kiv_DataType_t dataTypeOf(std::int32_t onnxType, const std::string& what) {
  for (const ElementType& row : kElementTypes)
    if (row.onnxType == onnxType) return row.dataType;
  throw NotAccepted(what + " has elements of type " + typeName(onnxType) +
                    ", which no tensor of the Kiv API can have");
}

std::size_t elementSize(Kiv_DataType_t dataType) {
  for (const ElementType& row : kElementTypes)
    if (row.dataType == dataType) return row.size;
  return 1;
}

std::uint32_t byteSize(Kiv_DataType_t dataType,
                       std::span<const std::uint32_t> dimensions,
                       const std::string& what) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  for (const std::uint32_t dimension : dimensions)
    if (dimension == 0) return 0;
  std::uint64_t bytes = elementSize(dataType);
  for (const std::uint32_t dimension : dimensions) {
    bytes *= dimension;  // both below 2^32
    if (bytes > kLargest) throw NotAccepted(what + " is larger than 4 GiB");
  }
  return static_cast<std::uint32_t>(bytes);
}

std::uint32_t checkedDimension(std::int64_t size, const std::string& what) {
  if (size < 0 || size > std::numeric_limits<std::uint32_t>::max())
    throw NotAccepted(what + " has a dimension of " + std::to_string(size));
  return static_cast<std::uint32_t>(size);
}

Tensor readTensor(const onnx::TensorProto& proto, const std::string& name) {
  if (proto.data_location() == onnx::TensorProto::EXTERNAL)
    throw NotAccepted("tensor " + name + " keeps its data in another file");
  if (proto.has_segment())
    throw NotAccepted("tensor " + name + " is a segment");
  Tensor tensor;
  tensor.name = name;
  tensor.type = KIV_TENSOR_TYPE_STATIC;
  tensor.dataType = dataTypeOf(proto.data_type(), "tensor " + name);
  tensor.shape.known = true;
  for (const std::int64_t size : proto.dims())
    tensor.shape.dimensions.push_back(checkedDimension(size, "tensor " + name));
  tensor.data = tensorBytes(proto, elementSize(tensor.dataType));
  if (tensor.data.size() !=
      byteSize(tensor.dataType, tensor.shape.dimensions, "tensor " + name))
    throwWrongSize(name);
  return tensor;
}

}  // namespace onnx_client
