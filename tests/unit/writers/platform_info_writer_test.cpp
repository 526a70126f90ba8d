#include "writers/platform_info_writer.h"

#include "writer_test.h"
#include "writers/config_writers.h"

namespace kiv::writers::test {
namespace {

// A platform of two devices, the first with two cores, the second with one, in
// a config of the device "x".
class PlatformInfoWriterTest : public WriterTest {
 protected:
  PlatformInfoWriterTest() {
    const auto describe = [](auto& record, const auto& v1) {
      setNumber(record.version, 1);
      record.v1 = v1;
    };
    for (std::uint32_t i = 0; i < 3; ++i)
      describe(cores_[i], KivDevice_CoreInfoV1_t{i, 10 + i, nullptr});
    describe(devices_[0],
             KivDevice_HardwareDeviceInfoV1_t{4, 5, 2, cores_, nullptr});
    describe(devices_[1],
             KivDevice_HardwareDeviceInfoV1_t{6, 7, 1, cores_ + 2, nullptr});
    describe(platform_, KivDevice_PlatformInfoV1_t{2, devices_});
  }

  Status write() {
    WriteScope s = scope();
    return writePlatformInfo(s, platform_, "P");
  }

  KivDevice_CoreInfo_t cores_[3] = {};
  KivDevice_HardwareDeviceInfo_t devices_[2] = {};
  KivDevice_PlatformInfo_t platform_ = {};
};

// Extensions leave no more than their warnings.
TEST_F(PlatformInfoWriterTest, WritesTheTreeLeavesFirst) {
  int extension = 0;
  const auto extend = [&](auto& pointer) {
    pointer = reinterpret_cast<std::remove_reference_t<decltype(pointer)>>(
        &extension);
  };
  extend(cores_[0].v1.coreInfoExtension);
  extend(cores_[2].v1.coreInfoExtension);
  extend(devices_[1].v1.deviceInfoExtension);
  EXPECT_EQ(write(), Status::kOk);
  EXPECT_EQ(statements(), R"(
KivDevice_CoreInfoV1_t P_hwDevice_0_core_0_v1 = {0, 10, NULL};
KivDevice_CoreInfo_t P_hwDevice_0_core_0 = {(KivDevice_CoreInfoVersion_t)1, .v1 = P_hwDevice_0_core_0_v1};
KivDevice_CoreInfoV1_t P_hwDevice_0_core_1_v1 = {1, 11, NULL};
KivDevice_CoreInfo_t P_hwDevice_0_core_1 = {(KivDevice_CoreInfoVersion_t)1, .v1 = P_hwDevice_0_core_1_v1};
KivDevice_CoreInfo_t P_hwDevice_0_cores[] = {P_hwDevice_0_core_0, P_hwDevice_0_core_1};
KivDevice_HardwareDeviceInfoV1_t P_hwDevice_0_v1 = {4, 5, 2, P_hwDevice_0_cores, NULL};
KivDevice_HardwareDeviceInfo_t P_hwDevice_0 = {(KivDevice_HardwareDeviceInfoVersion_t)1, .v1 = P_hwDevice_0_v1};
KivDevice_CoreInfoV1_t P_hwDevice_1_core_0_v1 = {2, 12, NULL};
KivDevice_CoreInfo_t P_hwDevice_1_core_0 = {(KivDevice_CoreInfoVersion_t)1, .v1 = P_hwDevice_1_core_0_v1};
KivDevice_CoreInfo_t P_hwDevice_1_cores[] = {P_hwDevice_1_core_0};
KivDevice_HardwareDeviceInfoV1_t P_hwDevice_1_v1 = {6, 7, 1, P_hwDevice_1_cores, NULL};
KivDevice_HardwareDeviceInfo_t P_hwDevice_1 = {(KivDevice_HardwareDeviceInfoVersion_t)1, .v1 = P_hwDevice_1_v1};
KivDevice_HardwareDeviceInfo_t P_hwDevices[] = {P_hwDevice_0, P_hwDevice_1};
KivDevice_PlatformInfoV1_t P_v1 = {2, P_hwDevices};
KivDevice_PlatformInfo_t P = {(KivDevice_PlatformInfoVersion_t)1, .v1 = P_v1};
)");
  const std::string core =
      "2: Parsing of backend-specific coreInfo extensions not supported";
  EXPECT_EQ(messages(),
            (Lines{core, core,
                   "2: Parsing of backend-specific deviceInfo extensions not "
                   "supported"}));
}

// C has no arrays without elements, so those are NULL as well.
TEST_F(PlatformInfoWriterTest, MissingAndEmptyArraysAreNull) {
  devices_[0].v1.cores = nullptr;
  platform_.v1.numHwDevices = 1;
  EXPECT_EQ(write(), Status::kOk);
  EXPECT_TRUE(statements().starts_with(
      "\nKivDevice_HardwareDeviceInfoV1_t P_hwDevice_0_v1 = {4, 5, 2, NULL, "
      "NULL};\n"));
  for (const std::uint32_t count : {3u, 0u}) {
    platform_.v1 = {count, count == 0 ? devices_ : nullptr};
    EXPECT_EQ(write(), Status::kOk);
    EXPECT_EQ(statements(),
              "\nKivDevice_PlatformInfoV1_t P_v1 = {" + std::to_string(count) +
                  ", NULL};\nKivDevice_PlatformInfo_t P = "
                  "{(KivDevice_PlatformInfoVersion_t)1, .v1 = P_v1};\n");
  }
}

TEST_F(PlatformInfoWriterTest, RefusesUnknownVersionsAtEachLevel) {
  setNumber(cores_[2].version, 2);
  EXPECT_EQ(write(), Status::kNotSupported);
  EXPECT_EQ(messages(), Lines{"1: Unsupported coreInfo version: 2"});
  const std::string text = statements();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + 7)
      << "the first device was written";
  setNumber(devices_[0].version, 0);
  EXPECT_EQ(write(), Status::kNotSupported);
  EXPECT_EQ(messages(), Lines{"1: Unsupported deviceInfo version: 0"});
  setNumber(platform_.version, 3);
  EXPECT_EQ(write(), Status::kNotSupported);
  EXPECT_EQ(messages(), Lines{"1: Unsupported platformInfo version: 3"});
  EXPECT_EQ(statements(), "\n");
}

TEST_F(PlatformInfoWriterTest, IsWrittenBeforeTheDeviceConfig) {
  platform_.v1 = {0, nullptr};
  KivDevice_Config_t config{};
  config.option = KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO;
  config.hardwareInfo = &platform_;
  output::Texts pointers;
  WriteScope s = scope();
  EXPECT_EQ(writeConfig(s, deviceConfigs(), config, "x", pointers),
            Status::kOk);
  EXPECT_EQ(statements(), R"(
KivDevice_PlatformInfoV1_t x_hardwareInfo_0_config_v1 = {0, NULL};
KivDevice_PlatformInfo_t x_hardwareInfo_0_config = {(KivDevice_PlatformInfoVersion_t)1, .v1 = x_hardwareInfo_0_config_v1};
KivDevice_Config_t x_hardwareInfo_0 = {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO, .hardwareInfo = &x_hardwareInfo_0_config};
)");
  setNumber(platform_.version, 2);
  EXPECT_EQ(writeConfig(s, deviceConfigs(), config, "x", pointers),
            Status::kNotSupported);
  EXPECT_EQ(statements(), "\n");
  EXPECT_EQ(pointers, Lines{"&x_hardwareInfo_0"});
}

}  // namespace
}  // namespace kiv::writers::test
