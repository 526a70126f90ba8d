#ifndef KIV_GPU_BACKEND_H
#define KIV_GPU_BACKEND_H

/** What the GPU backend's own records share. */

#include "../KivCommon.h"

KIV_EXTERN_C_BEGIN

/** The arithmetic that the GPU backend uses. */
typedef enum {
  KIV_GPU_PRECISION_FP32 = 0,
  KIV_GPU_PRECISION_FP16 = 1,
  KIV_GPU_PRECISION_HYBRID = 2,
  KIV_GPU_PRECISION_USER_PROVIDED = 3,
  KIV_GPU_PRECISION_UNDEFINED = 0x7FFFFFFF
} KivGpu_Precision_t;

static_assert(sizeof(KivGpu_Precision_t) == 4, "enums are 32 bits wide");

KIV_EXTERN_C_END

#endif
