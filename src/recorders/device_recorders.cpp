#include "recorders/device_recorders.h"

#include "recorders/config_array.h"
#include "recorders/recorded_call.h"
#include "writers/config_writers.h"

namespace kiv::recorders {
namespace {

using session::SaverDevice;
using session::Session;

constexpr output::WriteFailures kWriteFailures = {Status::kDeviceError,
                                                  Status::kDeviceError};

std::string writeConfigs(RecordedCall& call, const KivDevice_Config_t** config,
                         const std::string& base) {
  return writeConfigArray(call, writers::deviceConfigs(), config, base, base);
}

std::string outPlatformInfo(RecordedCall& call,
                            const KivDevice_PlatformInfo_t** platformInfo) {
  return call.out(platformInfo, "const KivDevice_PlatformInfo_t*",
                  "platformInfo");
}

}  // namespace

Status recordDeviceCreate(Session& session, const SaverDevice& device,
                          const KivDevice_Config_t** config) {
  RecordedCall call(session, "deviceCreate");
  const std::string& name = device.variable().name();
  const std::string configs = writeConfigs(call, config, name);
  const std::string address = call.declare("Kiv_DeviceHandle_t", name);
  return call.commit({"loghandle", configs, address}, kWriteFailures);
}

Status recordDeviceSetConfig(Session& session, const SaverDevice& device,
                             const KivDevice_Config_t** config) {
  RecordedCall call(session, "deviceSetConfig");
  const std::string name = call.use(device.variable());
  const std::string configs = writeConfigs(call, config, name);
  return call.commit({name, configs}, kWriteFailures);
}

Status recordDeviceGetInfo(Session& session, const SaverDevice& device,
                           const KivDevice_PlatformInfo_t** platformInfo) {
  RecordedCall call(session, "deviceGetInfo");
  return call.commit(
      {call.use(device.variable()), outPlatformInfo(call, platformInfo)},
      kWriteFailures);
}

Status recordDeviceGetPlatformInfo(
    Session& session, const KivDevice_PlatformInfo_t** platformInfo) {
  RecordedCall call(session, "deviceGetPlatformInfo");
  return call.commit({"loghandle", outPlatformInfo(call, platformInfo)},
                     kWriteFailures);
}

Status recordDeviceGetInfrastructure(
    Session& session, const KivDevice_Infrastructure_t* infrastructure) {
  RecordedCall call(session, "deviceGetInfrastructure");
  if (infrastructure != nullptr) {
    call.code().emitLine(
        "// Saver does not record calls to backend-specific APIs via device "
        "infrastructure, they must be manually inserted if desired.");
  }
  return call.commit(
      {call.out(infrastructure, "KivDevice_Infrastructure_t", "deviceInfra")},
      kWriteFailures);
}

Status recordDeviceFree(Session& session, const SaverDevice& device) {
  RecordedCall call(session, "deviceFree");
  return call.commit({call.use(device.variable())}, kWriteFailures);
}

}  // namespace kiv::recorders
