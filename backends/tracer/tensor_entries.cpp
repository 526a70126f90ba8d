#include "call.h"
#include "entries.h"

namespace kiv::tracer {
namespace {

// The address of a tensor's id; null for a version that is not known.
uint32_t* idOf(Kiv_Tensor_t* tensor) {
  if (tensor == nullptr) return nullptr;
  const std::uint32_t version = enumValue(tensor->version);
  if (version == KIV_TENSOR_VERSION_1) return &tensor->v1.id;
  if (version == KIV_TENSOR_VERSION_2) return &tensor->v2.id;
  return nullptr;
}

// The arguments show the id that the client supplied, the result the new one.
void describeCreation(Call& call, Kind ownerKind, const void* owner,
                      Kiv_Tensor_t* tensor) {
  call.handle(ownerKind, owner).value(tensor);
  uint32_t* id = idOf(tensor);
  if (id == nullptr) return;
  *id = call.tracer().takeTensorId();
  call.result().field("id", *id);
}

Kiv_ErrorHandle_t tensorCreateContextTensor(Kiv_ContextHandle_t context,
                                            Kiv_Tensor_t* tensor) noexcept {
  return traced("tensorCreateContextTensor", [&](Call& call) {
    describeCreation(call, Kind::kContext, context, tensor);
  });
}

Kiv_ErrorHandle_t tensorCreateGraphTensor(Kiv_GraphHandle_t graph,
                                          Kiv_Tensor_t* tensor) noexcept {
  return traced("tensorCreateGraphTensor", [&](Call& call) {
    describeCreation(call, Kind::kGraph, graph, tensor);
  });
}

}  // namespace

void addTensorEntries(KivInterface_Implementation_t& table) {
  table.tensorCreateContextTensor = tensorCreateContextTensor;
  table.tensorCreateGraphTensor = tensorCreateGraphTensor;
}

}  // namespace kiv::tracer
