#include <thread>
#include <vector>

#include "entries.h"
#include "entry.h"
#include "objects.h"

namespace kiv::ort {
namespace {

constexpr auto kInvalidDevice = KIV_DEVICE_ERROR_INVALID_HANDLE;

// The description of the processor with its cores, which never changes.
class Platform {
 public:
  Platform() {
    for (std::uint32_t i = 0; i < std::thread::hardware_concurrency(); ++i) {
      KivDevice_CoreInfo_t core{};
      core.version = KIV_DEVICE_CORE_INFO_VERSION_1;
      core.v1.coreId = i;
      cores_.push_back(core);
    }
    device_.version = KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1;
    device_.v1.numCores = static_cast<std::uint32_t>(cores_.size());
    device_.v1.cores = cores_.data();
    info_.version = KIV_DEVICE_PLATFORM_INFO_VERSION_1;
    info_.v1.numHwDevices = 1;
    info_.v1.hwDevices = &device_;
  }
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  const KivDevice_PlatformInfo_t& info() const { return info_; }

 private:
  std::vector<KivDevice_CoreInfo_t> cores_;
  KivDevice_HardwareDeviceInfo_t device_{};
  KivDevice_PlatformInfo_t info_{};
};

void giveInfo(const KivDevice_PlatformInfo_t** info) {
  static const Platform kPlatform;
  if (info == nullptr)
    refuse(KIV_DEVICE_ERROR_GENERAL, "the out-pointer is null");
  *info = &kPlatform.info();
}

void readConfigs(const KivDevice_Config_t** list) {
  forEachConfig(list, [](const KivDevice_Config_t& config) {
    if (config.option != KIV_DEVICE_CONFIG_OPTION_CUSTOM &&
        config.option != KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO) {
      refuse(
          KIV_COMMON_ERROR_INVALID_ARGUMENT,
          "a config has the unknown option " + std::to_string(config.option));
    }
  });
}

Kiv_ErrorHandle_t deviceGetPlatformInfo(
    Kiv_LogHandle_t, const KivDevice_PlatformInfo_t** info) noexcept {
  return enter("deviceGetPlatformInfo", KIV_DEVICE_ERROR_GENERAL,
               [&] { giveInfo(info); });
}

// The record stays as long as the library.
Kiv_ErrorHandle_t deviceFreePlatformInfo(
    Kiv_LogHandle_t, const KivDevice_PlatformInfo_t*) noexcept {
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t deviceCreate(Kiv_LogHandle_t,
                               const KivDevice_Config_t** config,
                               Kiv_DeviceHandle_t* handle) noexcept {
  return enter("deviceCreate", KIV_DEVICE_ERROR_GENERAL, [&] {
    if (handle == nullptr)
      refuse(KIV_COMMON_ERROR_INVALID_ARGUMENT, "the out-pointer is null");
    readConfigs(config);
    *handle = Handles<Device>::instance().add(std::make_shared<Device>());
  });
}

Kiv_ErrorHandle_t deviceSetConfig(Kiv_DeviceHandle_t handle,
                                  const KivDevice_Config_t** config) noexcept {
  return enter("deviceSetConfig", KIV_DEVICE_ERROR_GENERAL, [&] {
    require<Device>(handle, kInvalidDevice);
    readConfigs(config);
  });
}

Kiv_ErrorHandle_t deviceGetInfo(
    Kiv_DeviceHandle_t handle, const KivDevice_PlatformInfo_t** info) noexcept {
  return enter("deviceGetInfo", KIV_DEVICE_ERROR_GENERAL, [&] {
    require<Device>(handle, kInvalidDevice);
    giveInfo(info);
  });
}

Kiv_ErrorHandle_t deviceFree(Kiv_DeviceHandle_t handle) noexcept {
  return enter("deviceFree", KIV_DEVICE_ERROR_GENERAL, [&] {
    require<Device>(handle, kInvalidDevice);
    Handles<Device>::instance().remove(handle);
  });
}

}  // namespace

void addDeviceEntries(KivInterface_Implementation_t& table) {
  table.deviceGetPlatformInfo = deviceGetPlatformInfo;
  table.deviceFreePlatformInfo = deviceFreePlatformInfo;
  table.deviceCreate = deviceCreate;
  table.deviceSetConfig = deviceSetConfig;
  table.deviceGetInfo = deviceGetInfo;
  table.deviceFree = deviceFree;
}

}  // namespace kiv::ort
