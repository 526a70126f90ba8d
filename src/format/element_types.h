#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kiv::format {

// How the elements of a tensor's data are declared in the generated program.
//
//   elementTypeOf(KIV_DATA_TYPE_UFIXED_POINT_16)  // {"uint16_t", 2}
//
// From any thread.
struct ElementType {
  std::string_view cType;
  // bytes
  std::size_t size;
};

// By the value of a Kiv_DataType_t; nothing for a type that tensor data cannot
// have. 16-bit floats are carried in elements of four bytes and 4-bit fixed
// point numbers in bytes: C has neither type.
std::optional<ElementType> elementTypeOf(std::uint32_t dataType);

// The size in bytes of an element declared with that C type; nothing for one
// that no element type has.
std::optional<std::size_t> sizeOfCType(std::string_view cType);

// Whether the elements are half a byte wide. Their declaration follows
// kFourBitComment.
bool isFourBit(std::uint32_t dataType);
inline constexpr std::string_view kFourBitComment =
    "// Reading 4-bit fixed point tensor data into a byte array since there is "
    "not a native 4-bit datatype.";

}  // namespace kiv::format
