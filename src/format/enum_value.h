#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace kiv::format {

// The number in an enum of a client's record, which may be any: reading it as
// the enum would be undefined for numbers that the enum does not have.
template <typename Enum>
requires std::is_enum_v<Enum> std::uint32_t enumValue(const Enum& value) {
  static_assert(sizeof(Enum) == sizeof(std::uint32_t));
  std::uint32_t number = 0;
  std::memcpy(&number, &value, sizeof(number));
  return number;
}

}  // namespace kiv::format
