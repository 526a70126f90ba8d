#pragma once

#include "KivTypes.h"
#include "writers/call_text.h"

namespace kiv::writers {

// Writes the quantization record of a tensor as the variable `name`, behind the
// arrays and records that it needs, which are the name's parts. Fails with 1000
// for an unknown encoding, or a count without its array.
void writeQuantizeParams(CallText& call, const Kiv_QuantizeParams_t& params,
                         NameOf<Family::kQuantizeParams> name);

// Fails with 1000 for an encoding that cannot be written.
void checkEncoding(CallText& call, const Kiv_QuantizeParams_t& params);

}  // namespace kiv::writers
