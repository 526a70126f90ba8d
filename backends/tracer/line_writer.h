#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "handle_table.h"

namespace kiv::tracer {

// Bytes that are shown by their length and a hash. The hash covers the first
// `hashed` of them.
struct Data {
  const void* bytes;
  std::uint64_t hashed;
  std::uint64_t length;
};

// `count` values in a row.
template <typename T>
struct Array {
  const T* items;
  std::uint64_t count;
};
template <typename T>
Array(const T*, std::uint64_t) -> Array<T>;

// Pointers to values, ended by a null pointer.
template <typename T>
struct List {
  const T* const* items;
};
template <typename T>
List(const T* const*) -> List<T>;

// The number in an enum of a client's record, which may be any: reading it as
// the enum would be undefined for numbers that the enum does not have.
template <typename Enum>
requires std::is_enum_v<Enum> std::uint32_t enumValue(const Enum& value) {
  static_assert(sizeof(Enum) == sizeof(std::uint32_t));
  std::uint32_t number = 0;
  std::memcpy(&number, &value, sizeof(number));
  return number;
}

// Memory in a form that only a backend or a client knows: its presence is
// shown.
struct Opaque {
  bool isSet;
};

// Builds the text of one line; README.md holds its grammar.
//
//   line.begin('{').field("axis", 1).field("name", "x").end('}');
//   line.text();  // {axis=1, name="x"}
//
// Commas come by themselves: the character at the end of the text shows whether
// the next item is the first of its list. For one call, on one thread.
class LineWriter {
 public:
  // With `showsGpuRecords`, custom configs are taken for the GPU backend's.
  LineWriter(const HandleTable& handles, bool showsGpuRecords)
      : handles_(handles), showsGpuRecords_(showsGpuRecords) {}

  LineWriter& begin(char bracket);
  LineWriter& end(char bracket);
  // A word that stands for itself, such as null.
  LineWriter& word(std::string_view text);
  LineWriter& handle(Kind kind, const void* handle);
  // The same where the interface does not say the kind.
  LineWriter& handle(const void* handle);
  // "name=", to be followed by its value.
  LineWriter& key(std::string_view name);

  // A key and its value, through the `print` for the value's type.
  template <typename Value>
  LineWriter& field(std::string_view name, const Value& value) {
    key(name);
    print(*this, value);
    return *this;
  }

  bool showsGpuRecords() const { return showsGpuRecords_; }
  const std::string& text() const { return text_; }

 private:
  const HandleTable& handles_;
  bool showsGpuRecords_;
  std::string text_;
};

// Nine significant digits (17 for a double), so that two values never look the
// same; every NaN is "nan", and the locale has no part in it.
void print(LineWriter& line, float value);
void print(LineWriter& line, double value);
// Quoted; null for null. All but printable ASCII is escaped as \xHH.
void print(LineWriter& line, const char* text);
void print(LineWriter& line, const Data& data);
void print(LineWriter& line, Opaque memory);

template <std::integral Number>
void print(LineWriter& line, Number number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  line.word({digits, end});
}

template <typename Enum>
requires std::is_enum_v<Enum>
void print(LineWriter& line, const Enum& value) {
  print(line, enumValue(value));
}

// The target of a pointer, or null.
template <typename T>
void print(LineWriter& line, const T* target) {
  if (target == nullptr) {
    line.word("null");
  } else {
    print(line, *target);
  }
}

// An array of no items is empty even if its pointer is null.
template <typename T>
void print(LineWriter& line, const Array<T>& array) {
  if (array.items == nullptr && array.count != 0) {
    line.word("null");
    return;
  }
  line.begin('[');
  for (std::uint64_t i = 0; i < array.count; ++i) print(line, array.items[i]);
  line.end(']');
}

// A missing list and an empty one look the same.
template <typename T>
void print(LineWriter& line, const List<T>& list) {
  line.begin('[');
  for (auto item = list.items; item != nullptr && *item != nullptr; ++item)
    print(line, **item);
  line.end(']');
}

}  // namespace kiv::tracer
