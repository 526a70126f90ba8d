#include "records.h"

// Extensions are left out: they are the backend's own and are not recorded.
namespace kiv::tracer {

void print(LineWriter& line, const KivDevice_CoreInfo_t& core) {
  line.begin('{').field("version", core.version);
  if (enumValue(core.version) == KIV_DEVICE_CORE_INFO_VERSION_1)
    line.field("id", core.v1.coreId).field("type", core.v1.coreType);
  line.end('}');
}

void print(LineWriter& line, const KivDevice_HardwareDeviceInfo_t& device) {
  line.begin('{').field("version", device.version);
  if (enumValue(device.version) == KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1) {
    line.field("id", device.v1.deviceId)
        .field("type", device.v1.deviceType)
        .field("count", device.v1.numCores)
        .field("cores", Array{device.v1.cores, device.v1.numCores});
  }
  line.end('}');
}

void print(LineWriter& line, const KivDevice_PlatformInfo_t& platform) {
  line.begin('{').field("version", platform.version);
  if (enumValue(platform.version) == KIV_DEVICE_PLATFORM_INFO_VERSION_1) {
    line.field("count", platform.v1.numHwDevices)
        .field("devices",
               Array{platform.v1.hwDevices, platform.v1.numHwDevices});
  }
  line.end('}');
}

}  // namespace kiv::tracer
