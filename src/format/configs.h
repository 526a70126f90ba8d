#pragma once

#include <array>

#include "format/records.h"

// The options of the five config families and of the GPU backend's custom
// configs:
//
//   KivGraph_Config_t g_priority_0 = {KIV_GRAPH_CONFIG_OPTION_PRIORITY,
//   .priority=(Kiv_Priority_t)150};
//
//   type name = {constant, member};        on one line
//
// The families' blanks around "=" differ, and stay so. Constant; from any
// thread.
namespace kiv::format {

enum class ConfigFamilyId : std::uint8_t {
  kBackend,
  kContext,
  kDevice,
  kGraph,
  kProfile
};

struct ConfigOption {
  // The option's word in the record's name: base + "_" + word.
  std::string_view word;
  std::string_view constant;
  // Selected by the option's number.
  Member member;
};

// How a call passes a config list without records.
enum class EmptyConfigs : std::uint8_t {
  kArray,        // as an array that holds NULL alone
  kNullForNull,  // a null list as NULL, an empty one as an array
  kNullForEmpty  // either as NULL
};

struct ConfigFamily {
  ConfigFamilyId id;
  std::string_view type;
  // "const ... *", the element type of the list that a call passes.
  std::string_view pointerType;
  EmptyConfigs empty;
  // Whether a blank line follows each record.
  bool blankLines;
  // The first one is the custom config, which is NULL as a plain option.
  std::span<const ConfigOption> options;
  // The text before the address of a custom config that is written; empty
  // where none is.
  std::string_view customLead = {};
  // Its word in the record's name.
  std::string_view customWord = {};
};

// The custom config's option in every family.
inline constexpr std::uint32_t kCustomOption = 0;

inline constexpr ConfigOption kBackendOptions[] = {
    {"customConfig",
     "KIV_BACKEND_CONFIG_OPTION_CUSTOM",
     {KIV_BACKEND_CONFIG_OPTION_CUSTOM, ".customConfig=NULL", FieldKind::kFixed,
      offsetof(KivBackend_Config_t, customConfig)}},
    {"errorConfig",
     "KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING",
     {KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING, ".errorConfig=",
      FieldKind::kInline, offsetof(KivBackend_Config_t, errorConfig),
      rows::kErrorConfig.type, &rows::kErrorConfig}},
    {"platformOption",
     "KIV_BACKEND_CONFIG_OPTION_PLATFORM",
     {KIV_BACKEND_CONFIG_OPTION_PLATFORM, ".platformOption=", FieldKind::kText,
      offsetof(KivBackend_Config_t, platformOption)}},
};

// The later constants have no OPTION in their names.
inline constexpr ConfigOption kContextOptions[] = {
    {"customConfig",
     "KIV_CONTEXT_CONFIG_OPTION_CUSTOM",
     {KIV_CONTEXT_CONFIG_OPTION_CUSTOM, ".customConfig=NULL", FieldKind::kFixed,
      offsetof(KivContext_Config_t, customConfig)}},
    {"priority",
     "KIV_CONTEXT_CONFIG_OPTION_PRIORITY",
     {KIV_CONTEXT_CONFIG_OPTION_PRIORITY, ".priority=", FieldKind::kEnum,
      offsetof(KivContext_Config_t, priority), "Kiv_Priority_t"}},
    {"errorConfig",
     "KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING",
     {KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING, ".errorConfig=",
      FieldKind::kInline, offsetof(KivContext_Config_t, errorConfig),
      rows::kErrorConfig.type, &rows::kErrorConfig}},
    {"oemString",
     "KIV_CONTEXT_CONFIG_OPTION_OEM_STRING",
     {KIV_CONTEXT_CONFIG_OPTION_OEM_STRING, ".oemString=", FieldKind::kText,
      offsetof(KivContext_Config_t, oemString)}},
    {"asyncExeQueueDepth",
     "KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH",
     {KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH,
      ".asyncExeQueueDepth={KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_"
      "NUMERIC, .depth=",
      FieldKind::kU32,
      offsetof(KivContext_Config_t, asyncExeQueueDepth.depth),
      {},
      nullptr,
      "}"}},
    {"enableGraphs",
     "KIV_CONTEXT_CONFIG_ENABLE_GRAPHS",
     {KIV_CONTEXT_CONFIG_ENABLE_GRAPHS, ".enableGraphs=", FieldKind::kArray,
      offsetof(KivContext_Config_t, enableGraphs), "const char* const"}},
    {"memoryLimitHint",
     "KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT",
     {KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT, ".memoryLimitHint=",
      FieldKind::kU64, offsetof(KivContext_Config_t, memoryLimitHint)}},
    {"isPersistentBinary",
     "KIV_CONTEXT_CONFIG_PERSISTENT_BINARY",
     {KIV_CONTEXT_CONFIG_PERSISTENT_BINARY, ".isPersistentBinary=",
      FieldKind::kU8, offsetof(KivContext_Config_t, isPersistentBinary)}},
};

inline constexpr ConfigOption kDeviceOptions[] = {
    {"customConfig",
     "KIV_DEVICE_CONFIG_OPTION_CUSTOM",
     {KIV_DEVICE_CONFIG_OPTION_CUSTOM, ".customConfig = NULL",
      FieldKind::kFixed, offsetof(KivDevice_Config_t, customConfig)}},
    {"hardwareInfo",
     "KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO",
     {KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO, ".hardwareInfo = ",
      FieldKind::kAddress, offsetof(KivDevice_Config_t, hardwareInfo),
      rows::kPlatformInfo.type, &rows::kPlatformInfo}},
};

inline constexpr ConfigOption kGraphOptions[] = {
    {"customConfig",
     "KIV_GRAPH_CONFIG_OPTION_CUSTOM",
     {KIV_GRAPH_CONFIG_OPTION_CUSTOM, ".customConfig=NULL", FieldKind::kFixed,
      offsetof(KivGraph_Config_t, customConfig)}},
    {"priority",
     "KIV_GRAPH_CONFIG_OPTION_PRIORITY",
     {KIV_GRAPH_CONFIG_OPTION_PRIORITY, ".priority=", FieldKind::kEnum,
      offsetof(KivGraph_Config_t, priority), "Kiv_Priority_t"}},
};

inline constexpr ConfigOption kProfileOptions[] = {
    {"customConfig",
     "KIV_PROFILE_CONFIG_OPTION_CUSTOM",
     {KIV_PROFILE_CONFIG_OPTION_CUSTOM, ".customConfig=NULL", FieldKind::kFixed,
      offsetof(KivProfile_Config_t, customConfig)}},
    {"maxEvents",
     "KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS",
     {KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS,
      ".numMaxEvents=",
      FieldKind::kU64,
      offsetof(KivProfile_Config_t, numMaxEvents),
      {},
      nullptr,
      "ULL"}},
};

namespace configs {

inline constexpr ConfigFamily kBackend = {ConfigFamilyId::kBackend,
                                          "KivBackend_Config_t",
                                          "const KivBackend_Config_t*",
                                          EmptyConfigs::kArray,
                                          false,
                                          kBackendOptions};
inline constexpr ConfigFamily kContext = {ConfigFamilyId::kContext,
                                          "KivContext_Config_t",
                                          "const KivContext_Config_t*",
                                          EmptyConfigs::kNullForEmpty,
                                          true,
                                          kContextOptions,
                                          ".customConfig = ",
                                          "gpuConfig"};
inline constexpr ConfigFamily kDevice = {ConfigFamilyId::kDevice,
                                         "KivDevice_Config_t",
                                         "const KivDevice_Config_t*",
                                         EmptyConfigs::kArray,
                                         false,
                                         kDeviceOptions};
inline constexpr ConfigFamily kGraph = {ConfigFamilyId::kGraph,
                                        "KivGraph_Config_t",
                                        "const KivGraph_Config_t*",
                                        EmptyConfigs::kNullForNull,
                                        false,
                                        kGraphOptions,
                                        ".customConfig=",
                                        "gpuConfig"};
inline constexpr ConfigFamily kProfile = {ConfigFamilyId::kProfile,
                                          "KivProfile_Config_t",
                                          "const KivProfile_Config_t*",
                                          EmptyConfigs::kArray,
                                          false,
                                          kProfileOptions};

inline constexpr std::array kFamilies = {&kBackend, &kContext, &kDevice,
                                         &kGraph, &kProfile};

}  // namespace configs

// All config records have the option at offset 0 and their union behind it.
static_assert(sizeof(KivBackend_Config_t) == sizeof(KivContext_Config_t) &&
              sizeof(KivBackend_Config_t) == sizeof(KivDevice_Config_t) &&
              sizeof(KivBackend_Config_t) == sizeof(KivGraph_Config_t) &&
              sizeof(KivBackend_Config_t) == sizeof(KivProfile_Config_t));

// The GPU backend's custom config of a context. An option that it does not have
// is written as the last one.
inline constexpr std::string_view kGpuContextCustomConfigType =
    "KivGpuContext_CustomConfig_t";
inline constexpr ConfigOption kGpuContextOptions[] = {
    {"",
     "KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT",
     {KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT, ".perfHint = ", FieldKind::kEnum,
      offsetof(KivGpuContext_CustomConfig_t, perfHint),
      "KivGpuContext_PerfHint_t"}},
    {"",
     "KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS",
     {KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS, ".useGLBuffers = ",
      FieldKind::kU8, offsetof(KivGpuContext_CustomConfig_t, useGLBuffers)}},
    {"",
     "KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR",
     {KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR, ".kernelRepoDir = ",
      FieldKind::kText, offsetof(KivGpuContext_CustomConfig_t, kernelRepoDir)}},
    {"",
     "KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO",
     {KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO,
      ".invalidateKernelRepo = ", FieldKind::kU8,
      offsetof(KivGpuContext_CustomConfig_t, invalidateKernelRepo)}},
    {"",
     "KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED",
     {KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED,
      ".perfHint = KIV_GPU_CONTEXT_PERF_HINT_HIGH", FieldKind::kFixed,
      offsetof(KivGpuContext_CustomConfig_t, perfHint)}},
};

// Null when the options have none of that number.
constexpr const ConfigOption* findOption(std::span<const ConfigOption> options,
                                         std::uint32_t number) {
  for (const ConfigOption& option : options)
    if (option.member.tag == number) return &option;
  return nullptr;
}

}  // namespace kiv::format
