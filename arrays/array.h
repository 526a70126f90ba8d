#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "KivTypes.h"

// Tensors' data as arrays of numbers, free of the API's records.
//
//   std::string why;
//   auto view = viewOf(tensor, why);       // into the client's buffer
//   if (view) std::cout << toString(view->element) << view->count();
//
// From any thread.
namespace kiv::arrays {

// How a .npy file says what an element is.
struct Element {
  // 'b' truth values, 'i' and 'u' integers, 'f' floating point, 'V' bytes
  // without a type: 'V' of one byte holds a 4-bit number, of two a bfloat16.
  char kind = 'V';
  // bytes
  std::size_t size = 1;

  friend bool operator==(const Element&, const Element&) = default;
};

// "float32", "int8", "bool", "4-bit", "bfloat16".
std::string toString(const Element& element);

// Quantized numbers are the integers that they are held in. Nothing for texts
// and undefined types.
std::optional<Element> elementOf(Kiv_DataType_t type);

// The element is a number of the API's type, quantized or not.
bool fits(const Element& element, Kiv_DataType_t type);

using Shape = std::vector<std::uint64_t>;

// "3 x 4"; "scalar" without dimensions.
std::string toString(const Shape& shape);

// How many elements; nothing beyond 64 bits.
std::optional<std::uint64_t> countOf(const Shape& shape);

// Elements in the memory of somebody else: the last dimension varies fastest,
// little-endian. The data has as many bytes as shape and element say.
struct ArrayView {
  Element element;
  Shape shape;
  std::span<const std::byte> data;

  std::uint64_t count() const { return data.size() / element.size; }
};

// The same with memory of its own.
struct Array {
  Element element;
  Shape shape;
  std::vector<std::byte> data;

  ArrayView view() const { return {element, shape, data}; }
};

// The element's bytes as a value of the type, which has the element's size.
template <typename Type>
Type elementAt(const ArrayView& array, std::uint64_t index) {
  Type value{};
  std::memcpy(&value, array.data.data() + index * sizeof(Type), sizeof(Type));
  return value;
}

// A number as the nearest double.
double valueAt(const ArrayView& array, std::uint64_t index);

// The value as a person reads it: "0.5", "-3", "true", "nan".
std::string textAt(const ArrayView& array, std::uint64_t index);

// The data of a tensor's client buffer. Where it has another size than the
// dimensions say, one dimension holds what is there, up to its last whole
// element. Nothing, with the reason, for tensors without such data.
std::optional<ArrayView> viewOf(const Kiv_Tensor_t& tensor, std::string& why);

}  // namespace kiv::arrays
