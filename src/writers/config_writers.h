#pragma once

#include <string_view>

#include "KivBackend.h"
#include "KivContext.h"
#include "KivDevice.h"
#include "KivGraph.h"
#include "KivProfile.h"
#include "writers/call_text.h"

namespace kiv::writers {

// Write a client's config list, a null-terminated array of pointers: a record
// for each element, called recordBase + "_" + the option's word + a counter,
// and the array of their addresses, arrayBase + "_config" + a counter, ended by
// NULL. Return the array's variable, or an empty name for NULL. A custom config
// without a known backend is skipped with a warning.
//
// Fail with the family's status for an unknown option, a custom config that
// cannot be written, or a value that cannot.
Name writeConfigs(CallText& call, const KivBackend_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase);
Name writeConfigs(CallText& call, const KivContext_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase);
Name writeConfigs(CallText& call, const KivDevice_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase);
Name writeConfigs(CallText& call, const KivGraph_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase);
Name writeConfigs(CallText& call, const KivProfile_Config_t** list,
                  std::string_view recordBase, std::string_view arrayBase);

}  // namespace kiv::writers
