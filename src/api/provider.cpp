#include <algorithm>
#include <array>

#include "KivInterface.h"
#include "api/entries.h"
#include "api/version.h"
#include "diagnostics/status.h"

namespace kiv::api {
namespace {

// The providers of the library. Filled while the library is loaded, unchanged
// afterwards; the records stay where they are until the library is unloaded,
// also while the process exits, when a client's own handlers may still call.
class ProviderList {
 public:
  void add(const KivInterface_t& provider) {
    records_[size_] = provider;
    pointers_[size_] = &records_[size_];
    ++size_;
  }

  const KivInterface_t** pointers() { return pointers_.data(); }
  uint32_t size() const { return size_; }

 private:
  static constexpr std::size_t kCapacity = 1;

  std::array<KivInterface_t, kCapacity> records_{};
  std::array<const KivInterface_t*, kCapacity> pointers_{};
  uint32_t size_ = 0;
};

constinit ProviderList providers;

KivInterface_Implementation_t makeImplementation() {
  return {
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
}

// Without these a library is no backend.
bool isComplete(const KivInterface_Implementation_t& table) {
  const std::array<bool, 7> present = {
      table.graphCreate != nullptr,
      table.graphAddNode != nullptr,
      table.graphFinalize != nullptr,
      table.graphRetrieve != nullptr,
      table.graphExecute != nullptr,
      table.tensorCreateContextTensor != nullptr,
      table.tensorCreateGraphTensor != nullptr};
  return std::ranges::all_of(present, [](bool slot) { return slot; });
}

bool registerProvider() {
  const KivInterface_t provider = {
      .backendId = KIV_BACKEND_ID_SAVER,
      .providerName = kProviderName,
      .apiVersion = kApiVersion,
      .KIV_INTERFACE_VER_NAME = makeImplementation()};
  if (!isComplete(provider.KIV_INTERFACE_VER_NAME)) return false;
  providers.add(provider);
  return true;
}

[[maybe_unused]] const bool isRegistered = registerProvider();

}  // namespace
}  // namespace kiv::api

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  if (providerList == nullptr || numProviders == nullptr)
    return KIV_COMMON_ERROR_INVALID_ARGUMENT;
  *providerList = kiv::api::providers.pointers();
  *numProviders = kiv::api::providers.size();
  return KIV_SUCCESS;
}
