#pragma once

#include <cstdint>

namespace kiv::tracer {

// Bytes that one element of a tensor's data takes, of the type that has this
// number in Kiv_DataType_t; 1 for unknown types. A recording carries 16-bit
// floats four bytes at a time and 4-bit values as bytes, so whole elements are
// counted that way here.
std::uint32_t elementSize(std::uint32_t dataType);

}  // namespace kiv::tracer
