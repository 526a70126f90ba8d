#pragma once

#include "KivInterface.h"

namespace kiv::api {

inline constexpr const char* kProviderName = "SAVER_ZOR_MELD";
inline constexpr const char* kBuildId = "v2.39.0.250925215840_163802";
// The second is the version of the Saver's part of the interface, which goes on
// apart from the version of the library.
inline constexpr Kiv_ApiVersion_t kApiVersion = {
    {KIV_CORE_API_VERSION_MAJOR, KIV_CORE_API_VERSION_MINOR,
     KIV_CORE_API_VERSION_PATCH},
    {1, 1, 0}};

}  // namespace kiv::api
