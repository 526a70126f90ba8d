#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kiv::writers {

// How the elements of a tensor's data are declared in the generated program.
struct ElementType {
  const char* cType;
  std::size_t size;
};

// By the value of a Kiv_DataType_t; nothing for a type that tensor data cannot
// have. 16-bit floats are carried in elements of four bytes and 4-bit fixed
// point numbers in bytes: C has neither type.
std::optional<ElementType> elementTypeOf(std::uint32_t dataType);

// Whether the elements are half a byte wide.
bool isFourBit(std::uint32_t dataType);

}  // namespace kiv::writers
