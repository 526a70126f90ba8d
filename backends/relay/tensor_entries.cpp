#include "api/entries.h"
#include "call.h"
#include "entries.h"
#include "session/handles.h"

namespace kiv::relay {
namespace {

using api::Code;
using session::TensorRegistry;

// One creation. The recorder gets a copy of the record, which receives its id;
// then its registry learns the real one, which the client will use.
class Creation {
 public:
  Creation(Kiv_Tensor_t* tensor) : tensor_(tensor) {}

  // The recorder does not look at the tensor of an owner that it does not know,
  // and neither does the relay.
  template <typename Record>
  Code record(void* recordedOwner, Record&& record) {
    if (tensor_ == nullptr || recordedOwner == nullptr ||
        recordedOwner == unknownHandle())
      return record(recordedOwner, tensor_);
    copy_ = *tensor_;
    const Code code = record(recordedOwner, &copy_);
    if (code == KIV_SUCCESS && hasId(copy_)) id_ = copy_.v1.id;
    isKnown_ = true;
    return code;
  }

  template <typename Owner>
  void learnId(const session::Registry<Owner>& owners, void* recordedOwner) {
    if (!isKnown_ || !hasId(*tensor_)) return;
    if (const auto owner = owners.find(session::fromApi(recordedOwner)))
      owner->tensors()->setClientId(tensor_->v1.id, id_);
  }

 private:
  Kiv_Tensor_t* tensor_;
  Kiv_Tensor_t copy_{};
  std::uint32_t id_ = TensorRegistry::kNoTensor;
  bool isKnown_ = false;
};

Code tensorCreateContextTensor(Kiv_ContextHandle_t context,
                               Kiv_Tensor_t* tensor) {
  Call call("tensorCreateContextTensor");
  Creation creation(tensor);
  void* owner = nullptr;
  call.record([&](Relay& relay) {
    owner = relay.contexts.recorded(context);
    return creation.record(owner, api::tensorCreateContextTensor);
  });
  const Code code = real().tensorCreateContextTensor(context, tensor);
  if (code == KIV_SUCCESS)
    whileRecording([&](session::Session& session, Relay&) {
      creation.learnId(session.contexts(), owner);
    });
  return call.answer(code);
}

Code tensorCreateGraphTensor(Kiv_GraphHandle_t graph, Kiv_Tensor_t* tensor) {
  Call call("tensorCreateGraphTensor");
  Creation creation(tensor);
  void* owner = nullptr;
  call.record([&](Relay& relay) {
    owner = relay.graphs.recorded(graph);
    return creation.record(owner, api::tensorCreateGraphTensor);
  });
  const Code code = real().tensorCreateGraphTensor(graph, tensor);
  if (code == KIV_SUCCESS)
    whileRecording([&](session::Session& session, Relay&) {
      creation.learnId(session.graphs(), owner);
    });
  return call.answer(code);
}

}  // namespace

void addTensorEntries(KivInterface_Implementation_t& table) {
  table.tensorCreateContextTensor = tensorCreateContextTensor;
  table.tensorCreateGraphTensor = tensorCreateGraphTensor;
}

}  // namespace kiv::relay
