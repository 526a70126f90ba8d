#ifndef KIV_BACKEND_H
#define KIV_BACKEND_H

/**
 * Backends: the root of every session. Devices, contexts and profiles belong
 * to a backend; free them first.
 *
 * Config lists here and in the other families are null-terminated arrays of
 * pointers to records, or null for none; they stay the caller's and are read
 * during the call only.
 */

#include "KivTypes.h"

KIV_EXTERN_C_BEGIN

typedef enum {
  KIV_BACKEND_CONFIG_OPTION_CUSTOM = 0,
  KIV_BACKEND_CONFIG_OPTION_ERROR_REPORTING = 1,
  KIV_BACKEND_CONFIG_OPTION_PLATFORM = 2,
  KIV_BACKEND_CONFIG_OPTION_UNDEFINED = 0x7FFFFFFF
} KivBackend_ConfigOption_t;

/** A record of the backend's own making. */
typedef void* KivBackend_CustomConfig_t;

typedef struct {
  KivBackend_ConfigOption_t option;
  union {
    KivBackend_CustomConfig_t customConfig;
    Kiv_ErrorConfig_t errorConfig;
    /** "key:value" for the platform; may be null */
    const char* platformOption;
  };
} KivBackend_Config_t;

/** One operation that a backend offers. */
typedef struct {
  const char* packageName;
  const char* name;
  const char* target;
} KivBackend_OperationName_t;

/**
 * Creates a backend.
 *
 * @param logger the logger's handle, or null.
 * @param config config list, or null.
 * @param backend receives the handle; given back with backendFree.
 * @return 0; KIV_BACKEND_ERROR_INVALID_ARGUMENT for a null out-pointer or an
 *         unknown option; KIV_BACKEND_ERROR_CANNOT_INITIALIZE if the library
 *         cannot start; KIV_BACKEND_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_CreateFn_t)(
    Kiv_LogHandle_t logger, const KivBackend_Config_t** config,
    Kiv_BackendHandle_t* backend);

/**
 * Sets options of a backend.
 *
 * @return 0; KIV_BACKEND_ERROR_INVALID_HANDLE for an unknown backend;
 *         KIV_BACKEND_ERROR_INVALID_ARGUMENT for an unknown option;
 *         KIV_BACKEND_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_SetConfigFn_t)(
    Kiv_BackendHandle_t backend, const KivBackend_Config_t** config);

/**
 * Tells the versions of the API that the library implements.
 *
 * @param version receives them.
 * @return 0; KIV_BACKEND_ERROR_INVALID_ARGUMENT for a null argument.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_GetApiVersionFn_t)(
    Kiv_ApiVersion_t* version);

/**
 * Tells the library's build.
 *
 * @param id receives a text that the library owns and never changes.
 * @return 0; KIV_BACKEND_ERROR_INVALID_ARGUMENT for a null argument.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_GetBuildIdFn_t)(const char** id);

/**
 * Loads a package of operations.
 *
 * @param packagePath path of the package's library; may be null.
 * @param interfaceProvider name of the function that hands out the package's
 *        interface; may be null.
 * @param target the platform that the package is for; may be null.
 * @return 0; KIV_BACKEND_ERROR_INVALID_HANDLE for an unknown backend;
 *         KIV_BACKEND_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_RegisterOpPackageFn_t)(
    Kiv_BackendHandle_t backend, const char* packagePath,
    const char* interfaceProvider, const char* target);

/**
 * Lists the operations that a backend offers.
 *
 * @param numOperations receives the number of entries; may be null.
 * @param operations receives an array that the backend owns; may be null.
 * @return 0; KIV_BACKEND_ERROR_INVALID_HANDLE for an unknown backend;
 *         KIV_BACKEND_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_GetSupportedOperationsFn_t)(
    Kiv_BackendHandle_t backend, uint32_t* numOperations,
    const KivBackend_OperationName_t** operations);

/**
 * Asks whether a backend could run an operation as it is described.
 *
 * @return 0; KIV_BACKEND_ERROR_INVALID_HANDLE for an unknown backend; the
 *         codes of graphAddNode for a record that is not valid.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_ValidateOpConfigFn_t)(
    Kiv_BackendHandle_t backend, Kiv_OpConfig_t opConfig);

/**
 * Frees a backend; its handle is unknown afterwards.
 *
 * @return 0; KIV_BACKEND_ERROR_INVALID_HANDLE for an unknown backend;
 *         KIV_BACKEND_ERROR_GENERAL otherwise.
 */
typedef Kiv_ErrorHandle_t (*KivBackend_FreeFn_t)(Kiv_BackendHandle_t backend);

static_assert(sizeof(KivBackend_Config_t) == 16, "layout");
static_assert(offsetof(KivBackend_Config_t, customConfig) == 8, "layout");

KIV_EXTERN_C_END

#endif
