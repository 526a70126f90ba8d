#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "format/calls.h"
#include "format/fields.h"
#include "format/literals.h"
#include "format/numbers.h"
#include "format/parts.h"
#include "output/name_memory.h"
#include "output/put_text.h"

namespace kiv::output {

// A part of a record's row that is no value in the record: the variable of
// a reference, empty for NULL, or the member of a union with its reference.
struct Reference {
  Reference(Name variable) : name(variable.text) {}
  Reference(const format::Member& chosen, Name variable = {})
      : name(variable.text), member(&chosen) {}

  std::string_view name;
  const format::Member* member = nullptr;
};

// An argument of a call.
class Argument {
 public:
  // A variable or a fixed text; an empty one is NULL.
  Argument(Name variable) : text_(variable.text) {}
  static Argument fixed(std::string_view text) { return {Kind::kText, text}; }
  // "&" and a variable; an empty one is NULL.
  static Argument address(Name variable) {
    return {Kind::kAddress, variable.text};
  }
  static Argument number(std::uint64_t number) {
    return {Kind::kNumber, {}, number};
  }
  // "(type)number"
  static Argument cast(std::string_view type, std::uint64_t number) {
    return {Kind::kCast, type, number};
  }
  // A client's text between quotes as it is; null for NULL.
  static Argument literal(const char* text) {
    return {Kind::kLiteral,
            text == nullptr ? std::string_view() : std::string_view(text),
            text == nullptr ? 0U : 1U};
  }

 private:
  friend class CodeStream;
  enum class Kind : std::uint8_t { kText, kAddress, kNumber, kCast, kLiteral };
  Argument(Kind kind, std::string_view text, std::uint64_t number = 0)
      : kind_(kind), text_(text), number_(number) {}

  Kind kind_ = Kind::kText;
  std::string_view text_;
  std::uint64_t number_ = 0;
};

// Bytes that a read statement of the generated program reads back: memory of
// the client, valid until its call returns.
struct DataRun {
  const void* bytes;
  std::size_t elementSize;
  std::size_t count;
};

// The statements of one recorded call, and the runs of bytes that they read.
//
//   const Name array = code.name(tensor, format::Part::kDims);
//   code.emitNumberArray("uint32_t", array, v1.dimensions, v1.rank);
//   code.emitCall("VALIDATE", "error", "interface", "backendFree", {backend});
//
// Each emit function writes whole lines of the form shown beside it, indented
// by three blanks ("I"). Client texts are inserted as they are. The text, the
// names and the runs lie in memory that clear() keeps for the next call, so
// that a call needs none of its own. One thread at a time.
class CodeStream {
 public:
  static constexpr std::string_view kIndent = "   ";
  static constexpr std::string_view kArrayBegin = "[] = {";
  static constexpr std::string_view kSeparator = ", ";
  static constexpr std::string_view kEnd = "};\n";

  CodeStream();
  CodeStream(const CodeStream&) = delete;
  CodeStream& operator=(const CodeStream&) = delete;

  // Forgets the call. Memory that only a large call needs is given back.
  void clear();

  // The name of a variable's part: owner + "_word" + "_number"...
  template <format::Part kPart, format::Family kOwner, typename... Numbers>
  auto name(NameOf<kOwner> owner, Numbers... numbers);
  // A text as a name.
  Name copied(std::string_view text) {
    return {names_.takeTo(put(names_.room(text.size()), text))};
  }
  // Several texts as one name.
  Name joined(std::initializer_list<std::string_view> texts);
  // The id of a context's or graph's tensor: owner + "_tensor_number.v1.id".
  Name tensorId(std::string_view owner, std::uint32_t number,
                std::string_view member);
  // A client's name as an identifier.
  std::string_view sanitized(std::string_view clientName);

  // I macro(errorVar, object.function(arguments));
  void emitCall(std::string_view macro, std::string_view errorVar,
                std::string_view object, std::string_view function,
                std::initializer_list<Argument> arguments);

  // I type name;
  void emitDeclaration(std::string_view type, Name name);

  // I type* name = NULL;
  void emitNullDeclaration(std::string_view type, Name name);

  // I type name[] = {elements};
  // `element` appends the element of its index.
  template <typename AppendElement>
  void emitArray(std::string_view type, Name name, std::size_t count,
                 AppendElement&& element);

