#include "support/records.h"

namespace kiv::test {

Kiv_Tensor_t emptyTensor(Kiv_TensorVersion_t version, Kiv_DataType_t dataType) {
  Kiv_Tensor_t tensor{};
  tensor.version = version;
  tensor.v2 = {};
  tensor.v1.dataType = dataType;
  tensor.v1.quantizeParams.quantizationEncoding =
      KIV_QUANTIZATION_ENCODING_UNDEFINED;
  return tensor;
}

Kiv_Tensor_t tensorWithData(void* data, uint32_t size,
                            Kiv_DataType_t dataType) {
  Kiv_Tensor_t tensor = emptyTensor(KIV_TENSOR_VERSION_1, dataType);
  tensor.v1.clientBuf = {data, size};
  return tensor;
}

Kiv_OpConfig_t emptyOpConfig(const char* name) {
  Kiv_OpConfig_t opConfig{};
  opConfig.version = KIV_OP_CONFIG_VERSION_1;
  opConfig.v1.name = name;
  return opConfig;
}

Objects createObjects(const KivInterface_Implementation_t& api,
                      const char* graphName) {
  Objects objects;
  api.backendCreate(nullptr, nullptr, &objects.backend);
  api.contextCreate(objects.backend, nullptr, nullptr, &objects.context);
  api.graphCreate(objects.context, graphName, nullptr, &objects.graph);
  return objects;
}

}  // namespace kiv::test
