#pragma once

#include "KivBackend.h"
#include "session/session.h"

namespace kiv::recorders {

// Each writes one call of the backend family and returns what the client gets:
// 0, 4011 for an unknown backend, a value writer's status, or 4999 when the
// call could not be written. A null backend is no error: it is written as NULL.
// From any thread.

// Makes the backend known; its handle is the client's only if that succeeds.
Status recordBackendCreate(session::Session& session,
                           const KivBackend_Config_t** config,
                           Kiv_BackendHandle_t* backend);

Status recordBackendSetConfig(session::Session& session,
                              Kiv_BackendHandle_t backend,
                              const KivBackend_Config_t** config);

Status recordBackendRegisterOpPackage(session::Session& session,
                                      Kiv_BackendHandle_t backend,
                                      const char* packagePath,
                                      const char* interfaceProvider,
                                      const char* target);

// Reports no operations: 0 and null.
Status recordBackendGetSupportedOperations(
    session::Session& session, Kiv_BackendHandle_t backend,
    uint32_t* numOperations, const KivBackend_OperationName_t** operations);

Status recordBackendValidateOpConfig(session::Session& session,
                                     Kiv_BackendHandle_t backend,
                                     const Kiv_OpConfig_t& opConfig);

// Forgets the backend. The files stay open.
Status recordBackendFree(session::Session& session,
                         Kiv_BackendHandle_t backend);

}  // namespace kiv::recorders
