#pragma once

#include <cstdint>
#include <random>
#include <span>

#include "KivInterface.h"

namespace onnx_client {

// Fills a tensor's data with values that most operations make sense of: floats
// between -1 and 1, any 8-bit integers, and wider integers from 0 to 3, which
// may be indices. A seed gives the same bytes on every machine.
void fillRandom(std::mt19937_64& generator, Kiv_DataType_t dataType,
                std::span<std::uint8_t> data);

}  // namespace onnx_client
