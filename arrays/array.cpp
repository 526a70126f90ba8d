#include "arrays/array.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace kiv::arrays {
namespace {

static_assert(std::endian::native == std::endian::little);

struct Row {
  Kiv_DataType_t type;
  Element element;
};

constexpr std::array<Row, 20> kRows = {{
    {KIV_DATA_TYPE_INT_8, {'i', 1}},
    {KIV_DATA_TYPE_INT_16, {'i', 2}},
    {KIV_DATA_TYPE_INT_32, {'i', 4}},
    {KIV_DATA_TYPE_INT_64, {'i', 8}},
    {KIV_DATA_TYPE_UINT_8, {'u', 1}},
    {KIV_DATA_TYPE_UINT_16, {'u', 2}},
    {KIV_DATA_TYPE_UINT_32, {'u', 4}},
    {KIV_DATA_TYPE_UINT_64, {'u', 8}},
    {KIV_DATA_TYPE_FLOAT_16, {'f', 2}},
    {KIV_DATA_TYPE_FLOAT_32, {'f', 4}},
    {KIV_DATA_TYPE_FLOAT_64, {'f', 8}},
    {KIV_DATA_TYPE_SFIXED_POINT_4, {'V', 1}},
    {KIV_DATA_TYPE_SFIXED_POINT_8, {'i', 1}},
    {KIV_DATA_TYPE_SFIXED_POINT_16, {'i', 2}},
    {KIV_DATA_TYPE_SFIXED_POINT_32, {'i', 4}},
    {KIV_DATA_TYPE_UFIXED_POINT_4, {'V', 1}},
    {KIV_DATA_TYPE_UFIXED_POINT_8, {'u', 1}},
    {KIV_DATA_TYPE_UFIXED_POINT_16, {'u', 2}},
    {KIV_DATA_TYPE_UFIXED_POINT_32, {'u', 4}},
    {KIV_DATA_TYPE_BOOL_8, {'b', 1}},
}};

// An enum of a client's record may hold any number.
template <typename Enum>
std::uint32_t numberOf(const Enum& value) {
  static_assert(sizeof(Enum) == sizeof(std::uint32_t));
  std::uint32_t number = 0;
  std::memcpy(&number, &value, sizeof(number));
  return number;
}

std::optional<Element> elementOfNumber(std::uint32_t type) {
  for (const Row& row : kRows)
    if (numberOf(row.type) == type) return row.element;
  return std::nullopt;
}

double halfValue(std::uint16_t bits) {
  const int exponent = (bits >> 10) & 0x1f;
  const int fraction = bits & 0x3ff;
  double value = 0;
  if (exponent == 0x1f)
    value = fraction == 0 ? std::numeric_limits<double>::infinity()
                          : std::numeric_limits<double>::quiet_NaN();
  else if (exponent == 0)
    value = std::ldexp(fraction, -24);
  else
    value = std::ldexp(fraction + 0x400, exponent - 25);
  return (bits & 0x8000) != 0 ? -value : value;
}

double bfloatValue(std::uint16_t bits) {
  return static_cast<double>(
      std::bit_cast<float>(static_cast<std::uint32_t>(bits) << 16));
}

double floatAt(const ArrayView& array, std::uint64_t index) {
  if (array.element.size == 2)
    return halfValue(elementAt<std::uint16_t>(array, index));
  if (array.element.size == 4)
    return static_cast<double>(elementAt<float>(array, index));
  return elementAt<double>(array, index);
}

std::int64_t signedAt(const ArrayView& array, std::uint64_t index) {
  if (array.element.size == 1) return elementAt<std::int8_t>(array, index);
  if (array.element.size == 2) return elementAt<std::int16_t>(array, index);
  if (array.element.size == 4) return elementAt<std::int32_t>(array, index);
  return elementAt<std::int64_t>(array, index);
}

std::uint64_t unsignedAt(const ArrayView& array, std::uint64_t index) {
  if (array.element.size == 1) return elementAt<std::uint8_t>(array, index);
  if (array.element.size == 2) return elementAt<std::uint16_t>(array, index);
  if (array.element.size == 4) return elementAt<std::uint32_t>(array, index);
  return elementAt<std::uint64_t>(array, index);
}

bool isBfloat(const Element& element) { return element == Element{'V', 2}; }

Shape dimensionsOf(const Kiv_TensorV1_t& tensor) {
  if (tensor.dimensions == nullptr) return {};
  return {tensor.dimensions, tensor.dimensions + tensor.rank};
}

}  // namespace

