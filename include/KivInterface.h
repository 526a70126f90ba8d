#ifndef KIV_INTERFACE_H
#define KIV_INTERFACE_H

/**
 * The way into a Kiv library, and all that a client includes:
 *
 *   const KivInterface_t** providers = NULL;
 *   uint32_t count = 0;
 *   if (KivInterface_getProviders(&providers, &count) == 0)
 *     providers[0]->KIV_INTERFACE_VER_NAME.backendCreate(...);
 *
 * The functions may be called from any thread, but not from a signal handler:
 * they take locks and memory.
 */

#include "KivBackend.h"
#include "KivCommon.h"
#include "KivContext.h"
#include "KivDevice.h"
#include "KivGraph.h"
#include "KivLog.h"
#include "KivProfile.h"
#include "KivProperty.h"
#include "KivTensor.h"
#include "KivTypes.h"
#include "KivUnsupported.h"

KIV_EXTERN_C_BEGIN

/** The version of the API that these headers declare. */
#define KIV_CORE_API_VERSION_MAJOR 2u
#define KIV_CORE_API_VERSION_MINOR 29u
#define KIV_CORE_API_VERSION_PATCH 0u

/** Backend identifiers. */
#define KIV_BACKEND_ID_UNSET 0u
#define KIV_BACKEND_ID_SAVER 2u
#define KIV_BACKEND_ID_CPU 3u
#define KIV_BACKEND_ID_GPU 4u

/** The table of functions, slot by slot; a null slot must not be called. */
typedef struct {
  /*  0 */ KivProperty_HasCapabilityFn_t propertyHasCapability;
  /*  1 */ KivBackend_CreateFn_t backendCreate;
  /*  2 */ KivBackend_SetConfigFn_t backendSetConfig;
  /*  3 */ KivBackend_GetApiVersionFn_t backendGetApiVersion;
  /*  4 */ KivBackend_GetBuildIdFn_t backendGetBuildId;
  /*  5 */ KivBackend_RegisterOpPackageFn_t backendRegisterOpPackage;
  /*  6 */ KivBackend_GetSupportedOperationsFn_t backendGetSupportedOperations;
  /*  7 */ KivBackend_ValidateOpConfigFn_t backendValidateOpConfig;
  /*  8 */ KivBackend_FreeFn_t backendFree;
  /*  9 */ KivContext_CreateFn_t contextCreate;
  /* 10 */ KivContext_SetConfigFn_t contextSetConfig;
  /* 11 */ KivContext_GetBinarySizeFn_t contextGetBinarySize;
  /* 12 */ KivContext_GetBinaryFn_t contextGetBinary;
  /* 13 */ KivContext_CreateFromBinaryFn_t contextCreateFromBinary;
  /* 14 */ KivContext_FreeFn_t contextFree;
  /* 15 */ KivGraph_CreateFn_t graphCreate;
  /* 16 */ KivGraph_CreateSubgraphFn_t graphCreateSubgraph;
  /* 17 */ KivGraph_SetConfigFn_t graphSetConfig;
  /* 18 */ KivGraph_AddNodeFn_t graphAddNode;
  /* 19 */ KivGraph_FinalizeFn_t graphFinalize;
  /* 20 */ KivGraph_RetrieveFn_t graphRetrieve;
  /* 21 */ KivGraph_ExecuteFn_t graphExecute;
  /* 22 */ KivGraph_ExecuteAsyncFn_t graphExecuteAsync;
  /* 23 */ KivTensor_CreateContextTensorFn_t tensorCreateContextTensor;
  /* 24 */ KivTensor_CreateGraphTensorFn_t tensorCreateGraphTensor;
  /* 25 */ KivLog_CreateFn_t logCreate;
  /* 26 */ KivLog_SetLogLevelFn_t logSetLogLevel;
  /* 27 */ KivLog_FreeFn_t logFree;
  /* 28 */ KivProfile_CreateFn_t profileCreate;
  /* 29 */ KivProfile_SetConfigFn_t profileSetConfig;
  /* 30 */ KivProfile_GetEventsFn_t profileGetEvents;
  /* 31 */ KivProfile_GetSubEventsFn_t profileGetSubEvents;
  /* 32 */ KivProfile_GetEventDataFn_t profileGetEventData;
  /* 33 */ KivProfile_GetExtendedEventDataFn_t profileGetExtendedEventData;
  /* 34 */ KivProfile_FreeFn_t profileFree;
  /* 35 */ KivMem_RegisterFn_t memRegister;
  /* 36 */ KivMem_DeRegisterFn_t memDeRegister;
  /* 37 */ KivDevice_GetPlatformInfoFn_t deviceGetPlatformInfo;
  /* 38 */ KivDevice_FreePlatformInfoFn_t deviceFreePlatformInfo;
  /* 39 */ KivDevice_GetInfrastructureFn_t deviceGetInfrastructure;
  /* 40 */ KivDevice_CreateFn_t deviceCreate;
  /* 41 */ KivDevice_SetConfigFn_t deviceSetConfig;
  /* 42 */ KivDevice_GetInfoFn_t deviceGetInfo;
  /* 43 */ KivDevice_FreeFn_t deviceFree;
  /* 44 */ KivSignal_CreateFn_t signalCreate;
  /* 45 */ KivSignal_SetConfigFn_t signalSetConfig;
  /* 46 */ KivSignal_TriggerFn_t signalTrigger;
  /* 47 */ KivSignal_FreeFn_t signalFree;
  /* 48 */ KivError_GetMessageFn_t errorGetMessage;
  /* 49 */ KivError_GetMessageFn_t errorGetLongMessage;
  /* 50 */ KivError_FreeMessageFn_t errorFreeLongMessage;
  /* 51 */ KivGraph_ExecutionEnvironmentFn_t graphPrepareEnvironment;
  /* 52 */ KivGraph_ExecutionEnvironmentFn_t graphReleaseEnvironment;
  /* 53 */ KivGraph_GetPropertyFn_t graphGetProperty;
  /* 54 */ KivContext_ValidateBinaryFn_t contextValidateBinary;
  /* 55 */
  KivContext_CreateFromBinaryWithSignalFn_t contextCreateFromBinaryWithSignal;
  /* 56 */ Kiv_LaterOperationFn_t laterOperation56;
  /* 57 */ Kiv_LaterOperationFn_t laterOperation57;
  /* 58 */ Kiv_LaterOperationFn_t laterOperation58;
  /* 59 to 68 */ Kiv_ReservedFn_t reserved[10];
} KivInterface_Implementation_t;

