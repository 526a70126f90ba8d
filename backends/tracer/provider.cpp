#include "entries.h"
#include "tracer.h"

namespace kiv::tracer {
namespace {

constexpr std::uint32_t kBackendId = 100;

KivInterface_t makeProvider() {
  KivInterface_t provider = {};
  provider.backendId = kBackendId;
  provider.providerName = "KIV_TRACER";
  provider.apiVersion = kApiVersion;
  auto& table = provider.KIV_INTERFACE_VER_NAME;
  addBackendEntries(table);
  addContextEntries(table);
  addDeviceEntries(table);
  addGraphEntries(table);
  addLogEntries(table);
  addProfileEntries(table);
  addOptionalEntries(table);
  addTensorEntries(table);
  return provider;
}

const KivInterface_t** providers() {
  static const KivInterface_t kProvider = makeProvider();
  static const KivInterface_t* list[] = {&kProvider};
  return list;
}

}  // namespace
}  // namespace kiv::tracer

// This call is not part of the trace, but it opens the output, so that a client
// that calls nothing else leaves an empty file, not an old one.
Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  if (providerList == nullptr || numProviders == nullptr)
    return KIV_COMMON_ERROR_INVALID_ARGUMENT;
  try {
    kiv::tracer::Tracer::instance();
  } catch (...) {
    return KIV_COMMON_ERROR_MEM_ALLOC;
  }
  *providerList = kiv::tracer::providers();
  *numProviders = 1;
  return KIV_SUCCESS;
}
