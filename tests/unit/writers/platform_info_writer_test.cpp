#include "writers/platform_info_writer.h"

#include "writer_test.h"

namespace kiv::writers::test {
namespace {

// A platform of two devices with a core each, both the same; the golden
// recording has the text of a whole tree.
class PlatformInfoWriterTest : public WriterTest {
 protected:
  PlatformInfoWriterTest() {
    setNumber(core_.version, 1);
    core_.v1 = {1, 2, nullptr};
    for (KivDevice_HardwareDeviceInfo_t& device : devices_) {
      setNumber(device.version, 1);
      device.v1 = {4, 5, 1, &core_, nullptr};
    }
    setNumber(platform_.version, 1);
    platform_.v1 = {2, devices_};
  }

  Status write() {
    WriteScope s = scope();
    return writePlatformInfo(s, platform_, "P");
  }

  KivDevice_CoreInfo_t core_ = {};
  KivDevice_HardwareDeviceInfo_t devices_[2] = {};
  KivDevice_PlatformInfo_t platform_ = {};
};

TEST_F(PlatformInfoWriterTest, ExtensionsAreLeftOutWithAWarning) {
  core_.v1.coreInfoExtension =
      reinterpret_cast<decltype(core_.v1.coreInfoExtension)>(this);
  devices_[1].v1.deviceInfoExtension =
      reinterpret_cast<decltype(devices_[1].v1.deviceInfoExtension)>(this);
  EXPECT_EQ(write(), Status::kOk);
  const std::string text = statements();
  EXPECT_NE(text.find("_core_0_v1 = {1, 2, NULL};"), std::string::npos);
  EXPECT_NE(text.find("P_hwDevice_1_cores, NULL};"), std::string::npos);
  const std::string core =
      "2: Parsing of backend-specific coreInfo extensions not supported";
  EXPECT_EQ(messages(),
            (Lines{core, core,
                   "2: Parsing of backend-specific deviceInfo extensions not "
                   "supported"}));
}

TEST_F(PlatformInfoWriterTest, AnArrayWithoutElementsIsNull) {
  platform_.v1.numHwDevices = 0;
  EXPECT_EQ(write(), Status::kOk);
  EXPECT_TRUE(statements().starts_with(
      "\nKivDevice_PlatformInfoV1_t P_v1 = {0, NULL};\n"));
}

TEST_F(PlatformInfoWriterTest, RefusesUnknownVersionsAtEachLevel) {
  setNumber(core_.version, 2);
  EXPECT_EQ(write(), Status::kNotSupported);
  EXPECT_EQ(messages(), Lines{"1: Unsupported coreInfo version: 2"});
  setNumber(devices_[0].version, 0);
  EXPECT_EQ(write(), Status::kNotSupported);
  EXPECT_EQ(messages(), Lines{"1: Unsupported deviceInfo version: 0"});
  setNumber(platform_.version, 3);
  EXPECT_EQ(write(), Status::kNotSupported);
  EXPECT_EQ(messages(), Lines{"1: Unsupported platformInfo version: 3"});
  EXPECT_EQ(statements(), "\n");
}

}  // namespace
}  // namespace kiv::writers::test
