#pragma once

#include <ctime>

namespace kiv::platform {

// The current time in the system's time zone, to the second; with milliseconds,
// these of the same moment, too. Any thread may call it.
std::tm localTime(int* milliseconds = nullptr);

}  // namespace kiv::platform
