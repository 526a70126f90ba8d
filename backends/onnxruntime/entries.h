#pragma once

#include "KivInterface.h"

namespace kiv::ort {

inline constexpr Kiv_ApiVersion_t kApiVersion = {
    {KIV_CORE_API_VERSION_MAJOR, KIV_CORE_API_VERSION_MINOR,
     KIV_CORE_API_VERSION_PATCH},
    {1, 0, 0}};

// Each family puts its functions into the table.

void addBackendEntries(KivInterface_Implementation_t& table);
void addContextEntries(KivInterface_Implementation_t& table);
void addDeviceEntries(KivInterface_Implementation_t& table);
void addGraphEntries(KivInterface_Implementation_t& table);
void addLogEntries(KivInterface_Implementation_t& table);
void addProfileEntries(KivInterface_Implementation_t& table);
void addTensorEntries(KivInterface_Implementation_t& table);
void addUnsupportedEntries(KivInterface_Implementation_t& table);

}  // namespace kiv::ort
