#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace kiv::arrays {

// The system's reason for the last failure of the calling thread. Streams may
// fail without one.
inline std::string systemMessage() {
  return std::generic_category().message(errno == 0 ? EIO : errno);
}

}  // namespace kiv::arrays
