#ifndef KIV_GPU_GRAPH_H
#define KIV_GPU_GRAPH_H

/** The GPU backend's custom config of a graph. */

#include "KivGpuBackend.h"

KIV_EXTERN_C_BEGIN

/** The meaning of the flags is the GPU backend's. */
typedef struct {
  KivGpu_Precision_t precision;
  uint8_t flag0;
  uint8_t flag1;
  uint8_t flag2;
} KivGpuGraph_CustomConfig_t;

static_assert(sizeof(KivGpuGraph_CustomConfig_t) == 8, "layout");
static_assert(offsetof(KivGpuGraph_CustomConfig_t, flag0) == 4, "layout");
static_assert(offsetof(KivGpuGraph_CustomConfig_t, flag2) == 6, "layout");

KIV_EXTERN_C_END

#endif
