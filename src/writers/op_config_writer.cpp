#include "writers/op_config_writer.h"

#include <span>

#include "output/identifiers.h"
#include "writers/scalar_writer.h"
#include "writers/tensor_writer.h"

namespace kiv::writers {
namespace {

using output::decimal;
using output::Texts;

constexpr Failure kVersion = {Status::kNotSupported,
                              "Unsupported opconfig version: %d.\n"};
constexpr Failure kParamType = {Status::kBackendInvalidArgument,
                                "Invalid Kiv_ParamType_t provided: %ld\n"};
constexpr Failure kMissingArray = {
    Status::kBackendInvalidArgument,
    "An op config counts %ld elements but their array is NULL"};

// What a parameter's union holds: the variable is the parameter's + "_scalar"
// or "_tensor".
Status writeParamValue(WriteScope& scope, const Kiv_Param_t& param,
                       const std::string& name,
                       const session::TensorRegistry* created,
                       std::string& member) {
  switch (enumValue(param.paramType)) {
    case KIV_PARAM_TYPE_SCALAR:
      member = ".scalarParam = " + name + "_scalar";
      return writeScalar(scope, param.scalarParam, name + "_scalar");
    case KIV_PARAM_TYPE_TENSOR:
      member = ".tensorParam = " + name + "_tensor";
      return writeTensor(scope, param.tensorParam, name + "_tensor", created);
    default:
      return scope.fail(kParamType,
                        static_cast<long>(enumValue(param.paramType)));
  }
}

Status writeParam(WriteScope& scope, const Kiv_Param_t& param,
                  const std::string& name,
                  const session::TensorRegistry* created) {
  std::string member;
  if (const Status s = writeParamValue(scope, param, name, created, member);
      !ok(s))
    return s;
  scope.code.emitStruct("Kiv_Param_t", name,
                        {cast("Kiv_ParamType_t", param.paramType),
                         scope.literal(param.name), member});
  return Status::kOk;
}

Status writeParams(WriteScope& scope, std::span<const Kiv_Param_t> params,
                   const std::string& prefix,
                   const session::TensorRegistry* created, Texts& names) {
  for (std::size_t i = 0; i < params.size(); ++i) {
    std::string name = prefix + decimal(i);
    if (const Status s = writeParam(scope, params[i], name, created); !ok(s))
      return s;
    names.push_back(std::move(name));
  }
  return Status::kOk;
}

// An array of records and its variable: each record through `writeAll`, then
// the array, or a null pointer when there are none.
template <typename Record, typename WriteAll>
Status writeRecords(WriteScope& scope, const char* type,
                    const std::string& array, const Record* records,
                    std::uint32_t count, WriteAll&& writeAll) {
  if (count == 0) {
    scope.code.emitNullDeclaration(std::string(type) + '*', array);
    return Status::kOk;
  }
  if (records == nullptr)
    return scope.fail(kMissingArray, static_cast<long>(count));
  Texts names;
  const Status status = writeAll(std::span(records, count), names);
  if (ok(status)) scope.code.emitArray(type, array, names);
  return status;
}

}  // namespace

std::string nameOpConfig(WriteScope& scope, const Kiv_OpConfig_t& opConfig) {
  std::string base;
  if (enumValue(opConfig.version) == KIV_OP_CONFIG_VERSION_1 &&
      opConfig.v1.name != nullptr)
    base = output::sanitizeIdentifier(opConfig.v1.name);
  if (base.empty()) base = "opConfig";
  return scope.names.unique(base, session::Family::kOpConfig);
}

Status writeOpConfig(WriteScope& scope, const Kiv_OpConfig_t& opConfig,
                     const std::string& name,
                     const session::TensorRegistry* created) {
  if (const std::uint32_t version = enumValue(opConfig.version);
      version != KIV_OP_CONFIG_VERSION_1)
    return scope.fail(kVersion, static_cast<int>(version));
  const Kiv_OpConfigV1_t& v1 = opConfig.v1;

  const std::string params = name + "_params";
  const Status paramStatus = writeRecords(
      scope, "Kiv_Param_t", params, v1.params, v1.numParams,
      [&](std::span<const Kiv_Param_t> records, Texts& names) {
        return writeParams(scope, records, name + "_param_", created, names);
      });
  if (!ok(paramStatus)) return paramStatus;

  const auto writeTensorArray = [&](const char* word, const Kiv_Tensor_t* array,
                                    std::uint32_t count) {
    return writeRecords(
        scope, "Kiv_Tensor_t", name + word + 's', array, count,
        [&](std::span<const Kiv_Tensor_t> records, Texts& names) {
          return writeTensors(scope, records, name + word + '_', created,
                              names);
        });
  };
  if (const Status s =
          writeTensorArray("_input", v1.inputTensors, v1.numInputs);
      !ok(s))
    return s;
  if (const Status s =
          writeTensorArray("_output", v1.outputTensors, v1.numOutputs);
      !ok(s))
    return s;

  const std::string record = name + "_v1";
  scope.code.emitStruct("Kiv_OpConfigV1_t", record,
                        {scope.literal(v1.name), scope.literal(v1.packageName),
                         scope.literal(v1.typeName), decimal(v1.numParams),
                         params, decimal(v1.numInputs), name + "_inputs",
                         decimal(v1.numOutputs), name + "_outputs"});
  scope.code.emitStruct(
      "Kiv_OpConfig_t", name,
      {cast("Kiv_OpConfigVersion_t", opConfig.version), ".v1 = " + record});
  return Status::kOk;
}

}  // namespace kiv::writers
