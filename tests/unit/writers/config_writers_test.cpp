#include "writers/config_writers.h"

#include <functional>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "writer_test.h"

namespace kiv::writers::test {
namespace {

class ConfigWriterTest : public WriterTest {
 protected:
  // Writes one record for the owner "x".
  template <typename Config>
  Status write(const ConfigFamily<Config>& family, const Config& config,
               std::uint32_t backendId = 0) {
    WriteScope s = scope(backendId);
    return writeConfig(s, family, config, "x", pointers_);
  }

  // The records of a family, an option each with the member set by a function.
  template <typename Config>
  void writeAll(
      const ConfigFamily<Config>& family,
      std::vector<std::pair<std::uint32_t, std::function<void(Config&)>>>
          records) {
    for (const auto& [tag, fill] : records) {
      Config config{};
      setNumber(config.option, tag);
      if (fill) fill(config);
      EXPECT_EQ(write(family, config), Status::kOk) << tag;
    }
  }

  output::Texts pointers_;
};

TEST_F(ConfigWriterTest, WritesTheOptionsOfEachFamily) {
  const char* const graphs[] = {"a", "b \"c\"", nullptr};
  writeAll<KivBackend_Config_t>(
      backendConfigs(),
      {{0, nullptr},
       {1, [](auto& c) { setNumber(c.errorConfig.reportingLevel, 1); }},
       {2, [](auto& c) { c.platformOption = "a\"bc"; }},
       {2, nullptr}});
  writeAll<KivContext_Config_t>(
      contextConfigs(),
      {{0, nullptr},
       {1, [](auto& c) { setNumber(c.priority, 200); }},
       {2, [](auto& c) { c.errorConfig.storageLimit = 4294967295u; }},
       {3, [](auto& c) { c.oemString = "oem"; }},
       {3, nullptr},
       {4, [](auto& c) { c.asyncExeQueueDepth.depth = 16; }},
       {5, [&](auto& c) { c.enableGraphs = graphs; }},
       {5, [&](auto& c) { c.enableGraphs = graphs + 2; }},
       {5, nullptr},
       {6, [](auto& c) { c.memoryLimitHint = 0xFFFFFFFFFFFFFFFF; }},
       {7, [](auto& c) { c.isPersistentBinary = 1; }}});
  writeAll<KivDevice_Config_t>(deviceConfigs(), {{0, nullptr}, {1, nullptr}});
  writeAll<KivGraph_Config_t>(
      graphConfigs(),
      {{0, nullptr}, {3, [](auto& c) { setNumber(c.priority, 7); }}});
  writeAll<KivProfile_Config_t>(
      profileConfigs(),
      {{0, nullptr}, {1, [](auto& c) { c.numMaxEvents = 1000; }}});
  EXPECT_EQ(statements(), R"(
KivBackend_Config_t x_customConfig_0 = {KIV_BACKEND_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
KivBackend_Config_t x_errorConfig_0 = {KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING, .errorConfig={(Kiv_ErrorReportingLevel_t)1, 0}};
KivBackend_Config_t x_platformOption_0 = {KIV_BACKEND_CONFIG_OPTION_PLATFORM, .platformOption="a"bc"};
KivBackend_Config_t x_platformOption_1 = {KIV_BACKEND_CONFIG_OPTION_PLATFORM, .platformOption=NULL};
KivContext_Config_t x_customConfig_1 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
KivContext_Config_t x_priority_0 = {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)200};
KivContext_Config_t x_errorConfig_1 = {KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING, .errorConfig={(Kiv_ErrorReportingLevel_t)0, 4294967295}};
KivContext_Config_t x_oemString_0 = {KIV_CONTEXT_CONFIG_OPTION_OEM_STRING, .oemString="oem"};
KivContext_Config_t x_oemString_1 = {KIV_CONTEXT_CONFIG_OPTION_OEM_STRING, .oemString=NULL};
KivContext_Config_t x_asyncExeQueueDepth_0 = {KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH, .asyncExeQueueDepth={KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC, .depth=16}};
const char* const x_enableGraphs_0_array[] = {"a", "b "c"", NULL};
KivContext_Config_t x_enableGraphs_0 = {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, .enableGraphs=x_enableGraphs_0_array};
const char* const x_enableGraphs_1_array[] = {NULL};
KivContext_Config_t x_enableGraphs_1 = {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, .enableGraphs=x_enableGraphs_1_array};
const char* const x_enableGraphs_2_array[] = {NULL};
KivContext_Config_t x_enableGraphs_2 = {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, .enableGraphs=x_enableGraphs_2_array};
KivContext_Config_t x_memoryLimitHint_0 = {KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT, .memoryLimitHint=18446744073709551615};
KivContext_Config_t x_isPersistentBinary_0 = {KIV_CONTEXT_CONFIG_PERSISTENT_BINARY, .isPersistentBinary=1};
KivDevice_Config_t x_customConfig_2 = {KIV_DEVICE_CONFIG_OPTION_CUSTOM, .customConfig = NULL};
KivDevice_Config_t x_hardwareInfo_0 = {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO, .hardwareInfo = NULL};
KivGraph_Config_t x_customConfig_3 = {KIV_GRAPH_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
KivGraph_Config_t x_priority_1 = {KIV_GRAPH_CONFIG_OPTION_PRIORITY, .priority=(Kiv_Priority_t)7};
KivProfile_Config_t x_customConfig_4 = {KIV_PROFILE_CONFIG_OPTION_CUSTOM, .customConfig=NULL};
KivProfile_Config_t x_maxEvents_0 = {KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS, .numMaxEvents=1000ULL};
)");
  EXPECT_EQ(output::joined(pointers_),
            "&x_customConfig_0, &x_errorConfig_0, &x_platformOption_0, "
            "&x_platformOption_1, &x_customConfig_1, &x_priority_0, "
            "&x_errorConfig_1, &x_oemString_0, &x_oemString_1, "
            "&x_asyncExeQueueDepth_0, &x_enableGraphs_0, &x_enableGraphs_1, "
            "&x_enableGraphs_2, &x_memoryLimitHint_0, &x_isPersistentBinary_0, "
            "&x_customConfig_2, &x_hardwareInfo_0, &x_customConfig_3, "
            "&x_priority_1, &x_customConfig_4, &x_maxEvents_0");
}

TEST_F(ConfigWriterTest, RefusesUnknownOptions) {
  const auto refuses = [this](const auto& family, auto config, Status status,
                              std::initializer_list<std::uint32_t> tags) {
    for (const std::uint32_t tag : tags) {
      setNumber(config.option, tag);
      EXPECT_EQ(write(family, config, 4), status) << family.typeName << tag;
      EXPECT_EQ(messages(), Lines{"1: Unknown config option provided: " +
                                  std::to_string(tag)});
    }
  };
  refuses(backendConfigs(), KivBackend_Config_t{},
          Status::kBackendInvalidArgument, {3, 0x7FFFFFFF});
  refuses(contextConfigs(), KivContext_Config_t{},
          Status::kContextInvalidArgument, {8, 0x7FFFFFFF});
  refuses(deviceConfigs(), KivDevice_Config_t{}, Status::kInvalidArgument,
          {2, 0x7FFFFFFF});
  refuses(graphConfigs(), KivGraph_Config_t{}, Status::kGraphInvalidArgument,
          {1, 2, 4});
  refuses(profileConfigs(), KivProfile_Config_t{}, Status::kInvalidArgument,
          {2, 0x7FFFFFFF});
  KivContext_Config_t depth{};
  setNumber(depth.option, 4);
  setNumber(depth.asyncExeQueueDepth.type, 3);
  EXPECT_EQ(write(contextConfigs(), depth), Status::kContextInvalidArgument);
  EXPECT_EQ(messages(), Lines{"1: Unknown or unsupported async execution queue "
                              "depth type: 3"});
  EXPECT_EQ(statements(), "\n");
  EXPECT_EQ(pointers_, Lines{});
}

// Family by backend: the code when refused, and the message for each backend.
TEST_F(ConfigWriterTest, CustomConfigsDependOnTheBackend) {
  const std::string a =
      "2: Custom config provided without specifying backend ID, provide a "
      "backend ID via KivSaver_Initialize() to record custom configs.";
  const std::string b =
      "1: Saver backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). Saver does not support custom configs.";
  const std::string c =
      "1: CPU backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). CPU does not support custom configs.";
  const std::string d =
      "1: GPU backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). GPU does not support Backend custom configs.";
  const std::string e =
      "1: Custom context config parsing not supported for chosen backend ID";
  const std::string f =
      "1: Custom device config parsing not supported for chosen backend ID";
  const std::string g =
      "1: Custom profile config parsing not supported for backend ID ";
  const std::string h = "1: Unknown backend ID provided: ";
  const std::string i = "1: Unknown or unsupported backend ID provided: ";
  const std::string written;
  KivGpuContext_CustomConfig_t gpuContext{};
  KivGpuGraph_CustomConfig_t gpuGraph{};
  const auto custom = [this](const auto& family, auto config, void* pointer) {
    config.customConfig = pointer;
    return [this, &family, config](std::uint32_t id) {
      return write(family, config, id);
    };
  };
  const std::uint32_t ids[] = {0, 2, 3, 4, 1, 2147483646u};
  const struct {
    std::function<Status(std::uint32_t)> write;
    std::uint32_t code;
    std::string messages[6];
  } rows[] = {
      {custom(backendConfigs(), KivBackend_Config_t{}, &gpuContext),
       4004,
       {a, b, c, d, h + "1", h + "2147483646"}},
      {custom(contextConfigs(), KivContext_Config_t{}, &gpuContext),
       5000,
       {a, e, e, written, e, e}},
      {custom(deviceConfigs(), KivDevice_Config_t{}, &gpuContext),
       1000,
       {a, f, f, f, f, f}},
      {custom(graphConfigs(), KivGraph_Config_t{}, &gpuGraph),
       6000,
       {a, b, c, written, i + "1", i + "2147483646"}},
      {custom(profileConfigs(), KivProfile_Config_t{}, &gpuContext),
       1004,
       {a, b, g + "3", g + "4", g + "1", g + "2147483646"}},
  };
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < std::size(ids); ++column) {
      const std::string& message = row.messages[column];
      const bool refused = !message.empty() && ids[column] != 0;
      EXPECT_EQ(static_cast<std::uint32_t>(row.write(ids[column])),
                refused ? row.code : 0)
          << row.code << ' ' << ids[column];
      EXPECT_EQ(messages(), message.empty() ? Lines{} : Lines{message});
      EXPECT_EQ(statements() == "\n", !message.empty());
    }
  }
  EXPECT_EQ(pointers_, (Lines{"&x_gpuConfig_0", "&x_gpuConfig_1"}));
}

TEST_F(ConfigWriterTest, WritesTheRecordsOfTheGpu) {
  using Custom = KivGpuContext_CustomConfig_t;
  const std::pair<std::uint32_t, void (*)(Custom&)> records[] = {
      {0, [](Custom& c) { setNumber(c.perfHint, 2); }},
      {1, [](Custom& c) { c.useGLBuffers = 1; }},
      {2, [](Custom& c) { c.kernelRepoDir = "/k"; }},
      {3, [](Custom& c) { c.invalidateKernelRepo = 255; }},
      {7, [](Custom& c) { setNumber(c.perfHint, 2); }}};
  for (const auto& [tag, fill] : records) {
    Custom custom{};
    setNumber(custom.option, tag);
    fill(custom);
    KivContext_Config_t config{};
    config.customConfig = &custom;
    EXPECT_EQ(write(contextConfigs(), config, 4), Status::kOk);
  }
  KivGpuGraph_CustomConfig_t custom{KIV_GPU_PRECISION_FP16, 0, 1, 0};
  KivGraph_Config_t config{};
  config.customConfig = &custom;
  EXPECT_EQ(write(graphConfigs(), config, 4), Status::kOk);
  EXPECT_EQ(statements(), R"(
KivGpuContext_CustomConfig_t x_gpuConfig_0_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT, .perfHint = (KivGpuContext_PerfHint_t)2};
KivContext_Config_t x_gpuConfig_0 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &x_gpuConfig_0_customConfig};
KivGpuContext_CustomConfig_t x_gpuConfig_1_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS, .useGLBuffers = 1};
KivContext_Config_t x_gpuConfig_1 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &x_gpuConfig_1_customConfig};
KivGpuContext_CustomConfig_t x_gpuConfig_2_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR, .kernelRepoDir = "/k"};
KivContext_Config_t x_gpuConfig_2 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &x_gpuConfig_2_customConfig};
KivGpuContext_CustomConfig_t x_gpuConfig_3_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO, .invalidateKernelRepo = 255};
KivContext_Config_t x_gpuConfig_3 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &x_gpuConfig_3_customConfig};
KivGpuContext_CustomConfig_t x_gpuConfig_4_customConfig = {KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED, .perfHint = KIV_GPU_CONTEXT_PERF_HINT_HIGH};
KivContext_Config_t x_gpuConfig_4 = {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, .customConfig = &x_gpuConfig_4_customConfig};
KivGpuGraph_CustomConfig_t x_gpuConfig_5_customConfig = {(KivGpu_Precision_t)1, 0, 1, 0};
KivGraph_Config_t x_gpuConfig_5 = {KIV_GRAPH_CONFIG_OPTION_CUSTOM, .customConfig=&x_gpuConfig_5_customConfig};
)");
  EXPECT_EQ(messages(), Lines{});
}

}  // namespace
}  // namespace kiv::writers::test
