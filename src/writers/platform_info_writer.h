#pragma once

#include <string>

#include "KivDevice.h"
#include "writers/write_scope.h"

namespace kiv::writers {

// Writes a platform description as the variable `name`, leaves first: the
// cores and devices below it, their arrays, the record. Extensions of backends
// are written as NULL, with a warning. Returns 1000 for a version other than 1
// at any level.
Status writePlatformInfo(WriteScope& scope,
                         const KivDevice_PlatformInfo_t& info,
                         const std::string& name);

}  // namespace kiv::writers
