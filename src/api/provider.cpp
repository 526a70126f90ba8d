#include "KivInterface.h"
#include "api/entries.h"
#include "api/version.h"

// The library's one provider. It is there before and after every constructor
// and destructor, since a client's own exit handlers may still call.
namespace kiv::api {
namespace {

constexpr KivInterface_Implementation_t kImplementation = {
    .propertyHasCapability = propertyHasCapability,
    .backendCreate = backendCreate,
    .backendSetConfig = backendSetConfig,
    .backendGetApiVersion = backendGetApiVersion,
    .backendGetBuildId = backendGetBuildId,
    .backendRegisterOpPackage = backendRegisterOpPackage,
    .backendGetSupportedOperations = backendGetSupportedOperations,
    .backendValidateOpConfig = backendValidateOpConfig,
    .backendFree = backendFree,
    .contextCreate = contextCreate,
    .contextSetConfig = contextSetConfig,
    .contextGetBinarySize = contextGetBinarySize,
    .contextGetBinary = contextGetBinary,
    .contextCreateFromBinary = contextCreateFromBinary,
    .contextFree = contextFree,
    .graphCreate = graphCreate,
    .graphCreateSubgraph = graphCreateSubgraph,
    .graphSetConfig = graphSetConfig,
    .graphAddNode = graphAddNode,
    .graphFinalize = graphFinalize,
    .graphRetrieve = graphRetrieve,
    .graphExecute = graphExecute,
    .graphExecuteAsync = notSupported,
    .tensorCreateContextTensor = tensorCreateContextTensor,
    .tensorCreateGraphTensor = tensorCreateGraphTensor,
    .logCreate = logCreate,
    .logSetLogLevel = logSetLogLevel,
    .logFree = logFree,
    .profileCreate = profileCreate,
    .profileSetConfig = profileSetConfig,
    .profileGetEvents = profileGetEvents,
    .profileGetSubEvents = profileGetSubEvents,
    .profileGetEventData = profileGetEventData,
    .profileGetExtendedEventData = profileGetExtendedEventData,
    .profileFree = profileFree,
    .memRegister = notSupported,
    .memDeRegister = notSupported,
    .deviceGetPlatformInfo = deviceGetPlatformInfo,
    .deviceFreePlatformInfo = notSupported,
    .deviceGetInfrastructure = deviceGetInfrastructure,
    .deviceCreate = deviceCreate,
    .deviceSetConfig = deviceSetConfig,
    .deviceGetInfo = deviceGetInfo,
    .deviceFree = deviceFree,
    .signalCreate = notSupported,
    .signalSetConfig = notSupported,
    .signalTrigger = notSupported,
    .signalFree = notSupported,
    .errorGetMessage = notSupportedOnceStarted,
    .errorGetLongMessage = notSupportedOnceStarted,
    .errorFreeLongMessage = notSupportedOnceStarted,
    .graphPrepareEnvironment = graphEnvironmentStub,
    .graphReleaseEnvironment = graphEnvironmentStub,
    .graphGetProperty = graphPropertyStub,
    .contextValidateBinary = contextValidateBinary,
    .contextCreateFromBinaryWithSignal = contextCreateFromBinaryWithSignal,
    .laterOperation56 = notSupported,
    .laterOperation57 = notSupported,
    .laterOperation58 = notSupported,
    .reserved = {}};

// Without these a library is no backend.
bool isComplete(const KivInterface_Implementation_t& table) {
  return table.graphCreate != nullptr && table.graphAddNode != nullptr &&
         table.graphFinalize != nullptr && table.graphRetrieve != nullptr &&
         table.graphExecute != nullptr &&
         table.tensorCreateContextTensor != nullptr &&
         table.tensorCreateGraphTensor != nullptr;
}

constinit const KivInterface_t kProvider = {
    .backendId = KIV_BACKEND_ID_SAVER,
    .providerName = kProviderName,
    .apiVersion = kApiVersion,
    .KIV_INTERFACE_VER_NAME = kImplementation};

// The API hands the array out as one that clients could write to.
constinit const KivInterface_t* providers[] = {&kProvider};

}  // namespace
}  // namespace kiv::api

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  if (providerList == nullptr || numProviders == nullptr)
    return KIV_COMMON_ERROR_INVALID_ARGUMENT;
  *providerList = kiv::api::providers;
  *numProviders = kiv::api::isComplete(kiv::api::kImplementation) ? 1 : 0;
  return KIV_SUCCESS;
}
