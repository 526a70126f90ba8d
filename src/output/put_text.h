#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string_view>
#include <type_traits>

#include "format/numbers.h"

// Pieces of text in memory that has room for them. From any thread.
namespace kiv::output {

template <std::size_t kHalf>
void putHalves(char* to, std::string_view text) {
  const std::size_t second = text.size() - kHalf;
  std::memcpy(to, text.data(), kHalf);
  std::memcpy(to + second, text.data() + second, kHalf);
}

// Each writes behind `to`, where there is room, and returns the end.
//
// Most texts are names of some dozen characters. Two overlapping copies, whose
// size the compiler knows, cost less for these than a call of memcpy.
inline char* put(char* to, std::string_view text) {
  const std::size_t size = text.size();
  if (size >= 32 && size <= 64) {
    putHalves<32>(to, text);
  } else if (size >= 16 && size < 32) {
    putHalves<16>(to, text);
  } else if (size >= 8 && size < 16) {
    putHalves<8>(to, text);
  } else if (size != 0) {
    std::memcpy(to, text.data(), size);
  }
  return to + size;
}

template <std::size_t kSize>
char* put(char* to, const std::array<char, kSize>& text) {
  std::memcpy(to, text.data(), kSize);
  return to + kSize;
}

// Most numbers are small.
template <typename Number>
requires std::is_arithmetic_v<Number>
char* put(char* to, Number number) {
  if constexpr (std::unsigned_integral<Number>) {
    if (number < 10) {
      *to = static_cast<char>('0' + number);
      return to + 1;
    }
  }
  return format::formatNumber(to, number);
}

// The value that stands there, aligned or not.
template <typename Value>
Value valueAt(const std::byte* from) {
  Value value{};
  std::memcpy(&value, from, sizeof(value));
  return value;
}

// Texts known to the compiler as one.
template <std::size_t kSize>
constexpr std::array<char, kSize> concatenated(
    std::initializer_list<std::string_view> texts) {
  std::array<char, kSize> result{};
  std::size_t end = 0;
  for (const std::string_view text : texts)
    for (const char c : text) result[end++] = c;
  return result;
}

}  // namespace kiv::output
