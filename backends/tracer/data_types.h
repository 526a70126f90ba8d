#pragma once

#include <cstdint>

namespace kiv::tracer {

// Bytes of one element of a tensor's data, by the number of its type in
// Kiv_DataType_t; 1 for unknown types. A recording carries 16-bit floats four
// bytes at a time and 4-bit values as bytes, so these sizes count here, too.
std::uint32_t elementSize(std::uint32_t dataType);

}  // namespace kiv::tracer
