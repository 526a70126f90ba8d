#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "recorders/tensor_recorders.h"

namespace kiv::api {
namespace {

using recorders::TensorOwner;
using session::Session;
using session::TensorRegistry;

// Records a tensor's creation and registers it with its owner. A context's
// tensor is registered even when its record could not be written, a graph's is
// not: on purpose.
template <typename Owner>
Status createTensor(Session& session, TensorOwner ownerKind, Owner& owner,
                    Kiv_Tensor_t& tensor, const Failure& notCreated) {
  try {
    TensorRegistry& registry = *owner.tensors();
    const TensorRegistry::Room room(registry);
    const Kiv_Tensor_t copy = tensor;
    const auto recording = recorders::recordTensorCreate(
        session, copy, ownerKind, owner.variable(), registry.nextNumber());
    if (ownerKind == TensorOwner::kGraph && !ok(recording.status))
      return recording.status;
    return recorders::registerTensor(session, registry, room, tensor,
                                     recording.creation);
  } catch (const std::bad_alloc&) {
    return fail(notCreated);
  }
}

}  // namespace

Code tensorCreateContextTensor(Kiv_ContextHandle_t handle,
                               Kiv_Tensor_t* tensor) {
  if (tensor == nullptr) return toCode(fail(kTensorIsNull));
  return enter([&](Session& session) {
    const auto context = lookUp(session.contexts(), handle, kContextIsNull6001,
                                kContextIsUnknown5002);
    if (!context) return context.status;
    return createTensor(session, TensorOwner::kContext, *context, *tensor,
                        kContextTensorNotCreated);
  });
}

Code tensorCreateGraphTensor(Kiv_GraphHandle_t handle, Kiv_Tensor_t* tensor) {
  if (tensor == nullptr) return toCode(fail(kTensorIsNull));
  return enter([&](Session& session) {
    const auto graph =
        lookUp(session.graphs(), handle, kGraphIsNull, kGraphIsUnknown);
    if (!graph) return graph.status;
    return createTensor(session, TensorOwner::kGraph, *graph, *tensor,
                        kGraphTensorNotCreated);
  });
}

}  // namespace kiv::api
