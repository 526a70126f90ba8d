#include "format/calls.h"

#include <algorithm>
#include <array>

namespace kiv::format {
namespace {

using namespace calls;

constexpr std::array kFunctions = {
    &kPropertyHasCapability,
    &kBackendCreate,
    &kBackendSetConfig,
    &kBackendRegisterOpPackage,
    &kBackendGetSupportedOperations,
    &kBackendValidateOpConfig,
    &kBackendFree,
    &kContextCreate,
    &kContextSetConfig,
    &kContextGetBinarySize,
    &kContextGetBinary,
    &kContextCreateFromBinary,
    &kContextFree,
    &kGraphCreate,
    &kGraphCreateSubgraph,
    &kGraphSetConfig,
    &kGraphAddNode,
    &kGraphFinalize,
    &kGraphRetrieve,
    &kGraphExecute,
    &kTensorCreateContextTensor,
    &kTensorCreateGraphTensor,
    &kProfileCreate,
    &kProfileSetConfig,
    &kProfileGetEvents,
    &kProfileGetSubEvents,
    &kProfileGetEventData,
    &kProfileGetExtendedEventData,
    &kProfileFree,
    &kDeviceGetPlatformInfo,
    &kDeviceGetInfrastructure,
    &kDeviceCreate,
    &kDeviceSetConfig,
    &kDeviceGetInfo,
    &kDeviceFree,
    &kContextValidateBinary,
    &kContextCreateFromBinaryWithSignal,
};

constexpr std::size_t slotOf(const Function* function) {
  return function->slot;
}
static_assert(std::ranges::is_sorted(kFunctions, {}, slotOf));

}  // namespace

std::span<const Function* const> recordedFunctions() { return kFunctions; }

const Function* findFunction(std::string_view name) {
  const auto* const found = std::ranges::find_if(
      kFunctions,
      [name](const Function* function) { return function->name == name; });
  return found == kFunctions.end() ? nullptr : *found;
}

}  // namespace kiv::format
