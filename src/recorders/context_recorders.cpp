#include "recorders/context_recorders.h"

#include "recorders/config_array.h"
#include "recorders/recorded_call.h"
#include "writers/config_writers.h"

namespace kiv::recorders {
namespace {

using output::decimal;
using session::SaverContext;
using session::Session;

constexpr output::WriteFailures kWriteFailures = {Status::kContextError,
                                                  Status::kContextError};
constexpr output::WriteFailures kCreateFromBinaryFailures = {
    Status::kContextError, Status::kContextBinary};
constexpr output::WriteFailures kValidateBinaryFailures = {
    Status::kContextError, Status::kContextUnknown};

constexpr const char* kBinaryNotWritten =
    "Failed to write context binary to disk, ensure binaryBufferSize matches "
    "the actual buffer size.";

constexpr ConfigArrayStyle kConfigStyle = {
    .noConfigs = NoConfigs::kNullForNullOrEmpty, .blankLines = true};

std::string writeConfigs(RecordedCall& call, const KivContext_Config_t** config,
                         const std::string& base) {
  return writeConfigArray(call, writers::contextConfigs(), config, base, base,
                          kConfigStyle);
}

// The binary as a static array. A null one cannot be written unless it is
// empty.
void readBinary(RecordedCall& call, const std::string& name,
                const ContextBinary& binary, Status ifNull) {
  if (binary.bytes == nullptr && binary.size != 0) {
    (void)call.fail({ifNull, kBinaryNotWritten});
    return;
  }
  call.code().emitStaticRead("uint8_t", name, {binary.bytes, 1, binary.size},
                             "fp");
}

// Writes a call with a binary; tells when it was the binary that failed.
Status commitBinary(RecordedCall& call, const output::Texts& arguments,
                    const output::WriteFailures& failures) {
  const bool wasWhole = ok(call.status());
  const Status status = call.commit(arguments, failures);
  if (wasWhole && status == failures.data)
    return fail({failures.data, kBinaryNotWritten});
  return status;
}

Status createFromBinary(Session& session, const char* function,
                        const SaverContext& context,
                        Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
                        const KivContext_Config_t** config,
                        const ContextBinary& binary,
                        Kiv_ProfileHandle_t profile, bool withSignal) {
  RecordedCall call(session, function);
  const std::string& name = context.variable().name();
  output::Texts arguments = {call.backend(backend), call.device(device)};
  const std::string profileText = call.profile(profile);
  const std::string address = call.declare("Kiv_ContextHandle_t", name);
  const std::string bytes = call.names().claim(name + "_binary");
  readBinary(call, bytes, binary, kCreateFromBinaryFailures.data);
  const std::string configs = writeConfigs(call, config, name);
  arguments.insert(arguments.end(), {configs, bytes, decimal(binary.size),
                                     address, profileText});
  if (withSignal) arguments.emplace_back("NULL");
  return commitBinary(call, arguments, kCreateFromBinaryFailures);
}

}  // namespace

Status recordContextCreate(Session& session, const SaverContext& context,
                           Kiv_BackendHandle_t backend,
                           Kiv_DeviceHandle_t device,
                           const KivContext_Config_t** config) {
  RecordedCall call(session, "contextCreate");
  const std::string& name = context.variable().name();
  const std::string backendText = call.backend(backend);
  const std::string deviceText = call.device(device);
  const std::string configs = writeConfigs(call, config, name);
  const std::string address = call.declare("Kiv_ContextHandle_t", name);
  return call.commit({backendText, deviceText, configs, address},
                     kWriteFailures);
}

Status recordContextCreateFromBinary(
    Session& session, const SaverContext& context, Kiv_BackendHandle_t backend,
    Kiv_DeviceHandle_t device, const KivContext_Config_t** config,
    ContextBinary binary, Kiv_ProfileHandle_t profile) {
  return createFromBinary(session, "contextCreateFromBinary", context, backend,
                          device, config, binary, profile, false);
}

Status recordContextCreateFromBinaryWithSignal(
    Session& session, const SaverContext& context, Kiv_BackendHandle_t backend,
    Kiv_DeviceHandle_t device, const KivContext_Config_t** config,
    ContextBinary binary, Kiv_ProfileHandle_t profile) {
  return createFromBinary(session, "contextCreateFromBinaryWithSignal", context,
                          backend, device, config, binary, profile, true);
}

Status recordContextValidateBinary(Session& session,
                                   Kiv_BackendHandle_t backend,
                                   Kiv_DeviceHandle_t device,
                                   const KivContext_Config_t** config,
                                   ContextBinary binary) {
  RecordedCall call(session, "contextValidateBinary");
  const std::string backendText = call.backend(backend);
  const std::string deviceText = call.device(device);
  const std::string bytes = call.names().unique("binaryBuffer");
  readBinary(call, bytes, binary, kValidateBinaryFailures.data);
  const std::string configs = writeConfigs(call, config, "context");
  return commitBinary(
      call, {backendText, deviceText, configs, bytes, decimal(binary.size)},
      kValidateBinaryFailures);
}

Status recordContextSetConfig(Session& session, const SaverContext& context,
                              const KivContext_Config_t** config) {
  RecordedCall call(session, "contextSetConfig");
  const std::string name = call.use(context.variable());
  const std::string configs = writeConfigs(call, config, name);
  return call.commit({name, configs}, kWriteFailures);
}

Status recordContextGetBinarySize(Session& session, const SaverContext& context,
                                  const Kiv_ContextBinarySize_t* binarySize) {
  RecordedCall call(session, "contextGetBinarySize");
  const std::string name = call.use(context.variable());
  const std::string address =
      binarySize == nullptr
          ? "NULL"
          : call.declare("Kiv_ContextBinarySize_t",
                         call.names().claim(name + "_binaryBufferSize"));
  const Status status = call.commit({name, address}, kWriteFailures);
  return ok(status) ? Status::kNothingToReport : status;
}

// The program asks its backend for the binary and puts it into a file of its
// own.
Status recordContextGetBinary(Session& session, const SaverContext& context,
                              Kiv_ContextBinarySize_t bufferSize) {
  RecordedCall call(session, "contextGetBinary");
  output::CodeStream& code = call.code();
  const std::string name = call.use(context.variable());
  const std::string written = call.names().claim(name + "_writtenBufferSize");
  const std::string buffer = call.names().claim(name + "_buffer");
  const std::string file = call.names().claim(name + "_file");
  const std::string size = decimal(bufferSize);
  const std::string address = call.declare("Kiv_ContextBinarySize_t", written);
  code.emitMalloc("uint8_t*", buffer, size);
  call.call({name, buffer, size, address});
  code.emitFopen(file, name + ".bin", "wb");
  code.emitFwrite(buffer, 1, written, file);
  code.emitFclose(file);
  code.emitFree(buffer);
  const Status status = call.commit(kWriteFailures);
  return ok(status) ? Status::kNothingToReport : status;
}

Status recordContextFree(Session& session, const SaverContext& context,
                         Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, "contextFree");
  return call.commit({call.use(context.variable()), call.profile(profile)},
                     kWriteFailures);
}

Status recordGraphRetrieve(Session& session, const SaverContext& context,
                           const char* name, const std::string& variable) {
  RecordedCall call(session, "graphRetrieve");
  const std::string address = call.declare("Kiv_GraphHandle_t", variable);
  return call.commit(
      {call.use(context.variable()), call.scope().literal(name), address},
      kWriteFailures);
}

}  // namespace kiv::recorders
