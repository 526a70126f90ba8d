#include "records.h"

namespace kiv::tracer {
namespace {

// Prints a record of the backend's own. `Gpu` is its type for the GPU backend.
template <typename Gpu>
void printCustom(LineWriter& line, const void* config) {
  if (line.showsGpuRecords()) {
    line.field("custom", static_cast<const Gpu*>(config));
  } else {
    line.field("custom", Opaque{config != nullptr});
  }
}

Array<const char*> namesOf(const char* const* names) {
  std::uint64_t count = 0;
  while (names != nullptr && names[count] != nullptr) ++count;
  return {names, count};
}

void printValue(LineWriter& line, const KivBackend_Config_t& config) {
  switch (enumValue(config.option)) {
    case KIV_BACKEND_CONFIG_OPTION_CUSTOM:
      line.field("custom", Opaque{config.customConfig != nullptr});
      break;
    case KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING:
      line.field("error", config.errorConfig);
      break;
    case KIV_BACKEND_CONFIG_OPTION_PLATFORM:
      line.field("platform", config.platformOption);
      break;
    default:
      break;
  }
}

void printValue(LineWriter& line, const KivContext_Config_t& config) {
  switch (enumValue(config.option)) {
    case KIV_CONTEXT_CONFIG_OPTION_CUSTOM:
      printCustom<KivGpuContext_CustomConfig_t>(line, config.customConfig);
      break;
    case KIV_CONTEXT_CONFIG_OPTION_PRIORITY:
      line.field("priority", config.priority);
      break;
    case KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING:
      line.field("error", config.errorConfig);
      break;
    case KIV_CONTEXT_CONFIG_OPTION_OEM_STRING:
      line.field("oem", config.oemString);
      break;
    case KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH:
      line.field("queueDepth", config.asyncExeQueueDepth);
      break;
    case KIV_CONTEXT_CONFIG_ENABLE_GRAPHS:
      line.field("graphs", namesOf(config.enableGraphs));
      break;
    case KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT:
      line.field("memoryLimit", config.memoryLimitHint);
      break;
    case KIV_CONTEXT_CONFIG_PERSISTENT_BINARY:
      line.field("persistent", config.isPersistentBinary);
      break;
    default:
      break;
  }
}

void printValue(LineWriter& line, const KivDevice_Config_t& config) {
  if (enumValue(config.option) == KIV_DEVICE_CONFIG_OPTION_CUSTOM) {
    line.field("custom", Opaque{config.customConfig != nullptr});
  } else if (enumValue(config.option) ==
             KIV_DEVICE_CONFIG_OPTION_PLATFORM_INFO) {
    line.field("platform", config.hardwareInfo);
  }
}

void printValue(LineWriter& line, const KivGraph_Config_t& config) {
  if (enumValue(config.option) == KIV_GRAPH_CONFIG_OPTION_CUSTOM) {
    printCustom<KivGpuGraph_CustomConfig_t>(line, config.customConfig);
  } else if (enumValue(config.option) == KIV_GRAPH_CONFIG_OPTION_PRIORITY) {
    line.field("priority", config.priority);
  }
}

void printValue(LineWriter& line, const KivProfile_Config_t& config) {
  if (enumValue(config.option) == KIV_PROFILE_CONFIG_OPTION_CUSTOM) {
    line.field("custom", Opaque{config.customConfig != nullptr});
  } else if (enumValue(config.option) == KIV_PROFILE_CONFIG_OPTION_MAX_EVENTS) {
    line.field("maxEvents", config.numMaxEvents);
  }
}

template <typename Config>
void printConfig(LineWriter& line, const Config& config) {
  line.begin('{').field("option", config.option);
  printValue(line, config);
  line.end('}');
}

}  // namespace

void print(LineWriter& line, const Kiv_ErrorConfig_t& config) {
  line.begin('{')
      .field("level", config.reportingLevel)
      .field("limit", config.storageLimit)
      .end('}');
}

void print(LineWriter& line,
           const KivContext_AsyncExecutionQueueDepth_t& depth) {
  line.begin('{').field("type", depth.type);
  if (enumValue(depth.type) ==
      KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC)
    line.field("depth", depth.depth);
  line.end('}');
}

void print(LineWriter& line, const KivBackend_Config_t& config) {
  printConfig(line, config);
}

void print(LineWriter& line, const KivContext_Config_t& config) {
  printConfig(line, config);
}

void print(LineWriter& line, const KivDevice_Config_t& config) {
  printConfig(line, config);
}

void print(LineWriter& line, const KivGraph_Config_t& config) {
  printConfig(line, config);
}

void print(LineWriter& line, const KivProfile_Config_t& config) {
  printConfig(line, config);
}

}  // namespace kiv::tracer
