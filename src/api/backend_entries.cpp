#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "api/version.h"
#include "recorders/backend_recorders.h"

namespace kiv::api {

using session::Session;

Code backendCreate(Kiv_LogHandle_t, const KivBackend_Config_t** config,
                   Kiv_BackendHandle_t* backend) {
  if (backend == nullptr) return toCode(fail(kBackendOutIsNull));
  return enter([&](Session& session) {
    return recorders::recordBackendCreate(session, config, backend);
  });
}

Code backendSetConfig(Kiv_BackendHandle_t backend,
                      const KivBackend_Config_t** config) {
  return enter([&](Session& session) {
    return recorders::recordBackendSetConfig(session, backend, config);
  });
}

Code backendGetApiVersion(Kiv_ApiVersion_t* version) {
  if (version == nullptr) return toCode(Status::kBackendInvalidArgument);
  *version = kApiVersion;
  return toCode(Status::kOk);
}

Code backendGetBuildId(const char** id) {
  if (id == nullptr) return toCode(Status::kBackendInvalidArgument);
  *id = kBuildId;
  return toCode(Status::kOk);
}

Code backendRegisterOpPackage(Kiv_BackendHandle_t backend,
                              const char* packagePath,
                              const char* interfaceProvider,
                              const char* target) {
  return enter([&](Session& session) {
    return recorders::recordBackendRegisterOpPackage(
        session, backend, packagePath, interfaceProvider, target);
  });
}

Code backendGetSupportedOperations(
    Kiv_BackendHandle_t backend, uint32_t* numOperations,
    const KivBackend_OperationName_t** operations) {
  return enter([&](Session& session) {
    return recorders::recordBackendGetSupportedOperations(
        session, backend, numOperations, operations);
  });
}

Code backendValidateOpConfig(Kiv_BackendHandle_t backend,
                             Kiv_OpConfig_t opConfig) {
  return enter([&](Session& session) {
    return recorders::recordBackendValidateOpConfig(session, backend, opConfig);
  });
}

Code backendFree(Kiv_BackendHandle_t backend) {
  return enter([&](Session& session) {
    return recorders::recordBackendFree(session, backend);
  });
}

}  // namespace kiv::api
