#include "random_data.h"

#include <cstddef>
#include <cstring>

namespace onnx_client {
namespace {

template <typename Element, typename Make>
void fill(std::span<std::uint8_t> data, Make make) {
  for (std::size_t at = 0; at + sizeof(Element) <= data.size();
       at += sizeof(Element)) {
    const auto element = static_cast<Element>(make());
    std::memcpy(&data[at], &element, sizeof element);
  }
}

// In [-1, 1), in steps that a 32-bit float has.
double unitFloat(std::uint64_t bits) {
  return static_cast<double>(bits >> 40) / static_cast<double>(1 << 23) - 1.0;
}

// The bits of a 16-bit float whose absolute value is in [0.5, 1).
std::uint64_t halfFloatBits(std::uint64_t bits) {
  return (bits & 0x8000) | 0x3800 | (bits & 0x03FF);
}

}  // namespace

void fillRandom(std::mt19937_64& generator, Kiv_DataType_t dataType,
                std::span<std::uint8_t> data) {
  const auto index = [&] { return generator() % 4; };
  const auto unit = [&] { return unitFloat(generator()); };
  switch (dataType) {
    case KIV_DATA_TYPE_FLOAT_32:
      return fill<float>(data, unit);
    case KIV_DATA_TYPE_FLOAT_64:
      return fill<double>(data, unit);
    case KIV_DATA_TYPE_FLOAT_16:
      return fill<std::uint16_t>(data,
                                 [&] { return halfFloatBits(generator()); });
    case KIV_DATA_TYPE_INT_16:
    case KIV_DATA_TYPE_UINT_16:
      return fill<std::uint16_t>(data, index);
    case KIV_DATA_TYPE_INT_32:
    case KIV_DATA_TYPE_UINT_32:
      return fill<std::uint32_t>(data, index);
    case KIV_DATA_TYPE_INT_64:
    case KIV_DATA_TYPE_UINT_64:
      return fill<std::uint64_t>(data, index);
    case KIV_DATA_TYPE_BOOL_8:
      return fill<std::uint8_t>(data, [&] { return generator() & 1; });
    default:
      return fill<std::uint8_t>(data, [&] { return generator() & 0xFF; });
  }
}

}  // namespace onnx_client
