#include "records.h"

namespace kiv::tracer {
namespace {

void printValue(LineWriter& line, const Kiv_Scalar_t& scalar) {
  switch (enumValue(scalar.dataType)) {
    case KIV_DATA_TYPE_INT_8:
      return print(line, scalar.int8Value);
    case KIV_DATA_TYPE_INT_16:
      return print(line, scalar.int16Value);
    case KIV_DATA_TYPE_INT_32:
      return print(line, scalar.int32Value);
    case KIV_DATA_TYPE_INT_64:
      return print(line, scalar.int64Value);
    case KIV_DATA_TYPE_UINT_8:
      return print(line, scalar.uint8Value);
    case KIV_DATA_TYPE_UINT_16:
      return print(line, scalar.uint16Value);
    case KIV_DATA_TYPE_UINT_32:
      return print(line, scalar.uint32Value);
    case KIV_DATA_TYPE_UINT_64:
      return print(line, scalar.uint64Value);
    case KIV_DATA_TYPE_FLOAT_16:
    case KIV_DATA_TYPE_FLOAT_32:
      return print(line, scalar.floatValue);
    case KIV_DATA_TYPE_FLOAT_64:
      return print(line, scalar.doubleValue);
    case KIV_DATA_TYPE_BOOL_8:
      return print(line, scalar.bool8Value == 0 ? 0 : 1);
    case KIV_DATA_TYPE_STRING:
      return print(line, scalar.stringValue);
    default:
      line.word("?");
  }
}

void printFields(LineWriter& line, const Kiv_OpConfigV1_t& config) {
  line.field("name", config.name)
      .field("package", config.packageName)
      .field("type", config.typeName)
      .field("params", Array{config.params, config.numParams})
      .field("inputs", Array{config.inputTensors, config.numInputs})
      .field("outputs", Array{config.outputTensors, config.numOutputs});
}

}  // namespace

void print(LineWriter& line, const Kiv_Scalar_t& scalar) {
  line.begin('{').field("type", scalar.dataType).key("value");
  printValue(line, scalar);
  line.end('}');
}

void print(LineWriter& line, const Kiv_Param_t& param) {
  line.begin('{').field("type", param.paramType).field("name", param.name);
  if (enumValue(param.paramType) == KIV_PARAM_TYPE_SCALAR) {
    line.field("scalar", param.scalarParam);
  } else if (enumValue(param.paramType) == KIV_PARAM_TYPE_TENSOR) {
    line.field("tensor", param.tensorParam);
  }
  line.end('}');
}

void print(LineWriter& line, const Kiv_OpConfig_t& config) {
  line.begin('{').field("version", config.version);
  if (enumValue(config.version) == KIV_OP_CONFIG_VERSION_1)
    printFields(line, config.v1);
  line.end('}');
}

}  // namespace kiv::tracer
