#pragma once

#include <cstdint>

#include "KivTypes.h"

namespace kiv::tracer {

// Bytes that one element of a tensor's data takes; 1 for unknown types. A
// recording carries 16-bit floats four bytes at a time and 4-bit values as
// bytes, so whole elements are counted that way here.
std::uint32_t elementSize(Kiv_DataType_t type);

}  // namespace kiv::tracer
