#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "format/configs.h"
#include "format/records.h"

// The types of the recorded program's variables. Constant; from any thread.
namespace kiv::recording {

enum class TypeKind : std::uint8_t {
  kRecord,
  kConfig,
  // The GPU backend's custom config of a context, which has options too.
  kGpuContextConfig,
  kNumber,
  kText,  // char
  kFile,  // FILE
  // Only declared, for what a call writes there.
  kOut
};

struct TypeRow {
  std::string_view name;
  TypeKind kind;
  // bytes
  std::size_t size;
  // How an element of that type is written, for numbers.
  format::FieldKind number = format::FieldKind::kFixed;
  const format::rows::RecordOfType* record = nullptr;
  const format::ConfigFamily* family = nullptr;
};

// By the name without const and *; null when no variable has the type.
const TypeRow* findType(std::string_view name);

}  // namespace kiv::recording
