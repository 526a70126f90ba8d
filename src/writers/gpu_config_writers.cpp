#include "writers/gpu_config_writers.h"

namespace kiv::writers {
namespace {

using output::decimal;
using output::Texts;

Texts contextMembers(WriteScope& scope,
                     const KivGpuContext_CustomConfig_t& custom) {
  switch (enumValue(custom.option)) {
    case KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT:
      return {
          "KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT",
          ".perfHint = " + cast("KivGpuContext_PerfHint_t", custom.perfHint)};
    case KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS:
      return {"KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS",
              ".useGLBuffers = " + decimal(custom.useGLBuffers)};
    case KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR:
      return {"KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR",
              ".kernelRepoDir = " + scope.literal(custom.kernelRepoDir)};
    case KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO:
      return {
          "KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO",
          ".invalidateKernelRepo = " + decimal(custom.invalidateKernelRepo)};
    default:
      return {"KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED",
              ".perfHint = KIV_GPU_CONTEXT_PERF_HINT_HIGH"};
  }
}

}  // namespace

void writeGpuContextConfig(WriteScope& scope,
                           const KivGpuContext_CustomConfig_t& custom,
                           const std::string& name) {
  const std::string record = name + "_customConfig";
  scope.code.emitStruct("KivGpuContext_CustomConfig_t", record,
                        contextMembers(scope, custom));
  scope.code.emitStruct(
      "KivContext_Config_t", name,
      {"KIV_CONTEXT_CONFIG_OPTION_CUSTOM", ".customConfig = &" + record});
}

// No blanks around the wrapper's "=" here, unlike the context's: on purpose.
void writeGpuGraphConfig(WriteScope& scope,
                         const KivGpuGraph_CustomConfig_t& custom,
                         const std::string& name) {
  const std::string record = name + "_customConfig";
  scope.code.emitStruct(
      "KivGpuGraph_CustomConfig_t", record,
      {cast("KivGpu_Precision_t", custom.precision), decimal(custom.flag0),
       decimal(custom.flag1), decimal(custom.flag2)});
  scope.code.emitStruct(
      "KivGraph_Config_t", name,
      {"KIV_GRAPH_CONFIG_OPTION_CUSTOM", ".customConfig=&" + record});
}

}  // namespace kiv::writers
