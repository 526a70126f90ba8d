#pragma once

#include "KivInterface.h"

namespace kiv::relay {

// Each sets the slots of its family, whatever the real backend has.
void addBackendEntries(KivInterface_Implementation_t& table);
void addContextEntries(KivInterface_Implementation_t& table);
void addDeviceEntries(KivInterface_Implementation_t& table);
void addGraphEntries(KivInterface_Implementation_t& table);
void addTensorEntries(KivInterface_Implementation_t& table);
void addProfileEntries(KivInterface_Implementation_t& table);
// Functions that the recorder has no statements for.
void addListedEntries(KivInterface_Implementation_t& table);

}  // namespace kiv::relay
