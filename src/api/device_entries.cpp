#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "recorders/device_recorders.h"

namespace kiv::api {
namespace {

using session::SaverDevice;
using session::Session;

constexpr CreationFailures kDeviceCreationFailures = {kDeviceOutIsNull,
                                                      kDeviceNotCreated};

Found<SaverDevice> findDevice(Session& session, Kiv_DeviceHandle_t handle) {
  return lookUp(session.devices(), handle, kDeviceIsNull, kDeviceIsUnknown);
}

}  // namespace

Code deviceGetPlatformInfo(Kiv_LogHandle_t,
                           const KivDevice_PlatformInfo_t** platformInfo) {
  return enter([&](Session& session) {
    return recorders::recordDeviceGetPlatformInfo(session, platformInfo);
  });
}

Code deviceGetInfrastructure(KivDevice_Infrastructure_t* infrastructure) {
  return enter([&](Session& session) {
    return recorders::recordDeviceGetInfrastructure(session, infrastructure);
  });
}

Code deviceCreate(Kiv_LogHandle_t, const KivDevice_Config_t** config,
                  Kiv_DeviceHandle_t* device) {
  return enter([&](Session& session) {
    return create(session, session.devices(), &Session::newDevice, device,
                  kDeviceCreationFailures, [&](const SaverDevice& created) {
                    return recorders::recordDeviceCreate(session, created,
                                                         config);
                  });
  });
}

Code deviceSetConfig(Kiv_DeviceHandle_t handle,
                     const KivDevice_Config_t** config) {
  return enter([&](Session& session) {
    const auto device = findDevice(session, handle);
    return device ? recorders::recordDeviceSetConfig(session, *device, config)
                  : device.status;
  });
}

Code deviceGetInfo(Kiv_DeviceHandle_t handle,
                   const KivDevice_PlatformInfo_t** platformInfo) {
  return enter([&](Session& session) {
    const auto device = findDevice(session, handle);
    return device
               ? recorders::recordDeviceGetInfo(session, *device, platformInfo)
               : device.status;
  });
}

Code deviceFree(Kiv_DeviceHandle_t handle) {
  return enter([&](Session& session) {
    const auto device = findDevice(session, handle);
    return device ? recorders::recordDeviceFree(session, *device)
                  : device.status;
  });
}

}  // namespace kiv::api
