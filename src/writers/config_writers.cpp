#include "writers/config_writers.h"

#include "writers/gpu_config_writers.h"
#include "writers/platform_info_writer.h"

namespace kiv::writers {
namespace {

using output::decimal;
using output::Texts;

// A value that is the member's text and nothing else.
template <typename Config, std::string (*text)(WriteScope&, const Config&)>
Status plain(WriteScope& scope, const Config& config, const std::string&,
             std::string& result) {
  result = text(scope, config);
  return Status::kOk;
}

std::string errorConfigText(const Kiv_ErrorConfig_t& config) {
  return ".errorConfig={" +
         cast("Kiv_ErrorReportingLevel_t", config.reportingLevel) + ", " +
         decimal(config.storageLimit) + '}';
}

// ---- backend ----

using Backend = KivBackend_Config_t;

std::string backendErrorConfig(WriteScope&, const Backend& config) {
  return errorConfigText(config.errorConfig);
}

std::string platformOption(WriteScope& scope, const Backend& config) {
  return ".platformOption=" + scope.literal(config.platformOption);
}

constexpr ConfigOption<Backend> kBackendOptions[] = {
    {KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING, "errorConfig",
     "KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING",
     plain<Backend, backendErrorConfig>},
    {KIV_BACKEND_CONFIG_OPTION_PLATFORM, "platformOption",
     "KIV_BACKEND_CONFIG_OPTION_PLATFORM", plain<Backend, platformOption>},
};

// ---- context ----

using Context = KivContext_Config_t;

constexpr Failure kQueueDepthType = {
    Status::kContextInvalidArgument,
    "Unknown or unsupported async execution queue depth type: %ld"};

std::string contextPriority(WriteScope&, const Context& config) {
  return ".priority=" + cast("Kiv_Priority_t", config.priority);
}

std::string contextErrorConfig(WriteScope&, const Context& config) {
  return errorConfigText(config.errorConfig);
}

std::string oemString(WriteScope& scope, const Context& config) {
  return ".oemString=" + scope.literal(config.oemString);
}

Status queueDepth(WriteScope& scope, const Context& config, const std::string&,
                  std::string& text) {
  const std::uint32_t type = enumValue(config.asyncExeQueueDepth.type);
  if (type != KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC)
    return scope.fail(kQueueDepthType, static_cast<long>(type));
  text =
      ".asyncExeQueueDepth={KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_"
      "NUMERIC, .depth=" +
      decimal(config.asyncExeQueueDepth.depth) + '}';
  return Status::kOk;
}

Status enableGraphs(WriteScope& scope, const Context& config,
                    const std::string& name, std::string& text) {
  Texts elements;
  for (const char* const* graph = config.enableGraphs;
       graph != nullptr && *graph != nullptr; ++graph)
    elements.push_back(scope.literal(*graph));
  elements.emplace_back("NULL");
  const std::string array = name + "_array";
  scope.code.emitArray("const char* const", array, elements);
  text = ".enableGraphs=" + array;
  return Status::kOk;
}

std::string memoryLimitHint(WriteScope&, const Context& config) {
  return ".memoryLimitHint=" + decimal(config.memoryLimitHint);
}

std::string isPersistentBinary(WriteScope&, const Context& config) {
  return ".isPersistentBinary=" + decimal(config.isPersistentBinary);
}

// The later constants have no OPTION in their names.
constexpr ConfigOption<Context> kContextOptions[] = {
    {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, "priority",
     "KIV_CONTEXT_CONFIG_OPTION_PRIORITY", plain<Context, contextPriority>},
    {KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING, "errorConfig",
     "KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING",
     plain<Context, contextErrorConfig>},
    {KIV_CONTEXT_CONFIG_OPTION_OEM_STRING, "oemString",
     "KIV_CONTEXT_CONFIG_OPTION_OEM_STRING", plain<Context, oemString>},
    {KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH, "asyncExeQueueDepth",
     "KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH", queueDepth},
    {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, "enableGraphs",
     "KIV_CONTEXT_CONFIG_ENABLE_GRAPHS", enableGraphs},
    {KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT, "memoryLimitHint",
     "KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT", plain<Context, memoryLimitHint>},
    {KIV_CONTEXT_CONFIG_PERSISTENT_BINARY, "isPersistentBinary",
     "KIV_CONTEXT_CONFIG_PERSISTENT_BINARY",
     plain<Context, isPersistentBinary>},
};

void writeGpuContext(WriteScope& scope, const void* custom,
                     const std::string& name) {
  writeGpuContextConfig(
      scope, *static_cast<const KivGpuContext_CustomConfig_t*>(custom), name);
}

// ---- device ----

using Device = KivDevice_Config_t;

Status hardwareInfo(WriteScope& scope, const Device& config,
                    const std::string& name, std::string& text) {
  if (config.hardwareInfo == nullptr) {
    text = ".hardwareInfo = NULL";
    return Status::kOk;
  }
  const std::string info = name + "_config";
  text = ".hardwareInfo = &" + info;
  return writePlatformInfo(scope, *config.hardwareInfo, info);
}

constexpr ConfigOption<Device> kDeviceOptions[] = {
    {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO, "hardwareInfo",
     "KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO", hardwareInfo},
};

// ---- graph ----

using Graph = KivGraph_Config_t;

std::string graphPriority(WriteScope&, const Graph& config) {
  return ".priority=" + cast("Kiv_Priority_t", config.priority);
}

constexpr ConfigOption<Graph> kGraphOptions[] = {
    {KIV_GRAPH_CONFIG_OPTION_PRIORITY, "priority",
     "KIV_GRAPH_CONFIG_OPTION_PRIORITY", plain<Graph, graphPriority>},
};

void writeGpuGraph(WriteScope& scope, const void* custom,
                   const std::string& name) {
  writeGpuGraphConfig(
      scope, *static_cast<const KivGpuGraph_CustomConfig_t*>(custom), name);
}

// ---- profile ----

using Profile = KivProfile_Config_t;

std::string numMaxEvents(WriteScope&, const Profile& config) {
  return ".numMaxEvents=" + decimal(config.numMaxEvents) + "ULL";
}

constexpr ConfigOption<Profile> kProfileOptions[] = {
    {KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS, "maxEvents",
     "KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS", plain<Profile, numMaxEvents>},
};

constexpr const char* kUnknownOption = "Unknown config option provided: %ld";
constexpr const char* kUnknownDeviceOption =
    "Unknown config option provided: %d";

}  // namespace

const ConfigFamily<KivBackend_Config_t>& backendConfigs() {
  static constexpr ConfigFamily<Backend> family = {
      .id = ConfigFamilyId::kBackend,
      .typeName = "KivBackend_Config_t",
      .unknownOption = {Status::kBackendInvalidArgument, kUnknownOption},
      .optionAsInt = false,
      .customConstant = "KIV_BACKEND_CONFIG_OPTION_CUSTOM",
      .nullCustomText = ".customConfig=NULL",
      .options = kBackendOptions,
      .customWord = nullptr,
      .writeCustom = nullptr};
  return family;
}

const ConfigFamily<KivContext_Config_t>& contextConfigs() {
  static constexpr ConfigFamily<Context> family = {
      .id = ConfigFamilyId::kContext,
      .typeName = "KivContext_Config_t",
      .unknownOption = {Status::kContextInvalidArgument, kUnknownOption},
      .optionAsInt = false,
      .customConstant = "KIV_CONTEXT_CONFIG_OPTION_CUSTOM",
      .nullCustomText = ".customConfig=NULL",
      .options = kContextOptions,
      .customWord = "gpuConfig",
      .writeCustom = writeGpuContext};
  return family;
}

const ConfigFamily<KivDevice_Config_t>& deviceConfigs() {
  static constexpr ConfigFamily<Device> family = {
      .id = ConfigFamilyId::kDevice,
      .typeName = "KivDevice_Config_t",
      .unknownOption = {Status::kInvalidArgument, kUnknownDeviceOption},
      .optionAsInt = true,
      .customConstant = "KIV_DEVICE_CONFIG_OPTION_CUSTOM",
      .nullCustomText = ".customConfig = NULL",
      .options = kDeviceOptions,
      .customWord = nullptr,
      .writeCustom = nullptr};
  return family;
}

const ConfigFamily<KivGraph_Config_t>& graphConfigs() {
  static constexpr ConfigFamily<Graph> family = {
      .id = ConfigFamilyId::kGraph,
      .typeName = "KivGraph_Config_t",
      .unknownOption = {Status::kGraphInvalidArgument, kUnknownOption},
      .optionAsInt = false,
      .customConstant = "KIV_GRAPH_CONFIG_OPTION_CUSTOM",
      .nullCustomText = ".customConfig=NULL",
      .options = kGraphOptions,
      .customWord = "gpuConfig",
      .writeCustom = writeGpuGraph};
  return family;
}

const ConfigFamily<KivProfile_Config_t>& profileConfigs() {
  static constexpr ConfigFamily<Profile> family = {
      .id = ConfigFamilyId::kProfile,
      .typeName = "KivProfile_Config_t",
      .unknownOption = {Status::kInvalidArgument, kUnknownOption},
      .optionAsInt = false,
      .customConstant = "KIV_PROFILE_CONFIG_OPTION_CUSTOM",
      .nullCustomText = ".customConfig=NULL",
      .options = kProfileOptions,
      .customWord = nullptr,
      .writeCustom = nullptr};
  return family;
}

}  // namespace kiv::writers
