#pragma once

#include <ctime>

namespace kiv::platform {

// The current time in the system's time zone, to the second. Any thread may
// call it.
std::tm localTime();

}  // namespace kiv::platform
