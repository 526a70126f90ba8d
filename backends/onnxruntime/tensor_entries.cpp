#include "entries.h"
#include "entry.h"
#include "objects.h"

namespace kiv::ort {
namespace {

// Adds what the record describes and writes the id into it.
void create(Context& context, const Graph* owner, Kiv_Tensor_t* record) {
  if (record == nullptr)
    refuse(KIV_TENSOR_ERROR_INVALID_ARGUMENT, "the tensor is null");
  const std::scoped_lock lock(context.mutex);
  if (owner != nullptr && owner->main().session != nullptr)
    refuse(KIV_CONTEXT_ERROR_GENERAL, "the graph is finalized");
  const std::uint32_t id = addTensor(context, owner, *record);
  (record->version == KIV_TENSOR_VERSION_2 ? record->v2.id : record->v1.id) =
      id;
}

Kiv_ErrorHandle_t tensorCreateContextTensor(Kiv_ContextHandle_t handle,
                                            Kiv_Tensor_t* tensor) noexcept {
  return enter("tensorCreateContextTensor", KIV_CONTEXT_ERROR_GENERAL, [&] {
    if (handle == nullptr)
      refuse(KIV_GRAPH_ERROR_INVALID_HANDLE, "the handle is null");
    const auto context =
        require<Context>(handle, KIV_CONTEXT_ERROR_INVALID_HANDLE);
    create(*context, nullptr, tensor);
  });
}

Kiv_ErrorHandle_t tensorCreateGraphTensor(Kiv_GraphHandle_t handle,
                                          Kiv_Tensor_t* tensor) noexcept {
  return enter("tensorCreateGraphTensor", KIV_CONTEXT_ERROR_GENERAL, [&] {
    const auto graph = require<Graph>(handle, KIV_GRAPH_ERROR_INVALID_HANDLE);
    create(*graph->context, graph.get(), tensor);
  });
}

}  // namespace

void addTensorEntries(KivInterface_Implementation_t& table) {
  table.tensorCreateContextTensor = tensorCreateContextTensor;
  table.tensorCreateGraphTensor = tensorCreateGraphTensor;
}

}  // namespace kiv::ort
