#include "writers/platform_info_writer.h"

namespace kiv::writers {
namespace {

using output::decimal;
using output::Texts;

constexpr Failure kCoreVersion = {Status::kNotSupported,
                                  "Unsupported coreInfo version: %d"};
constexpr Failure kDeviceVersion = {Status::kNotSupported,
                                    "Unsupported deviceInfo version: %d"};
constexpr Failure kPlatformVersion = {Status::kNotSupported,
                                      "Unsupported platformInfo version: %d"};

template <typename Record>
Status checkVersion(WriteScope& scope, const Record& record,
                    const Failure& failure) {
  const std::uint32_t version = enumValue(record.version);
  if (version == 1) return Status::kOk;
  return scope.fail(failure, static_cast<int>(version));
}

// The two records of a level: name + "_v1" with the members, and `name`.
template <typename Record>
void writeLevel(WriteScope& scope, const std::string& type,
                const Record& record, const std::string& name,
                const Texts& members) {
  scope.code.emitStruct(type + "V1_t", name + "_v1", members);
  const std::string versionType = type + "Version_t";
  scope.code.emitStruct(
      type + "_t", name,
      {cast(versionType.c_str(), record.version), ".v1 = " + name + "_v1"});
}

// The records of the level below as an array called `array`; gives the text of
// the field that points to it. C has no empty arrays, so one without elements
// is NULL.
template <typename Record, typename WriteOne>
Status writeChildren(WriteScope& scope, const char* type, const Record* records,
                     std::uint32_t count, const std::string& childBase,
                     const std::string& array, WriteOne&& writeOne,
                     std::string& field) {
  field = "NULL";
  if (records == nullptr || count == 0) return Status::kOk;
  Texts names;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::string name =
        scope.names.unique(childBase, session::Family::kDeviceOrCore);
    if (const Status s = writeOne(scope, records[i], name); !ok(s)) return s;
    names.push_back(std::move(name));
  }
  scope.code.emitArray(type, array, names);
  field = array;
  return Status::kOk;
}

Status writeCore(WriteScope& scope, const KivDevice_CoreInfo_t& core,
                 const std::string& name) {
  if (const Status s = checkVersion(scope, core, kCoreVersion); !ok(s))
    return s;
  if (core.v1.coreInfoExtension != nullptr)
    scope.messages.warn(
        "Parsing of backend-specific coreInfo extensions not supported");
  writeLevel(scope, "KivDevice_CoreInfo", core, name,
             {decimal(core.v1.coreId), decimal(core.v1.coreType), "NULL"});
  return Status::kOk;
}

Status writeDevice(WriteScope& scope,
                   const KivDevice_HardwareDeviceInfo_t& device,
                   const std::string& name) {
  if (const Status s = checkVersion(scope, device, kDeviceVersion); !ok(s))
    return s;
  std::string cores;
  if (const Status s = writeChildren(
          scope, "KivDevice_CoreInfo_t", device.v1.cores, device.v1.numCores,
          name + "_core", name + "_cores", writeCore, cores);
      !ok(s))
    return s;
  if (device.v1.deviceInfoExtension != nullptr)
    scope.messages.warn(
        "Parsing of backend-specific deviceInfo extensions not supported");
  writeLevel(scope, "KivDevice_HardwareDeviceInfo", device, name,
             {decimal(device.v1.deviceId), decimal(device.v1.deviceType),
              decimal(device.v1.numCores), cores, "NULL"});
  return Status::kOk;
}

}  // namespace

Status writePlatformInfo(WriteScope& scope,
                         const KivDevice_PlatformInfo_t& info,
                         const std::string& name) {
  if (const Status s = checkVersion(scope, info, kPlatformVersion); !ok(s))
    return s;
  std::string devices;
  if (const Status s = writeChildren(scope, "KivDevice_HardwareDeviceInfo_t",
                                     info.v1.hwDevices, info.v1.numHwDevices,
                                     name + "_hwDevice", name + "_hwDevices",
                                     writeDevice, devices);
      !ok(s))
    return s;
  writeLevel(scope, "KivDevice_PlatformInfo", info, name,
             {decimal(info.v1.numHwDevices), devices});
  return Status::kOk;
}

}  // namespace kiv::writers
