#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "arrays/array.h"

namespace kiv::test {

template <typename Type>
arrays::Array arrayOf(arrays::Element element, arrays::Shape shape,
                      std::vector<Type> values) {
  arrays::Array array{element, std::move(shape), {}};
  array.data.resize(values.size() * sizeof(Type));
  if (!values.empty())
    std::memcpy(array.data.data(), values.data(), array.data.size());
  return array;
}

inline arrays::Array floats(std::vector<float> values) {
  arrays::Shape shape{values.size()};
  return arrayOf({'f', 4}, shape, std::move(values));
}

inline std::vector<std::byte> bytesOf(std::string_view text) {
  std::vector<std::byte> bytes(text.size());
  if (!text.empty()) std::memcpy(bytes.data(), text.data(), text.size());
  return bytes;
}

}  // namespace kiv::test
