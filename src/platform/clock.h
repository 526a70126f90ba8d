#pragma once

#include <cstdint>

namespace kiv::platform {

// Nanoseconds of a clock that never goes back, for time spans; its zero means
// nothing. Any thread may call it.
std::uint64_t monotonicNanoseconds();

}  // namespace kiv::platform
