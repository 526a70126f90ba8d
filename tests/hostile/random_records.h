#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "GPU/KivGpuContext.h"
#include "GPU/KivGpuGraph.h"
#include "KivInterface.h"
#include "hostile/source.h"
#include "support/records.h"

namespace kiv::test {

// A pointer of any type; follow it and crash.
struct Trap {
  template <typename Target>
  operator Target*() const {
    return reinterpret_cast<Target*>(0xDEAD0000DEAD0001);
  }
};
constexpr Trap kTrap;

// Records of every form. Hostile ones may count elements that are not there and
// hold any number for an enum, with traps for the pointers that then have no
// meaning. Memory has exactly the size that the records tell and lives as long
// as this object. Custom configs are those of the GPU backend.
class RandomRecords {
 public:
  RandomRecords(Source& source, bool hostile)
      : source_(source), hostile_(hostile) {}

  // The tensors that there are; those of records are often among them.
  void setIds(std::vector<std::uint32_t> ids) { ids_ = std::move(ids); }

  template <typename Record>
  Record make() {
    Record record{};
    fill(record);
    return record;
  }
  // `most` elements at most; returns how many `pointer` is said to have.
  template <typename Element>
  std::uint32_t array(Element*& pointer, std::uint32_t most) {
    pointer = nullptr;
    if (hostileOneIn(12)) return border();
    const std::uint32_t count = source_.below(most + 1);
    if (count == 0 && source_.oneIn(2)) return 0;
    std::vector<Element> elements;
    for (std::uint32_t i = 0; i < count; ++i)
      elements.push_back(make<Element>());
    pointer = keep(elements.data(), count);
    return count;
  }
  // A list of configs of the type that is asked for, or null.
  struct Configs {
    RandomRecords& records;
    template <typename Config>
    operator const Config**() const {
      return records.configList<Config>();
    }
  };
  Configs configs() { return {*this}; }

  // Made of pieces that matter somewhere in a program.
  std::string text();
  // One that may hold anything else as well, or null.
  const char* anyText();
  // Bytes of any value.
  void* bytes(std::size_t size);
  // 0, 1, the ends of both ranges, or anything.
  std::uint32_t border();

  template <typename Element>
  Element* keep(const Element* elements, std::size_t count) {
    const std::size_t size = count * sizeof(Element);
    char* block = memory_.emplace_back(new char[size]).get();
    if (size != 0) std::memcpy(block, elements, size);
    return reinterpret_cast<Element*>(block);
  }
  template <typename Element>
  Element* keep(const Element& element) {
    return keep(&element, 1);
  }
  const char* keep(const std::string& text) {
    return keep(text.c_str(), text.size() + 1);
  }

 private:
  bool hostileOneIn(std::uint32_t limit) {
    return hostile_ && source_.oneIn(limit);
  }
  // A number that an enum from `first` to `last` does not have.
  std::uint32_t outside(std::uint32_t first, std::uint32_t last);
  // Some hostile records are not of a form that anybody knows. Then nothing may
  // follow their pointers.
  template <typename Enum, typename... Pointers>
  void spoil(Enum& form, std::uint32_t first, std::uint32_t last,
             Pointers&... pointers) {
    if (!hostileOneIn(16)) return;
    setNumber(form, outside(first, last));
    ((pointers = kTrap), ...);
  }
  template <typename Config>
  const Config** configList() {
    if (source_.oneIn(3)) return nullptr;
    std::vector<const Config*> list;
    for (std::uint32_t i = source_.below(4); i > 0; --i) {
      Config config = make<Config>();
      spoil(config.option, 0, 7, config.customConfig);
      list.push_back(keep(config));
    }
    list.push_back(nullptr);
    return keep(list.data(), list.size());
  }
  void setData(Kiv_TensorV1_t& tensor);

  template <typename... Fields>
  void fillAll(Fields&... fields) {
    (fill(fields), ...);
  }
  // One member of a union, and its number for the enum that tells which.
  template <typename Enum, typename... Fields>
  void fillOneOf(Enum& choice, Fields&... fields) {
    const std::uint32_t chosen = source_.below(sizeof...(fields));
    setNumber(choice, chosen);
    std::uint32_t number = 0;
    ((number++ == chosen ? fill(fields) : void()), ...);
  }
  // A fair caller keeps to the numbers that C++ lets the enum have.
  template <typename Enum>
  std::enable_if_t<std::is_enum_v<Enum>> fill(Enum& field) {
    const std::uint32_t mask = hostile_ ? 0xFFFFFFFF : 0x7FFFFFFF;
    setNumber(field, source_.oneIn(3) ? border() & mask : source_.below(6));
  }
  template <typename Number>
  std::enable_if_t<std::is_integral_v<Number>> fill(Number& number) {
    number = sizeof(number) == 4 ? static_cast<Number>(border())
                                 : source_.number<Number>();
  }
  void fill(float& number);
  void fill(const char*& textOrNull);
  // Of a family whose records are nobody's business.
  void fill(void*& customConfig) {
    if (hostile_) customConfig = kTrap;
  }
  void fill(const char* const*& graphNames);
  void fill(Kiv_ScaleOffset_t& pair) { fillAll(pair.scale, pair.offset); }
  void fill(Kiv_BwScaleOffset_t& encoding) {
    fillAll(encoding.bitwidth, encoding.scale, encoding.offset);
  }
  void fill(Kiv_AxisScaleOffset_t& encoding) {
    fill(encoding.axis);
    encoding.numScaleOffsets = array(encoding.scaleOffset, 4);
  }
  void fill(Kiv_BwAxisScaleOffset_t& encoding);
  void fill(Kiv_QuantizeParams_t& params);
  void fill(Kiv_Tensor_t& tensor);
  void fill(Kiv_Scalar_t& scalar);
  void fill(Kiv_Param_t& param);
  void fill(Kiv_OpConfig_t& config);
  void fill(Kiv_ErrorConfig_t& config) {
    fillAll(config.reportingLevel, config.storageLimit);
  }
  void fill(KivContext_AsyncExecutionQueueDepth_t& queue);
  void fill(KivBackend_Config_t& config) {
    fillOneOf(config.option, config.customConfig, config.errorConfig,
              config.platformOption);
  }
  void fill(KivContext_Config_t& config);
  void fill(KivDevice_Config_t& config) {
    fillOneOf(config.option, config.customConfig, config.hardwareInfo);
  }
  void fill(KivGraph_Config_t& config);
  void fill(KivProfile_Config_t& config) {
    fillOneOf(config.option, config.customConfig, config.numMaxEvents);
  }
  void fill(KivGpuContext_CustomConfig_t& config);
  void fill(KivGpuGraph_CustomConfig_t& config) {
    fillAll(config.precision, config.flag0, config.flag2);
  }
  void fill(KivDevice_CoreInfo_t& core);
  void fill(KivDevice_HardwareDeviceInfo_t& device);
  void fill(KivDevice_PlatformInfo_t*& info);

  Source& source_;
  const bool hostile_;
  std::vector<std::uint32_t> ids_;
  std::vector<std::unique_ptr<char[]>> memory_;
};

}  // namespace kiv::test
