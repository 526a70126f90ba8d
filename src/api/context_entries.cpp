#include "api/entries.h"
#include "api/entry.h"
#include "api/failures.h"
#include "recorders/context_recorders.h"

namespace kiv::api {
namespace {

using recorders::ContextBinary;
using session::SaverContext;
using session::Session;

constexpr CreationFailures kContextCreationFailures = {kContextOutIsNull,
                                                       kContextNotCreated};

template <typename Record>
Status createContext(Session& session, Kiv_ContextHandle_t* out,
                     Record&& record) {
  return create(session, session.contexts(), &Session::newContext, out,
                kContextCreationFailures, record);
}

Found<SaverContext> findContext(Session& session, Kiv_ContextHandle_t handle) {
  return lookUp(session.contexts(), handle, kContextIsNull5002,
                kContextIsUnknown5002);
}

// Found, recorded, erased; no lock is held while it is recorded.
Status releaseContext(Session& session, Kiv_ContextHandle_t handle,
                      Kiv_ProfileHandle_t profile) {
  const auto context = lookUp(session.contexts(), handle, kContextIsNull5002,
                              kFreedContextIsUnknown);
  if (!context) return context.status;
  const Status status =
      recorders::recordContextFree(session, *context, profile);
  if (!session.eraseContext(session::fromApi(handle)))
    return fail(kContextNotFreed);
  return status;
}

}  // namespace

Code contextCreate(Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
                   const KivContext_Config_t** config,
                   Kiv_ContextHandle_t* context) {
  return enter([&](Session& session) {
    return createContext(session, context, [&](const SaverContext& created) {
      return recorders::recordContextCreate(session, created, backend, device,
                                            config);
    });
  });
}

Code contextCreateFromBinary(Kiv_BackendHandle_t backend,
                             Kiv_DeviceHandle_t device,
                             const KivContext_Config_t** config,
                             const void* binary,
                             Kiv_ContextBinarySize_t binarySize,
                             Kiv_ContextHandle_t* context,
                             Kiv_ProfileHandle_t profile) {
  return enter([&](Session& session) {
    return createContext(session, context, [&](const SaverContext& created) {
      return recorders::recordContextCreateFromBinary(
          session, created, backend, device, config,
          ContextBinary{binary, binarySize}, profile);
    });
  });
}

Code contextCreateFromBinaryWithSignal(
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, const void* binary,
    Kiv_ContextBinarySize_t binarySize, Kiv_ContextHandle_t* context,
    Kiv_ProfileHandle_t profile, Kiv_SignalHandle_t) {
  return enter([&](Session& session) {
    return createContext(session, context, [&](const SaverContext& created) {
      return recorders::recordContextCreateFromBinaryWithSignal(
          session, created, backend, device, config,
          ContextBinary{binary, binarySize}, profile);
    });
  });
}

Code contextValidateBinary(Kiv_BackendHandle_t backend,
                           Kiv_DeviceHandle_t device,
                           const KivContext_Config_t** config,
                           const void* binary,
                           Kiv_ContextBinarySize_t binarySize) {
  return enter([&](Session& session) {
    return recorders::recordContextValidateBinary(
        session, backend, device, config, ContextBinary{binary, binarySize});
  });
}

Code contextSetConfig(Kiv_ContextHandle_t handle,
                      const KivContext_Config_t** config) {
  return enter([&](Session& session) {
    const auto context = findContext(session, handle);
    return context
               ? recorders::recordContextSetConfig(session, *context, config)
               : context.status;
  });
}

Code contextGetBinarySize(Kiv_ContextHandle_t handle,
                          Kiv_ContextBinarySize_t* binarySize) {
  return enter([&](Session& session) {
    const auto context = findContext(session, handle);
    return context ? recorders::recordContextGetBinarySize(session, *context,
                                                           binarySize)
                   : context.status;
  });
}

Code contextGetBinary(Kiv_ContextHandle_t handle, void*,
                      Kiv_ContextBinarySize_t bufferSize,
                      Kiv_ContextBinarySize_t*) {
  return enter([&](Session& session) {
    const auto context = findContext(session, handle);
    return context ? recorders::recordContextGetBinary(session, *context,
                                                       bufferSize)
                   : context.status;
  });
}

Code contextFree(Kiv_ContextHandle_t context, Kiv_ProfileHandle_t profile) {
  return enter([&](Session& session) {
    return releaseContext(session, context, profile);
  });
}

}  // namespace kiv::api
