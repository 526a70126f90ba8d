#ifndef KIV_UNSUPPORTED_H
#define KIV_UNSUPPORTED_H

/**
 * Families that a library of this version need not offer: registered memory,
 * signals, error messages and operations that later versions define. A library
 * that does not offer them returns KIV_COMMON_ERROR_NOT_SUPPORTED and reads
 * none of the arguments.
 */

#include "KivCommon.h"

KIV_EXTERN_C_BEGIN

/** Describes memory to be registered; starts with its kind. */
typedef struct {
  uint32_t kind;
} KivMem_Descriptor_t;

/** An option of a signal; starts with its tag. */
typedef struct {
  uint32_t option;
} KivSignal_Config_t;

/** Registers numDescriptors pieces of memory; a handle for each. */
typedef Kiv_ErrorHandle_t (*KivMem_RegisterFn_t)(
    Kiv_ContextHandle_t context, const KivMem_Descriptor_t* descriptors,
    uint32_t numDescriptors, Kiv_MemHandle_t* handles);

/** Gives numHandles registered pieces of memory back. */
typedef Kiv_ErrorHandle_t (*KivMem_DeRegisterFn_t)(
    const Kiv_MemHandle_t* handles, uint32_t numHandles);

/** Creates a signal, which ends or times calls that it is passed to. */
typedef Kiv_ErrorHandle_t (*KivSignal_CreateFn_t)(
    Kiv_BackendHandle_t backend, const KivSignal_Config_t** config,
    Kiv_SignalHandle_t* signal);

/** Sets options of a signal. */
typedef Kiv_ErrorHandle_t (*KivSignal_SetConfigFn_t)(
    Kiv_SignalHandle_t signal, const KivSignal_Config_t** config);

/** Fires a signal. */
typedef Kiv_ErrorHandle_t (*KivSignal_TriggerFn_t)(Kiv_SignalHandle_t signal);

/** Frees a signal. */
typedef Kiv_ErrorHandle_t (*KivSignal_FreeFn_t)(Kiv_SignalHandle_t signal);

/**
 * Tells what a status code means, in short or at length.
 *
 * @return KIV_BACKEND_ERROR_CANNOT_INITIALIZE if the library cannot start.
 */
typedef Kiv_ErrorHandle_t (*KivError_GetMessageFn_t)(Kiv_ErrorHandle_t status,
                                                     const char** message);

/** Gives back what a long message took. */
typedef Kiv_ErrorHandle_t (*KivError_FreeMessageFn_t)(const char* message);

/** An operation that a later version of the API defines. */
typedef Kiv_ErrorHandle_t (*Kiv_LaterOperationFn_t)(void* handle,
                                                    const void* arguments);

/** A slot that is always null. */
typedef void (*Kiv_ReservedFn_t)(void);

KIV_EXTERN_C_END

#endif
