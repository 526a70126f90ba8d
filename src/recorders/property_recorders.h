#pragma once

#include "KivProperty.h"
#include "session/session.h"

namespace kiv::recorders {

// Writes the capability query and returns what the client gets: 0, or 1999 when
// the call could not be written. From any thread.
Status recordPropertyHasCapability(session::Session& session,
                                   KivProperty_Key_t key);

}  // namespace kiv::recorders
