#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "format/calls.h"
#include "format/configs.h"
#include "recording/recording.h"
#include "recording/types.h"

// One statement of the recorded program, by the rows of the format. One thread
// at a time.
namespace kiv::recording {

// A value of a statement, in the order of the text.
struct Item {
  format::FieldKind kind = format::FieldKind::kFixed;
  // Of the value in the record, the array or, for a call, of the argument.
  std::uint32_t offset = 0;
  // What stands there, without quotes, casts, "&" and "(void*)"; a null pointer
  // for NULL.
  const char* begin = nullptr;
  const char* end = nullptr;
  // Of the variable behind a reference.
  std::string_view type;
  // Of the name before ".v1.id".
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

// How many quotes the parser may look at when it seeks the end of texts; shared
// by all statements of a recording, so that a hostile one cannot make the
// reader work for ever.
struct TextBudget {
  std::uint64_t quotes = 0;
};

class StatementParser {
 public:
  StatementParser(std::string_view text, const Limits& limits,
                  TextBudget& budget)
      : begin_(text.data()),
        end_(text.data() + text.size()),
        limits_(limits),
        budget_(budget) {}

  // Reads the statement at `at`, where no blank stands. A text ends at the
  // first quote behind which the rest reads on as its row demands, unless
  // `reading` says otherwise. False for what is no statement of the format:
  // then failedAt() and expected() say why, and statement() is the line.
  bool parse(const char* at, const Recording::Reading* reading = nullptr);

  const ParsedStatement& statement() const { return statement_; }
  const char* failedAt() const { return failedAt_; }
  std::string_view expected() const { return expected_; }

  // All whole readings of the statement that end at `end`, as the spans of
  // their texts in order, {0, 0} for NULL, at most `most` of them.
  std::vector<std::vector<Span>> readingsUpTo(const char* at, const char* end,
                                              std::size_t most);

  // Behind blanks and line ends; comments are no blanks.
  static const char* skipBlanks(const char* at, const char* end);

 private:
  struct Search;

  bool parseOnce(const char* at);
  bool parseDeclaration();
  bool parseInitialiser(std::string_view typeName, std::string_view name);
  bool parseComment();
  bool parseCall();
  bool parseStatic();
  bool parseFunction();
  bool parseOpen();
  bool parseMalloc();
  bool parseArray();
  bool parseNumbers(format::FieldKind kind, std::size_t size);
  bool parseElements();
  bool parseTexts();

  // Continuations: each reads the rest of the statement.
  bool fieldsFrom(std::span<const format::Field> fields,
                  std::span<const format::Member> members, std::size_t index,
                  std::uint32_t tag);
  bool configFrom();
  bool memberFrom(const format::Member& member);
  bool argumentsFrom(std::size_t index);
  bool endOfRecord();
  bool endOfCall();
  bool endOfStatement();

  template <typename Rest>
  bool text(std::uint32_t offset, Rest&& rest);
  bool escapedText(std::uint32_t offset);
  bool value(format::FieldKind kind, std::string_view type,
             const format::Record* record, std::uint32_t offset);
  bool inlineFields(const format::Record& record, std::uint32_t offset);
  bool sparse(std::string_view type, std::uint32_t offset);
  bool argument(const format::Argument& row, std::uint32_t index);
  bool reference(format::FieldKind kind, std::string_view type,
                 std::uint32_t offset, bool mayBeNull);
  bool tensorId(std::uint32_t offset);
  bool number(format::FieldKind kind, std::uint32_t offset);
  bool real(std::uint32_t offset);
  bool cast(std::string_view type);
  bool enumValue(std::string_view type, format::FieldKind kind,
                 std::uint32_t offset);

  // Tokens, with the blanks and comments before them.
  void skip();
  bool take(char c);
  bool takeWord(std::string_view word);
  bool takeLead(std::string_view lead);
  bool takeNull();
  bool identifier(std::string_view& name);
  bool unsignedNumber(std::uint64_t& number);
  bool fail(std::string_view expected);

  Item& add(format::FieldKind kind, std::uint32_t offset, const char* begin,
            const char* end);

  const char* begin_;
  const char* end_;
  const Limits& limits_;
  TextBudget& budget_;

  const char* at_ = nullptr;
  ParsedStatement statement_;
  const char* failedAt_ = nullptr;
  std::string_view expected_;
  // Of the last enumeration read.
  std::uint32_t tag_ = 0;

  const Recording::Reading* reading_ = nullptr;
  std::size_t textIndex_ = 0;
  // Whether a line must end behind the statement.
  bool wantsLineEnd_ = true;
  // Texts end before this.
  const char* textLimit_ = nullptr;
  // Set while readings are collected.
  std::vector<std::vector<Span>>* readings_ = nullptr;
  const char* readingsEnd_ = nullptr;
  std::size_t mostReadings_ = 0;
};

}  // namespace kiv::recording
