#pragma once

#include <string>

#include "KivTypes.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// Writes a scalar as the variable `name`. Returns 4004 for a data type that a
// scalar cannot have: 64-bit numbers and fixed point ones among them.
Status writeScalar(WriteScope& scope, const Kiv_Scalar_t& scalar,
                   const std::string& name);

}  // namespace kiv::writers
