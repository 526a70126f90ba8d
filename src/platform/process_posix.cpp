#include <unistd.h>

#include "platform/process.h"

namespace kiv::platform {

std::uint64_t processId() { return static_cast<std::uint64_t>(::getpid()); }

// Threads run on while exit handlers and destructors do.
bool isLastThreadOfProcess() { return false; }

}  // namespace kiv::platform
