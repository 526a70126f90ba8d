#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// The records of the API as initialisers of the generated program, a row a
// field. A writer emits a record through its row, a reader parses the same row:
//
//   Kiv_BwAxisScaleOffset_t q_bwAxisScaleOffset = {4, 3, 2, q_scales,
//   q_offsets};
//
//   type name = {field, field, ...};
//
// The fields stand in the order of the row, which is that of the record in
// memory. Constant; from any thread.
namespace kiv::format {

struct Record;

// How a value is written, and what lies in memory.
enum class FieldKind : std::uint8_t {
  // Numbers, in decimal.
  kU8,
  kU16,
  kU32,
  kU64,
  kI8,
  kI16,
  kI32,
  kFloat,
  // 8 bits, 0 or 1.
  kBool,
  // 32 bits: "(type)number".
  kEnum,
  // A pointer to a client's text: the text between quotes, or NULL.
  kText,
  // A record in braces, by its own row: "{0.5, -8}".
  kInline,
  // Nothing behind the member's own text.
  kFixed,

  // References: the text names another variable.

  // A record by value: a variable of `type`.
  kRecord,
  // A pointer: the array of `type` of that name, or NULL.
  kArray,
  // A pointer: "&" and a variable of `type`, or NULL.
  kAddress,
  // A pointer to bytes read from the data file: "(void*)" and the array, or
  // NULL.
  kData,
  // 32 bits: a tensor's id in decimal, or the id of the variable that created
  // the tensor ("g_tensor_0.v1.id").
  kTensorId,
  // A pointer that is always NULL: what the backend adds is not recorded.
  kNull,
  // One member of a union, by a row of Member.
  kUnion,
  // Three numbers with blanks of their own: "{(type)0,{1,2}}".
  kSparse,
};

constexpr bool isReference(FieldKind kind) {
  return kind >= FieldKind::kRecord && kind <= FieldKind::kTensorId;
}

struct Field {
  // The member's name in the API's headers.
  std::string_view name;
  FieldKind kind;
  // bytes from the record's start
  std::size_t offset;
  // The type of the cast, the variable or the array's elements.
  std::string_view type = {};
  const Record* record = nullptr;
};

struct Record {
  std::string_view type;
  // bytes
  std::size_t size;
  std::span<const Field> fields;
};

// One member of a union as a designated initialiser: lead, value, tail. The
// blanks around "=" differ, and stay so.
struct Member {
  // The value of the record's version, type or option that selects the member.
  std::uint32_t tag;
  // ".int8Value = "
  std::string_view lead;
  FieldKind kind;
  // bytes from the record's start
  std::size_t offset;
  std::string_view type = {};
  const Record* record = nullptr;
  std::string_view tail = {};
};

// Null for a tag that no member has.
constexpr const Member* findMember(std::span<const Member> members,
                                   std::uint32_t tag) {
  for (const Member& member : members)
    if (member.tag == tag) return &member;
  return nullptr;
}

constexpr std::size_t sizeOf(const Field& field) {
  switch (field.kind) {
    case FieldKind::kU8:
    case FieldKind::kI8:
    case FieldKind::kBool:
      return 1;
    case FieldKind::kU16:
    case FieldKind::kI16:
      return 2;
    case FieldKind::kU32:
    case FieldKind::kI32:
    case FieldKind::kFloat:
    case FieldKind::kEnum:
    case FieldKind::kTensorId:
      return 4;
    case FieldKind::kInline:
    case FieldKind::kRecord:
      return field.record->size;
    case FieldKind::kSparse:
      return 12;
    default:
      return sizeof(void*);
  }
}

// The fields follow each other in memory, with no more between them than
// alignment asks for, up to the record's end. A union is the last field, and
// its members fill the rest.
template <std::size_t count>
constexpr bool fits(const Field (&fields)[count], std::size_t recordSize) {
  constexpr std::size_t kMostPadding = sizeof(void*) - 1;
  std::size_t end = 0;
  for (const Field& field : fields) {
    if (field.offset < end || field.offset - end > kMostPadding) return false;
    end = field.offset + sizeOf(field);
    if (field.kind == FieldKind::kUnion) end = recordSize;
  }
  return end <= recordSize && recordSize - end <= kMostPadding;
}

// Each member begins where the union does and lies within the record.
template <std::size_t count>
constexpr bool lieIn(const Member (&members)[count], std::size_t recordSize) {
  for (const Member& member : members) {
    if (member.offset >= recordSize) return false;
    const bool holdsRecord =
        member.kind == FieldKind::kInline || member.kind == FieldKind::kRecord;
    if (holdsRecord && member.offset + member.record->size > recordSize)
      return false;
  }
  return true;
}

}  // namespace kiv::format
