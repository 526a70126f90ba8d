#pragma once

#include "KivTensor.h"
#include "session/session.h"

namespace kiv::recorders {

enum class TensorOwner { kContext, kGraph };

struct TensorRecording {
  Status status;
  // Whether the call is in the recording. The status says nothing of text that
  // could not be written.
  bool isRecorded;
};

// Writes the creation of a tensor as `variable`, with the id that the client's
// record holds at the time.
TensorRecording recordTensorCreate(session::Session& session,
                                   const std::string& variable,
                                   const Kiv_Tensor_t& tensor,
                                   TensorOwner owner,
                                   const session::Variable& ownerVariable);

// Gives a tensor its id, in the client's record too, and makes it known to its
// owner; `variable` is null when its creation is not in the recording. 7003 or
// 7006 for an id that the owner has.
Status registerTensor(session::Session& session,
                      session::TensorRegistry& registry, Kiv_Tensor_t& tensor,
                      std::shared_ptr<const session::Variable> variable);

}  // namespace kiv::recorders
