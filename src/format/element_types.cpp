#include "format/element_types.h"

#include <algorithm>
#include <array>

#include "KivTypes.h"

namespace kiv::format {
namespace {

struct Row {
  std::uint32_t dataType;
  ElementType element;

  std::string_view cType() const { return element.cType; }
};

constexpr std::array<Row, 20> kRows = {{
    {KIV_DATA_TYPE_INT_8, {"int8_t", 1}},
    {KIV_DATA_TYPE_INT_16, {"int16_t", 2}},
    {KIV_DATA_TYPE_INT_32, {"int32_t", 4}},
    {KIV_DATA_TYPE_INT_64, {"int64_t", 8}},
    {KIV_DATA_TYPE_UINT_8, {"uint8_t", 1}},
    {KIV_DATA_TYPE_UINT_16, {"uint16_t", 2}},
    {KIV_DATA_TYPE_UINT_32, {"uint32_t", 4}},
    {KIV_DATA_TYPE_UINT_64, {"uint64_t", 8}},
    {KIV_DATA_TYPE_FLOAT_16, {"float", 4}},
    {KIV_DATA_TYPE_FLOAT_32, {"float", 4}},
    {KIV_DATA_TYPE_FLOAT_64, {"double", 8}},
    {KIV_DATA_TYPE_SFIXED_POINT_4, {"uint8_t", 1}},
    {KIV_DATA_TYPE_SFIXED_POINT_8, {"int8_t", 1}},
    {KIV_DATA_TYPE_SFIXED_POINT_16, {"int16_t", 2}},
    {KIV_DATA_TYPE_SFIXED_POINT_32, {"int32_t", 4}},
    {KIV_DATA_TYPE_UFIXED_POINT_4, {"uint8_t", 1}},
    {KIV_DATA_TYPE_UFIXED_POINT_8, {"uint8_t", 1}},
    {KIV_DATA_TYPE_UFIXED_POINT_16, {"uint16_t", 2}},
    {KIV_DATA_TYPE_UFIXED_POINT_32, {"uint32_t", 4}},
    {KIV_DATA_TYPE_BOOL_8, {"uint8_t", 1}},
}};

}  // namespace

std::optional<ElementType> elementTypeOf(std::uint32_t dataType) {
  const auto found = std::ranges::find(kRows, dataType, &Row::dataType);
  if (found == kRows.end()) return std::nullopt;
  return found->element;
}

std::optional<std::size_t> sizeOfCType(std::string_view cType) {
  const auto found = std::ranges::find(kRows, cType, &Row::cType);
  if (found == kRows.end()) return std::nullopt;
  return found->element.size;
}

bool isFourBit(std::uint32_t dataType) {
  return dataType == KIV_DATA_TYPE_SFIXED_POINT_4 ||
         dataType == KIV_DATA_TYPE_UFIXED_POINT_4;
}

}  // namespace kiv::format
