#pragma once

#include <cstdint>
#include <string_view>

namespace kiv::session {

// What a variable of the generated program is, and with it which further
// variables are derived from its name: a graph "g" brings "g_tensor_0",
// "g_tensor_0_dims", "g_inputTensors_0" and so on, without asking anybody.
enum class Family : std::uint8_t {
  kPlain,         // none
  kTensorOwner,   // a context: its tensors
  kGraph,         // its tensors, the tensors and arrays of its executions
  kOpConfig,      // its parameters, inputs and outputs
  kConfig,        // what a config record points to
  kDeviceOrCore,  // the parts of a platform description
  kCount
};

// Whether a variable "x" of the family `owner` and one of the family `named`,
// called "x_" + suffix, would bring the same variable along, or the one would
// bring the other.
bool collide(Family owner, std::string_view suffix, Family named);

// The most words that such a suffix has.
inline constexpr int kMostSuffixWords = 5;

}  // namespace kiv::session
