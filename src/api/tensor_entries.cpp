#include <memory>

#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "recorders/tensor_recorders.h"

namespace kiv::api {
namespace {

using recorders::TensorOwner;
using session::Session;
using session::Variable;

// Records a tensor's creation and registers it with its owner. A context's
// tensor is registered even when its record could not be written, a graph's is
// not: on purpose.
template <typename Owner>
Status createTensor(Session& session, TensorOwner ownerKind, Owner& owner,
                    Kiv_Tensor_t& tensor) {
  session::TensorRegistry& registry = *owner.tensors();
  auto variable = std::make_shared<const Variable>(registry.makeVariable(),
                                                   session.program());
  const Kiv_Tensor_t copy = tensor;
  const auto recording = recorders::recordTensorCreate(
      session, variable->name(), copy, ownerKind, owner.variable());
  if (ownerKind == TensorOwner::kGraph && !ok(recording.status))
    return recording.status;
  if (!recording.isRecorded) variable = nullptr;
  return recorders::registerTensor(session, registry, tensor,
                                   std::move(variable));
}

}  // namespace

Code tensorCreateContextTensor(Kiv_ContextHandle_t handle,
                               Kiv_Tensor_t* tensor) noexcept {
  if (tensor == nullptr) return toCode(fail(kTensorIsNull));
  return enter([&](Session& session) {
    const auto context = lookUpContext(session, handle, kContextIsNull6001,
                                       kContextIsUnknown5002);
    if (!context) return context.status;
    return createTensor(session, TensorOwner::kContext, *context, *tensor);
  });
}

Code tensorCreateGraphTensor(Kiv_GraphHandle_t handle,
                             Kiv_Tensor_t* tensor) noexcept {
  if (tensor == nullptr) return toCode(fail(kTensorIsNull));
  return enter([&](Session& session) {
    const auto graph =
        lookUp(handle, kGraphIsNull, kGraphIsUnknown,
               [&](session::Handle known) { return session.findGraph(known); });
    if (!graph) return graph.status;
    return createTensor(session, TensorOwner::kGraph, *graph, *tensor);
  });
}

}  // namespace kiv::api
