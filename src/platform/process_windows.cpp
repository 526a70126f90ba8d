#include <windows.h>

#include "platform/process.h"

namespace kiv::platform {

std::uint64_t processId() { return ::GetCurrentProcessId(); }

}  // namespace kiv::platform
