#pragma once

#include <string>

#include "KivTypes.h"
#include "session/tensor_registry.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// A variable for an operation: its name as an identifier, made unique;
// "opConfig", made unique, when it has no name.
std::string nameOpConfig(WriteScope& scope, const Kiv_OpConfig_t& opConfig);

// Writes an operation as the variable `name`, behind its parameters, inputs and
// outputs (name + "_param_0", "_params", "_input_0", "_inputs" and so on).
// `created` as in writeTensor.
//
// Returns 1000 for an unknown version, 4004 for a parameter that cannot be
// written or a count without its array, else the tensor writer's status.
Status writeOpConfig(WriteScope& scope, const Kiv_OpConfig_t& opConfig,
                     const std::string& name,
                     const session::TensorRegistry* created);

}  // namespace kiv::writers
