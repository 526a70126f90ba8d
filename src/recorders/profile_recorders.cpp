#include "recorders/profile_recorders.h"

#include "recorders/recorded_call.h"
#include "writers/config_writers.h"

namespace kiv::recorders {
namespace {

namespace calls = format::calls;
using session::SaverProfile;
using session::Session;

constexpr output::WriteFailures kProfileFailures = {Status::kProfileError,
                                                    Status::kProfileError};

constexpr std::string_view kListType = "const KivProfile_EventId_t*";

Argument eventArgument(KivProfile_EventId_t event) {
  return Argument::cast("KivProfile_EventId_t", event);
}

// Lets a client that walks the events come to an end.
void reportNoEvents(const KivProfile_EventId_t** events, uint32_t* numEvents) {
  if (events != nullptr) *events = nullptr;
  if (numEvents != nullptr) *numEvents = 0;
}

// A query of an event's data, whose result the program leaves unused.
Status recordEventData(Session& session, const format::Function& function,
                       KivProfile_EventId_t event, const void* data,
                       std::string_view base) {
  RecordedCall call(session, function);
  if (data != nullptr) {
    call.code().emitLine(
        "// The event data will not be used in any way, any usage must be "
        "inserted manually if desired.");
  }
  const std::string_view type = function.arguments.back().type;
  return call.commit({eventArgument(event), call.out(data, type, base)},
                     kProfileFailures);
}

}  // namespace

Status recordProfileCreate(Session& session, const SaverProfile& profile,
                           Kiv_BackendHandle_t backend,
                           KivProfile_Level_t level) {
  RecordedCall call(session, calls::kProfileCreate);
  const Name backendName = call.backend(backend);
  const Argument address =
      call.declare("Kiv_ProfileHandle_t", call.use(profile));
  return call.commit(
      {backendName, Argument::cast("KivProfile_Level_t", level), address},
      kProfileFailures);
}

Status recordProfileSetConfig(Session& session, const SaverProfile& profile,
                              const KivProfile_Config_t** config) {
  RecordedCall call(session, calls::kProfileSetConfig);
  const Name name = call.use(profile);
  const Name configs =
      writers::writeConfigs(call, config, name.text, name.text);
  return call.commit({name, configs}, kProfileFailures);
}

Status recordProfileGetEvents(Session& session, const SaverProfile& profile,
                              const KivProfile_EventId_t** events,
                              uint32_t* numEvents) {
  RecordedCall call(session, calls::kProfileGetEvents);
  const Argument list = call.out(events, kListType, "profileEventIds");
  const Argument count = call.out(numEvents, "uint32_t", "numEvents");
  const Status status =
      call.commit({call.use(profile), list, count}, kProfileFailures);
  if (ok(status)) reportNoEvents(events, numEvents);
  return status;
}

Status recordProfileGetSubEvents(Session& session, KivProfile_EventId_t event,
                                 const KivProfile_EventId_t** subEvents,
                                 uint32_t* numSubEvents) {
  RecordedCall call(session, calls::kProfileGetSubEvents);
  const Argument list = call.out(subEvents, kListType, "subEventIds");
  const Argument count = call.out(numSubEvents, "uint32_t", "numSubEvents");
  const Status status =
      call.commit({eventArgument(event), list, count}, kProfileFailures);
  if (ok(status)) reportNoEvents(subEvents, numSubEvents);
  return status;
}

Status recordProfileGetEventData(Session& session, KivProfile_EventId_t event,
                                 const KivProfile_EventData_t* data) {
  return recordEventData(session, calls::kProfileGetEventData, event, data,
                         "eventData");
}

Status recordProfileGetExtendedEventData(
    Session& session, KivProfile_EventId_t event,
    const KivProfile_ExtendedEventData_t* data) {
  return recordEventData(session, calls::kProfileGetExtendedEventData, event,
                         data, "extendedEventData");
}

Status recordProfileFree(Session& session, const SaverProfile& profile) {
  RecordedCall call(session, calls::kProfileFree);
  return call.commit({call.use(profile)}, kProfileFailures);
}

}  // namespace kiv::recorders
