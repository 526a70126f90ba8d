#ifndef KIV_CONTEXT_H
#define KIV_CONTEXT_H

/**
 * Contexts: what graphs and shared tensors live in, and what can be serialised
 * to a binary.
 */

#include "KivTypes.h"

KIV_EXTERN_C_BEGIN

/** A size in bytes. */
typedef uint64_t Kiv_ContextBinarySize_t;

/* The later options have no OPTION in their names. */
typedef enum {
  KIV_CONTEXT_CONFIG_OPTION_CUSTOM = 0,
  KIV_CONTEXT_CONFIG_OPTION_PRIORITY = 1,
  KIV_CONTEXT_CONFIG_OPTION_ERROR_REPORTING = 2,
  KIV_CONTEXT_CONFIG_OPTION_OEM_STRING = 3,
  KIV_CONTEXT_CONFIG_ASYNC_EXECUTION_QUEUE_DEPTH = 4,
  KIV_CONTEXT_CONFIG_ENABLE_GRAPHS = 5,
  KIV_CONTEXT_CONFIG_MEMORY_LIMIT_HINT = 6,
  KIV_CONTEXT_CONFIG_PERSISTENT_BINARY = 7,
  KIV_CONTEXT_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivContext_ConfigOption_t;

typedef enum {
  KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_NUMERIC = 0,
  KIV_CONTEXT_ASYNC_EXECUTION_QUEUE_DEPTH_TYPE_UNDEFINED = 0x7FFFFFFF
} KivContext_AsyncExecutionQueueDepthType_t;

typedef struct {
  KivContext_AsyncExecutionQueueDepthType_t type;
  union {
    /** executions */
    uint32_t depth;
  };
} KivContext_AsyncExecutionQueueDepth_t;

/** A record of the backend's own making. */
typedef void* KivContext_CustomConfig_t;

typedef struct {
  KivContext_ConfigOption_t option;
  union {
    KivContext_CustomConfig_t customConfig;
    Kiv_Priority_t priority;
    Kiv_ErrorConfig_t errorConfig;
    const char* oemString;
    KivContext_AsyncExecutionQueueDepth_t asyncExeQueueDepth;
    /** names of the graphs to load, ended by null; may be null */
    const char* const* enableGraphs;
    /** megabytes */
    uint64_t memoryLimitHint;
    /** 1 if the client keeps the binary until the context is freed */
    uint8_t isPersistentBinary;
  };
} KivContext_Config_t;

/**
 * Creates a context.
 *
 * @param backend the backend, or null.
 * @param device the device, or null for the backend's own choice.
 * @param config config list, or null.
 * @param context receives the handle, 0 if the call fails; given back with
 *        contextFree.
 * @return 0; KIV_CONTEXT_ERROR_INVALID_ARGUMENT for a null out-pointer or an
 *         unknown option; KIV_BACKEND_ERROR_INVALID_HANDLE or
 *         KIV_DEVICE_ERROR_INVALID_HANDLE for an unknown backend or device;
 *         KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivContext_CreateFn_t)(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, Kiv_ContextHandle_t* context);

/**
 * Sets options of a context.
 *
 * @return 0; KIV_CONTEXT_ERROR_INVALID_HANDLE for a null or unknown handle;
 *         KIV_CONTEXT_ERROR_INVALID_ARGUMENT for an unknown option;
 *         KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivContext_SetConfigFn_t)(
    Kiv_ContextHandle_t context, const KivContext_Config_t** config);

/**
 * Tells how large the context's binary would be.
 *
 * @param binarySize receives the size in bytes.
 * @return 0; KIV_CONTEXT_ERROR_INVALID_HANDLE for a null or unknown handle;
 *         KIV_BACKEND_ERROR_NOTHING_TO_REPORT from a recorder, which has no
 *         binary; KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivContext_GetBinarySizeFn_t)(
    Kiv_ContextHandle_t context, Kiv_ContextBinarySize_t* binarySize);

/**
 * Serialises a context.
 *
 * @param buffer memory of the caller, bufferSize bytes.
 * @param writtenSize receives the number of bytes written.
 * @return as contextGetBinarySize.
 */
typedef Kiv_ErrorHandle_t (*KivContext_GetBinaryFn_t)(
    Kiv_ContextHandle_t context, void* buffer,
    Kiv_ContextBinarySize_t bufferSize, Kiv_ContextBinarySize_t* writtenSize);

/**
 * Asks whether a binary could be loaded.
 *
 * @param binary binarySize bytes of the caller, read during the call only.
 * @return 0; KIV_CONTEXT_ERROR_INVALID_HANDLE if the bytes cannot be taken;
 *         KIV_BACKEND_ERROR_INVALID_HANDLE or KIV_DEVICE_ERROR_INVALID_HANDLE
 *         for an unknown backend or device; KIV_CONTEXT_ERROR_GENERAL
 *         otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivContext_ValidateBinaryFn_t)(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary,
    Kiv_ContextBinarySize_t binarySize);

/**
 * Creates a context from its serialised form.
 *
 * @param binary binarySize bytes of the caller; to be kept until contextFree
 *        where KIV_CONTEXT_CONFIG_PERSISTENT_BINARY is set.
 * @param profile a profile that gathers figures of the call, or null.
 * @return as contextCreate; KIV_CONTEXT_ERROR_BINARY if the bytes cannot be
 *         taken; KIV_PROFILE_ERROR_INVALID_HANDLE for an unknown profile.
 */
typedef Kiv_ErrorHandle_t (*KivContext_CreateFromBinaryFn_t)(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary,
    Kiv_ContextBinarySize_t binarySize, Kiv_ContextHandle_t* context,
    Kiv_ProfileHandle_t profile);

/** As contextCreateFromBinary, with a signal that may end or time the call. */
typedef Kiv_ErrorHandle_t (*KivContext_CreateFromBinaryWithSignalFn_t)(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary,
    Kiv_ContextBinarySize_t binarySize, Kiv_ContextHandle_t* context,
    Kiv_ProfileHandle_t profile, Kiv_SignalHandle_t signal);

/**
 * Frees a context with its graphs and tensors; their handles are unknown
 * afterwards.
 *
 * @param profile a profile that gathers figures of the call, or null.
 * @return 0; KIV_CONTEXT_ERROR_INVALID_HANDLE for a null or unknown handle;
 *         KIV_PROFILE_ERROR_INVALID_HANDLE for an unknown profile;
 *         KIV_CONTEXT_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivContext_FreeFn_t)(Kiv_ContextHandle_t context,
                                                 Kiv_ProfileHandle_t profile);

static_assert(sizeof(KivContext_AsyncExecutionQueueDepth_t) == 8, "layout");
static_assert(sizeof(KivContext_Config_t) == 16, "layout");
static_assert(offsetof(KivContext_Config_t, customConfig) == 8, "layout");

KIV_EXTERN_C_END

#endif
