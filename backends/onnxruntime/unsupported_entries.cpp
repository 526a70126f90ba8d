// Functions that the library does not offer. Each says so and reads none of its
// arguments.

#include "entries.h"
#include "log.h"

namespace kiv::ort {
namespace {

template <typename... Arguments>
Kiv_ErrorHandle_t notSupported(Arguments...) noexcept {
  log(KIV_LOG_LEVEL_WARN,
      "a function was called that this library does not offer");
  return KIV_COMMON_ERROR_NOT_SUPPORTED;
}

}  // namespace

void addUnsupportedEntries(KivInterface_Implementation_t& table) {
  table.propertyHasCapability = notSupported;
  table.backendRegisterOpPackage = notSupported;
  table.memRegister = notSupported;
  table.memDeRegister = notSupported;
  table.deviceGetInfrastructure = notSupported;
  table.signalCreate = notSupported;
  table.signalSetConfig = notSupported;
  table.signalTrigger = notSupported;
  table.signalFree = notSupported;
  table.errorGetMessage = notSupported;
  table.errorGetLongMessage = notSupported;
  table.errorFreeLongMessage = notSupported;
  table.graphPrepareEnvironment = notSupported;
  table.graphReleaseEnvironment = notSupported;
  table.graphGetProperty = notSupported;
  table.contextCreateFromBinaryWithSignal = notSupported;
}

}  // namespace kiv::ort
