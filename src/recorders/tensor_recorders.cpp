#include "recorders/tensor_recorders.h"

#include "recorders/recorded_call.h"
#include "writers/tensor_writer.h"

namespace kiv::recorders {
namespace {

// Text that cannot be written goes by a code that no writer gives, since the
// client is not told of it.
constexpr output::WriteFailures kWriteFailures = {Status::kBackendError,
                                                  Status::kContextError};

constexpr Failure kNameExists = {
    Status::kTensorAlreadyExists,
    "Tensor with name %s already exists in the context.\n"};
constexpr Failure kIdExists = {
    Status::kTensorNameCollision,
    "Tensor name hash collision occurred, tensor with name %s must be "
    "renamed.\n"};

const char* functionOf(TensorOwner owner) {
  return owner == TensorOwner::kContext ? "tensorCreateContextTensor"
                                        : "tensorCreateGraphTensor";
}

bool isKnownVersion(const Kiv_Tensor_t& tensor) {
  const std::uint32_t version = writers::enumValue(tensor.version);
  return version == KIV_TENSOR_VERSION_1 || version == KIV_TENSOR_VERSION_2;
}

}  // namespace

TensorRecording recordTensorCreate(session::Session& session,
                                   const std::string& variable,
                                   const Kiv_Tensor_t& tensor,
                                   TensorOwner owner,
                                   const session::Variable& ownerVariable) {
  RecordedCall call(session, functionOf(owner));
  call.write([&](writers::WriteScope& scope) {
    return writers::writeTensor(scope, tensor, variable, nullptr);
  });
  const Status status =
      call.commit({call.use(ownerVariable), '&' + variable}, kWriteFailures);
  if (status == kWriteFailures.text) return {Status::kOk, false};
  return {status, ok(status)};
}

Status registerTensor(session::Session& session,
                      session::TensorRegistry& registry, Kiv_Tensor_t& tensor,
                      std::shared_ptr<const session::Variable> variable) {
  using Added = session::TensorRegistry::Added;
  const bool known = isKnownVersion(tensor);
  const char* name = known && tensor.v1.name != nullptr ? tensor.v1.name : "";
  const std::uint32_t id = session.nextTensorId();
  switch (registry.add(id, name, std::move(variable))) {
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
