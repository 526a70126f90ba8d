#pragma once

#include "KivTypes.h"
#include "writers/call_text.h"

namespace kiv::writers {

// A variable for an operation: its name as an identifier, made unique;
// "opConfig", made unique, when it has no name.
NameOf<Family::kOpConfig> nameOpConfig(CallText& call,
                                       const Kiv_OpConfig_t& opConfig);

// Writes an operation as the variable `name`, behind its parameters, inputs and
// outputs (its parts "_param_0", "_params", "_input_0", "_inputs" and so on).
// `created` as in writeTensor.
//
// Fails with 1000 for an unknown version, 4004 for a parameter that cannot be
// written or a count without its array, else with the tensor writer's status.
void writeOpConfig(CallText& call, const Kiv_OpConfig_t& opConfig,
                   NameOf<Family::kOpConfig> name,
                   const session::TensorRegistry* created);

// One parameter as the variable `name`, behind its scalar or tensor. A scalar
// cannot hold 64-bit and fixed-point numbers: 4004.
void writeParam(CallText& call, const Kiv_Param_t& param,
                NameOf<Family::kParam> name,
                const session::TensorRegistry* created);

}  // namespace kiv::writers
