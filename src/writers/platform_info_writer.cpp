#include "writers/platform_info_writer.h"

#include <vector>

#include "format/records.h"
#include "output/row_text.h"

namespace kiv::writers {
namespace {

namespace rows = format::rows;
using format::Part;

constexpr Failure kCoreVersion = {Status::kNotSupported,
                                  "Unsupported coreInfo version: %d"};
constexpr Failure kDeviceVersion = {Status::kNotSupported,
                                    "Unsupported deviceInfo version: %d"};
constexpr Failure kPlatformVersion = {Status::kNotSupported,
                                      "Unsupported platformInfo version: %d"};

// The member of a record's version; null, with the failure, for an unknown one.
template <typename Record>
const format::Member* versionOf(CallText& call, const Record& record,
                                std::span<const format::Member> versions,
                                const Failure& failure) {
  const std::uint32_t version = format::enumValue(record.version);
  const format::Member* member = format::findMember(versions, version);
  if (member == nullptr) call.fail(failure, static_cast<int>(version));
  return member;
}

// The records of the level below, each through `writeOne` under a name that
// begins with the owner's and `word`, and their array, which is the owner's
// part. C has no empty arrays, so one without elements is NULL.
template <Part kArray, Family kOwner, typename Record, typename WriteOne>
Name writeChildren(CallText& call, std::string_view type, NameOf<kOwner> owner,
                   std::string_view word, const Record* records,
                   std::uint32_t count, WriteOne&& writeOne) {
  if (records == nullptr || count == 0) return {};
  output::CodeStream& code = call.code();
  const std::string_view base = code.joined({owner.text, word}).text;
  std::vector<Name> names;
  for (std::uint32_t i = 0; i < count && !call.hasFailed(); ++i) {
    const auto name = call.unique<Family::kDeviceOrCore>(base);
    writeOne(call, records[i], name);
    names.push_back(name);
  }
  if (call.hasFailed()) return {};
  const Name array = code.name<kArray>(owner);
  code.emitNameArray(type, array, names);
  return array;
}

void writeCore(CallText& call, const KivDevice_CoreInfo_t& core,
               NameOf<Family::kDeviceOrCore> name) {
  const format::Member* version =
      versionOf(call, core, rows::kCoreInfoVersions, kCoreVersion);
  if (version == nullptr) return;
  if (core.v1.coreInfoExtension != nullptr)
    call.warn("Parsing of backend-specific coreInfo extensions not supported");
  const Name record = call.code().name<Part::kDeviceOrCoreV1>(name);
  call.code().emitStruct<rows::kCoreInfoV1>(record, &core.v1);
  call.code().emitStruct<rows::kCoreInfo>(name, &core, {{*version, record}});
}

void writeDevice(CallText& call, const KivDevice_HardwareDeviceInfo_t& device,
                 NameOf<Family::kDeviceOrCore> name) {
  const format::Member* version = versionOf(
      call, device, rows::kHardwareDeviceInfoVersions, kDeviceVersion);
  if (version == nullptr) return;
  const Name cores = writeChildren<Part::kCores>(call, rows::kCoreInfo.type,
                                                 name, "_core", device.v1.cores,
                                                 device.v1.numCores, writeCore);
  if (call.hasFailed()) return;
  if (device.v1.deviceInfoExtension != nullptr)
    call.warn(
        "Parsing of backend-specific deviceInfo extensions not supported");
  const Name record = call.code().name<Part::kDeviceOrCoreV1>(name);
  call.code().emitStruct<rows::kHardwareDeviceInfoV1>(record, &device.v1,
                                                      {cores});
  call.code().emitStruct<rows::kHardwareDeviceInfo>(name, &device,
                                                    {{*version, record}});
}

}  // namespace

void writePlatformInfo(CallText& call, const KivDevice_PlatformInfo_t& info,
                       NameOf<Family::kPlatformInfo> name) {
  const format::Member* version =
      versionOf(call, info, rows::kPlatformInfoVersions, kPlatformVersion);
  if (version == nullptr) return;
  const Name devices = writeChildren<Part::kHwDevices>(
      call, rows::kHardwareDeviceInfo.type, name, "_hwDevice",
      info.v1.hwDevices, info.v1.numHwDevices, writeDevice);
  if (call.hasFailed()) return;
  const Name record = call.code().name<Part::kPlatformInfoV1>(name);
  call.code().emitStruct<rows::kPlatformInfoV1>(record, &info.v1, {devices});
  call.code().emitStruct<rows::kPlatformInfo>(name, &info,
                                              {{*version, record}});
}

}  // namespace kiv::writers
