#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "KivInterface.h"
#include "hostile/source.h"

namespace kiv::test {

// A number where an enum stands, which need not be one of the enum's.
template <typename Enum>
void setEnum(Enum& field, std::uint32_t number) {
  static_assert(sizeof(field) == sizeof(number));
  std::memcpy(&field, &number, sizeof(number));
}

// Follow it and crash.
template <typename Pointer>
Pointer trap() {
  return reinterpret_cast<Pointer>(0xDEAD0000DEAD0001);
}

// Records of every form. Hostile ones may count elements that are not there and
// hold any number for an enum, with traps for the pointers that then have no
// meaning. Memory has exactly the size that the records tell and lives as long
// as this object. Custom configs are those of the GPU backend.
class RandomRecords {
 public:
  RandomRecords(Source& source, bool hostile)
      : source_(source), hostile_(hostile) {}

  // Made of pieces that matter somewhere in a program; may be null.
  const char* text();
  const char* nonNullText() { return keep(randomText()); }
  // One that may hold anything else as well.
  const char* anyText();

  // `ids` are those of tensors that there are.
  Kiv_Tensor_t tensor(std::span<const std::uint32_t> ids);
  Kiv_OpConfig_t opConfig(std::span<const std::uint32_t> ids);

  const KivBackend_Config_t** backendConfigs();
  const KivContext_Config_t** contextConfigs();
  const KivDevice_Config_t** deviceConfigs();
  const KivGraph_Config_t** graphConfigs();
  const KivProfile_Config_t** profileConfigs();

  // `most` elements at most; returns how many `pointer` is said to have.
  template <typename Element, typename Make>
  std::uint32_t array(Element*& pointer, std::uint32_t most, Make&& make);

  // Bytes of any value.
  void* bytes(std::size_t size);

  // 0, 1, the ends of both ranges, or anything.
  std::uint32_t border();

 private:
  template <typename Element>
  Element* keep(const Element* elements, std::size_t count);
  template <typename Element>
  Element* keep(const Element& element) {
    return keep(&element, 1);
  }
  const char* keep(const std::string& text) {
    return keep(text.c_str(), text.size() + 1);
  }
  // A list of configs, or null.
  template <typename Config>
  const Config** list(Config (RandomRecords::*make)());
  template <typename Config>
  Config emptyConfig(std::uint32_t option);

  bool hostileOneIn(std::uint32_t limit) {
    return hostile_ && source_.oneIn(limit);
  }
  // A fair client keeps to the numbers that C++ lets the enums have.
  std::uint32_t enumMask() const { return hostile_ ? 0xFFFFFFFF : 0x7FFFFFFF; }
  std::uint32_t beyond(std::uint32_t lastKnown);
  template <typename Enum>
  void setAny(Enum& field) {
    setEnum(field, source_.oneIn(3) ? border() & enumMask() : source_.below(6));
  }
  std::string randomText();
  float anyFloat();
  Kiv_ScaleOffset_t scaleOffset();
  Kiv_QuantizeParams_t quantization();
  void setData(Kiv_TensorV1_t& tensor);
  Kiv_Scalar_t scalar();
  Kiv_Param_t param(std::span<const std::uint32_t> ids);
  Kiv_ErrorConfig_t errorConfig();
  void* gpuContextConfig();
  void* gpuGraphConfig();
  KivDevice_CoreInfo_t core();
  KivDevice_HardwareDeviceInfo_t hardwareDevice();
  KivDevice_PlatformInfo_t platform();
  KivBackend_Config_t backendConfig();
  KivContext_Config_t contextConfig();
  KivDevice_Config_t deviceConfig();
  KivGraph_Config_t graphConfig();
  KivProfile_Config_t profileConfig();

  Source& source_;
  const bool hostile_;
  std::vector<std::shared_ptr<void>> memory_;
};

template <typename Element, typename Make>
std::uint32_t RandomRecords::array(Element*& pointer, std::uint32_t most,
                                   Make&& make) {
  pointer = nullptr;
  if (hostileOneIn(12)) return border();
  const std::uint32_t count = source_.below(most + 1);
  if (count == 0 && source_.oneIn(2)) return 0;
  std::vector<Element> elements;
  for (std::uint32_t i = 0; i < count; ++i) elements.push_back(make());
  pointer = keep(elements.data(), count);
  return count;
}

template <typename Element>
Element* RandomRecords::keep(const Element* elements, std::size_t count) {
  const std::size_t size = count * sizeof(Element);
  const std::shared_ptr<void> block(std::malloc(size), std::free);
  if (size != 0) std::memcpy(block.get(), elements, size);
  memory_.push_back(block);
  return static_cast<Element*>(block.get());
}

}  // namespace kiv::test
