#include "writers/config_writers.h"

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
               std::uint32_t backendId) {
    WriteScope s = scope(backendId);
    return writeConfig(s, family, config, "x", pointers_);
  }

  // A custom record for each backend: its message, or null when it is written.
  template <typename Config>
  void expectCustom(const ConfigFamily<Config>& family, Status refused,
                    void* custom, std::initializer_list<const char*> expected) {
    constexpr std::uint32_t kIds[] = {0, 2, 3, 4, 1, 2147483646u};
    const std::uint32_t* id = kIds;
    for (const char* message : expected) {
      SCOPED_TRACE(std::string(family.typeName) + std::to_string(*id));
      Config config{};
      config.customConfig = custom;
      const bool isRefused = message != nullptr && *id != 0;
      EXPECT_EQ(write(family, config, *id), isRefused ? refused : Status::kOk);
      EXPECT_EQ(messages(), message == nullptr ? Lines{} : Lines{message});
      EXPECT_EQ(statements() == "\n", message != nullptr);
      ++id;
    }
  }

  output::Texts pointers_;
};

TEST_F(ConfigWriterTest, CustomConfigsDependOnTheBackend) {
  const char* const none =
      "2: Custom config provided without specifying backend ID, provide a "
      "backend ID via KivSaver_Initialize() to record custom configs.";
  const char* const saver =
      "1: Saver backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). Saver does not support custom configs.";
  const char* const cpu =
      "1: CPU backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). CPU does not support custom configs.";
  const char* const gpu =
      "1: GPU backend ID was provided and a custom config was passed to "
      "KivBackend_Initialize(). GPU does not support Backend custom configs.";
  const char* const context =
      "1: Custom context config parsing not supported for chosen backend ID";
  const char* const device =
      "1: Custom device config parsing not supported for chosen backend ID";
  KivGpuContext_CustomConfig_t forContext{};
  KivGpuGraph_CustomConfig_t forGraph{};
  expectCustom(backendConfigs(), Status::kBackendInvalidArgument, &forContext,
               {none, saver, cpu, gpu, "1: Unknown backend ID provided: 1",
                "1: Unknown backend ID provided: 2147483646"});
  expectCustom(contextConfigs(), Status::kContextInvalidArgument, &forContext,
               {none, context, context, nullptr, context, context});
  expectCustom(deviceConfigs(), Status::kNotSupported, &forContext,
               {none, device, device, device, device, device});
  expectCustom(graphConfigs(), Status::kGraphInvalidArgument, &forGraph,
               {none, saver, cpu, nullptr,
                "1: Unknown or unsupported backend ID provided: 1",
                "1: Unknown or unsupported backend ID provided: 2147483646"});
  expectCustom(
      profileConfigs(), Status::kInvalidArgument, &forContext,
      {none, saver,
       "1: Custom profile config parsing not supported for backend ID 3",
       "1: Custom profile config parsing not supported for backend ID 4",
       "1: Custom profile config parsing not supported for backend ID 1",
       "1: Custom profile config parsing not supported for backend ID "
       "2147483646"});
  EXPECT_EQ(pointers_, (Lines{"&x_gpuConfig_0", "&x_gpuConfig_1"}));
}

// The golden recording has every option.
TEST_F(ConfigWriterTest, OptionsHaveBorders) {
  KivContext_Config_t config{};
  config.option = KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT;
  config.memoryLimitHint = 0xFFFFFFFFFFFFFFFF;
  EXPECT_EQ(write(contextConfigs(), config, 0), Status::kOk);
  EXPECT_NE(statements().find("=18446744073709551615}"), std::string::npos);
  config.option = KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH;
  setNumber(config.asyncExeQueueDepth.type, 3);
  EXPECT_EQ(write(contextConfigs(), config, 0),
            Status::kContextInvalidArgument);
  EXPECT_EQ(messages(), Lines{"1: Unknown or unsupported async execution queue "
                              "depth type: 3"});
}

}  // namespace
}  // namespace kiv::writers::test
