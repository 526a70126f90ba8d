#include "writers/op_config_writer.h"

#include "format/records.h"
#include "output/row_text.h"
#include "writers/tensor_writer.h"

namespace kiv::writers {
namespace {

namespace rows = format::rows;
using format::Part;

constexpr Failure kOpConfigVersion = {Status::kNotSupported,
                                      "Unsupported opconfig version: %d.\n"};
constexpr Failure kParamType = {Status::kBackendInvalidArgument,
                                "Invalid Kiv_ParamType_t provided: %ld\n"};
constexpr Failure kScalarType = {Status::kBackendInvalidArgument,
                                 "Invalid Kiv_DataType_t provided: %ld"};
constexpr Failure kMissingArray = {
    Status::kBackendInvalidArgument,
    "An op config counts %ld elements but their array is NULL"};

void writeScalar(CallText& call, const Kiv_Scalar_t& scalar, Name name) {
  const std::uint32_t dataType = format::enumValue(scalar.dataType);
  const format::Member* value =
      format::findMember(rows::kScalarValues, dataType);
  if (value == nullptr)
    return call.fail(kScalarType, static_cast<long>(dataType));
  call.code().emitStruct<rows::kScalar>(name, &scalar, {{*value}});
}

// The value in the parameter's union.
Name writeParamValue(CallText& call, const Kiv_Param_t& param,
                     NameOf<Family::kParam> owner,
                     const session::TensorRegistry* created) {
  if (format::enumValue(param.paramType) == KIV_PARAM_TYPE_SCALAR) {
    const Name scalar = call.code().name<Part::kScalarParam>(owner);
    writeScalar(call, param.scalarParam, scalar);
    return scalar;
  }
  const auto tensor = call.code().name<Part::kTensorParam>(owner);
  writeTensor(call, param.tensorParam, tensor, created);
  return tensor;
}

// An array of the operation's parts: each element through `writeElement`, then
// the array, or a null pointer when there are none.
template <Part kArray, Part kElement, typename Record, typename WriteElement>
Name writeElements(CallText& call, std::string_view type,
                   NameOf<Family::kOpConfig> op, const Record* elements,
                   std::uint32_t count, WriteElement&& writeElement) {
  output::CodeStream& code = call.code();
  const Name array = code.name<kArray>(op);
  if (count == 0) {
    code.emitNullDeclaration(type, array);
    return array;
  }
  if (elements == nullptr) {
    call.fail(kMissingArray, static_cast<long>(count));
    return array;
  }
  for (std::uint32_t i = 0; i < count && !call.hasFailed(); ++i)
    writeElement(elements[i], code.name<kElement>(op, i));
  if (!call.hasFailed()) code.emitPartArray<kElement>(type, array, op, count);
  return array;
}

}  // namespace

NameOf<Family::kOpConfig> nameOpConfig(CallText& call,
                                       const Kiv_OpConfig_t& opConfig) {
  std::string_view base;
  if (format::enumValue(opConfig.version) == KIV_OP_CONFIG_VERSION_1 &&
      opConfig.v1.name != nullptr)
    base = call.code().sanitized(opConfig.v1.name);
  return call.unique<Family::kOpConfig>(base.empty() ? "opConfig" : base);
}

void writeParam(CallText& call, const Kiv_Param_t& param,
                NameOf<Family::kParam> name,
                const session::TensorRegistry* created) {
  const std::uint32_t type = format::enumValue(param.paramType);
  const format::Member* member = format::findMember(rows::kParamTypes, type);
  if (member == nullptr) return call.fail(kParamType, static_cast<long>(type));
  const Name value = writeParamValue(call, param, name, created);
  call.code().emitStruct<rows::kParam>(name, &param, {{*member, value}});
}

void writeOpConfig(CallText& call, const Kiv_OpConfig_t& opConfig,
                   NameOf<Family::kOpConfig> name,
                   const session::TensorRegistry* created) {
  const std::uint32_t version = format::enumValue(opConfig.version);
  const format::Member* member =
      format::findMember(rows::kOpConfigVersions, version);
  if (member == nullptr)
    return call.fail(kOpConfigVersion, static_cast<int>(version));
  const Kiv_OpConfigV1_t& v1 = opConfig.v1;
  const auto param = [&](const Kiv_Param_t& record,
                         NameOf<Family::kParam> variable) {
    writeParam(call, record, variable, created);
  };
  const auto tensor = [&](const Kiv_Tensor_t& record,
                          NameOf<Family::kTensor> variable) {
    writeTensor(call, record, variable, created);
  };

  const Name params = writeElements<Part::kParams, Part::kParam>(
      call, rows::kParam.type, name, v1.params, v1.numParams, param);
  const Name inputs = writeElements<Part::kInputs, Part::kInput>(
      call, rows::kTensor.type, name, v1.inputTensors, v1.numInputs, tensor);
  const Name outputs = writeElements<Part::kOutputs, Part::kOutput>(
      call, rows::kTensor.type, name, v1.outputTensors, v1.numOutputs, tensor);
  if (call.hasFailed()) return;
  const Name record = call.code().name<Part::kOpConfigV1>(name);
  call.code().emitStruct<rows::kOpConfigV1>(record, &v1,
                                            {params, inputs, outputs});
  call.code().emitStruct<rows::kOpConfig>(name, &opConfig, {{*member, record}});
}

}  // namespace kiv::writers
