#pragma once

#include <cstdint>

namespace kiv::platform {

// Differs in a forked child.
std::uint64_t processId();

}  // namespace kiv::platform
