#include "recorders/backend_recorders.h"

#include "recorders/config_array.h"
#include "recorders/recorded_call.h"
#include "writers/config_writers.h"
#include "writers/op_config_writer.h"

namespace kiv::recorders {
namespace {

using session::Session;

constexpr output::WriteFailures kWriteFailures = {Status::kBackendError,
                                                  Status::kContextError};
constexpr Failure kNotFreed = {Status::kBackendError,
                               "Could not free backend handle"};

// Paths and names of the client's system read back as they are.
std::string escapedOrNull(const char* text) {
  return text == nullptr ? "NULL" : output::escapedLiteral(text);
}

}  // namespace

Status recordBackendCreate(Session& session, const KivBackend_Config_t** config,
                           Kiv_BackendHandle_t* backend) {
  RecordedCall call(session, "backendCreate");
  const std::string name = call.names().unique("backend");
  const std::string configs = writeConfigArray(call, writers::backendConfigs(),
                                               config, "backendConfig", name);
  const std::string address = call.declare("Kiv_BackendHandle_t", name);
  const Status status =
      call.commit({"loghandle", configs, address}, kWriteFailures);
  if (!ok(status)) return status;
  *backend = session::toApi(session.backends().add(name, session.program()));
  return Status::kOk;
}

Status recordBackendSetConfig(Session& session, Kiv_BackendHandle_t backend,
                              const KivBackend_Config_t** config) {
  RecordedCall call(session, "backendSetConfig");
  const std::string name = call.backend(backend);
  const std::string arrayBase = backend == nullptr ? "backend" : name;
  const std::string configs = writeConfigArray(
      call, writers::backendConfigs(), config, "backendConfig", arrayBase);
  return call.commit({name, configs}, kWriteFailures);
}

Status recordBackendRegisterOpPackage(Session& session,
                                      Kiv_BackendHandle_t backend,
                                      const char* packagePath,
                                      const char* interfaceProvider,
                                      const char* target) {
  RecordedCall call(session, "backendRegisterOpPackage");
  return call.commit({call.backend(backend), escapedOrNull(packagePath),
                      escapedOrNull(interfaceProvider), escapedOrNull(target)},
                     kWriteFailures);
}

Status recordBackendGetSupportedOperations(
    Session& session, Kiv_BackendHandle_t backend, uint32_t* numOperations,
    const KivBackend_OperationName_t** operations) {
  RecordedCall call(session, "backendGetSupportedOperations");
  const std::string name = call.backend(backend);
  const std::string count =
      call.out(numOperations, "uint32_t", "numOperations");
  const std::string list =
      call.out(operations, "const KivBackend_OperationName_t*", "operations");
  const Status status = call.commit({name, count, list}, kWriteFailures);
  if (!ok(status)) return status;
  if (numOperations != nullptr) *numOperations = 0;
  if (operations != nullptr) *operations = nullptr;
  return Status::kOk;
}

// The op config's errors come before an unknown backend's.
Status recordBackendValidateOpConfig(Session& session,
                                     Kiv_BackendHandle_t backend,
                                     const Kiv_OpConfig_t& opConfig) {
  RecordedCall call(session, "backendValidateOpConfig");
  const std::string name =
      call.names().unique("opConfig", session::Family::kOpConfig);
  call.write([&](writers::WriteScope& scope) {
    return writers::writeOpConfig(scope, opConfig, name, nullptr);
  });
  return call.commit({call.backend(backend), name}, kWriteFailures);
}

// A null handle is written as well, and then is not there to be freed.
Status recordBackendFree(Session& session, Kiv_BackendHandle_t backend) {
  RecordedCall call(session, "backendFree");
  const Status status = call.commit({call.backend(backend)}, kWriteFailures);
  if (!ok(status)) return status;
  if (session.backends().erase(session::fromApi(backend))) return Status::kOk;
  return fail(kNotFreed);
}

}  // namespace kiv::recorders
