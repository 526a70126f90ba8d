#include "call.h"
#include "entries.h"

namespace kiv::tracer {
namespace {

Kiv_ErrorHandle_t deviceGetPlatformInfo(
    Kiv_LogHandle_t, const KivDevice_PlatformInfo_t** platformInfo) noexcept {
  return traced("deviceGetPlatformInfo", [&](Call& call) {
    call.log().store(platformInfo, call.tracer().platform.info());
  });
}

Kiv_ErrorHandle_t deviceFreePlatformInfo(
    Kiv_LogHandle_t, const KivDevice_PlatformInfo_t* platformInfo) noexcept {
  return traced("deviceFreePlatformInfo",
                [&](Call& call) { call.log().value(platformInfo); });
}

Kiv_ErrorHandle_t deviceGetInfrastructure(
    KivDevice_Infrastructure_t* infrastructure) noexcept {
  return traced("deviceGetInfrastructure",
                [&](Call& call) { call.store(infrastructure, nullptr); });
}

Kiv_ErrorHandle_t deviceCreate(Kiv_LogHandle_t,
                               const KivDevice_Config_t** config,
                               Kiv_DeviceHandle_t* device) noexcept {
  return traced("deviceCreate", [&](Call& call) {
    call.log().value(List{config}).create(Kind::kDevice, device);
  });
}

Kiv_ErrorHandle_t deviceSetConfig(Kiv_DeviceHandle_t device,
                                  const KivDevice_Config_t** config) noexcept {
  return traced("deviceSetConfig", [&](Call& call) {
    call.handle(Kind::kDevice, device).value(List{config});
  });
}

Kiv_ErrorHandle_t deviceGetInfo(
    Kiv_DeviceHandle_t device,
    const KivDevice_PlatformInfo_t** platformInfo) noexcept {
  return traced("deviceGetInfo", [&](Call& call) {
    call.handle(Kind::kDevice, device)
        .store(platformInfo, call.tracer().platform.info());
  });
}

Kiv_ErrorHandle_t deviceFree(Kiv_DeviceHandle_t device) noexcept {
  return traced("deviceFree",
                [&](Call& call) { call.handle(Kind::kDevice, device); });
}

}  // namespace

void addDeviceEntries(KivInterface_Implementation_t& table) {
  table.deviceGetPlatformInfo = deviceGetPlatformInfo;
  table.deviceFreePlatformInfo = deviceFreePlatformInfo;
  table.deviceGetInfrastructure = deviceGetInfrastructure;
  table.deviceCreate = deviceCreate;
  table.deviceSetConfig = deviceSetConfig;
  table.deviceGetInfo = deviceGetInfo;
  table.deviceFree = deviceFree;
}

}  // namespace kiv::tracer
