#pragma once

#include <type_traits>

#include "KivInterface.h"

// The functions behind the slots of the interface table, a file a family. Each
// is described with its type in the API's headers. From any thread, but not
// from a signal handler; none lets an exception out.
namespace kiv::api {

using Code = Kiv_ErrorHandle_t;

// The function that a slot of that type points to.
template <typename Slot>
using Entry = std::remove_pointer_t<Slot>;

Entry<KivProperty_HasCapabilityFn_t> propertyHasCapability;

Entry<KivBackend_CreateFn_t> backendCreate;
Entry<KivBackend_SetConfigFn_t> backendSetConfig;
Entry<KivBackend_GetApiVersionFn_t> backendGetApiVersion;
Entry<KivBackend_GetBuildIdFn_t> backendGetBuildId;
Entry<KivBackend_RegisterOpPackageFn_t> backendRegisterOpPackage;
Entry<KivBackend_GetSupportedOperationsFn_t> backendGetSupportedOperations;
Entry<KivBackend_ValidateOpConfigFn_t> backendValidateOpConfig;
Entry<KivBackend_FreeFn_t> backendFree;

Entry<KivContext_CreateFn_t> contextCreate;
Entry<KivContext_SetConfigFn_t> contextSetConfig;
Entry<KivContext_GetBinarySizeFn_t> contextGetBinarySize;
Entry<KivContext_GetBinaryFn_t> contextGetBinary;
Entry<KivContext_CreateFromBinaryFn_t> contextCreateFromBinary;
Entry<KivContext_CreateFromBinaryWithSignalFn_t>
    contextCreateFromBinaryWithSignal;
Entry<KivContext_ValidateBinaryFn_t> contextValidateBinary;
Entry<KivContext_FreeFn_t> contextFree;

Entry<KivGraph_CreateFn_t> graphCreate;
Entry<KivGraph_CreateSubgraphFn_t> graphCreateSubgraph;
Entry<KivGraph_SetConfigFn_t> graphSetConfig;
Entry<KivGraph_AddNodeFn_t> graphAddNode;
Entry<KivGraph_FinalizeFn_t> graphFinalize;
Entry<KivGraph_RetrieveFn_t> graphRetrieve;
Entry<KivGraph_ExecuteFn_t> graphExecute;

Entry<KivTensor_CreateContextTensorFn_t> tensorCreateContextTensor;
Entry<KivTensor_CreateGraphTensorFn_t> tensorCreateGraphTensor;

// The callback's format attribute would be lost in a template's argument.
Code logCreate(KivLog_Callback_t callback, KivLog_Level_t level,
               Kiv_LogHandle_t* logger);
Entry<KivLog_SetLogLevelFn_t> logSetLogLevel;
Entry<KivLog_FreeFn_t> logFree;

Entry<KivProfile_CreateFn_t> profileCreate;
Entry<KivProfile_SetConfigFn_t> profileSetConfig;
Entry<KivProfile_GetEventsFn_t> profileGetEvents;
Entry<KivProfile_GetSubEventsFn_t> profileGetSubEvents;
Entry<KivProfile_GetEventDataFn_t> profileGetEventData;
Entry<KivProfile_GetExtendedEventDataFn_t> profileGetExtendedEventData;
Entry<KivProfile_FreeFn_t> profileFree;

Entry<KivDevice_GetPlatformInfoFn_t> deviceGetPlatformInfo;
Entry<KivDevice_GetInfrastructureFn_t> deviceGetInfrastructure;
Entry<KivDevice_CreateFn_t> deviceCreate;
Entry<KivDevice_SetConfigFn_t> deviceSetConfig;
Entry<KivDevice_GetInfoFn_t> deviceGetInfo;
Entry<KivDevice_FreeFn_t> deviceFree;

// Answers for functions that are not offered. Each stands in the slots of its
// argument list.

// Always 1000, whatever the session's state; reads no argument.
template <typename... Arguments>
Code notSupported(Arguments...) {
  return KIV_COMMON_ERROR_NOT_SUPPORTED;
}

Code errorMessageStub();

// 4000 if the session cannot start, else 1000.
template <typename... Arguments>
Code notSupportedOnceStarted(Arguments...) {
  return errorMessageStub();
}

Entry<KivGraph_ExecutionEnvironmentFn_t> graphEnvironmentStub;
Entry<KivGraph_GetPropertyFn_t> graphPropertyStub;

}  // namespace kiv::api
