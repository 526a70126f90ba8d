#include "recorders/context_recorders.h"

#include "recorders/recorded_call.h"
#include "writers/config_writers.h"

namespace kiv::recorders {
namespace {

namespace calls = format::calls;
using session::SaverContext;
using session::Session;

constexpr output::WriteFailures kContextFailures = {Status::kContextError,
                                                    Status::kContextError};
constexpr output::WriteFailures kCreateFromBinaryFailures = {
    Status::kContextError, Status::kContextBinary};
constexpr output::WriteFailures kValidateBinaryFailures = {
    Status::kContextError, Status::kContextUnknown};

constexpr const char* kBinaryNotWritten =
    "Failed to write context binary to disk, ensure binaryBufferSize matches "
    "the actual buffer size.";

constexpr std::string_view kContextHandle = "Kiv_ContextHandle_t";
constexpr std::string_view kSizeType = "Kiv_ContextBinarySize_t";

Name writeConfigs(RecordedCall& call, const KivContext_Config_t** config,
                  std::string_view base) {
  return writers::writeConfigs(call, config, base, base);
}

// A variable that belongs to a context but is no part of every context's
// variable: the name is claimed, and given back unless the call is written.
class ClaimedName {
 public:
  ClaimedName(Session& session, RecordedCall& call, Name context,
              std::string_view word)
      : names_(session.names()) {
    if (!call.hasFailed())
      name_ = names_.claim(call.code().joined({context.text, word}).text,
                           Family::kPlain);
  }
  ~ClaimedName() {
    if (!kept_) names_.release(name_);
  }
  ClaimedName(const ClaimedName&) = delete;
  ClaimedName& operator=(const ClaimedName&) = delete;

  operator Name() const { return {name_}; }
  void keepIf(Status status) { kept_ = ok(status); }

 private:
  session::Names& names_;
  std::string name_;
  bool kept_ = false;
};

// The binary as a static array. A null one cannot be written unless it is
// empty.
void readBinary(RecordedCall& call, Name name, const ContextBinary& binary,
                Status ifNull) {
  if (binary.bytes == nullptr && binary.size != 0)
    return call.fail({ifNull, kBinaryNotWritten});
  call.code().emitStaticRead("uint8_t", name, {binary.bytes, 1, binary.size},
                             format::kDataFileVariable);
}

// Writes a call with a binary; reports when it was the binary that failed.
Status commitBinary(RecordedCall& call,
                    std::initializer_list<Argument> arguments,
                    const output::WriteFailures& failures) {
  const bool wasWhole = !call.hasFailed();
  const Status status = call.commit(arguments, failures);
  if (wasWhole && status == failures.data)
    return fail({failures.data, kBinaryNotWritten});
  return status;
}

Status createFromBinary(Session& session, const format::Function& function,
                        const SaverContext& context,
                        Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
                        const KivContext_Config_t** config,
                        const ContextBinary& binary,
                        Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, function);
  const Name name = call.use(context);
  const Name backendName = call.backend(backend);
  const Name deviceName = call.device(device);
  const Name profileName = call.profile(profile);
  const Argument address = call.declare(kContextHandle, name);
  ClaimedName bytes(session, call, name, "_binary");
  readBinary(call, bytes, binary, kCreateFromBinaryFailures.data);
  const Name configs = writeConfigs(call, config, name.text);
  const Argument size = Argument::number(binary.size);
  const Status status =
      function.arguments.size() == 7
          ? commitBinary(call,
                         {backendName, deviceName, configs, Name(bytes), size,
                          address, profileName},
                         kCreateFromBinaryFailures)
          : commitBinary(call,
                         {backendName, deviceName, configs, Name(bytes), size,
                          address, profileName, Name{}},
                         kCreateFromBinaryFailures);
  bytes.keepIf(status);
  return status;
}

}  // namespace

Status recordContextCreate(Session& session, const SaverContext& context,
                           Kiv_BackendHandle_t backend,
                           Kiv_DeviceHandle_t device,
                           const KivContext_Config_t** config) {
  RecordedCall call(session, calls::kContextCreate);
  const Name name = call.use(context);
  const Name backendName = call.backend(backend);
  const Name deviceName = call.device(device);
  const Name configs = writeConfigs(call, config, name.text);
  const Argument address = call.declare(kContextHandle, name);
  return call.commit({backendName, deviceName, configs, address},
                     kContextFailures);
}

