#pragma once

#include "KivInterface.h"

namespace kiv::test {

// Records with everything zero or null but for what is told.

// No name, dimensions or data; the encoding is undefined.
Kiv_Tensor_t emptyTensor(Kiv_TensorVersion_t version = KIV_TENSOR_VERSION_1,
                         Kiv_DataType_t dataType = KIV_DATA_TYPE_FLOAT_32);

// emptyTensor with data of the caller.
Kiv_Tensor_t tensorWithData(void* data, uint32_t size,
                            Kiv_DataType_t dataType = KIV_DATA_TYPE_UINT_8);

// No parameters or tensors.
Kiv_OpConfig_t emptyOpConfig(const char* name);

// A backend, a context in it and a graph in that.
struct Objects {
  Kiv_BackendHandle_t backend = nullptr;
  Kiv_ContextHandle_t context = nullptr;
  Kiv_GraphHandle_t graph = nullptr;
};
Objects createObjects(const KivInterface_Implementation_t& api,
                      const char* graphName = "graph_a");

}  // namespace kiv::test
