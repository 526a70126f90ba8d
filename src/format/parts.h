#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Names that are derived from the name of a variable: a tensor "t" has its
// dimensions in "t_dims". Writers make such names of the parts below, and of
// nothing else; the same table says which names a variable brings along, so
// that no other variable gets one of them. Constant; from any thread.
namespace kiv::format {

// The kind of a variable of the generated program, which decides on the parts
// that it may have.
enum class Family : std::uint8_t {
  kPlain,  // none
  kContext,
  kGraph,
  kOpConfig,
  kParam,
  kTensor,
  kQuantizeParams,
  kConfig,
  kPlatformInfo,
  kDeviceOrCore,
  kCount
};

enum class Part : std::uint8_t {
  kContextTensor,
  kGraphTensor,
  kInputTensor,
  kOutputTensor,
  kInputTensors,
  kOutputTensors,
  kParams,
  kInputs,
  kOutputs,
  kOpConfigV1,
  kParam,
  kInput,
  kOutput,
  kScalarParam,
  kTensorParam,
  kDims,
  kQuantizeParams,
  kData,
  kClientBuf,
  kIsDynamicDimensions,
  kTensorV1,
  kTensorV2,
  kScaleOffsets,
  kAxisScaleOffset,
  kScales,
  kOffsets,
  kBwAxisScaleOffset,
  kCustomConfig,
  kGraphNames,
  kPlatformInfo,
  kPlatformInfoV1,
  kHwDevices,
  kDeviceOrCoreV1,
  kCores,
  kCount
};

// One part: owner + word + as many of "_number" as `numbers` says.
struct PartRow {
  Part part;
  std::string_view word;
  int numbers;
  Family owner;
  // The family of the derived variable.
  Family derived;
};

inline constexpr std::array kParts = {
    PartRow{Part::kContextTensor, "_tensor", 1, Family::kContext,
            Family::kTensor},
    PartRow{Part::kGraphTensor, "_tensor", 1, Family::kGraph, Family::kTensor},
    PartRow{Part::kInputTensor, "_inputTensor", 2, Family::kGraph,
            Family::kTensor},
    PartRow{Part::kOutputTensor, "_outputTensor", 2, Family::kGraph,
            Family::kTensor},
    PartRow{Part::kInputTensors, "_inputTensors", 1, Family::kGraph,
            Family::kPlain},
    PartRow{Part::kOutputTensors, "_outputTensors", 1, Family::kGraph,
            Family::kPlain},
    PartRow{Part::kParams, "_params", 0, Family::kOpConfig, Family::kPlain},
    PartRow{Part::kInputs, "_inputs", 0, Family::kOpConfig, Family::kPlain},
    PartRow{Part::kOutputs, "_outputs", 0, Family::kOpConfig, Family::kPlain},
    PartRow{Part::kOpConfigV1, "_v1", 0, Family::kOpConfig, Family::kPlain},
    PartRow{Part::kParam, "_param", 1, Family::kOpConfig, Family::kParam},
    PartRow{Part::kInput, "_input", 1, Family::kOpConfig, Family::kTensor},
    PartRow{Part::kOutput, "_output", 1, Family::kOpConfig, Family::kTensor},
    PartRow{Part::kScalarParam, "_scalar", 0, Family::kParam, Family::kPlain},
    PartRow{Part::kTensorParam, "_tensor", 0, Family::kParam, Family::kTensor},
    PartRow{Part::kDims, "_dims", 0, Family::kTensor, Family::kPlain},
    PartRow{Part::kQuantizeParams, "_quantizeParams", 0, Family::kTensor,
            Family::kQuantizeParams},
    PartRow{Part::kData, "_data", 0, Family::kTensor, Family::kPlain},
    PartRow{Part::kClientBuf, "_clientBuf", 0, Family::kTensor, Family::kPlain},
    PartRow{Part::kIsDynamicDimensions, "_isDynamicDimensions", 0,
            Family::kTensor, Family::kPlain},
    PartRow{Part::kTensorV1, "_v1", 0, Family::kTensor, Family::kPlain},
    PartRow{Part::kTensorV2, "_v2", 0, Family::kTensor, Family::kPlain},
    PartRow{Part::kScaleOffsets, "_scaleOffsets", 0, Family::kQuantizeParams,
            Family::kPlain},
    PartRow{Part::kAxisScaleOffset, "_axisScaleOffset", 0,
            Family::kQuantizeParams, Family::kPlain},
    PartRow{Part::kScales, "_scales", 0, Family::kQuantizeParams,
            Family::kPlain},
    PartRow{Part::kOffsets, "_offsets", 0, Family::kQuantizeParams,
            Family::kPlain},
    PartRow{Part::kBwAxisScaleOffset, "_bwAxisScaleOffset", 0,
            Family::kQuantizeParams, Family::kPlain},
    PartRow{Part::kCustomConfig, "_customConfig", 0, Family::kConfig,
            Family::kPlain},
    PartRow{Part::kGraphNames, "_array", 0, Family::kConfig, Family::kPlain},
    PartRow{Part::kPlatformInfo, "_config", 0, Family::kConfig,
            Family::kPlatformInfo},
    PartRow{Part::kPlatformInfoV1, "_v1", 0, Family::kPlatformInfo,
            Family::kPlain},
    PartRow{Part::kHwDevices, "_hwDevices", 0, Family::kPlatformInfo,
            Family::kPlain},
    PartRow{Part::kDeviceOrCoreV1, "_v1", 0, Family::kDeviceOrCore,
            Family::kPlain},
    PartRow{Part::kCores, "_cores", 0, Family::kDeviceOrCore, Family::kPlain},
};

constexpr const PartRow& rowOf(Part part) {
  return kParts[static_cast<std::size_t>(part)];
}

// Each part has its row, in the order of the enum; no word begins with a
// number, and no family has one word twice.
constexpr bool isComplete(const decltype(kParts)& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].part != static_cast<Part>(i)) return false;
    if (rows[i].word.size() < 2 || rows[i].word[1] <= '9') return false;
    for (std::size_t k = 0; k < i; ++k)
      if (rows[k].owner == rows[i].owner && rows[k].word == rows[i].word)
        return false;
  }
  return rows.size() == static_cast<std::size_t>(Part::kCount);
}
static_assert(isComplete(kParts));

// Whether a variable "x" of the family `owner` brings "x_" + suffix along. As
// each name on the way to a derived one is a variable itself, two variables
// meet only where one of them brings the other's name along.
bool isDerived(Family owner, std::string_view suffix);

// Whether some family may bring along a name of that suffix: cheap, and false
// for most names that clients choose.
bool mayBeDerived(std::string_view suffix);

// The most words, separated by "_", that such a suffix has.
inline constexpr int kMostSuffixWords = 5;

}  // namespace kiv::format
