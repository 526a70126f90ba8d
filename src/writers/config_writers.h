#pragma once

#include "KivBackend.h"
#include "KivContext.h"
#include "KivDevice.h"
#include "KivGraph.h"
#include "KivProfile.h"
#include "writers/config_family.h"

namespace kiv::writers {

// The five config families. Their blanks around "=" differ, and stay so.
const ConfigFamily<KivBackend_Config_t>& backendConfigs();
const ConfigFamily<KivContext_Config_t>& contextConfigs();
const ConfigFamily<KivDevice_Config_t>& deviceConfigs();
const ConfigFamily<KivGraph_Config_t>& graphConfigs();
const ConfigFamily<KivProfile_Config_t>& profileConfigs();

}  // namespace kiv::writers
