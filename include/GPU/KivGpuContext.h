#ifndef KIV_GPU_CONTEXT_H
#define KIV_GPU_CONTEXT_H

/** The GPU backend's custom config of a context. */

#include "KivGpuBackend.h"

KIV_EXTERN_C_BEGIN

typedef enum {
  KIV_GPU_CONTEXT_CONFIG_OPTION_PERF_HINT = 0,
  KIV_GPU_CONTEXT_CONFIG_OPTION_USE_GL_BUFFERS = 1,
  KIV_GPU_CONTEXT_CONFIG_OPTION_KERNEL_REPO_DIR = 2,
  KIV_GPU_CONTEXT_CONFIG_OPTION_INVALIDATE_KERNEL_REPO = 3,
  KIV_GPU_CONTEXT_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivGpuContext_ConfigOption_t;

typedef enum {
  KIV_GPU_CONTEXT_PERF_HINT_HIGH = 0,
  KIV_GPU_CONTEXT_PERF_HINT_NORMAL = 1,
  KIV_GPU_CONTEXT_PERF_HINT_LOW = 2,
  KIV_GPU_CONTEXT_PERF_HINT_UNDEFINED = 0x7FFFFFFF
} KivGpuContext_PerfHint_t;

typedef struct {
  KivGpuContext_ConfigOption_t option;
  union {
    KivGpuContext_PerfHint_t perfHint;
    uint8_t useGLBuffers;
    /** directory of compiled kernels */
    const char* kernelRepoDir;
    uint8_t invalidateKernelRepo;
  };
} KivGpuContext_CustomConfig_t;

static_assert(sizeof(KivGpuContext_CustomConfig_t) == 16, "layout");
static_assert(offsetof(KivGpuContext_CustomConfig_t, perfHint) == 8, "layout");

KIV_EXTERN_C_END

#endif
