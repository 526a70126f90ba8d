#include "api/entries.h"
#include "call.h"
#include "entries.h"

namespace kiv::relay {
namespace {

using api::Code;

Code profileCreate(Kiv_BackendHandle_t backend, KivProfile_Level_t level,
                   Kiv_ProfileHandle_t* profile) {
  Call call("profileCreate");
  Kiv_ProfileHandle_t recorded = nullptr;
  call.record([&](Relay& relay) {
    return api::profileCreate(relay.backends.recorded(backend), level,
                              profile ? &recorded : nullptr);
  });
  const Code code = real().profileCreate(backend, level, profile);
  if (code == KIV_SUCCESS)
    call.note([&](Relay& relay) { relay.profiles.add(profile, {recorded}); });
  return call.answer(code);
}

Code profileSetConfig(Kiv_ProfileHandle_t profile,
                      const KivProfile_Config_t** config) {
  Call call("profileSetConfig");
  call.record([&](Relay& relay) {
    return api::profileSetConfig(relay.profiles.recorded(profile), config);
  });
  return call.answer(real().profileSetConfig(profile, config));
}

Code profileGetEvents(Kiv_ProfileHandle_t profile,
                      const KivProfile_EventId_t** events, uint32_t* count) {
  Call call("profileGetEvents");
  call.record([&](Relay& relay) {
    const KivProfile_EventId_t* none = nullptr;
    uint32_t noCount = 0;
    return api::profileGetEvents(relay.profiles.recorded(profile),
                                 events ? &none : nullptr,
                                 count ? &noCount : nullptr);
  });
  return call.answer(real().profileGetEvents(profile, events, count));
}

Code profileGetSubEvents(KivProfile_EventId_t event,
                         const KivProfile_EventId_t** events, uint32_t* count) {
  Call call("profileGetSubEvents");
  call.record([&](Relay&) {
    const KivProfile_EventId_t* none = nullptr;
    uint32_t noCount = 0;
    return api::profileGetSubEvents(event, events ? &none : nullptr,
                                    count ? &noCount : nullptr);
  });
  return call.answer(real().profileGetSubEvents(event, events, count));
}

// The recorder writes to neither form of the data.
Code profileGetEventData(KivProfile_EventId_t event,
                         KivProfile_EventData_t* data) {
  Call call("profileGetEventData");
  call.record([&](Relay&) { return api::profileGetEventData(event, data); });
  return call.answer(real().profileGetEventData(event, data));
}

Code profileGetExtendedEventData(KivProfile_EventId_t event,
                                 KivProfile_ExtendedEventData_t* data) {
  Call call("profileGetExtendedEventData");
  call.record(
      [&](Relay&) { return api::profileGetExtendedEventData(event, data); });
  return call.answer(real().profileGetExtendedEventData(event, data));
}

Code profileFree(Kiv_ProfileHandle_t profile) {
  Call call("profileFree");
  call.record([&](Relay& relay) {
    const Code code = api::profileFree(relay.profiles.recorded(profile));
    relay.profiles.erase(profile);
    return code;
  });
  return call.answer(real().profileFree(profile));
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

}  // namespace kiv::relay
