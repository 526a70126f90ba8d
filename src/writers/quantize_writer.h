#pragma once

#include <string>

#include "KivTypes.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// Whether the encoding is one that can be written; logs and returns 1000 if
// not.
Status checkEncoding(WriteScope& scope, const Kiv_QuantizeParams_t& params);

// Writes a quantization record as the variable `name`, behind the arrays and
// records that it needs, which are called name + "_scales" and the like.
// Returns 1000 for an unknown encoding, or a count without its array.
Status writeQuantizeParams(WriteScope& scope,
                           const Kiv_QuantizeParams_t& params,
                           const std::string& name);

}  // namespace kiv::writers
