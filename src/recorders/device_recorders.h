#pragma once

#include "KivDevice.h"
#include "session/session.h"

namespace kiv::recorders {

// Each writes one call of the device family and returns what the client gets:
// 0, a config writer's status, or 14999 when the call could not be written.
// Results are never filled in. From any thread.

Status recordDeviceCreate(session::Session& session,
                          const session::SaverDevice& device,
                          const KivDevice_Config_t** config);
Status recordDeviceSetConfig(session::Session& session,
                             const session::SaverDevice& device,
                             const KivDevice_Config_t** config);
Status recordDeviceGetInfo(session::Session& session,
                           const session::SaverDevice& device,
                           const KivDevice_PlatformInfo_t** platformInfo);
Status recordDeviceGetPlatformInfo(
    session::Session& session, const KivDevice_PlatformInfo_t** platformInfo);
Status recordDeviceGetInfrastructure(
    session::Session& session,
    const KivDevice_Infrastructure_t* infrastructure);

// Only writes the call: the device stays known.
Status recordDeviceFree(session::Session& session,
                        const session::SaverDevice& device);

}  // namespace kiv::recorders
