#include "call.h"
#include "entries.h"

namespace kiv::tracer {
namespace {

Kiv_ErrorHandle_t propertyHasCapability(KivProperty_Key_t key) noexcept {
  return traced("propertyHasCapability", [&](Call& call) { call.value(key); });
}

Kiv_ErrorHandle_t backendCreate(Kiv_LogHandle_t,
                                const KivBackend_Config_t** config,
                                Kiv_BackendHandle_t* backend) noexcept {
  return traced("backendCreate", [&](Call& call) {
    call.log().value(List{config}).create(Kind::kBackend, backend);
  });
}

Kiv_ErrorHandle_t backendSetConfig(
    Kiv_BackendHandle_t backend, const KivBackend_Config_t** config) noexcept {
  return traced("backendSetConfig", [&](Call& call) {
    call.handle(Kind::kBackend, backend).value(List{config});
  });
}

// The version and the build differ between libraries, not between clients, so
// asking for them is not part of the trace.
Kiv_ErrorHandle_t backendGetApiVersion(Kiv_ApiVersion_t* version) noexcept {
  if (version != nullptr) *version = kApiVersion;
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t backendGetBuildId(const char** id) noexcept {
  if (id != nullptr) *id = "KIV_TRACER";
  return KIV_SUCCESS;
}

Kiv_ErrorHandle_t backendRegisterOpPackage(Kiv_BackendHandle_t backend,
                                           const char* packagePath,
                                           const char* interfaceProvider,
                                           const char* target) noexcept {
  return traced("backendRegisterOpPackage", [&](Call& call) {
    call.handle(Kind::kBackend, backend)
        .value(packagePath)
        .value(interfaceProvider)
        .value(target);
  });
}

Kiv_ErrorHandle_t backendGetSupportedOperations(
    Kiv_BackendHandle_t backend, uint32_t* numOperations,
    const KivBackend_OperationName_t** operations) noexcept {
  return traced("backendGetSupportedOperations", [&](Call& call) {
    call.handle(Kind::kBackend, backend)
        .store(numOperations, 0)
        .store(operations, nullptr);
  });
}

Kiv_ErrorHandle_t backendValidateOpConfig(Kiv_BackendHandle_t backend,
                                          Kiv_OpConfig_t opConfig) noexcept {
  return traced("backendValidateOpConfig", [&](Call& call) {
    call.handle(Kind::kBackend, backend).value(opConfig);
  });
}

Kiv_ErrorHandle_t backendFree(Kiv_BackendHandle_t backend) noexcept {
  return traced("backendFree",
                [&](Call& call) { call.handle(Kind::kBackend, backend); });
}

}  // namespace

void addBackendEntries(KivInterface_Implementation_t& table) {
  table.propertyHasCapability = propertyHasCapability;
  table.backendCreate = backendCreate;
  table.backendSetConfig = backendSetConfig;
  table.backendGetApiVersion = backendGetApiVersion;
  table.backendGetBuildId = backendGetBuildId;
  table.backendRegisterOpPackage = backendRegisterOpPackage;
  table.backendGetSupportedOperations = backendGetSupportedOperations;
  table.backendValidateOpConfig = backendValidateOpConfig;
  table.backendFree = backendFree;
}

}  // namespace kiv::tracer
