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

// Whether a variable of that family, called "x", may bring one called "x_" +
// suffix, or one whose name begins with "x_" + suffix + "_".
bool familyTakes(Family family, std::string_view suffix);

// The most words that such a suffix has.
inline constexpr int kMostSuffixWords = 5;

}  // namespace kiv::session
