#pragma once

#include <string>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// Write the GPU backend's custom config as name + "_customConfig" and the
// config record that points to it as `name`. An unknown context option is
// written as the undefined one; neither can fail.
void writeGpuContextConfig(WriteScope& scope,
                           const KivGpuContext_CustomConfig_t& custom,
                           const std::string& name);
void writeGpuGraphConfig(WriteScope& scope,
                         const KivGpuGraph_CustomConfig_t& custom,
                         const std::string& name);

}  // namespace kiv::writers