/** What the table's member of the provider record is called, and its type. */
#define KIV_INTERFACE_VER_NAME implementation
#define KIV_INTERFACE_VER_TYPE KivInterface_Implementation_t

/** One provider: what a library is, and its functions. */
typedef struct {
  uint32_t backendId;
  const char* providerName;
  Kiv_ApiVersion_t apiVersion;
  KIV_INTERFACE_VER_TYPE KIV_INTERFACE_VER_NAME;
} KivInterface_t;

/**
 * Lists the providers of the library.
 *
 * @param providerList receives an array of pointers to records; array and
 *        records belong to the library and stay as they are until it is
 *        unloaded.
 * @param numProviders receives the number of entries.
 * @return 0; KIV_COMMON_ERROR_INVALID_ARGUMENT for a null argument, and then
 *         nothing is written.
 */
KIV_API Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders);

/** The type of KivInterface_getProviders, for clients that load a library. */
typedef Kiv_ErrorHandle_t (*KivInterface_GetProvidersFn_t)(
    const KivInterface_t*** providerList, uint32_t* numProviders);

static_assert(sizeof(KivInterface_Implementation_t) == 69 * sizeof(void*),
              "69 slots");
static_assert(offsetof(KivInterface_Implementation_t, contextFree) == 14 * 8,
              "slot 14");
static_assert(offsetof(KivInterface_Implementation_t,
                       tensorCreateContextTensor) == 23 * 8,
              "slot 23");
static_assert(offsetof(KivInterface_Implementation_t, profileFree) == 34 * 8,
              "slot 34");
static_assert(offsetof(KivInterface_Implementation_t, deviceFree) == 43 * 8,
              "slot 43");
static_assert(offsetof(KivInterface_Implementation_t,
                       contextCreateFromBinaryWithSignal) == 55 * 8,
              "slot 55");
static_assert(offsetof(KivInterface_t, providerName) == 8, "layout");
static_assert(offsetof(KivInterface_t, apiVersion) == 16, "layout");
static_assert(offsetof(KivInterface_t, KIV_INTERFACE_VER_NAME) == 40, "layout");
static_assert(sizeof(KivInterface_t) == 592, "layout");

KIV_EXTERN_C_END

#endif
