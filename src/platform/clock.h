#pragma once

#include <cstdint>

namespace kiv::platform {

// Nanoseconds of a clock that never goes back; its zero means nothing.
std::uint64_t monotonicNanoseconds();

}  // namespace kiv::platform