Status recordContextCreateFromBinary(
    Session& session, const SaverContext& context, Kiv_BackendHandle_t backend,
    Kiv_DeviceHandle_t device, const KivContext_Config_t** config,
    ContextBinary binary, Kiv_ProfileHandle_t profile) {
  return createFromBinary(session, calls::kContextCreateFromBinary, context,
                          backend, device, config, binary, profile);
}

Status recordContextCreateFromBinaryWithSignal(
    Session& session, const SaverContext& context, Kiv_BackendHandle_t backend,
    Kiv_DeviceHandle_t device, const KivContext_Config_t** config,
    ContextBinary binary, Kiv_ProfileHandle_t profile) {
  return createFromBinary(session, calls::kContextCreateFromBinaryWithSignal,
                          context, backend, device, config, binary, profile);
}

Status recordContextValidateBinary(Session& session,
                                   Kiv_BackendHandle_t backend,
                                   Kiv_DeviceHandle_t device,
                                   const KivContext_Config_t** config,
                                   ContextBinary binary) {
  RecordedCall call(session, calls::kContextValidateBinary);
  const Name backendName = call.backend(backend);
  const Name deviceName = call.device(device);
  const Name bytes = call.unique("binaryBuffer");
  readBinary(call, bytes, binary, kValidateBinaryFailures.data);
  const Name configs = writeConfigs(call, config, "context");
  const Status status = commitBinary(
      call,
      {backendName, deviceName, configs, bytes, Argument::number(binary.size)},
      kValidateBinaryFailures);
  if (!ok(status)) session.names().release(bytes.text);
  return status;
}

Status recordContextSetConfig(Session& session, const SaverContext& context,
                              const KivContext_Config_t** config) {
  RecordedCall call(session, calls::kContextSetConfig);
  const Name name = call.use(context);
  const Name configs = writeConfigs(call, config, name.text);
  return call.commit({name, configs}, kContextFailures);
}

Status recordContextGetBinarySize(Session& session, const SaverContext& context,
                                  const Kiv_ContextBinarySize_t* binarySize) {
  RecordedCall call(session, calls::kContextGetBinarySize);
  const Name name = call.use(context);
  if (binarySize == nullptr) {
    const Status status = call.commit({name, Name{}}, kContextFailures);
    return ok(status) ? Status::kNothingToReport : status;
  }
  ClaimedName size(session, call, name, "_binaryBufferSize");
  const Argument address = call.declare(kSizeType, size);
  const Status status = call.commit({name, address}, kContextFailures);
  size.keepIf(status);
  return ok(status) ? Status::kNothingToReport : status;
}

// The program asks its backend for the binary and puts it into a file of its
// own.
Status recordContextGetBinary(Session& session, const SaverContext& context,
                              Kiv_ContextBinarySize_t bufferSize) {
  RecordedCall call(session, calls::kContextGetBinary);
  output::CodeStream& code = call.code();
  const Name name = call.use(context);
  ClaimedName written(session, call, name, "_writtenBufferSize");
  ClaimedName buffer(session, call, name, "_buffer");
  ClaimedName file(session, call, name, "_file");
  const Argument address = call.declare(kSizeType, written);
  code.emitMalloc("uint8_t*", buffer, bufferSize);
  call.call({name, Name(buffer), Argument::number(bufferSize), address});
  code.emitFopen(file, code.joined({name.text, ".bin"}).text, "wb");
  code.emitFwrite(buffer, 1, written, file);
  code.emitFclose(file);
  code.emitFree(buffer);
  const Status status = call.commit(kContextFailures);
  for (ClaimedName* claimed : {&written, &buffer, &file})
    claimed->keepIf(status);
  return ok(status) ? Status::kNothingToReport : status;
}

Status recordContextFree(Session& session, const SaverContext& context,
                         Kiv_ProfileHandle_t profile) {
  RecordedCall call(session, calls::kContextFree);
  const Name name = call.use(context);
  const bool isUnknown =
      profile != nullptr &&
      session.profiles().find(session::fromApi(profile)) == nullptr;
  if (isUnknown) {
    call.warn(
        "No profile associated with the provided handle, the context is freed "
        "without one");
  }
  return call.commit({name, call.profile(isUnknown ? nullptr : profile)},
                     kContextFailures);
}

}  // namespace kiv::recorders
