#include "entries.h"
#include "entry.h"
#include "objects.h"
#include "profile.h"

namespace kiv::ort {
namespace {

constexpr auto kInvalidProfile = KIV_PROFILE_ERROR_INVALID_HANDLE;

std::shared_ptr<const Event> requireEvent(KivProfile_EventId_t id) {
  auto event = findEvent(id);
  if (event == nullptr)
    refuse(KIV_PROFILE_ERROR_GENERAL,
           "there is no event " + std::to_string(id));
  return event;
}

template <typename Data>
void fillData(const Event& event, Data& data) {
  data.type = static_cast<std::uint32_t>(event.values.type);
  data.unit = KIV_PROFILE_EVENT_UNIT_MICROSECONDS;
  data.value = event.values.microseconds;
  data.identifier = event.values.identifier.c_str();
}

void give(std::span<const KivProfile_EventId_t> ids,
          const KivProfile_EventId_t** events, uint32_t* count) {
  if (events != nullptr) *events = ids.data();
  if (count != nullptr) *count = static_cast<std::uint32_t>(ids.size());
}

Kiv_ErrorHandle_t profileCreate(Kiv_BackendHandle_t backend,
                                KivProfile_Level_t level,
                                Kiv_ProfileHandle_t* handle) noexcept {
  return enter("profileCreate", KIV_PROFILE_ERROR_GENERAL, [&] {
    if (handle == nullptr)
      refuse(KIV_COMMON_ERROR_INVALID_ARGUMENT, "the out-pointer is null");
    *handle = nullptr;
    optional<Backend>(backend, KIV_BACKEND_ERROR_INVALID_HANDLE);
    *handle =
        Handles<Profile>::instance().add(std::make_shared<Profile>(level));
  });
}

Kiv_ErrorHandle_t profileSetConfig(Kiv_ProfileHandle_t handle,
                                   const KivProfile_Config_t** list) noexcept {
  return enter("profileSetConfig", KIV_PROFILE_ERROR_GENERAL, [&] {
    const auto profile = require<Profile>(handle, kInvalidProfile);
    forEachConfig(list, [&](const KivProfile_Config_t& config) {
      if (config.option == KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS) {
        profile->setMostEvents(config.numMaxEvents);
      } else if (config.option != KIV_PROFILE_CONFIG_OPTION_CUSTOM) {
        refuse(
            KIV_COMMON_ERROR_INVALID_ARGUMENT,
            "a config has the unknown option " + std::to_string(config.option));
      }
    });
  });
}

Kiv_ErrorHandle_t profileGetEvents(Kiv_ProfileHandle_t handle,
                                   const KivProfile_EventId_t** events,
                                   uint32_t* count) noexcept {
  return enter("profileGetEvents", KIV_PROFILE_ERROR_GENERAL, [&] {
    const auto profile = require<Profile>(handle, kInvalidProfile);
    profile->collectNodes();
    give(profile->events(), events, count);
  });
}

Kiv_ErrorHandle_t profileGetSubEvents(KivProfile_EventId_t id,
                                      const KivProfile_EventId_t** events,
                                      uint32_t* count) noexcept {
  return enter("profileGetSubEvents", KIV_PROFILE_ERROR_GENERAL,
               [&] { give(requireEvent(id)->subEvents, events, count); });
}

Kiv_ErrorHandle_t profileGetEventData(KivProfile_EventId_t id,
                                      KivProfile_EventData_t* data) noexcept {
  return enter("profileGetEventData", KIV_PROFILE_ERROR_GENERAL, [&] {
    const auto event = requireEvent(id);
    if (data != nullptr) fillData(*event, *data);
  });
}

Kiv_ErrorHandle_t profileGetExtendedEventData(
    KivProfile_EventId_t id, KivProfile_ExtendedEventData_t* data) noexcept {
  return enter("profileGetExtendedEventData", KIV_PROFILE_ERROR_GENERAL, [&] {
    const auto event = requireEvent(id);
    if (data == nullptr) return;
    *data = {};
    fillData(*event, *data);
    data->timestamp = event->timestamp;
  });
}

Kiv_ErrorHandle_t profileFree(Kiv_ProfileHandle_t handle) noexcept {
  return enter("profileFree", KIV_PROFILE_ERROR_GENERAL, [&] {
    require<Profile>(handle, kInvalidProfile);
    Handles<Profile>::instance().remove(handle);
  });
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

}  // namespace kiv::ort
