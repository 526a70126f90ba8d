#include "records.h"

namespace kiv::tracer {
namespace {

void printValue(LineWriter& line, const KivGpuContext_CustomConfig_t& config) {
  switch (enumValue(config.option)) {
    case KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT:
      line.field("perfHint", config.perfHint);
      break;
    case KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS:
      line.field("useGLBuffers", config.useGLBuffers);
      break;
    case KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR:
      line.field("kernelRepoDir", config.kernelRepoDir);
      break;
    case KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO:
      line.field("invalidateKernelRepo", config.invalidateKernelRepo);
      break;
    default:
      line.field("perfHint", KIV_GPU_CONTEXT_PERF_HINT_HIGH);
      break;
  }
}

}  // namespace

// An unknown option shows as the undefined one with a high hint, as a recording
// writes it.
void print(LineWriter& line, const KivGpuContext_CustomConfig_t& config) {
  std::uint32_t option = enumValue(config.option);
  if (option > KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO)
    option = KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED;
  line.begin('{').field("option", option);
  printValue(line, config);
  line.end('}');
}

void print(LineWriter& line, const KivGpuGraph_CustomConfig_t& config) {
  line.begin('{')
      .field("precision", config.precision)
      .field("flag0", config.flag0)
      .field("flag1", config.flag1)
      .field("flag2", config.flag2)
      .end('}');
}

}  // namespace kiv::tracer
