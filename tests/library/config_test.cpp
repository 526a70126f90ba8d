#include <gtest/gtest.h>

#include <algorithm>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "library/started_session.h"

// Configs that the golden session does not have: custom ones by backend, and
// what platforms bring that is left out.
namespace kiv::test {
namespace {

using Lines = std::vector<std::string>;

// Passes a custom config to the function that sets those of an object.
template <auto Set, auto Object>
Code setCustom(const StartedSession& c, void* custom) {
  const auto set = [&]<typename Config>(Code (*function)(void*, Config**)) {
    auto config = configOf<std::remove_const_t<Config>>(0);
    config.customConfig = custom;
    return function(c.*Object, List{config});
  };
  return set(c.api.*Set);
}

constexpr const char* kContext =
    "Custom context config parsing not supported for chosen backend ID";
constexpr const char* kDevice =
    "Custom device config parsing not supported for chosen backend ID";
constexpr const char* kSaver =
    "Saver backend ID was provided and a custom config was passed to "
    "KivBackend_Initialize(). Saver does not support custom configs.";
constexpr const char* kCpu =
    "CPU backend ID was provided and a custom config was passed to "
    "KivBackend_Initialize(). CPU does not support custom configs.";

// A message of null stands for a config that is written.
const struct {
  const char* family;
  Code (*set)(const StartedSession& c, void* custom);
  Code refused;
  // For the backends 2, 3, 4 and 1.
  const char* messages[4];
} kCustoms[] = {
    {"backend",
     setCustom<&Api::backendSetConfig, &StartedSession::backend>,
     4004,
     {kSaver, kCpu,
      "GPU backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). GPU does not support Backend custom configs.",
      "Unknown backend ID provided: 1"}},
    {"context",
     setCustom<&Api::contextSetConfig, &StartedSession::context>,
     5000,
     {kContext, kContext, nullptr, kContext}},
    {"device",
     setCustom<&Api::deviceSetConfig, &StartedSession::device>,
     1000,
     {kDevice, kDevice, kDevice, kDevice}},
    {"graph",
     setCustom<&Api::graphSetConfig, &StartedSession::graph>,
     6000,
     {kSaver, kCpu, nullptr, "Unknown or unsupported backend ID provided: 1"}},
    {"profile",
     setCustom<&Api::profileSetConfig, &StartedSession::profile>,
     1004,
     {kSaver, "Custom profile config parsing not supported for backend ID 3",
      "Custom profile config parsing not supported for backend ID 4",
      "Custom profile config parsing not supported for backend ID 1"}}};

// The backend's id is that of the last switch of files.
TEST(Config, CustomOnesDependOnTheBackend) {
  StartedSession c;
  LogCapture log(c.api);
  union {
    KivGpuContext_CustomConfig_t context;
    KivGpuGraph_CustomConfig_t graph;
  } custom = {};
  for (const auto& row : kCustoms) {
    EXPECT_EQ(row.set(c, &custom), 0U) << row.family;
    EXPECT_EQ(log.take(),
              Lines{"2: Custom config provided without specifying backend ID, "
                    "provide a backend ID via KivSaver_Initialize() to record "
                    "custom configs."});
  }
  constexpr uint32_t kIds[] = {2, 3, 4, 1};
  for (int i = 0; i < 4; ++i) {
    SCOPED_TRACE(kIds[i]);
    ASSERT_EQ(
        c.saver.initialize({filesOption(i % 2 == 0 ? "a.c" : "b.c", "a.bin"),
                            backendOption(kIds[i])}),
        0U);
    const auto model = c.saver.directory() / (i % 2 == 0 ? "a.c" : "b.c");
    log.take();
    for (const auto& row : kCustoms) {
      const char* message = row.messages[i];
      const std::string before = readFile(model);
      EXPECT_EQ(row.set(c, &custom), message == nullptr ? 0 : row.refused)
          << row.family;
      // Beside warnings that an object is from the files before.
      const std::string refusal =
          "1: " + std::string(message == nullptr ? "" : message);
      EXPECT_EQ(std::ranges::count(log.take(), refusal),
                message == nullptr ? 0 : 1)
          << row.family;
      EXPECT_EQ(readFile(model).size() > before.size(), message == nullptr);
    }
  }
}

TEST(Config, PlatformsLoseTheirExtensions) {
  StartedSession c;
  LogCapture log(c.api);
  KivDevice_CoreInfo_t core{};
  setNumber(core.version, 1);
  core.v1.coreInfoExtension =
      reinterpret_cast<KivDevice_CoreInfoExtension_t>(&core);
  KivDevice_HardwareDeviceInfo_t devices[2] = {};
  for (auto& device : devices) {
    setNumber(device.version, 1);
    device.v1 = {4, 5, 1, &core, nullptr};
  }
  devices[1].v1.deviceInfoExtension =
      reinterpret_cast<KivDevice_DeviceInfoExtension_t>(&core);
  KivDevice_PlatformInfo_t platform{};
  setNumber(platform.version, 1);
  platform.v1 = {2, devices};
  using Config = KivDevice_Config_t;
  const auto set = [&] {
    return c.api.deviceSetConfig(
        c.device, List{configOf<Config>(1, &Config::hardwareInfo, &platform)});
  };
  EXPECT_EQ(set(), 0U);
  const std::string lost =
      "2: Parsing of backend-specific coreInfo extensions "
      "not supported";
  EXPECT_EQ(log.take(), (Lines{lost, lost,
                               "2: Parsing of backend-specific deviceInfo "
                               "extensions not supported"}));
  const std::string text = c.newText();
  EXPECT_NE(text.find("_core_0_v1 = {0, 0, NULL};"), std::string::npos);
  EXPECT_NE(text.find("_hwDevice_1_cores, NULL};"), std::string::npos);
  // An array without elements is null.
  platform.v1.numHwDevices = 0;
  EXPECT_EQ(set(), 0U);
  EXPECT_NE(c.newText().find("_config_v1 = {0, NULL};"), std::string::npos);
}

}  // namespace
}  // namespace kiv::test
