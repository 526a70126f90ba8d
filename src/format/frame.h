#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kiv::format {

// The fixed text around the recorded calls, from frame/header.c and
// frame/footer.c. The generated program is run as
//
//   program [-l level | --logging level]
//
// in the directory of its data file, makes the calls through the first
// provider of the library that it is linked with, and stops calling after the
// first error. Recorded statements may use its variables error, fp, interface
// and loghandle. From any thread.

// The headers that a backend's records need beyond "KivInterface.h".
std::span<const std::string_view> headersOfBackend(std::uint32_t backendId);

// Everything before the first call. `dataFileName` is opened in the program's
// working directory; `timeStamp` goes into the notice, beside the recorder's
// version, unless it is empty.
std::string programHeader(std::span<const std::string_view> includes,
                          std::string_view dataFileName,
                          std::string_view timeStamp);

// Everything behind the last call.
std::string_view programFooter();

}  // namespace kiv::format
