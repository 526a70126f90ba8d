#include "recorders/backend_recorders.h"

#include "recorders/recorded_call.h"
#include "writers/config_writers.h"
#include "writers/op_config_writer.h"

namespace kiv::recorders {
namespace {

namespace calls = format::calls;
using session::Session;

constexpr output::WriteFailures kBackendFailures = {Status::kBackendError,
                                                    Status::kContextError};
constexpr Failure kNotFreed = {Status::kBackendError,
                               "Could not free backend handle"};

constexpr std::string_view kConfigBase = "backendConfig";

// Paths and names of the client's system read back as they are.
Name escaped(RecordedCall& call, const char* text) {
  if (text == nullptr) return {};
  return call.code().copied(format::escapedLiteral(text));
}

}  // namespace

Status recordBackendCreate(Session& session, const KivBackend_Config_t** config,
                           Kiv_BackendHandle_t* backend) {
  RecordedCall call(session, calls::kBackendCreate);
  const Name name = call.unique("backend");
  const Name configs =
      writers::writeConfigs(call, config, kConfigBase, name.text);
  const Argument address = call.declare("Kiv_BackendHandle_t", name);
  auto entry =
      session.backends().prepare(std::make_shared<session::SaverBackend>(
          std::string(name.text), session.programNumber()));
  const Status status = call.commit(
      {Argument::fixed(format::kLogHandleVariable), configs, address},
      kBackendFailures);
  if (ok(status))
    *backend = session::toApi(session.backends().addNumbered(std::move(entry)));
  return status;
}

Status recordBackendSetConfig(Session& session, Kiv_BackendHandle_t backend,
                              const KivBackend_Config_t** config) {
  RecordedCall call(session, calls::kBackendSetConfig);
  const Name name = call.backend(backend);
  const Name configs = writers::writeConfigs(
      call, config, kConfigBase, backend == nullptr ? "backend" : name.text);
  return call.commit({name, configs}, kBackendFailures);
}

Status recordBackendRegisterOpPackage(Session& session,
                                      Kiv_BackendHandle_t backend,
                                      const char* packagePath,
                                      const char* interfaceProvider,
                                      const char* target) {
  RecordedCall call(session, calls::kBackendRegisterOpPackage);
  return call.commit({call.backend(backend), escaped(call, packagePath),
                      escaped(call, interfaceProvider), escaped(call, target)},
                     kBackendFailures);
}

Status recordBackendGetSupportedOperations(
    Session& session, Kiv_BackendHandle_t backend, uint32_t* numOperations,
    const KivBackend_OperationName_t** operations) {
  RecordedCall call(session, calls::kBackendGetSupportedOperations);
  const Name name = call.backend(backend);
  const Argument count = call.out(numOperations, "uint32_t", "numOperations");
  const Argument list =
      call.out(operations, "const KivBackend_OperationName_t*", "operations");
  const Status status = call.commit({name, count, list}, kBackendFailures);
  if (!ok(status)) return status;
  if (numOperations != nullptr) *numOperations = 0;
  if (operations != nullptr) *operations = nullptr;
  return Status::kOk;
}

// The op config's errors come before an unknown backend's.
Status recordBackendValidateOpConfig(Session& session,
                                     Kiv_BackendHandle_t backend,
                                     const Kiv_OpConfig_t& opConfig) {
  RecordedCall call(session, calls::kBackendValidateOpConfig);
  const auto name = call.unique<Family::kOpConfig>("opConfig");
  writers::writeOpConfig(call, opConfig, name, nullptr);
  return call.commit({call.backend(backend), name}, kBackendFailures);
}

// A null handle is written as well, and no backend has it.
Status recordBackendFree(Session& session, Kiv_BackendHandle_t backend) {
  RecordedCall call(session, calls::kBackendFree);
  const Status status = call.commit({call.backend(backend)}, kBackendFailures);
  if (!ok(status)) return status;
  if (session.backends().erase(session::fromApi(backend))) return Status::kOk;
  return fail(kNotFreed);
}

}  // namespace kiv::recorders
