#pragma once

#include "KivDevice.h"
#include "writers/call_text.h"

namespace kiv::writers {

// Writes a platform description as the variable `name`, leaves first: the
// cores and devices below it, their arrays, the record. Extensions of backends
// are written as NULL, with a warning. Fails with 1000 for a version other than
// 1 at any level.
void writePlatformInfo(CallText& call, const KivDevice_PlatformInfo_t& info,
                       NameOf<Family::kPlatformInfo> name);

}  // namespace kiv::writers
