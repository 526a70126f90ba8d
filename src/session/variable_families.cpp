#include "session/variable_families.h"

#include <algorithm>
#include <array>
#include <span>

namespace kiv::session {
namespace {

// A derived name, word by word: "#" is a number, "@" stands for the end or for
// what a tensor of that name brings.
using Pattern = std::string_view;

constexpr std::array<Pattern, 12> kTensorPatterns = {
    "dims",
    "data",
    "clientBuf",
    "isDynamicDimensions",
    "v1",
    "v2",
    "quantizeParams",
    "quantizeParams_scaleOffsets",
    "quantizeParams_axisScaleOffset",
    "quantizeParams_scales",
    "quantizeParams_offsets",
    "quantizeParams_bwAxisScaleOffset"};

constexpr std::array<Pattern, 1> kTensorOwnerPatterns = {"tensor_#_@"};

constexpr std::array<Pattern, 5> kGraphPatterns = {
    "tensor_#_@", "inputTensors_#", "outputTensors_#", "inputTensor_#_#_@",
    "outputTensor_#_#_@"};

constexpr std::array<Pattern, 8> kOpConfigPatterns = {
    "params",    "inputs",     "outputs",        "v1",
    "input_#_@", "output_#_@", "param_#_scalar", "param_#_tensor_@"};

constexpr std::array<Pattern, 5> kConfigPatterns = {
    "customConfig", "array", "config", "config_v1", "config_hwDevices"};

constexpr std::array<Pattern, 2> kDeviceOrCorePatterns = {"v1", "cores"};

std::span<const Pattern> patternsOf(Family family) {
  switch (family) {
    case Family::kTensorOwner:
      return kTensorOwnerPatterns;
    case Family::kGraph:
      return kGraphPatterns;
    case Family::kOpConfig:
      return kOpConfigPatterns;
    case Family::kConfig:
      return kConfigPatterns;
    case Family::kDeviceOrCore:
      return kDeviceOrCorePatterns;
    case Family::kPlain:
    case Family::kCount:
      break;
  }
  return {};
}

std::string_view takeWord(std::string_view& text) {
  const std::size_t end = std::min(text.find('_'), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

bool isNumber(std::string_view word) {
  return !word.empty() &&
         std::ranges::all_of(word, [](char c) { return c >= '0' && c <= '9'; });
}

// Whether the suffix is the pattern, or a beginning of it in whole words.
bool matches(Pattern pattern, std::string_view suffix) {
  while (!suffix.empty()) {
    if (pattern.empty()) return false;
    const std::string_view wanted = takeWord(pattern);
    if (wanted == "@") {
      return std::ranges::any_of(kTensorPatterns, [suffix](Pattern tensor) {
        return matches(tensor, suffix);
      });
    }
    const std::string_view word = takeWord(suffix);
    if (wanted == "#" ? !isNumber(word) : wanted != word) return false;
  }
  return true;
}

}  // namespace

bool familyTakes(Family family, std::string_view suffix) {
  if (suffix.empty() || suffix.back() == '_') return false;
  return std::ranges::any_of(patternsOf(family), [suffix](Pattern pattern) {
    return matches(pattern, suffix);
  });
}

}  // namespace kiv::session