  // The same with a variable, or its address, for each element.
  void emitNameArray(std::string_view type, Name name,
                     std::span<const Name> elements);
  void emitAddressArray(std::string_view type, Name name,
                        std::span<const Name> elements);

  // The same with the owner's parts 0 to count - 1, in the form of
  // name<kPart>(owner, i) or name<kPart>(owner, number, i).
  template <format::Part kPart, format::Family kOwner, typename... Numbers>
  void emitPartArray(std::string_view type, Name name, NameOf<kOwner> owner,
                     std::size_t count, Numbers... numbers);

  // The same with each of `count` numbers.
  template <typename Number>
  void emitNumberArray(std::string_view type, Name name, const Number* numbers,
                       std::size_t count);

  // The same with a record in braces for each element.
  void emitRecordArray(const format::Record& row, Name name,
                       const void* records, std::size_t count);

  // I type name = {fields};
  // The values come from the record in memory, what the row refers to from
  // `references`, in the order of the row.
  template <const format::Record& kRow, std::size_t kReferences>
  void emitStruct(Name name, const void* record,
                  const Reference (&references)[kReferences]);
  // The same with a row that refers to nothing.
  template <const format::Record& kRow>
  void emitStruct(Name name, const void* record);

  // I type name = {constant, member};
  void emitStruct(std::string_view type, Name name, std::string_view constant,
                  const void* record, const Reference& reference);

  // I static type name[count];
  // I fread(name, elementSize, count, fileVar);
  // The run that the statement reads goes to the data file with this call's
  // text: neither can be written without the other.
  void emitStaticRead(std::string_view type, Name name, const DataRun& run,
                      std::string_view fileVar);

  // I type name = (type)malloc(size);
  void emitMalloc(std::string_view type, Name name, std::uint64_t size);

  // I free(name);
  void emitFree(Name name);

  // Opens a file and leaves main with a message if that fails; five lines.
  void emitFopen(Name fileVar, std::string_view path, std::string_view mode);

  // I fwrite(buffer, elementSize, count, fileVar);
  void emitFwrite(Name buffer, std::size_t elementSize, Name count,
                  Name fileVar);

  // I fclose(fileVar);
  void emitFclose(Name fileVar);

  void emitBlankLine() { append('\n'); }

  // I text
  void emitLine(std::string_view text);

  // All statements so far; with `endLine` the current line is ended first,
  // which after a whole statement leaves a blank line. Valid until the next
  // statement.
  std::string_view takeText(bool endLine);

  // Parts of a line, for elements of arrays.
  void append(std::string_view text);
  void append(char c);
  template <typename Number>
  void appendNumber(Number number);
  // The text between quotes, or NULL.
  void appendLiteral(const char* text);

  // The runs in the order of their read statements.
  std::span<const DataRun> runs() const { return runs_; }
  // Client texts that a compiler does not read back as they are.
  std::span<const char* const> unsafeTexts() const { return unsafeTexts_; }

 private:
  // Room for `size` more characters at the text's end.
  char* room(std::size_t size) {
    if (static_cast<std::size_t>(limit_ - end_) < size) grow(size);
    return end_;
  }
  // The same behind `to`, which is the text's end by then.
  char* room(char* to, std::size_t size) {
    if (static_cast<std::size_t>(limit_ - to) >= size) return to;
    end_ = to;
    grow(size);
    return end_;
  }
  void grow(std::size_t size);

  void begin(std::string_view type, Name name) {
    char* to = room(kIndent.size() + type.size() + 1 + name.text.size());
    to = put(put(to, kIndent), type);
    *to++ = ' ';
    end_ = put(to, name.text);
  }
  template <format::Part kPart, typename... Numbers>
  static char* putPart(char* to, std::string_view owner, Numbers... numbers);
  template <typename... Numbers>
  static constexpr std::size_t boundOfPart(const format::PartRow& row,
                                           std::string_view owner, Numbers...) {
    return owner.size() + row.word.size() +
           sizeof...(Numbers) * (1 + format::kMostNumberCharacters);
  }
  void appendArguments(std::initializer_list<Argument> arguments);
  char* putArgument(char* to, const Argument& argument);
  void appendNameOrNull(std::string_view lead, std::string_view name);
  template <const format::Record& kRow>
  void appendRow(Name name, const std::byte* record,
                 const Reference* references);
  template <const format::Record& kRow, std::size_t kIndex>
  char* putField(char* to, const std::byte* record, const Reference* references,
                 const std::size_t* textSizes, std::size_t bound);
  char* putLiteral(char* to, const char* text, std::size_t size);
  void noteIfUnsafe(std::string_view text);
  void appendInline(const format::Record& row, const std::byte* record);
  void appendValue(format::FieldKind kind, std::string_view type,
                   const format::Record* row, const std::byte* value,
                   std::string_view reference);
  void appendMember(const std::byte* record, const Reference& reference);
  void appendSparse(std::string_view type, const std::byte* value);

