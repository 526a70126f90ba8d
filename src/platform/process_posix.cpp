#include <unistd.h>

#include "platform/process.h"

namespace kiv::platform {

std::uint64_t processId() { return static_cast<std::uint64_t>(::getpid()); }

}  // namespace kiv::platform
