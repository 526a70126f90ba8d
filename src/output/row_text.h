#pragma once

#include "output/code_stream.h"

// CodeStream::emitStruct for the rows of format/records.h: the compiler makes
// the fixed texts of a row, and one straight run of copies of its fields.
// Writers that emit records include this file. One thread at a time, as with
// the stream.
namespace kiv::output {

// "   type "
template <const format::Record& kRow>
inline constexpr auto kRowBegin =
    concatenated<CodeStream::kIndent.size() + kRow.type.size() + 1>(
        {CodeStream::kIndent, kRow.type, " "});

// The text before a field's value: " = {" or ", ", and a cast.
template <const format::Record& kRow, std::size_t kIndex>
inline constexpr auto kFieldLead = [] {
  constexpr const format::Field& kField = kRow.fields[kIndex];
  constexpr bool kIsEnum = kField.kind == format::FieldKind::kEnum;
  constexpr std::string_view kSeparator = kIndex == 0 ? " = {" : ", ";
  constexpr std::size_t kSize =
      kSeparator.size() + (kIsEnum ? kField.type.size() + 2 : 0);
  if constexpr (kIsEnum) {
    return concatenated<kSize>({kSeparator, "(", kField.type, ")"});
  } else {
    return concatenated<kSize>({kSeparator});
  }
}();

// How many of a row's fields before `end` take a reference.
constexpr std::size_t countReferences(std::span<const format::Field> fields,
                                      std::size_t end) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < end; ++i)
    if (format::isReference(fields[i].kind) ||
        fields[i].kind == format::FieldKind::kUnion)
      ++count;
  return count;
}

constexpr std::size_t countTexts(std::span<const format::Field> fields,
                                 std::size_t end) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < end; ++i)
    if (fields[i].kind == format::FieldKind::kText) ++count;
  return count;
}

// More than a row's own texts and numbers take: references, their leads
// and the clients' texts come on top.
constexpr std::size_t fixedBound(const format::Record& row) {
  constexpr std::size_t kMostOfField = 40;
  std::size_t bound = CodeStream::kIndent.size() + row.type.size() + 16;
  for (const format::Field& field : row.fields)
    bound += field.type.size() + kMostOfField;
  return bound;
}

template <const format::Record& kRow, std::size_t kReferences>
void CodeStream::emitStruct(Name name, const void* record,
                            const Reference (&references)[kReferences]) {
  static_assert(kReferences ==
                countReferences(kRow.fields, kRow.fields.size()));
  appendRow<kRow>(name, static_cast<const std::byte*>(record), references);
}

template <const format::Record& kRow>
void CodeStream::emitStruct(Name name, const void* record) {
  static_assert(countReferences(kRow.fields, kRow.fields.size()) == 0);
  appendRow<kRow>(name, static_cast<const std::byte*>(record), nullptr);
}

template <const format::Record& kRow>
void CodeStream::appendRow(Name name, const std::byte* record,
                           const Reference* references) {
  constexpr std::size_t kFields = kRow.fields.size();
  constexpr std::size_t kReferences = countReferences(kRow.fields, kFields);
  std::array<std::size_t, countTexts(kRow.fields, kFields) + 1> textSizes{};
  std::size_t bound = fixedBound(kRow) + name.text.size();
  for (std::size_t i = 0; i < kReferences; ++i)
    bound += references[i].name.size();
  if constexpr (kRow.fields.back().kind == format::FieldKind::kUnion)
    bound += references[kReferences - 1].member->lead.size();
  std::size_t text = 0;
  for (const format::Field& field : kRow.fields) {
    if (field.kind != format::FieldKind::kText) continue;
    const char* client = valueAt<const char*>(record + field.offset);
    textSizes[text] = client == nullptr ? 0 : std::strlen(client);
    bound += textSizes[text++];
  }
  char* to = put(room(bound), kRowBegin<kRow>);
  to = put(to, name.text);
  [&]<std::size_t... kIndices>(std::index_sequence<kIndices...>) {
    ((to = putField<kRow, kIndices>(to, record, references, textSizes.data(),
                                    bound)),
     ...);
  }
  (std::make_index_sequence<kFields>());
  end_ = put(to, kEnd);
}

template <const format::Record& kRow, std::size_t kIndex>
char* CodeStream::putField(char* to, const std::byte* record,
                           const Reference* references,
                           const std::size_t* textSizes, std::size_t bound) {
  using enum format::FieldKind;
  constexpr const format::Field& kField = kRow.fields[kIndex];
  constexpr std::size_t kReference = countReferences(kRow.fields, kIndex);
  const std::byte* value = record + kField.offset;
  to = put(to, kFieldLead<kRow, kIndex>);
  if constexpr (kField.kind == kU8) {
    return put(to, valueAt<std::uint8_t>(value));
  } else if constexpr (kField.kind == kEnum) {
    // The last value of every enum of the API, and frequent.
    constexpr std::uint32_t kUndefined = 0x7FFFFFFF;
    constexpr std::string_view kText = "2147483647";
    const auto number = valueAt<std::uint32_t>(value);
    if (number != kUndefined) return put(to, number);
    return put(to, concatenated<kText.size()>({kText}));
  } else if constexpr (kField.kind == kU32) {
    return put(to, valueAt<std::uint32_t>(value));
  } else if constexpr (kField.kind == kI32) {
    return put(to, valueAt<std::int32_t>(value));
  } else if constexpr (kField.kind == kFloat) {
    return put(to, valueAt<float>(value));
  } else if constexpr (kField.kind == kText) {
    return putLiteral(to, valueAt<const char*>(value),
                      textSizes[countTexts(kRow.fields, kIndex)]);
  } else if constexpr (kField.kind == kRecord) {
    return put(to, references[kReference].name);
  } else if constexpr (kField.kind == kArray || kField.kind == kData) {
    const std::string_view name = references[kReference].name;
    if (name.empty()) return put(to, format::kNullText);
    if constexpr (kField.kind == kData) to = put(to, "(void*)");
    return put(to, name);
  } else if constexpr (kField.kind == kTensorId) {
    const std::string_view id = references[kReference].name;
    return id.empty() ? put(to, valueAt<std::uint32_t>(value)) : put(to, id);
  } else if constexpr (kField.kind == kNull) {
    return put(to, format::kNullText);
  } else if constexpr (kField.kind == kUnion) {
    const Reference& reference = references[kReference];
    if (reference.member->kind == kRecord || reference.member->kind == kFixed)
      return put(put(to, reference.member->lead), reference.name);
    end_ = to;
    appendMember(record, reference);
    return room(bound);
  } else {
    static_assert(kField.kind == kSparse);
    end_ = to;
    appendSparse(kField.type, value);
    return room(bound);
  }
}

}  // namespace kiv::output