  std::unique_ptr<char[]> text_;
  char* end_ = nullptr;
  char* limit_ = nullptr;
  NameMemory names_;
  std::vector<DataRun> runs_;
  std::vector<const char*> unsafeTexts_;
};

inline void CodeStream::append(std::string_view text) {
  end_ = put(room(text.size()), text);
}

inline void CodeStream::append(char c) {
  *room(1) = c;
  ++end_;
}

template <typename Number>
void CodeStream::appendNumber(Number number) {
  end_ = put(room(format::kMostNumberCharacters), number);
}

inline void CodeStream::emitCall(std::string_view macro,
                                 std::string_view errorVar,
                                 std::string_view object,
                                 std::string_view function,
                                 std::initializer_list<Argument> arguments) {
  const std::size_t bound =
      macro.size() + errorVar.size() + object.size() + function.size();
  char* to = room(kIndent.size() + bound + 5);
  to = put(put(to, kIndent), macro);
  *to++ = '(';
  to = put(put(put(to, errorVar), ", "), object);
  *to++ = '.';
  to = put(to, function);
  *to++ = '(';
  end_ = to;
  appendArguments(arguments);
  append("));\n");
}

template <typename AppendElement>
void CodeStream::emitArray(std::string_view type, Name name, std::size_t count,
                           AppendElement&& element) {
  begin(type, name);
  append(kArrayBegin);
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) append(kSeparator);
    element(i);
  }
  append(kEnd);
}

template <typename Number>
void CodeStream::emitNumberArray(std::string_view type, Name name,
                                 const Number* numbers, std::size_t count) {
  constexpr std::size_t kMostOfElement =
      kSeparator.size() + format::kMostNumberCharacters;
  begin(type, name);
  char* to = put(room(kArrayBegin.size()), kArrayBegin);
  for (std::size_t i = 0; i < count; ++i) {
    to = room(to, kMostOfElement);
    if (i != 0) to = put(to, kSeparator);
    to = put(to, numbers[i]);
  }
  end_ = put(room(to, kEnd.size()), kEnd);
}

// ---- names ----

template <format::Part kPart, typename... Numbers>
char* CodeStream::putPart(char* to, std::string_view owner,
                          Numbers... numbers) {
  constexpr std::string_view kWord = format::rowOf(kPart).word;
  to = put(put(to, owner), concatenated<kWord.size()>({kWord}));
  ((*to++ = '_', to = put(to, numbers)), ...);
  return to;
}

template <format::Part kPart, format::Family kOwner, typename... Numbers>
auto CodeStream::name(NameOf<kOwner> owner, Numbers... numbers) {
  constexpr const format::PartRow& kRow = format::rowOf(kPart);
  static_assert(kRow.owner == kOwner && kRow.numbers == sizeof...(Numbers));
  char* const to = names_.room(boundOfPart(kRow, owner.text, numbers...));
  char* const end = putPart<kPart>(to, owner.text, numbers...);
  return NameOf<kRow.derived>{{names_.takeTo(end)}};
}

template <format::Part kPart, format::Family kOwner, typename... Numbers>
void CodeStream::emitPartArray(std::string_view type, Name name,
                               NameOf<kOwner> owner, std::size_t count,
                               Numbers... numbers) {
  constexpr const format::PartRow& kRow = format::rowOf(kPart);
  static_assert(kRow.owner == kOwner && kRow.numbers == sizeof...(Numbers) + 1);
  const std::size_t most =
      kSeparator.size() + boundOfPart(kRow, owner.text, numbers..., count);
  begin(type, name);
  char* to = put(room(kArrayBegin.size()), kArrayBegin);
  for (std::size_t i = 0; i < count; ++i) {
    to = room(to, most);
    if (i != 0) to = put(to, kSeparator);
    to = putPart<kPart>(to, owner.text, numbers..., i);
  }
  end_ = put(room(to, kEnd.size()), kEnd);
}

}  // namespace kiv::output
