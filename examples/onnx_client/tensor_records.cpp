#include "tensor_records.h"

namespace onnx_client {
namespace {

Kiv_QuantizeParams_t notQuantized() {
  Kiv_QuantizeParams_t params{};
  params.encodingDefinition = KIV_DEFINITION_UNDEFINED;
  params.quantizationEncoding = KIV_QUANTIZATION_ENCODING_UNDEFINED;
  return params;
}

// The fields that both versions have.
template <typename Record>
void fill(Record& record, Tensor& tensor, std::span<std::uint8_t> data) {
  record.id = tensor.id;
  record.name = tensor.name.c_str();
  record.type = tensor.type;
  record.dataFormat = KIV_TENSOR_DATA_FORMAT_DENSE;
  record.dataType = tensor.dataType;
  record.quantizeParams = notQuantized();
  if (!tensor.shape.dimensions.empty()) {
    record.rank = static_cast<std::uint32_t>(tensor.shape.dimensions.size());
    record.dimensions = tensor.shape.dimensions.data();
  }
  record.memType = KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER;
  if (!data.empty()) {
    record.clientBuf = {data.data(), static_cast<std::uint32_t>(data.size())};
  }
}

}  // namespace

Kiv_Tensor_t tensorRecord(Tensor& tensor) { return tensorRecord(tensor, {}); }

Kiv_Tensor_t tensorRecord(Tensor& tensor, std::span<std::uint8_t> data) {
  Kiv_Tensor_t record{};
  if (tensor.shape.dynamic.empty()) {
    record.version = KIV_TENSOR_VERSION_1;
    record.v1 = {};
    fill(record.v1, tensor, data);
  } else {
    record.version = KIV_TENSOR_VERSION_2;
    record.v2 = {};
    fill(record.v2, tensor, data);
    record.v2.isDynamicDimensions = tensor.shape.dynamic.data();
    record.v2.sparseParams.type = KIV_SPARSE_LAYOUT_UNDEFINED;
  }
  return record;
}

Kiv_Tensor_t absentRecord() {
  Kiv_Tensor_t record{};
  record.version = KIV_TENSOR_VERSION_1;
  record.v1.type = KIV_TENSOR_TYPE_NULL;
  record.v1.dataType = KIV_DATA_TYPE_UNDEFINED;
  record.v1.quantizeParams = notQuantized();
  return record;
}

std::uint32_t tensorId(const Kiv_Tensor_t& record) {
  return record.version == KIV_TENSOR_VERSION_2 ? record.v2.id : record.v1.id;
}

}  // namespace onnx_client
