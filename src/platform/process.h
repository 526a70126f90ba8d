#pragma once

#include <cstdint>

namespace kiv::platform {

// Differs in a forked child.
std::uint64_t processId();

// Whether the process ends and has only this thread left: no other will finish
// what it is doing.
bool isLastThreadOfProcess();

}  // namespace kiv::platform
