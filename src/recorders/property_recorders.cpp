#include "recorders/property_recorders.h"

#include "recorders/recorded_call.h"

namespace kiv::recorders {

Status recordPropertyHasCapability(session::Session& session,
                                   KivProperty_Key_t key) {
  constexpr output::WriteFailures kPropertyFailures = {Status::kPropertyError,
                                                       Status::kPropertyError};
  RecordedCall call(session, format::calls::kPropertyHasCapability);
  return call.commit({Argument::cast("KivProperty_Key_t", key)},
                     kPropertyFailures);
}

}  // namespace kiv::recorders
