#include "recorders/tensor_recorders.h"

#include "recorders/recorded_call.h"
#include "writers/tensor_writer.h"

namespace kiv::recorders {
namespace {

using format::Part;
using session::TensorRegistry;

// Text that cannot be written has a code that no writer gives: the client's
// call succeeds all the same.
constexpr output::WriteFailures kTensorFailures = {Status::kBackendError,
                                                   Status::kContextError};

constexpr Failure kNameExists = {
    Status::kTensorAlreadyExists,
    "Tensor with name %s already exists in the context.\n"};
constexpr Failure kIdExists = {
    Status::kTensorNameCollision,
    "Tensor name hash collision occurred, tensor with name %s must be "
    "renamed.\n"};

bool isKnownVersion(const Kiv_Tensor_t& tensor) {
  const std::uint32_t version = format::enumValue(tensor.version);
  return version == KIV_TENSOR_VERSION_1 || version == KIV_TENSOR_VERSION_2;
}

}  // namespace

TensorRecording recordTensorCreate(session::Session& session,
                                   const Kiv_Tensor_t& tensor,
                                   TensorOwner owner,
                                   const session::Variable& ownerVariable,
                                   std::uint32_t number) {
  const bool isGraph = owner == TensorOwner::kGraph;
  const std::uint32_t program = session.programNumber();
  RecordedCall call(session, isGraph
                                 ? format::calls::kTensorCreateGraphTensor
                                 : format::calls::kTensorCreateContextTensor);
  const Name ownerName = call.use(ownerVariable);
  const auto name = isGraph ? call.code().name<Part::kGraphTensor>(
                                  NameOf<Family::kGraph>{ownerName}, number)
                            : call.code().name<Part::kContextTensor>(
                                  NameOf<Family::kContext>{ownerName}, number);
  writers::writeTensor(call, tensor, name, nullptr);
  const Status status =
      call.commit({ownerName, Argument::address(name)}, kTensorFailures);
  if (ok(status)) return {status, {{number, program}}};
  return {status == kTensorFailures.text ? Status::kOk : status, {}};
}

Status registerTensor(session::Session& session, TensorRegistry& registry,
                      const TensorRegistry::Room& room, Kiv_Tensor_t& tensor,
                      std::optional<TensorRegistry::Creation> creation) {
  using Added = TensorRegistry::Added;
  const bool known = isKnownVersion(tensor);
  const char* name = known && tensor.v1.name != nullptr ? tensor.v1.name : "";
  const std::uint32_t id = session.nextTensorId();
  switch (registry.add(room, id, name, creation)) {
    case Added::kNameExists:
      return fail(kNameExists, name);
    case Added::kIdExists:
      return fail(kIdExists, name);
    case Added::kYes:
      break;
  }
  if (known) tensor.v1.id = id;
  return Status::kOk;
}

}  // namespace kiv::recorders
