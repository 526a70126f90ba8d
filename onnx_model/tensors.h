#pragma once

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "KivTypes.h"

// The API's records of tensors in terms of ONNX:
//
//   onnx::TensorProto proto;
//   if (auto fault = tensorProtoOf(tensor, "x", proto)) return fault;
//
// Any thread may call the functions.
namespace kiv::onnx_model {

// Why a call cannot be part of a model, with the API's code for it.
struct Fault {
  Kiv_Status_t status = KIV_CONTEXT_ERROR_GENERAL;
  std::string message;
};

// Puts the data of a static tensor, or of a Constant, into the model's tensor,
// whose type and shape are set; that of a Constant has no name. The data is
// valid during the call only.
using DataSink =
    std::function<void(std::span<const std::byte> data, onnx::TensorProto&)>;

// The data itself, in the field raw_data.
void storeInline(std::span<const std::byte> data, onnx::TensorProto& proto);

// The element type of ONNX for one of the API; quantized numbers are integers
// there. Nothing for 4-bit numbers and for types that tensors do not have.
std::optional<onnx::TensorProto::DataType> onnxTypeOf(Kiv_DataType_t type);
// bytes; 0 for an element type that the API does not have
std::size_t sizeOfElement(std::int32_t onnxType);
// bytes of such elements; nothing beyond 64 bits
std::optional<std::uint64_t> sizeOfData(
    std::int32_t onnxType, std::span<const std::int64_t> dimensions);

// 'tensor "x"', with the id in place of a name that is missing.
std::string describe(const Kiv_Tensor_t& tensor);
// The fields that all versions of the record have, which lie at the same
// places.
inline const Kiv_TensorV1_t& fieldsOf(const Kiv_Tensor_t& tensor) {
  return tensor.v1;
}

// Finds fault with a record of an unknown version.
std::optional<Fault> checkVersion(const Kiv_Tensor_t& tensor);
// Finds fault with a record of an unknown version, of an element type that ONNX
// does not have, in a memory handle, not dense, or without the sizes that its
// rank promises.
std::optional<Fault> checkRecord(const Kiv_Tensor_t& tensor);
// Finds fault with data that is not as large as the sizes say, in a record that
// checkRecord accepts.
std::optional<Fault> checkData(const Kiv_Tensor_t& tensor);

std::span<const std::byte> bytesOf(const Kiv_TensorV1_t& tensor);

// Sets the type and the sizes of a record that checkRecord accepts. Sizes that
// may change stay open in a value's description.
void copyType(const Kiv_Tensor_t& tensor, onnx::TensorProto& proto);
void copyType(const Kiv_Tensor_t& tensor, onnx::ValueInfoProto& info);

// A tensor with its data, as files of test data hold it.
std::optional<Fault> tensorProtoOf(const Kiv_Tensor_t& tensor,
                                   std::string_view name,
                                   onnx::TensorProto& proto,
                                   const DataSink& sink = storeInline);

}  // namespace kiv::onnx_model
