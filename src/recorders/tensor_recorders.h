#pragma once

#include "KivTensor.h"
#include "session/session.h"

namespace kiv::recorders {

enum class TensorOwner { kContext, kGraph };

// A tensor's creation in the recording, or the writers' status. There may be
// neither: the status says nothing of text that could not be written.
struct TensorRecording {
  Status status;
  std::optional<session::TensorRegistry::Creation> creation;
};

// Writes the creation of a tensor as the owner's next tensor variable, with the
// id that the client's record holds at the time. From any thread.
TensorRecording recordTensorCreate(session::Session& session,
                                   const Kiv_Tensor_t& tensor,
                                   TensorOwner owner,
                                   const session::Variable& ownerVariable,
                                   std::uint32_t number);

// Gives a tensor its id, in the client's record too, and makes it known to its
// owner; `creation` is empty when it is not in the recording. 7003 or 7006 for
// an id that the owner has.
Status registerTensor(
    session::Session& session, session::TensorRegistry& registry,
    const session::TensorRegistry::Room& room, Kiv_Tensor_t& tensor,
    std::optional<session::TensorRegistry::Creation> creation);

}  // namespace kiv::recorders
