#pragma once

#include <cstdint>

#include "writers/write_scope.h"

namespace kiv::writers {

enum class ConfigFamilyId : std::uint8_t {
  kBackend,
  kContext,
  kDevice,
  kGraph,
  kProfile
};

// What becomes of a custom config: a record whose form only its backend knows.
enum class CustomVerdict : std::uint8_t {
  kWrite,   // the backend that the recording is for is one whose form is known
  kSkip,    // no backend was told; a warning says so
  kRefuse,  // `status` tells the code
};

struct CustomDecision {
  CustomVerdict verdict;
  Status status;
};

// Decides by family and by the backend that the recording is for, and logs what
// there is to say.
CustomDecision decideCustomConfig(WriteScope& scope, ConfigFamilyId family);

}  // namespace kiv::writers
