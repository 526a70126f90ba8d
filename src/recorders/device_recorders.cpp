#include "recorders/device_recorders.h"

#include "recorders/recorded_call.h"
#include "writers/config_writers.h"

namespace kiv::recorders {
namespace {

namespace calls = format::calls;
using session::SaverDevice;
using session::Session;

constexpr output::WriteFailures kDeviceFailures = {Status::kDeviceError,
                                                   Status::kDeviceError};

Argument logHandle() { return Argument::fixed(format::kLogHandleVariable); }

Name writeConfigs(RecordedCall& call, const KivDevice_Config_t** config,
                  Name device) {
  return writers::writeConfigs(call, config, device.text, device.text);
}

Argument outPlatformInfo(RecordedCall& call,
                         const KivDevice_PlatformInfo_t** platformInfo) {
  return call.out(platformInfo, "const KivDevice_PlatformInfo_t*",
                  "platformInfo");
}

}  // namespace

Status recordDeviceCreate(Session& session, const SaverDevice& device,
                          const KivDevice_Config_t** config) {
  RecordedCall call(session, calls::kDeviceCreate);
  const Name name = call.use(device);
  const Name configs = writeConfigs(call, config, name);
  const Argument address = call.declare("Kiv_DeviceHandle_t", name);
  return call.commit({logHandle(), configs, address}, kDeviceFailures);
}

Status recordDeviceSetConfig(Session& session, const SaverDevice& device,
                             const KivDevice_Config_t** config) {
  RecordedCall call(session, calls::kDeviceSetConfig);
  const Name name = call.use(device);
  const Name configs = writeConfigs(call, config, name);
  return call.commit({name, configs}, kDeviceFailures);
}

Status recordDeviceGetInfo(Session& session, const SaverDevice& device,
                           const KivDevice_PlatformInfo_t** platformInfo) {
  RecordedCall call(session, calls::kDeviceGetInfo);
  return call.commit({call.use(device), outPlatformInfo(call, platformInfo)},
                     kDeviceFailures);
}

Status recordDeviceGetPlatformInfo(
    Session& session, const KivDevice_PlatformInfo_t** platformInfo) {
  RecordedCall call(session, calls::kDeviceGetPlatformInfo);
  return call.commit({logHandle(), outPlatformInfo(call, platformInfo)},
                     kDeviceFailures);
}

Status recordDeviceGetInfrastructure(
    Session& session, const KivDevice_Infrastructure_t* infrastructure) {
  RecordedCall call(session, calls::kDeviceGetInfrastructure);
  if (infrastructure != nullptr) {
    call.code().emitLine(
        "// Saver does not record calls to backend-specific APIs via device "
        "infrastructure, they must be manually inserted if desired.");
  }
  return call.commit(
      {call.out(infrastructure, "KivDevice_Infrastructure_t", "deviceInfra")},
      kDeviceFailures);
}

Status recordDeviceFree(Session& session, const SaverDevice& device) {
  RecordedCall call(session, calls::kDeviceFree);
  return call.commit({call.use(device)}, kDeviceFailures);
}

}  // namespace kiv::recorders
