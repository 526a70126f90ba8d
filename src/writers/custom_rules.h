#pragma once

#include "format/configs.h"
#include "writers/call_text.h"

namespace kiv::writers {

// Whether a custom config, a record whose form only its backend knows, can be
// written: by its family and by the backend that the recording is for. Without
// a backend it is skipped with a warning; one that cannot be written is a
// failure with the family's status.
bool mayWriteCustomConfig(CallText& call, format::ConfigFamilyId family);

}  // namespace kiv::writers
