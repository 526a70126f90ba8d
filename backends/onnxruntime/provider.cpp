#include <cstdint>

#include "entries.h"

namespace kiv::ort {
namespace {

constexpr std::uint32_t kBackendId = 101;

KivInterface_t makeProvider() {
  KivInterface_t provider = {};
  provider.backendId = kBackendId;
  provider.providerName = "KIV_ONNXRUNTIME";
  provider.apiVersion = kApiVersion;
  auto& table = provider.KIV_INTERFACE_VER_NAME;
  addBackendEntries(table);
  addContextEntries(table);
  addDeviceEntries(table);
  addGraphEntries(table);
  addLogEntries(table);
  addProfileEntries(table);
  addTensorEntries(table);
  addUnsupportedEntries(table);
  return provider;
}

const KivInterface_t** providers() {
  static const KivInterface_t kProvider = makeProvider();
  static const KivInterface_t* list[] = {&kProvider};
  return list;
}

}  // namespace
}  // namespace kiv::ort

Kiv_ErrorHandle_t KivInterface_getProviders(
    const KivInterface_t*** providerList, uint32_t* numProviders) {
  if (providerList == nullptr || numProviders == nullptr)
    return KIV_COMMON_ERROR_INVALID_ARGUMENT;
  *providerList = kiv::ort::providers();
  *numProviders = 1;
  return KIV_SUCCESS;
}
