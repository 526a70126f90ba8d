#include <gtest/gtest.h>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "tracer_run.h"

namespace kiv::tracer::test {
namespace {

// The line of a call that takes one config.
template <typename Config, typename SetConfig>
std::string traceOf(const TracerRun& run, SetConfig setConfig,
                    const Config& config) {
  const Config* list[] = {&config, nullptr};
  EXPECT_EQ(setConfig(nullptr, list), 0u);
  return run.lastLine();
}

class ConfigTest : public testing::Test {
 protected:
  std::string trace(const KivBackend_Config_t& config) {
    return traceOf(run_, run_.api().backendSetConfig, config);
  }
  std::string trace(const KivContext_Config_t& config) {
    return traceOf(run_, run_.api().contextSetConfig, config);
  }
  std::string trace(const KivDevice_Config_t& config) {
    return traceOf(run_, run_.api().deviceSetConfig, config);
  }
  std::string trace(const KivGraph_Config_t& config) {
    return traceOf(run_, run_.api().graphSetConfig, config);
  }
  std::string trace(const KivProfile_Config_t& config) {
    return traceOf(run_, run_.api().profileSetConfig, config);
  }

  TracerRun run_;
};

TEST_F(ConfigTest, TakesNoListForAnEmptyOne) {
  const KivContext_Config_t* none[] = {nullptr};
  run_.api().contextSetConfig(nullptr, nullptr);
  EXPECT_EQ(run_.lastLine(), "contextSetConfig(null, [])");
  run_.api().contextSetConfig(nullptr, none);
  EXPECT_EQ(run_.lastLine(), "contextSetConfig(null, [])");

  KivContext_Config_t first = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, {}};
  KivContext_Config_t second = {KIV_CONTEXT_CONFIG_PERSISTENT_BINARY, {}};
  const KivContext_Config_t* two[] = {&first, &second, nullptr};
  run_.api().contextSetConfig(nullptr, two);
  EXPECT_EQ(run_.lastLine(),
            "contextSetConfig(null, [{option=1, priority=0}, {option=7, "
            "persistent=0}])");
}

TEST_F(ConfigTest, ShowsOptionsOfBackends) {
  EXPECT_EQ(trace(KivBackend_Config_t{
                KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING,
                {.errorConfig = {KIV_ERROR_REPORTING_LEVEL_DETAILED, 64}}}),
            "backendSetConfig(null, [{option=1, error={level=2, limit=64}}])");
  EXPECT_EQ(trace(KivBackend_Config_t{KIV_BACKEND_CONFIG_OPTION_PLATFORM,
                                      {.platformOption = "k:v"}}),
            "backendSetConfig(null, [{option=2, platform=\"k:v\"}])");
  EXPECT_EQ(
      trace(KivBackend_Config_t{static_cast<KivBackend_ConfigOption_t>(9), {}}),
      "backendSetConfig(null, [{option=9}])");
}

TEST_F(ConfigTest, ShowsOptionsOfContexts) {
  const char* names[] = {"a", "b", nullptr};
  const auto line = [](const std::string& config) {
    return "contextSetConfig(null, [{option=" + config + "}])";
  };
  EXPECT_EQ(trace(KivContext_Config_t{KIV_CONTEXT_CONFIG_OPTION_PRIORITY,
                                      {.priority = KIV_PRIORITY_HIGH}}),
            line("1, priority=200"));
  EXPECT_EQ(trace(KivContext_Config_t{
                KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING,
                {.errorConfig = {KIV_ERROR_REPORTING_LEVEL_BRIEF, 0}}}),
            line("2, error={level=1, limit=0}"));
  EXPECT_EQ(trace(KivContext_Config_t{KIV_CONTEXT_CONFIG_OPTION_OEM_STRING,
                                      {.oemString = nullptr}}),
            line("3, oem=null"));
  KivContext_Config_t depth = {KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH,
                               {}};
  depth.asyncExeQueueDepth.depth = 8;
  EXPECT_EQ(trace(depth), line("4, queueDepth={type=0, depth=8}"));
  depth.asyncExeQueueDepth.type =
      static_cast<KivContext_AsyncExecutionQueueDepthType_t>(1);
  EXPECT_EQ(trace(depth), line("4, queueDepth={type=1}"));
  EXPECT_EQ(trace(KivContext_Config_t{KIV_CONTEXT_CONFIG_ENABLE_GRAPHS,
                                      {.enableGraphs = names}}),
            line("5, graphs=[\"a\", \"b\"]"));
  EXPECT_EQ(trace(KivContext_Config_t{KIV_CONTEXT_CONFIG_ENABLE_GRAPHS,
                                      {.enableGraphs = nullptr}}),
            line("5, graphs=[]"));
  EXPECT_EQ(trace(KivContext_Config_t{KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT,
                                      {.memoryLimitHint = 1ull << 40}}),
            line("6, memoryLimit=1099511627776"));
  EXPECT_EQ(trace(KivContext_Config_t{KIV_CONTEXT_CONFIG_PERSISTENT_BINARY,
                                      {.isPersistentBinary = 1}}),
            line("7, persistent=1"));
}

TEST_F(ConfigTest, ShowsOptionsOfGraphsAndProfiles) {
  EXPECT_EQ(trace(KivGraph_Config_t{KIV_GRAPH_CONFIG_OPTION_PRIORITY,
                                    {.priority = KIV_PRIORITY_NORMAL}}),
            "graphSetConfig(null, [{option=3, priority=100}])");
  EXPECT_EQ(
      trace(KivGraph_Config_t{static_cast<KivGraph_ConfigOption_t>(1), {}}),
      "graphSetConfig(null, [{option=1}])");
  EXPECT_EQ(trace(KivProfile_Config_t{KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS,
                                      {.numMaxEvents = 5000000000}}),
            "profileSetConfig(null, [{option=1, maxEvents=5000000000}])");
}

// Extensions differ between the two cores and do not show.
TEST_F(ConfigTest, ShowsAPlatformToItsCores) {
  KivDevice_CoreInfo_t cores[3] = {};
  cores[0].version = cores[1].version = KIV_DEVICE_CORE_INFO_VERSION_1;
  cores[1].v1 = {1, 2, reinterpret_cast<KivDevice_CoreInfoExtension_t>(cores)};
  KivDevice_HardwareDeviceInfo_t devices[2] = {};
  devices[0].version = KIV_DEVICE_HARDWARE_DEVICE_INFO_VERSION_1;
  devices[0].v1 = {7, 8, 3, cores, nullptr};
  KivDevice_PlatformInfo_t platform = {};
  platform.version = KIV_DEVICE_PLATFORM_INFO_VERSION_1;
  platform.v1 = {2, devices};
  KivDevice_Config_t config = {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO,
                               {.hardwareInfo = &platform}};
  EXPECT_EQ(trace(config),
            "deviceSetConfig(null, [{option=1, platform={version=1, count=2, "
            "devices=[{version=1, id=7, type=8, count=3, cores=[{version=1, "
            "id=0, type=0}, {version=1, id=1, type=2}, {version=0}]}, "
            "{version=0}]}}])");
  platform.v1.hwDevices = nullptr;
  EXPECT_EQ(trace(config),
            "deviceSetConfig(null, [{option=1, platform={version=1, count=2, "
            "devices=null}}])");
  config.hardwareInfo = nullptr;
  EXPECT_EQ(trace(config),
            "deviceSetConfig(null, [{option=1, platform=null}])");
}

// By default nothing behind the pointer is read: it could be anything.
TEST_F(ConfigTest, ShowsOnlyThePresenceOfCustomConfigs) {
  void* const custom = reinterpret_cast<void*>(1);
  EXPECT_EQ(trace(KivBackend_Config_t{{}, {.customConfig = custom}}),
            "backendSetConfig(null, [{option=0, custom=<set>}])");
  EXPECT_EQ(trace(KivContext_Config_t{{}, {.customConfig = custom}}),
            "contextSetConfig(null, [{option=0, custom=<set>}])");
  EXPECT_EQ(trace(KivDevice_Config_t{{}, {.customConfig = custom}}),
            "deviceSetConfig(null, [{option=0, custom=<set>}])");
  EXPECT_EQ(trace(KivGraph_Config_t{{}, {.customConfig = custom}}),
            "graphSetConfig(null, [{option=0, custom=<set>}])");
  EXPECT_EQ(trace(KivProfile_Config_t{{}, {.customConfig = nullptr}}),
            "profileSetConfig(null, [{option=0, custom=null}])");
}

TEST(GpuConfigTest, ShowsGpuRecordsOnRequest) {
  const TracerRun run("KIV_TRACER_CUSTOM", "gpu");
  const auto context = [&](KivGpuContext_CustomConfig_t gpu) {
    return traceOf(run, run.api().contextSetConfig,
                   KivContext_Config_t{{}, {.customConfig = &gpu}});
  };
  const auto line = [](const std::string& gpu) {
    return "contextSetConfig(null, [{option=0, custom={option=" + gpu + "}}])";
  };
  EXPECT_EQ(context({KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT,
                     {.perfHint = KIV_GPU_CONTEXT_PERF_HINT_LOW}}),
            line("0, perfHint=2"));
  EXPECT_EQ(context({KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS,
                     {.useGLBuffers = 1}}),
            line("1, useGLBuffers=1"));
  EXPECT_EQ(context({KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR,
                     {.kernelRepoDir = "/tmp"}}),
            line("2, kernelRepoDir=\"/tmp\""));
  EXPECT_EQ(context({KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO,
                     {.invalidateKernelRepo = 0}}),
            line("3, invalidateKernelRepo=0"));
  // As a recording has it.
  EXPECT_EQ(context({static_cast<KivGpuContext_ConfigOption_t>(7),
                     {.perfHint = KIV_GPU_CONTEXT_PERF_HINT_LOW}}),
            line("2147483647, perfHint=0"));

  KivGpuGraph_CustomConfig_t graph = {KIV_GPU_PRECISION_FP16, 0, 1, 2};
  EXPECT_EQ(traceOf(run, run.api().graphSetConfig,
                    KivGraph_Config_t{{}, {.customConfig = &graph}}),
            "graphSetConfig(null, [{option=0, custom={precision=1, flag0=0, "
            "flag1=1, flag2=2}}])");
  EXPECT_EQ(traceOf(run, run.api().graphSetConfig,
                    KivGraph_Config_t{{}, {.customConfig = nullptr}}),
            "graphSetConfig(null, [{option=0, custom=null}])");
}

}  // namespace
}  // namespace kiv::tracer::test
