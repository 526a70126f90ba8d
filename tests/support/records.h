#pragma once

#include <cstdint>
#include <cstring>

#include "KivInterface.h"

namespace kiv::test {

// A number where an enum stands, which need not be one of the enum's.
template <typename Enum>
void setNumber(Enum& field, std::uint32_t number) {
  static_assert(sizeof(field) == sizeof(number));
  std::memcpy(&field, &number, sizeof(number));
}

// Records with everything zero or null but for the arguments.

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
