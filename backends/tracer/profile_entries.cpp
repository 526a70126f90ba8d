#include "call.h"
#include "entries.h"

// Profiles have no events, so a client that walks them asks the same questions
// here as while it is recorded.
namespace kiv::tracer {
namespace {

Kiv_ErrorHandle_t profileCreate(Kiv_BackendHandle_t backend,
                                KivProfile_Level_t level,
                                Kiv_ProfileHandle_t* profile) noexcept {
  return traced("profileCreate", [&](Call& call) {
    call.handle(Kind::kBackend, backend).value(level);
    call.create(Kind::kProfile, profile);
  });
}

Kiv_ErrorHandle_t profileSetConfig(
    Kiv_ProfileHandle_t profile, const KivProfile_Config_t** config) noexcept {
  return traced("profileSetConfig", [&](Call& call) {
    call.handle(Kind::kProfile, profile).value(List{config});
  });
}

Kiv_ErrorHandle_t profileGetEvents(Kiv_ProfileHandle_t profile,
                                   const KivProfile_EventId_t** events,
                                   uint32_t* numEvents) noexcept {
  return traced("profileGetEvents", [&](Call& call) {
    call.handle(Kind::kProfile, profile)
        .store(events, nullptr)
        .store(numEvents, 0);
  });
}

Kiv_ErrorHandle_t profileGetSubEvents(KivProfile_EventId_t event,
                                      const KivProfile_EventId_t** subEvents,
                                      uint32_t* numSubEvents) noexcept {
  return traced("profileGetSubEvents", [&](Call& call) {
    call.value(event).store(subEvents, nullptr).store(numSubEvents, 0);
  });
}

Kiv_ErrorHandle_t profileGetEventData(KivProfile_EventId_t event,
                                      KivProfile_EventData_t* data) noexcept {
  return traced("profileGetEventData", [&](Call& call) {
    KivProfile_EventData_t nothing = {};
    nothing.identifier = "";
    call.value(event).store(data, nothing);
  });
}

Kiv_ErrorHandle_t profileGetExtendedEventData(
    KivProfile_EventId_t event, KivProfile_ExtendedEventData_t* data) noexcept {
  return traced("profileGetExtendedEventData", [&](Call& call) {
    KivProfile_ExtendedEventData_t nothing = {};
    nothing.identifier = "";
    call.value(event).store(data, nothing);
  });
}

Kiv_ErrorHandle_t profileFree(Kiv_ProfileHandle_t profile) noexcept {
  return traced("profileFree",
                [&](Call& call) { call.handle(Kind::kProfile, profile); });
}

}  // namespace

void addProfileEntries(KivInterface_Implementation_t& table) {
  table.profileCreate = profileCreate;
  table.profileSetConfig = profileSetConfig;
  table.profileGetEvents = profileGetEvents;
  table.profileGetSubEvents = profileGetSubEvents;
  table.profileGetEventData = profileGetEventData;
  table.profileGetExtendedEventData = profileGetExtendedEventData;
  table.profileFree = profileFree;
}

}  // namespace kiv::tracer
