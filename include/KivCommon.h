#ifndef KIV_COMMON_H
#define KIV_COMMON_H

/**
 * Scalars, handles and status codes shared by every family of the Kiv API.
 *
 * Layouts are part of the binary interface: fields never move or change their
 * width. All integers are little-endian, enums 32 bits wide, booleans 8.
 */

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "KivExport.h"

KIV_EXTERN_C_BEGIN

/** A 32-bit status code in a 64-bit word; 0 is success. */
typedef uint64_t Kiv_ErrorHandle_t;

/** Opaque handles. A null handle stands for "none" where a function allows it.
 */
typedef void* Kiv_LogHandle_t;
typedef void* Kiv_BackendHandle_t;
typedef void* Kiv_DeviceHandle_t;
typedef void* Kiv_ContextHandle_t;
typedef void* Kiv_GraphHandle_t;
typedef void* Kiv_ProfileHandle_t;
typedef void* Kiv_SignalHandle_t;
typedef void* Kiv_MemHandle_t;

/** Status codes. Each family has its own thousand. */
typedef enum {
  KIV_SUCCESS = 0,
  /** The library does not offer the function or the option. */
  KIV_COMMON_ERROR_NOT_SUPPORTED = 1000,
  /** Memory ran out, or an object could not be created. */
  KIV_COMMON_ERROR_MEM_ALLOC = 1002,
  /** An argument that must not be null is null, or an option is unknown. */
  KIV_COMMON_ERROR_INVALID_ARGUMENT = 1004,
  /** The call was valid, its effect could not be had. */
  KIV_COMMON_ERROR_GENERAL = 1999,
  /** The library could not get ready to work. */
  KIV_BACKEND_ERROR_CANNOT_INITIALIZE = 4000,
  KIV_BACKEND_ERROR_INVALID_ARGUMENT = 4004,
  KIV_BACKEND_ERROR_INVALID_HANDLE = 4011,
  /** The library has no such thing to report. */
  KIV_BACKEND_ERROR_NOTHING_TO_REPORT = 4950,
  /** The option was given at a time when it is not allowed. */
  KIV_BACKEND_ERROR_OPTION_TIMING = 4951,
  KIV_BACKEND_ERROR_GENERAL = 4999,
  KIV_CONTEXT_ERROR_INVALID_ARGUMENT = 5000,
  KIV_CONTEXT_ERROR_INVALID_HANDLE = 5002,
  KIV_CONTEXT_ERROR_BINARY = 5005,
  KIV_CONTEXT_ERROR_GENERAL = 5999,
  KIV_GRAPH_ERROR_INVALID_ARGUMENT = 6000,
  KIV_GRAPH_ERROR_INVALID_HANDLE = 6001,
  /** The context has a graph of that name already. */
  KIV_GRAPH_ERROR_NAME_TAKEN = 6003,
  KIV_GRAPH_ERROR_INVALID_TENSOR = 6004,
  /** The owner has a tensor of that id and name already. */
  KIV_TENSOR_ERROR_ALREADY_EXISTS = 7003,
  KIV_TENSOR_ERROR_INVALID_ARGUMENT = 7004,
  /** The owner has a tensor of that id under another name. */
  KIV_TENSOR_ERROR_NAME_COLLISION = 7006,
  KIV_TENSOR_ERROR_UNSUPPORTED_DATA_TYPE = 7999,
  KIV_LOG_ERROR_NOT_CREATED = 11002,
  KIV_LOG_ERROR_INVALID_LEVEL = 11003,
  KIV_LOG_ERROR_GENERAL = 11999,
  KIV_PROFILE_ERROR_INVALID_HANDLE = 12000,
  KIV_PROFILE_ERROR_GENERAL = 12999,
  KIV_DEVICE_ERROR_INVALID_HANDLE = 14000,
  KIV_DEVICE_ERROR_GENERAL = 14999,
  KIV_ERROR_UNDEFINED = 0x7FFFFFFF
} Kiv_Status_t;

/** One version number. */
typedef struct {
  uint32_t majorVersion;
  uint32_t minorVersion;
  uint32_t patchVersion;
} Kiv_Version_t;

/** The version of the API itself and of the backend's part of it. */
typedef struct {
  Kiv_Version_t coreApiVersion;
  Kiv_Version_t backendApiVersion;
} Kiv_ApiVersion_t;

/** How urgent the work of a context or a graph is. */
typedef enum {
  KIV_PRIORITY_LOW = 0,
  KIV_PRIORITY_NORMAL = 100,
  KIV_PRIORITY_NORMAL_HIGH = 150,
  KIV_PRIORITY_HIGH = 200,
  KIV_PRIORITY_UNDEFINED = 0x7FFFFFFF
} Kiv_Priority_t;

/** How much detail of an error a backend keeps. */
typedef enum {
  KIV_ERROR_REPORTING_LEVEL_BRIEF = 1,
  KIV_ERROR_REPORTING_LEVEL_DETAILED = 2,
  KIV_ERROR_REPORTING_LEVEL_UNDEFINED = 0x7FFFFFFF
} Kiv_ErrorReportingLevel_t;

typedef struct {
  Kiv_ErrorReportingLevel_t reportingLevel;
  /** Most memory that error reports may take, in kilobytes; 0 for no limit. */
  uint32_t storageLimit;
} Kiv_ErrorConfig_t;

static_assert(sizeof(void*) == 8, "the Kiv API is for 64-bit systems");
static_assert(sizeof(Kiv_Status_t) == 4, "enums are 32 bits wide");
static_assert(sizeof(Kiv_ApiVersion_t) == 24, "six 32-bit words");
static_assert(sizeof(Kiv_ErrorConfig_t) == 8, "layout");

KIV_EXTERN_C_END

#endif
