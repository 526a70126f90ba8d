#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>

namespace kiv::test {

// Bytes that decide what a random caller does, one small decision a byte.
// Behind their end all decisions are 0, the simplest.
class Source {
 public:
  explicit Source(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  bool isEmpty() const { return rest_.empty(); }

  template <typename Number>
  Number number() {
    Number result{};
    const std::size_t size = std::min(sizeof(result), rest_.size());
    if (size != 0) std::memcpy(&result, rest_.data(), size);
    rest_ = rest_.subspan(size);
    return result;
  }

  // Below `limit`, which is 256 at most.
  std::uint32_t below(std::uint32_t limit) {
    return number<std::uint8_t>() % limit;
  }
  bool oneIn(std::uint32_t limit) { return below(limit) == limit - 1; }
  // Of the first 256 values.
  template <typename Values>
  const auto& oneOf(const Values& values) {
    return std::data(values)[below(256) % std::size(values)];
  }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace kiv::test
