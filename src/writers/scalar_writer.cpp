#include "writers/scalar_writer.h"

#include <optional>

namespace kiv::writers {
namespace {

using output::decimal;

constexpr Failure kDataType = {Status::kBackendInvalidArgument,
                               "Invalid Kiv_DataType_t provided: %ld"};

// The initialiser of the union's member; nothing for a type that is refused.
std::optional<std::string> memberText(WriteScope& scope,
                                      const Kiv_Scalar_t& scalar) {
  switch (enumValue(scalar.dataType)) {
    case KIV_DATA_TYPE_INT_8:
      return ".int8Value = " + decimal(scalar.int8Value);
    case KIV_DATA_TYPE_INT_16:
      return ".int16Value = " + decimal(scalar.int16Value);
    case KIV_DATA_TYPE_INT_32:
      return ".int32Value = " + decimal(scalar.int32Value);
    case KIV_DATA_TYPE_UINT_8:
      return ".uint8Value = " + decimal(scalar.uint8Value);
    case KIV_DATA_TYPE_UINT_16:
      return ".uint16Value = " + decimal(scalar.uint16Value);
    case KIV_DATA_TYPE_UINT_32:
      return ".uint32Value = " + decimal(scalar.uint32Value);
    case KIV_DATA_TYPE_FLOAT_16:
    case KIV_DATA_TYPE_FLOAT_32:
      return ".floatValue = " + output::floatText(scalar.floatValue);
    case KIV_DATA_TYPE_BOOL_8:
      return ".bool8Value = " + decimal(scalar.bool8Value != 0 ? 1 : 0);
    case KIV_DATA_TYPE_STRING:
      return ".stringValue = " + scope.literal(scalar.stringValue);
    default:
      return std::nullopt;
  }
}

}  // namespace

Status writeScalar(WriteScope& scope, const Kiv_Scalar_t& scalar,
                   const std::string& name) {
  const auto member = memberText(scope, scalar);
  if (!member)
    return scope.fail(kDataType, static_cast<long>(enumValue(scalar.dataType)));
  scope.code.emitStruct("Kiv_Scalar_t", name,
                        {cast("Kiv_DataType_t", scalar.dataType), *member});
  return Status::kOk;
}

}  // namespace kiv::writers
