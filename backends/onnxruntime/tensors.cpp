#include "tensors.h"

#include "failure.h"

namespace kiv::ort {
namespace {

bool isFixedPoint(Kiv_DataType_t type) {
  switch (type) {
    case KIV_DATA_TYPE_SFIXED_POINT_8:
    case KIV_DATA_TYPE_SFIXED_POINT_16:
    case KIV_DATA_TYPE_SFIXED_POINT_32:
    case KIV_DATA_TYPE_UFIXED_POINT_8:
    case KIV_DATA_TYPE_UFIXED_POINT_16:
    case KIV_DATA_TYPE_UFIXED_POINT_32:
      return true;
    default:
      return false;
  }
}

}  // namespace

void checkRecord(const Kiv_Tensor_t& record) {
  throwIf(onnx_model::checkRecord(record));
  const Kiv_DataType_t type = onnx_model::fieldsOf(record).dataType;
  if (!isFixedPoint(type)) return;
  throw Failure(KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE,
                onnx_model::describe(record) +
                    " has fixed-point numbers of the type " +
                    std::to_string(static_cast<std::uint32_t>(type)) +
                    ", which ONNX Runtime cannot be given");
}

TensorFields readFields(const Kiv_Tensor_t& record) {
  checkRecord(record);
  const Kiv_TensorV1_t& from = onnx_model::fieldsOf(record);
  TensorFields fields;
  fields.id = from.id;
  if (from.name != nullptr) fields.name = from.name;
  fields.description = onnx_model::describe(record);
  fields.onnxType = *onnx_model::onnxTypeOf(from.dataType);
  fields.dimensions.assign(from.dimensions, from.dimensions + from.rank);
  fields.buffer = from.clientBuf;
  return fields;
}

}  // namespace kiv::ort
