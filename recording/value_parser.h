#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "format/calls.h"
#include "format/configs.h"
#include "recording/recording.h"
#include "recording/tokens.h"
#include "recording/types.h"

// The values of a statement: numbers, enumerations, references, and records
// that stand in others. One thread at a time.
namespace kiv::recording {

// A value of a statement, in the order of the text.
struct Item {
  format::FieldKind kind = format::FieldKind::kFixed;
  // The value's place in the record or the array, or the argument's number.
  std::uint32_t offset = 0;
  // The value's text without quotes, casts, "&" and "(void*)"; a null pointer
  // for NULL.
  const char* begin = nullptr;
  const char* end = nullptr;
  // The type of the variable behind a reference.
  std::string_view type;
  // The record's version, which stands before ".id".
  std::uint8_t version = 0;

  bool isNull() const { return begin == nullptr; }
  std::string_view text() const {
    return {begin, static_cast<std::size_t>(end - begin)};
  }
};

// A statement with all that a pass needs to know of it. Views lie in the text.
struct ParsedStatement {
  StatementKind kind = StatementKind::kUnknown;
  const char* begin = nullptr;
  const char* end = nullptr;
  std::string_view name;
  std::string_view type;
  const TypeRow* typeRow = nullptr;
  // Pointers of the type, "const char* const" has one.
  int stars = 0;
  std::uint64_t count = 0;
  std::uint64_t elementSize = 0;
  const format::ConfigOption* option = nullptr;
  const format::Function* function = nullptr;
  std::vector<Item> items;
  bool hasText = false;
};

class ValueParser : public Tokens {
 public:
  const ParsedStatement& statement() const { return statement_; }

 protected:
  using Tokens::Tokens;

  // Each adds the value's item to the statement, or notes the failure and
  // returns false. An offset is the value's in its record, array or call.
  bool value(format::FieldKind kind, std::string_view type,
             const format::Record* record, std::uint32_t offset);
  bool inlineFields(const format::Record& record, std::uint32_t offset);
  bool enumValue(std::string_view type, format::FieldKind kind,
                 std::uint32_t offset);
  bool reference(format::FieldKind kind, std::string_view type,
                 std::uint32_t offset, bool mayBeNull);
  bool number(format::FieldKind kind, std::uint32_t offset);
  bool real(std::uint32_t offset);
  // A text with escapes, as the recorder writes its own, or NULL.
  bool escapedText(std::uint32_t offset);

  Item& add(format::FieldKind kind, std::uint32_t offset, const char* begin,
            const char* end);

  ParsedStatement statement_;
  // The last enumeration's value.
  std::uint32_t tag_ = 0;

 private:
  bool sparse(std::string_view type, std::uint32_t offset);
  bool tensorId(std::uint32_t offset);
  bool cast(std::string_view type);
};

}  // namespace kiv::recording
