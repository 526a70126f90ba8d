#include "recorders/profile_recorders.h"

#include "recorders/config_array.h"
#include "recorders/recorded_call.h"
#include "writers/config_writers.h"

namespace kiv::recorders {
namespace {

using output::decimal;
using session::SaverProfile;
using session::Session;

constexpr output::WriteFailures kWriteFailures = {Status::kProfileError,
                                                  Status::kProfileError};
constexpr output::WriteFailures kPropertyWriteFailures = {
    Status::kPropertyError, Status::kPropertyError};

std::string eventText(KivProfile_EventId_t event) {
  return "(KivProfile_EventId_t)" + decimal(event);
}

// Lets a client that walks the events come to an end.
void reportNoEvents(const KivProfile_EventId_t** events, uint32_t* numEvents) {
  if (events != nullptr) *events = nullptr;
  if (numEvents != nullptr) *numEvents = 0;
}

// A query of an event's data, whose result the program leaves unused.
Status recordEventData(Session& session, const char* function,
                       KivProfile_EventId_t event, const void* data,
                       const char* type, const char* base) {
  RecordedCall call(session, function);
  if (data != nullptr) {
    call.code().emitLine(
        "// The event data will not be used in any way, any usage must be "
        "inserted manually if desired.");
  }
  return call.commit({eventText(event), call.out(data, type, base)},
                     kWriteFailures);
}

}  // namespace

Status recordProfileCreate(Session& session, const SaverProfile& profile,
                           Kiv_BackendHandle_t backend,
                           KivProfile_Level_t level) {
  RecordedCall call(session, "profileCreate");
  const std::string backendText = call.backend(backend);
  const std::string address =
      call.declare("Kiv_ProfileHandle_t", profile.variable().name());
  return call.commit(
      {backendText, "(KivProfile_Level_t)" + decimal(level), address},
      kWriteFailures);
}

Status recordProfileSetConfig(Session& session, const SaverProfile& profile,
                              const KivProfile_Config_t** config) {
  RecordedCall call(session, "profileSetConfig");
  const std::string name = call.use(profile.variable());
  const std::string configs =
      writeConfigArray(call, writers::profileConfigs(), config, name, name);
  return call.commit({name, configs}, kWriteFailures);
}

Status recordProfileGetEvents(Session& session, const SaverProfile& profile,
                              const KivProfile_EventId_t** events,
                              uint32_t* numEvents) {
  RecordedCall call(session, "profileGetEvents");
  const std::string list =
      call.out(events, "const KivProfile_EventId_t*", "profileEventIds");
  const std::string count = call.out(numEvents, "uint32_t", "numEvents");
  const Status status =
      call.commit({call.use(profile.variable()), list, count}, kWriteFailures);
  if (ok(status)) reportNoEvents(events, numEvents);
  return status;
}

Status recordProfileGetSubEvents(Session& session, KivProfile_EventId_t event,
                                 const KivProfile_EventId_t** subEvents,
                                 uint32_t* numSubEvents) {
  RecordedCall call(session, "profileGetSubEvents");
  const std::string list =
      call.out(subEvents, "const KivProfile_EventId_t*", "subEventIds");
  const std::string count = call.out(numSubEvents, "uint32_t", "numSubEvents");
  const Status status =
      call.commit({eventText(event), list, count}, kWriteFailures);
  if (ok(status)) reportNoEvents(subEvents, numSubEvents);
  return status;
}

Status recordProfileGetEventData(Session& session, KivProfile_EventId_t event,
                                 const KivProfile_EventData_t* data) {
  return recordEventData(session, "profileGetEventData", event, data,
                         "KivProfile_EventData_t", "eventData");
}

Status recordProfileGetExtendedEventData(
    Session& session, KivProfile_EventId_t event,
    const KivProfile_ExtendedEventData_t* data) {
  return recordEventData(session, "profileGetExtendedEventData", event, data,
                         "KivProfile_ExtendedEventData_t", "extendedEventData");
}

Status recordProfileFree(Session& session, const SaverProfile& profile) {
  RecordedCall call(session, "profileFree");
  return call.commit({call.use(profile.variable())}, kWriteFailures);
}

Status recordPropertyHasCapability(Session& session, KivProperty_Key_t key) {
  RecordedCall call(session, "propertyHasCapability");
  return call.commit({"(KivProperty_Key_t)" + decimal(key)},
                     kPropertyWriteFailures);
}

}  // namespace kiv::recorders
