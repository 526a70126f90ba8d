#pragma once

#include "KivInterface.h"

// The functions behind the slots of the interface table, a file a family. Each
// is described with its type in the API's headers.
namespace kiv::api {

using Code = Kiv_ErrorHandle_t;

Code propertyHasCapability(KivProperty_Key_t key) noexcept;

Code backendCreate(Kiv_LogHandle_t logger, const KivBackend_Config_t** config,
                   Kiv_BackendHandle_t* backend) noexcept;
Code backendSetConfig(Kiv_BackendHandle_t backend,
                      const KivBackend_Config_t** config) noexcept;
Code backendGetApiVersion(Kiv_ApiVersion_t* version) noexcept;
Code backendGetBuildId(const char** id) noexcept;
Code backendRegisterOpPackage(Kiv_BackendHandle_t backend,
                              const char* packagePath,
                              const char* interfaceProvider,
                              const char* target) noexcept;
Code backendGetSupportedOperations(
    Kiv_BackendHandle_t backend, uint32_t* numOperations,
    const KivBackend_OperationName_t** operations) noexcept;
Code backendValidateOpConfig(Kiv_BackendHandle_t backend,
                             Kiv_OpConfig_t opConfig) noexcept;
Code backendFree(Kiv_BackendHandle_t backend) noexcept;

Code contextCreate(Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
                   const KivContext_Config_t** config,
                   Kiv_ContextHandle_t* context) noexcept;
Code contextSetConfig(Kiv_ContextHandle_t context,
                      const KivContext_Config_t** config) noexcept;
Code contextGetBinarySize(Kiv_ContextHandle_t context,
                          Kiv_ContextBinarySize_t* binarySize) noexcept;
Code contextGetBinary(Kiv_ContextHandle_t context, void* buffer,
                      Kiv_ContextBinarySize_t bufferSize,
                      Kiv_ContextBinarySize_t* writtenSize) noexcept;
Code contextCreateFromBinary(Kiv_BackendHandle_t backend,
                             Kiv_DeviceHandle_t device,
                             const KivContext_Config_t** config,
                             const void* binary,
                             Kiv_ContextBinarySize_t binarySize,
                             Kiv_ContextHandle_t* context,
                             Kiv_ProfileHandle_t profile) noexcept;
Code contextCreateFromBinaryWithSignal(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary,
    Kiv_ContextBinarySize_t binarySize, Kiv_ContextHandle_t* context,
    Kiv_ProfileHandle_t profile, Kiv_SignalHandle_t signal) noexcept;
Code contextValidateBinary(Kiv_BackendHandle_t backend,
                           Kiv_DeviceHandle_t device,
                           const KivContext_Config_t** config,
                           const void* binary,
                           Kiv_ContextBinarySize_t binarySize) noexcept;
Code contextFree(Kiv_ContextHandle_t context,
                 Kiv_ProfileHandle_t profile) noexcept;

Code graphCreate(Kiv_ContextHandle_t context, const char* name,
                 const KivGraph_Config_t** config,
                 Kiv_GraphHandle_t* graph) noexcept;
Code graphCreateSubgraph(Kiv_GraphHandle_t graph, const char* name,
                         Kiv_GraphHandle_t* subgraph) noexcept;
Code graphSetConfig(Kiv_GraphHandle_t graph,
                    const KivGraph_Config_t** config) noexcept;
Code graphAddNode(Kiv_GraphHandle_t graph, Kiv_OpConfig_t opConfig) noexcept;
Code graphFinalize(Kiv_GraphHandle_t graph, Kiv_ProfileHandle_t profile,
                   Kiv_SignalHandle_t signal) noexcept;
Code graphRetrieve(Kiv_ContextHandle_t context, const char* name,
                   Kiv_GraphHandle_t* graph) noexcept;
Code graphExecute(Kiv_GraphHandle_t graph, const Kiv_Tensor_t* inputs,
                  uint32_t numInputs, Kiv_Tensor_t* outputs,
                  uint32_t numOutputs, Kiv_ProfileHandle_t profile,
                  Kiv_SignalHandle_t signal) noexcept;

Code tensorCreateContextTensor(Kiv_ContextHandle_t context,
                               Kiv_Tensor_t* tensor) noexcept;
Code tensorCreateGraphTensor(Kiv_GraphHandle_t graph,
                             Kiv_Tensor_t* tensor) noexcept;

Code logCreate(KivLog_Callback_t callback, KivLog_Level_t level,
               Kiv_LogHandle_t* logger) noexcept;
Code logSetLogLevel(Kiv_LogHandle_t logger, KivLog_Level_t level) noexcept;
Code logFree(Kiv_LogHandle_t logger) noexcept;

Code profileCreate(Kiv_BackendHandle_t backend, KivProfile_Level_t level,
                   Kiv_ProfileHandle_t* profile) noexcept;
Code profileSetConfig(Kiv_ProfileHandle_t profile,
                      const KivProfile_Config_t** config) noexcept;
Code profileGetEvents(Kiv_ProfileHandle_t profile,
                      const KivProfile_EventId_t** events,
                      uint32_t* numEvents) noexcept;
Code profileGetSubEvents(KivProfile_EventId_t event,
                         const KivProfile_EventId_t** subEvents,
                         uint32_t* numSubEvents) noexcept;
Code profileGetEventData(KivProfile_EventId_t event,
                         KivProfile_EventData_t* data) noexcept;
Code profileGetExtendedEventData(KivProfile_EventId_t event,
                                 KivProfile_ExtendedEventData_t* data) noexcept;
Code profileFree(Kiv_ProfileHandle_t profile) noexcept;

Code deviceGetPlatformInfo(
    Kiv_LogHandle_t logger,
    const KivDevice_PlatformInfo_t** platformInfo) noexcept;
Code deviceGetInfrastructure(
    KivDevice_Infrastructure_t* infrastructure) noexcept;
Code deviceCreate(Kiv_LogHandle_t logger, const KivDevice_Config_t** config,
                  Kiv_DeviceHandle_t* device) noexcept;
Code deviceSetConfig(Kiv_DeviceHandle_t device,
                     const KivDevice_Config_t** config) noexcept;
Code deviceGetInfo(Kiv_DeviceHandle_t device,
                   const KivDevice_PlatformInfo_t** platformInfo) noexcept;
Code deviceFree(Kiv_DeviceHandle_t device) noexcept;

// Answers for functions that are not offered. Each stands in the slots of its
// argument list.

// Always 1000, whatever the session's state; reads no argument.
template <typename... Arguments>
Code notSupported(Arguments...) noexcept {
  return KIV_COMMON_ERROR_NOT_SUPPORTED;
}

Code errorMessageStub() noexcept;

// 4000 if the session cannot start, else 1000.
template <typename... Arguments>
Code notSupportedOnceStarted(Arguments...) noexcept {
  return errorMessageStub();
}

Code graphEnvironmentStub(Kiv_GraphHandle_t graph,
                          const KivGraph_EnvironmentDescriptor_t** descriptors,
                          uint32_t numDescriptors) noexcept;
Code graphPropertyStub(Kiv_GraphHandle_t graph,
                       KivGraph_Property_t** property) noexcept;

}  // namespace kiv::api
