#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "recording/value_parser.h"

// One statement of the recorded program, by the rows of the format. One thread
// at a time.
namespace kiv::recording {

// How many quotes the parser may look at when it seeks the end of texts; shared
// by all statements of a recording, so that a hostile one cannot make the
// reader work for ever.
struct TextBudget {
  std::uint64_t quotes = 0;
};

class StatementParser : public ValueParser {
 public:
  StatementParser(std::string_view text, const Limits& limits,
                  TextBudget& budget)
      : ValueParser(text), limits_(limits), budget_(budget) {}

  // Reads the statement at `at`, where no blank stands. A text ends at the
  // first quote behind which the rest reads on as its row demands, unless
  // `reading` says otherwise. False for what is no statement of the format:
  // then failedAt() and expected() say why, and statement() is the line.
  bool parse(const char* at, const Recording::Reading* reading = nullptr);

  // All whole readings of the statement that end at `end`, as the spans of
  // their texts in order, {0, 0} for NULL, at most `most` of them.
  std::vector<std::vector<Span>> readingsUpTo(const char* at, const char* end,
                                              std::size_t most);

  // Behind blanks and line ends; comments are no blanks.
  static const char* skipBlanks(const char* at, const char* end);

 private:
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
  bool argument(const format::Argument& row, std::uint32_t index);

  const Limits& limits_;
  TextBudget& budget_;

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
