#include "writers/tensor_writer.h"

#include "writers/data_types.h"
#include "writers/quantize_writer.h"

namespace kiv::writers {
namespace {

using output::decimal;
using output::Texts;

constexpr Failure kMemHandle = {
    Status::kGraphInvalidTensor,
    "Failed to parse Kiv_Tensor_t, MemHandle is not supported."};
constexpr Failure kDataType = {Status::kTensorDataType,
                               "Invalid Kiv_DataType_t provided: %ld"};
// An unknown version is told twice, by the choice of the union's member and by
// the choice of the record.
constexpr Failure kVersionMember = {Status::kNotSupported,
                                    "Unsupported tensor version %d.\n"};
constexpr Failure kVersion = {Status::kNotSupported,
                              "Unsupported tensor version: %d.\n"};

constexpr const char* kFourBitComment =
    "// Reading 4-bit fixed point tensor data into a byte array since there is "
    "not a native 4-bit datatype.";

bool isKnownVersion(const Kiv_Tensor_t& tensor) {
  const std::uint32_t version = enumValue(tensor.version);
  return version == KIV_TENSOR_VERSION_1 || version == KIV_TENSOR_VERSION_2;
}

Status checkMemory(WriteScope& scope, const Kiv_TensorV1_t& tensor) {
  if (enumValue(tensor.memType) == KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER)
    return Status::kOk;
  return scope.fail(kMemHandle);
}

Status checkDataType(WriteScope& scope, const Kiv_TensorV1_t& tensor) {
  const auto dataType = enumValue(tensor.dataType);
  if (tensor.clientBuf.data == nullptr || elementTypeOf(dataType))
    return Status::kOk;
  return scope.fail(kDataType, static_cast<long>(dataType));
}

// What else is wrong with the record is told first, as for a known version,
// but none of its pointers is followed.
Status refuseVersion(WriteScope& scope, const Kiv_Tensor_t& tensor) {
  const Kiv_TensorV1_t& v1 = tensor.v1;
  if (const Status s = checkEncoding(scope, v1.quantizeParams); !ok(s))
    return s;
  if (const Status s = checkMemory(scope, v1); !ok(s)) return s;
  if (const Status s = checkDataType(scope, v1); !ok(s)) return s;
  const auto version = static_cast<int>(enumValue(tensor.version));
  (void)scope.fail(kVersionMember, version);
  return scope.fail(kVersion, version);
}

// The three field writers give the field's text, having written what it names.
template <typename Number>
std::string writeNumbers(WriteScope& scope, const char* type,
                         const std::string& name, const Number* numbers,
                         std::uint32_t count) {
  if (numbers == nullptr) return "NULL";
  scope.code.emitNumberArray(type, name, numbers, count);
  return name;
}

std::string writeClientBuffer(WriteScope& scope, const Kiv_TensorV1_t& tensor,
                              const std::string& name) {
  const Kiv_ClientBuffer_t& buffer = tensor.clientBuf;
  std::string record = name + "_clientBuf";
  if (buffer.data == nullptr) {
    scope.code.emitStruct("Kiv_ClientBuffer_t", record, {"NULL", "0"});
    return record;
  }
  const auto dataType = enumValue(tensor.dataType);
  const ElementType element = *elementTypeOf(dataType);
  const std::string data = name + "_data";
  if (isFourBit(dataType)) scope.code.emitLine(kFourBitComment);
  scope.code.emitStaticRead(
      element.cType, data,
      {buffer.data, element.size, buffer.dataSize / element.size}, "fp");
  scope.code.emitStruct("Kiv_ClientBuffer_t", record,
                        {"(void*)" + data, decimal(buffer.dataSize)});
  return record;
}

std::string idText(WriteScope& scope, const Kiv_Tensor_t& tensor,
                   const char* member, const session::TensorRegistry* created) {
  const std::uint32_t id = tensor.v1.id;
  const auto variable = created == nullptr ? nullptr : created->find(id);
  if (variable == nullptr) return decimal(id);
  return scope.use(*variable) + '.' + member + ".id";
}

std::string sparseText(const Kiv_SparseParams_t& sparse) {
  return '{' + cast("Kiv_SparseLayoutType_t", sparse.type) + ",{" +
         decimal(sparse.counts.numElements) + ',' +
         decimal(sparse.counts.numDimensions) + "}}";
}

void appendVersion2Fields(WriteScope& scope, const Kiv_TensorV2_t& tensor,
                          const std::string& name, Texts& fields) {
  fields.push_back(writeNumbers(scope, "uint8_t", name + "_isDynamicDimensions",
                                tensor.isDynamicDimensions, tensor.rank));
  fields.push_back(sparseText(tensor.sparseParams));
  fields.push_back(decimal(tensor.isProduced));
}

// The fields that both versions have, in the order of the record.
Status writeCommonFields(WriteScope& scope, const Kiv_Tensor_t& tensor,
                         const char* member, const std::string& name,
                         const session::TensorRegistry* created,
                         Texts& fields) {
  const Kiv_TensorV1_t& v1 = tensor.v1;
  const std::string dimensions =
      writeNumbers(scope, "uint32_t", name + "_dims", v1.dimensions, v1.rank);
  const std::string quantization = name + "_quantizeParams";
  if (const Status s =
          writeQuantizeParams(scope, v1.quantizeParams, quantization);
      !ok(s))
    return s;
  if (const Status s = checkMemory(scope, v1); !ok(s)) return s;
  if (const Status s = checkDataType(scope, v1); !ok(s)) return s;
  const std::string buffer = writeClientBuffer(scope, v1, name);
  fields = {idText(scope, tensor, member, created),
            scope.literal(v1.name),
            cast("Kiv_TensorType_t", v1.type),
            decimal(v1.dataFormat),
            cast("Kiv_DataType_t", v1.dataType),
            quantization,
            decimal(v1.rank),
            dimensions,
            cast("Kiv_TensorMemType_t", v1.memType),
            buffer};
  return Status::kOk;
}

}  // namespace

Status writeTensor(WriteScope& scope, const Kiv_Tensor_t& tensor,
                   const std::string& name,
                   const session::TensorRegistry* created) {
  if (!isKnownVersion(tensor)) return refuseVersion(scope, tensor);
  const bool isVersion2 = enumValue(tensor.version) == KIV_TENSOR_VERSION_2;
  const char* member = isVersion2 ? "v2" : "v1";
  const std::string record = name + '_' + member;
  Texts fields;
  if (const Status s =
          writeCommonFields(scope, tensor, member, name, created, fields);
      !ok(s))
    return s;
  if (isVersion2) appendVersion2Fields(scope, tensor.v2, name, fields);
  scope.code.emitStruct(isVersion2 ? "Kiv_TensorV2_t" : "Kiv_TensorV1_t",
                        record, fields);
  scope.code.emitStruct("Kiv_Tensor_t", name,
                        {cast("Kiv_TensorVersion_t", tensor.version),
                         '.' + std::string(member) + " = " + record});
  return Status::kOk;
}

Status writeTensors(WriteScope& scope, std::span<const Kiv_Tensor_t> tensors,
                    const std::string& prefix,
                    const session::TensorRegistry* created,
                    output::Texts& names) {
  for (std::size_t i = 0; i < tensors.size(); ++i) {
    std::string name = prefix + decimal(i);
    if (const Status s = writeTensor(scope, tensors[i], name, created); !ok(s))
      return s;
    names.push_back(std::move(name));
  }
  return Status::kOk;
}

}  // namespace kiv::writers