std::string toString(const Element& element) {
  const std::string bits = std::to_string(8 * element.size);
  switch (element.kind) {
    case 'b':
      return "bool";
    case 'i':
      return "int" + bits;
    case 'u':
      return "uint" + bits;
    case 'f':
      return "float" + bits;
    default:
      return isBfloat(element) ? "bfloat16" : "4-bit";
  }
}

std::optional<Element> elementOf(Kiv_DataType_t type) {
  return elementOfNumber(numberOf(type));
}

bool fits(const Element& element, Kiv_DataType_t type) {
  return elementOf(type) == element;
}

std::string toString(const Shape& shape) {
  if (shape.empty()) return "scalar";
  std::string text;
  for (const std::uint64_t size : shape)
    text.append(text.empty() ? "" : " x ").append(std::to_string(size));
  return text;
}

std::optional<std::uint64_t> countOf(const Shape& shape) {
  if (std::ranges::find(shape, std::uint64_t{0}) != shape.end()) return 0;
  std::uint64_t count = 1;
  for (const std::uint64_t size : shape) {
    if (count > std::numeric_limits<std::uint64_t>::max() / size)
      return std::nullopt;
    count *= size;
  }
  return count;
}

double valueAt(const ArrayView& array, std::uint64_t index) {
  switch (array.element.kind) {
    case 'f':
      return floatAt(array, index);
    case 'i':
      return static_cast<double>(signedAt(array, index));
    default:
      if (isBfloat(array.element))
        return bfloatValue(elementAt<std::uint16_t>(array, index));
      return static_cast<double>(unsignedAt(array, index));
  }
}

std::string textAt(const ArrayView& array, std::uint64_t index) {
  if (array.element.kind == 'b')
    return unsignedAt(array, index) != 0 ? "true" : "false";
  if (array.element.kind == 'i') return std::to_string(signedAt(array, index));
  if (array.element.kind == 'f' || isBfloat(array.element)) {
    char text[64];
    const double value = valueAt(array, index);
    const int digits = array.element.size == 8 ? 10 : 6;
    const auto end = std::to_chars(text, text + sizeof(text), value,
                                   std::chars_format::general, digits);
    return {text, end.ptr};
  }
  return std::to_string(unsignedAt(array, index));
}

std::optional<ArrayView> viewOf(const Kiv_Tensor_t& tensor, std::string& why) {
  const Kiv_TensorV1_t& record = tensor.v1;
  const auto element = elementOfNumber(numberOf(record.dataType));
  if (!element) {
    why = "its element type is not one of numbers";
    return std::nullopt;
  }
  if (numberOf(record.memType) != KIV_TENSOR_MEM_TYPE_CLIENT_BUFFER) {
    why = "it is not in memory of the client";
    return std::nullopt;
  }
  const auto* const data = static_cast<const std::byte*>(record.clientBuf.data);
  const std::size_t size = data == nullptr ? 0 : record.clientBuf.dataSize;
  ArrayView view{*element, dimensionsOf(record), {}};
  const auto count = countOf(view.shape);
  if (size == 0 && count != std::uint64_t{0}) {
    why = "it has no buffer";
    return std::nullopt;
  }
  const std::size_t elements = size / element->size;
  if (count != std::uint64_t{elements}) view.shape = {elements};
  view.data = {data, elements * element->size};
  return view;
}

}  // namespace kiv::arrays
