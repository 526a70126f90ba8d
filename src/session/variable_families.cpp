#include "session/variable_families.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace kiv::session {
namespace {

// A derived name, word by word; "#" stands for a number.
using Pattern = std::string;
using Patterns = std::vector<Pattern>;

// What a tensor brings: its parts. "" is the tensor itself.
constexpr std::array<std::string_view, 13> kTensorParts = {
    "",
    "_dims",
    "_data",
    "_clientBuf",
    "_isDynamicDimensions",
    "_v1",
    "_v2",
    "_quantizeParams",
    "_quantizeParams_scaleOffsets",
    "_quantizeParams_axisScaleOffset",
    "_quantizeParams_scales",
    "_quantizeParams_offsets",
    "_quantizeParams_bwAxisScaleOffset"};

// The words behind a family's own name; each of `tensors` is a tensor with its
// parts.
Patterns patterns(std::initializer_list<const char*> plain,
                  std::initializer_list<const char*> tensors) {
  Patterns result(plain.begin(), plain.end());
  for (const std::string tensor : tensors) {
    for (const std::string_view part : kTensorParts)
      result.push_back(tensor + std::string(part));
  }
  return result;
}

// By family. Made when the library is loaded: a local static variable would
// leave something behind in a Windows process, see platform::threadNumber().
const std::array<Patterns, static_cast<std::size_t>(Family::kCount)>
    allPatterns = {
        // kPlain
        patterns({}, {}),
        // kTensorOwner
        patterns({}, {"tensor_#"}),
        // kGraph
        patterns({"inputTensors_#", "outputTensors_#"},
                 {"tensor_#", "inputTensor_#_#", "outputTensor_#_#"}),
        // kOpConfig
        patterns(
            {"params", "inputs", "outputs", "v1", "param_#", "param_#_scalar"},
            {"param_#_tensor", "input_#", "output_#"}),
        // kConfig
        patterns({"customConfig", "array", "config", "config_v1",
                  "config_hwDevices"},
                 {}),
        // kDeviceOrCore
        patterns({"v1", "cores"}, {}),
};

const Patterns& patternsOf(Family family) {
  return allPatterns[static_cast<std::size_t>(family)];
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

// What is left of a pattern behind the words of `text`; nothing if they are
// not its beginning.
std::optional<std::string_view> behind(std::string_view pattern,
                                       std::string_view text) {
  while (!text.empty()) {
    if (pattern.empty()) return std::nullopt;
    const std::string_view wanted = takeWord(pattern);
    const std::string_view word = takeWord(text);
    if (wanted == "#" ? !isNumber(word) : wanted != word) return std::nullopt;
  }
  return pattern;
}

}  // namespace

bool collide(Family owner, std::string_view suffix, Family named) {
  if (suffix.empty() || suffix.back() == '_') return false;
  const auto brings = [&](const Pattern& pattern) {
    const auto rest = behind(pattern, suffix);
    if (!rest) return false;
    return rest->empty() || std::ranges::find(patternsOf(named), *rest) !=
                                patternsOf(named).end();
  };
  return std::ranges::any_of(patternsOf(owner), brings);
}

}  // namespace kiv::session
