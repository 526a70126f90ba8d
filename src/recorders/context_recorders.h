#pragma once

#include "KivContext.h"
#include "session/session.h"

namespace kiv::recorders {

// Each writes one call of the context family and returns what the client gets:
// 0, 4011, 14000 or 12000 for an unknown backend, device or profile, a value
// writer's status, or 5999 when the call could not be written. From any thread.

Status recordContextCreate(session::Session& session,
                           const session::SaverContext& context,
                           Kiv_BackendHandle_t backend,
                           Kiv_DeviceHandle_t device,
                           const KivContext_Config_t** config);

// A serialised context of the client: size bytes, read during the call only.
struct ContextBinary {
  const void* bytes;
  Kiv_ContextBinarySize_t size;
};

// 5005 when the binary could not be written.
Status recordContextCreateFromBinary(session::Session& session,
                                     const session::SaverContext& context,
                                     Kiv_BackendHandle_t backend,
                                     Kiv_DeviceHandle_t device,
                                     const KivContext_Config_t** config,
                                     ContextBinary binary,
                                     Kiv_ProfileHandle_t profile);
Status recordContextCreateFromBinaryWithSignal(
    session::Session& session, const session::SaverContext& context,
    Kiv_BackendHandle_t backend, Kiv_DeviceHandle_t device,
    const KivContext_Config_t** config, ContextBinary binary,
    Kiv_ProfileHandle_t profile);

// 5002 when the binary could not be written.
Status recordContextValidateBinary(session::Session& session,
                                   Kiv_BackendHandle_t backend,
                                   Kiv_DeviceHandle_t device,
                                   const KivContext_Config_t** config,
                                   ContextBinary binary);

Status recordContextSetConfig(session::Session& session,
                              const session::SaverContext& context,
                              const KivContext_Config_t** config);

// Both return 4950 once recorded: there is no binary to report.
Status recordContextGetBinarySize(session::Session& session,
                                  const session::SaverContext& context,
                                  const Kiv_ContextBinarySize_t* binarySize);
Status recordContextGetBinary(session::Session& session,
                              const session::SaverContext& context,
                              Kiv_ContextBinarySize_t bufferSize);

// An unknown profile is written as NULL, with a warning: the context is gone
// either way.
Status recordContextFree(session::Session& session,
                         const session::SaverContext& context,
                         Kiv_ProfileHandle_t profile);

}  // namespace kiv::recorders
