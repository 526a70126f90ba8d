#ifndef KIV_PROPERTY_H
#define KIV_PROPERTY_H

/**
 * Questions about what a backend can do.
 */

#include "KivCommon.h"

KIV_EXTERN_C_BEGIN

/** Names a capability; the values are each backend's. */
typedef uint32_t KivProperty_Key_t;

/**
 * Asks for one capability.
 *
 * @return 0 if the backend has it; KIV_COMMON_ERROR_NOT_SUPPORTED if not; a
 *         recorder, which has no answer, returns 0 once the question is
 *         recorded and KIV_COMMON_ERROR_GENERAL if it could not be.
 */
typedef Kiv_ErrorHandle_t (*KivProperty_HasCapabilityFn_t)(
    KivProperty_Key_t key);

KIV_EXTERN_C_END

#endif
