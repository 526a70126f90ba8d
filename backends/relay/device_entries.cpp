#include "api/entries.h"
#include "call.h"
#include "entries.h"

namespace kiv::relay {
namespace {

using api::Code;

// The recorder looks at none of these out-pointers but for null.
Code deviceGetPlatformInfo(Kiv_LogHandle_t log,
                           const KivDevice_PlatformInfo_t** info) {
  Call call("deviceGetPlatformInfo");
  call.record([&](Relay&) { return api::deviceGetPlatformInfo(log, info); });
  return call.answer(real().deviceGetPlatformInfo(log, info));
}

Code deviceGetInfrastructure(KivDevice_Infrastructure_t* infrastructure) {
  Call call("deviceGetInfrastructure");
  call.record(
      [&](Relay&) { return api::deviceGetInfrastructure(infrastructure); });
  return call.answer(real().deviceGetInfrastructure(infrastructure));
}

Code deviceCreate(Kiv_LogHandle_t log, const KivDevice_Config_t** config,
                  Kiv_DeviceHandle_t* device) {
  Call call("deviceCreate");
  Kiv_DeviceHandle_t recorded = nullptr;
  call.record([&](Relay&) {
    return api::deviceCreate(log, config, device ? &recorded : nullptr);
  });
  const Code code = real().deviceCreate(log, config, device);
  if (code == KIV_SUCCESS)
    call.note([&](Relay& relay) { relay.devices.add(device, {recorded}); });
  return call.answer(code);
}

Code deviceSetConfig(Kiv_DeviceHandle_t device,
                     const KivDevice_Config_t** config) {
  Call call("deviceSetConfig");
  call.record([&](Relay& relay) {
    return api::deviceSetConfig(relay.devices.recorded(device), config);
  });
  return call.answer(real().deviceSetConfig(device, config));
}

Code deviceGetInfo(Kiv_DeviceHandle_t device,
                   const KivDevice_PlatformInfo_t** info) {
  Call call("deviceGetInfo");
  call.record([&](Relay& relay) {
    return api::deviceGetInfo(relay.devices.recorded(device), info);
  });
  return call.answer(real().deviceGetInfo(device, info));
}

// The recorder goes on knowing a device that was freed, and so does the table.
Code deviceFree(Kiv_DeviceHandle_t device) {
  Call call("deviceFree");
  call.record([&](Relay& relay) {
    return api::deviceFree(relay.devices.recorded(device));
  });
  return call.answer(real().deviceFree(device));
}

}  // namespace

void addDeviceEntries(KivInterface_Implementation_t& table) {
  table.deviceGetPlatformInfo = deviceGetPlatformInfo;
  table.deviceGetInfrastructure = deviceGetInfrastructure;
  table.deviceCreate = deviceCreate;
  table.deviceSetConfig = deviceSetConfig;
  table.deviceGetInfo = deviceGetInfo;
  table.deviceFree = deviceFree;
}

}  // namespace kiv::relay
