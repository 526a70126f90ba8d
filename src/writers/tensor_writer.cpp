#include "writers/tensor_writer.h"

#include "format/records.h"
#include "output/row_text.h"
#include "writers/quantize_writer.h"

namespace kiv::writers {
namespace {

namespace rows = format::rows;
using format::Part;

constexpr Failure kMemHandle = {
    Status::kGraphInvalidTensor,
    "Failed to parse Kiv_Tensor_t, MemHandle is not supported."};
constexpr Failure kDataType = {Status::kTensorDataType,
                               "Invalid Kiv_DataType_t provided: %ld"};
// An unknown version is reported twice, by the choice of the union's member and
// by the choice of the record.
constexpr const char* kVersionMember = "Unsupported tensor version %d.\n";
constexpr Failure kTensorVersion = {Status::kNotSupported,
                                    "Unsupported tensor version: %d.\n"};

void checkMemory(CallText& call, const Kiv_TensorV1_t& tensor) {
  if (format::enumValue(tensor.memType) != KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER)
    call.fail(kMemHandle);
}

void checkDataType(CallText& call, const Kiv_TensorV1_t& tensor) {
  if (tensor.clientBuf.data != nullptr)
    (void)dataTypeToCType(call, format::enumValue(tensor.dataType));
}

// Other faults of the record are reported first, as for a known version,
// but none of its pointers is followed.
void refuseVersion(CallText& call, const Kiv_Tensor_t& tensor) {
  checkEncoding(call, tensor.v1.quantizeParams);
  checkMemory(call, tensor.v1);
  checkDataType(call, tensor.v1);
  const std::uint32_t version = format::enumValue(tensor.version);
  (void)tensorVersionMember(call, version);
  call.fail(kTensorVersion, static_cast<int>(version));
}

// The name of the array, or none for a null pointer.
template <Part kPart, typename Number>
Name writeNumbers(CallText& call, std::string_view type,
                  NameOf<Family::kTensor> owner, const Number* numbers,
                  std::uint32_t count) {
  if (numbers == nullptr) return {};
  const Name array = call.code().name<kPart>(owner);
  call.code().emitNumberArray(type, array, numbers, count);
  return array;
}

// A record without data has no size either.
Name writeClientBuffer(CallText& call, const Kiv_TensorV1_t& tensor,
                       NameOf<Family::kTensor> owner) {
  output::CodeStream& code = call.code();
  const Name record = code.name<Part::kClientBuf>(owner);
  const Kiv_ClientBuffer_t& buffer = tensor.clientBuf;
  if (buffer.data == nullptr) {
    const Kiv_ClientBuffer_t none = {nullptr, 0};
    code.emitStruct<rows::kClientBuffer>(record, &none, {Name{}});
    return record;
  }
  const std::uint32_t dataType = format::enumValue(tensor.dataType);
  const auto element = dataTypeToCType(call, dataType);
  if (!element) return {};
  const Name data = code.name<Part::kData>(owner);
  if (format::isFourBit(dataType)) code.emitLine(format::kFourBitComment);
  code.emitStaticRead(
      element->cType, data,
      {buffer.data, element->size, buffer.dataSize / element->size},
      format::kDataFileVariable);
  code.emitStruct<rows::kClientBuffer>(record, &buffer, {data});
  return record;
}

}  // namespace

std::string_view tensorVersionMember(CallText& call, std::uint32_t version) {
  if (version == KIV_TENSOR_VERSION_1) return "v1";
  if (version == KIV_TENSOR_VERSION_2) return "v2";
  call.error(kVersionMember, static_cast<int>(version));
  return {};
}

std::optional<format::ElementType> dataTypeToCType(CallText& call,
                                                   std::uint32_t dataType) {
  const auto element = format::elementTypeOf(dataType);
  if (!element) call.fail(kDataType, static_cast<long>(dataType));
  return element;
}

void writeTensor(CallText& call, const Kiv_Tensor_t& tensor,
                 NameOf<Family::kTensor> name,
                 const session::TensorRegistry* created) {
  const format::Member* version = format::findMember(
      rows::kTensorVersions, format::enumValue(tensor.version));
  if (version == nullptr) return refuseVersion(call, tensor);
  const bool isVersion2 = version->tag == KIV_TENSOR_VERSION_2;
  output::CodeStream& code = call.code();
  const Kiv_TensorV1_t& v1 = tensor.v1;

  const Name dims =
      writeNumbers<Part::kDims>(call, "uint32_t", name, v1.dimensions, v1.rank);
  const auto quantize = code.name<Part::kQuantizeParams>(name);
  writeQuantizeParams(call, v1.quantizeParams, quantize);
  checkMemory(call, v1);
  if (call.hasFailed()) return;
  const Name buffer = writeClientBuffer(call, v1, name);
  if (call.hasFailed()) return;
  const std::string_view member = tensorVersionMember(call, version->tag);
  const Name id =
      created == nullptr ? Name{} : call.tensorId(*created, v1.id, member);

  Name record;
  if (isVersion2) {
    const Kiv_TensorV2_t& v2 = tensor.v2;
    const Name flags = writeNumbers<Part::kIsDynamicDimensions>(
        call, "uint8_t", name, v2.isDynamicDimensions, v2.rank);
    record = code.name<Part::kTensorV2>(name);
    code.emitStruct<rows::kTensorV2>(record, &v2,
                                     {id, quantize, dims, buffer, flags});
  } else {
    record = code.name<Part::kTensorV1>(name);
    code.emitStruct<rows::kTensorV1>(record, &v1, {id, quantize, dims, buffer});
  }
  code.emitStruct<rows::kTensor>(name, &tensor, {{*version, record}});
}

}  // namespace kiv::writers
