#include "recording/statement_parser.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "format/literals.h"
#include "format/numbers.h"
#include "recording/blanks.h"

namespace kiv::recording {
namespace {

using format::ArgumentKind;
using format::Field;
using format::FieldKind;
using format::Member;

const char* findQuote(const char* from, const char* end) {
  return static_cast<const char*>(
      std::memchr(from, '"', static_cast<std::size_t>(end - from)));
}

const char* lineEnd(const char* from, const char* end) {
  const auto* found = static_cast<const char*>(
      std::memchr(from, '\n', static_cast<std::size_t>(end - from)));
  return found != nullptr ? found : end;
}

// Lines in which a text's end is sought one by one.
constexpr int kMostLines = 32;
// Where the look for a statement without a line's end behind it stops.
constexpr std::size_t kShortSearch = std::size_t{1} << 14;

}  // namespace

const char* StatementParser::skipBlanks(const char* at, const char* end) {
  while (at != end && isBlank(*at)) ++at;
  return at;
}

// ---- texts ----

// A client's text has no escapes: it ends at the first quote behind which
// `rest` reads the statement to its end.
template <typename Rest>
bool StatementParser::text(std::uint32_t offset, Rest&& rest) {
  skip();
  if (takeNull()) {
    add(FieldKind::kText, offset, nullptr, nullptr);
    return rest();
  }
  if (!take('"')) return fail("a text in quotes or NULL");
  statement_.hasText = true;
  const char* const start = at_;
  const std::size_t mark = statement_.items.size();
  const std::size_t index = textIndex_++;
  const auto endsAt = [&](const char* quote) {
    statement_.items.resize(mark);
    add(FieldKind::kText, offset, start, quote);
    at_ = quote + 1;
    textIndex_ = index + 1;
    return rest();
  };
  if (reading_ != nullptr && index < reading_->texts.size()) {
    const char* const quote = begin_ + reading_->texts[index].end;
    return quote < end_ && quote >= start && *quote == '"' && endsAt(quote);
  }
  const char* const limit = textLimit_ - start > 0 ? textLimit_ : start;
  for (const char* quote = findQuote(start, limit); quote != nullptr;
       quote = findQuote(quote + 1, limit)) {
    if (endsAt(quote)) return true;
    if (budget_.quotes == 0) break;
    --budget_.quotes;
  }
  return fail("the end of a text");
}

// ---- records ----

bool StatementParser::endOfRecord() { return take('}') && endOfStatement(); }

bool StatementParser::endOfCall() {
  return take(')') && take(')') && endOfStatement();
}

bool StatementParser::endOfStatement() {
  if (!take(';')) return false;
  if (wantsLineEnd_ && statement_.hasText) {
    const char* at = at_;
    while (at != end_ && (*at == ' ' || *at == '\t' || *at == '\r')) ++at;
    if (at != end_ && *at != '\n' && *at != '/') return fail("a line's end");
  }
  if (reading_ != nullptr && at_ <= begin_ + reading_->leastEnd)
    return fail("a later end of the statement");
  if (readings_ == nullptr) return true;
  if (at_ == readingsEnd_) {
    std::vector<Span>& spans = readings_->emplace_back();
    for (const Item& item : statement_.items)
      if (item.kind == FieldKind::kText)
        spans.push_back(
            item.isNull()
                ? Span{}
                : Span{static_cast<std::uint64_t>(item.begin - begin_),
                       static_cast<std::uint64_t>(item.end - begin_)});
  }
  return readings_->size() >= mostReadings_;
}

bool StatementParser::memberFrom(const Member& member) {
  if (!takeLead(member.lead)) return false;
  const auto offset = static_cast<std::uint32_t>(member.offset);
  const auto tail = [&] {
    return (member.tail.empty() || takeLead(member.tail)) && endOfRecord();
  };
  if (member.kind == FieldKind::kText) return text(offset, tail);
  return value(member.kind, member.type, member.record, offset) && tail();
}

bool StatementParser::fieldsFrom(std::span<const Field> fields,
                                 std::span<const Member> members,
                                 std::size_t index, std::uint32_t tag) {
  for (; index < fields.size(); ++index) {
    if (index != 0 && !take(',')) return false;
    const Field& field = fields[index];
    const auto offset = static_cast<std::uint32_t>(field.offset);
    if (field.kind == FieldKind::kUnion) {
      const Member* member = format::findMember(members, tag);
      return member != nullptr ? memberFrom(*member)
                               : fail("a value that selects a union's member");
    }
    if (field.kind == FieldKind::kText) {
      return text(offset,
                  [&] { return fieldsFrom(fields, members, index + 1, tag); });
    }
    if (!value(field.kind, field.type, field.record, offset)) return false;
    if (field.kind == FieldKind::kEnum) tag = tag_;
  }
  return endOfRecord();
}

// A custom config is the address of a record or NULL.
bool StatementParser::configFrom() {
  const TypeRow& type = *statement_.typeRow;
  const auto options =
      type.kind == TypeKind::kGpuContextConfig
          ? std::span<const format::ConfigOption>(format::kGpuContextOptions)
          : type.family->options;
  std::string_view constant;
  if (!identifier(constant)) return false;
  const auto option =
      std::ranges::find(options, constant, &format::ConfigOption::constant);
  if (option == options.end()) {
    at_ = constant.data();
    return fail("an option of the config");
  }
  statement_.option = &*option;
  if (!take(',')) return false;
  const bool isCustom =
      type.family != nullptr && option->member.tag == format::kCustomOption;
  if (!isCustom) return memberFrom(option->member);
  return takeWord(".customConfig") && takeWord("=") &&
         reference(FieldKind::kAddress, {},
                   static_cast<std::uint32_t>(option->member.offset), true) &&
         endOfRecord();
}

// ---- arrays ----

bool StatementParser::parseNumbers(FieldKind kind, std::size_t size) {
  std::uint32_t offset = 0;
  const auto step = static_cast<std::uint32_t>(size);
  do {
    const bool isRead =
        kind == FieldKind::kFloat ? real(offset) : number(kind, offset);
    if (!isRead) return false;
    offset += step;
  } while (at_ != end_ && take(','));
  return true;
}

bool StatementParser::parseElements() {
  const TypeRow& type = *statement_.typeRow;
  const bool isPointer = statement_.stars != 0;
  std::uint32_t offset = 0;
  const auto step =
      static_cast<std::uint32_t>(isPointer ? sizeof(void*) : type.size);
  do {
    skip();
    bool isRead = false;
    if (isPointer)
      isRead = reference(FieldKind::kAddress, type.name, offset, true);
    else if (type.record != nullptr && at_ != end_ && *at_ == '{')
      isRead = inlineFields(*type.record->record, offset);
    else
      isRead = reference(FieldKind::kRecord, type.name, offset, false);
    if (!isRead) return false;
    ++statement_.count;
    offset += step;
  } while (take(','));
  return true;
}

// The last element is NULL and no other one is, which tells texts from what
// stands between them.
bool StatementParser::parseTexts() {
  for (std::uint32_t offset = 0;; offset += sizeof(void*)) {
    ++statement_.count;
    skip();
    if (takeNull()) {
      add(FieldKind::kText, offset, nullptr, nullptr);
      return endOfRecord();
    }
    const auto reads = [this] {
      if (!take(',')) return false;
      skip();
      if (at_ != end_ && *at_ == '"') return true;
      const char* const start = at_;
      const std::size_t mark = statement_.items.size();
      const bool isLast = takeNull() && endOfRecord();
      statement_.items.resize(mark);
      at_ = start;
      return isLast;
    };
    auto* const collected = std::exchange(readings_, nullptr);
    const bool isRead = text(offset, reads);
    readings_ = collected;
    if (!isRead) return false;
  }
}

bool StatementParser::parseArray() {
  const TypeRow& type = *statement_.typeRow;
  statement_.kind = StatementKind::kArray;
  if (!take('{')) return false;
  skip();
  if (type.kind == TypeKind::kText && statement_.stars == 1)
    return parseTexts();
  if (at_ != end_ && *at_ == '}') return endOfRecord();
  if (type.kind == TypeKind::kNumber && statement_.stars == 0 &&
      type.number != FieldKind::kFixed) {
    if (!parseNumbers(type.number, type.size)) return false;
    statement_.count = statement_.items.size();
    return endOfRecord();
  }
  const bool isConfigs = type.kind == TypeKind::kConfig && statement_.stars > 0;
  const bool isRecords =
      type.kind == TypeKind::kRecord && statement_.stars == 0;
  if (!isConfigs && !isRecords) return fail("an array of a recording");
  return parseElements() && endOfRecord();
}

// ---- statements ----

bool StatementParser::parseMalloc() {
  std::string_view type;
  statement_.kind = StatementKind::kMalloc;
  return take('(') && identifier(type) && takeWord("*") && take(')') &&
         takeWord("malloc") && take('(') && unsignedNumber(statement_.count) &&
         take(')') && endOfStatement();
}

// With the block behind it that ends the program without the file.
bool StatementParser::parseOpen() {
  statement_.kind = StatementKind::kOpen;
  std::string_view name;
  return takeWord("fopen") && take('(') && escapedText(0) && take(',') &&
         takeWord("\"wb\"") && take(')') && take(';') && takeWord("if") &&
         take('(') && takeWord("!") && identifier(name) && take(')') &&
         take('{') && takeWord("printf") && take('(') && escapedText(1) &&
         take(',') && takeWord("__LINE__") && take(')') && take(';') &&
         takeWord("return") && takeWord("-1") && take(';') && take('}');
}

bool StatementParser::parseInitialiser(std::string_view typeName,
                                       std::string_view name) {
  statement_.name = name;
  statement_.typeRow = findType(typeName);
  const TypeRow* const type = statement_.typeRow;
  skip();
  if (at_ != end_ && *at_ == ';') {
    statement_.kind = StatementKind::kDeclaration;
    return endOfStatement();
  }
  if (at_ != end_ && *at_ == '[')
    return takeWord("[") && takeWord("]") && takeWord("=") && parseArray();
  if (!takeWord("=")) return false;
  skip();
  if (statement_.stars != 0) {
    if (type->kind == TypeKind::kFile) return parseOpen();
    if (type->kind == TypeKind::kNumber && !between(at_, end_).starts_with("N"))
      return parseMalloc();
    statement_.kind = StatementKind::kNullArray;
    return takeWord(format::kNullText) && endOfStatement();
  }
  if (!take('{')) return false;
  if (type->record != nullptr) {
    statement_.kind = StatementKind::kRecord;
    return fieldsFrom(type->record->record->fields, type->record->members, 0,
                      0);
  }
  statement_.kind = StatementKind::kConfig;
  if (type->family == nullptr && type->kind != TypeKind::kGpuContextConfig)
    return fail("a record of the API");
  return configFrom();
}

bool StatementParser::parseDeclaration() {
  const char* const start = at_;
  std::string_view word;
  if (!identifier(word)) return false;
  if (word == "const" && !identifier(word)) return false;
  if (findType(word) == nullptr) {
    at_ = start;
    return fail(kStatement);
  }
  const char* typeEnd = at_;
  skip();
  for (; at_ != end_ && *at_ == '*'; skip()) {
    ++statement_.stars;
    typeEnd = ++at_;
  }
  std::string_view name;
  if (!identifier(name)) return false;
  if (name == "const") {
    typeEnd = at_;
    if (!identifier(name)) return false;
  }
  statement_.type = between(start, typeEnd);
  return parseInitialiser(word, name);
}

bool StatementParser::parseStatic() {
  statement_.kind = StatementKind::kStaticArray;
  std::string_view type;
  if (!takeWord("static") || !identifier(type) ||
      !identifier(statement_.name) || !takeWord("[") ||
      !unsignedNumber(statement_.count) || !takeWord("]"))
    return false;
  statement_.type = type;
  statement_.typeRow = findType(type);
  if (statement_.typeRow == nullptr) return fail("a type of numbers");
  return endOfStatement();
}

// fread, fwrite, fclose and free.
bool StatementParser::parseFunction() {
  std::string_view word;
  std::string_view file;
  if (!identifier(word) || !take('(') || !identifier(statement_.name))
    return false;
  if (word == "fread") {
    statement_.kind = StatementKind::kRead;
    return take(',') && unsignedNumber(statement_.elementSize) && take(',') &&
           unsignedNumber(statement_.count) && take(',') &&
           takeWord(format::kDataFileVariable) && take(')') && endOfStatement();
  }
  if (word == "fwrite") {
    statement_.kind = StatementKind::kWrite;
    return take(',') && unsignedNumber(statement_.elementSize) && take(',') &&
           reference(FieldKind::kArray, {}, 0, false) && take(',') &&
           identifier(file) && take(')') && endOfStatement();
  }
  statement_.kind =
      word == "fclose" ? StatementKind::kClose : StatementKind::kRelease;
  return take(')') && endOfStatement();
}

bool StatementParser::parseComment() {
  statement_.kind = StatementKind::kComment;
  const std::string_view rest = between(at_, end_);
  if (rest.starts_with("//")) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    at_ += end;
    while (at_[-1] == '\r' || at_[-1] == ' ' || at_[-1] == '\t') --at_;
    return true;
  }
  const std::size_t end = rest.find("*/", 2);
  if (!rest.starts_with("/*") || end == std::string_view::npos)
    return fail("the end of a comment");
  at_ += end + 2;
  return true;
}

// ---- calls ----

bool StatementParser::argument(const format::Argument& row,
                               std::uint32_t index) {
  switch (row.kind) {
    case ArgumentKind::kLogHandle:
      return takeWord(format::kLogHandleVariable);
    case ArgumentKind::kSignal:
      return takeWord(format::kNullText);
    case ArgumentKind::kBackend:
    case ArgumentKind::kDevice:
    case ArgumentKind::kContext:
    case ArgumentKind::kGraph:
    case ArgumentKind::kProfile:
    case ArgumentKind::kBackendConfigs:
    case ArgumentKind::kContextConfigs:
    case ArgumentKind::kDeviceConfigs:
    case ArgumentKind::kGraphConfigs:
    case ArgumentKind::kProfileConfigs:
    case ArgumentKind::kTensors:
      return reference(FieldKind::kArray, row.type, index, true);
    case ArgumentKind::kBinary:
    case ArgumentKind::kBuffer:
      return reference(FieldKind::kArray, row.type, index, false);
    case ArgumentKind::kEscapedText:
      return escapedText(index);
    case ArgumentKind::kU32:
      return number(FieldKind::kU32, index);
    case ArgumentKind::kU64:
      return number(FieldKind::kU64, index);
    case ArgumentKind::kEnum:
      return enumValue(row.type, FieldKind::kU32, index);
    case ArgumentKind::kEventId:
      return enumValue(row.type, FieldKind::kU64, index);
    case ArgumentKind::kOpConfig:
      return reference(FieldKind::kRecord, row.type, index, false);
    case ArgumentKind::kTensor:
      return reference(FieldKind::kAddress, row.type, index, false);
    case ArgumentKind::kOutHandle:
    case ArgumentKind::kOut:
      return reference(FieldKind::kAddress, row.type, index, true);
    case ArgumentKind::kText:
      return false;
  }
  return false;
}

bool StatementParser::argumentsFrom(std::size_t index) {
  const auto arguments = statement_.function->arguments;
  for (; index < arguments.size(); ++index) {
    if (index != 0 && !take(',')) return false;
    const auto position = static_cast<std::uint32_t>(index);
    if (arguments[index].kind == ArgumentKind::kText)
      return text(position, [&] { return argumentsFrom(index + 1); });
    if (!argument(arguments[index], position)) return false;
  }
  return endOfCall();
}

bool StatementParser::parseCall() {
  statement_.kind = StatementKind::kCall;
  std::string_view function;
  if (!takeWord(format::kMacro) || !take('(') ||
      !takeWord(format::kErrorVariable) || !take(',') ||
      !takeWord(format::kInterfaceVariable) || !takeWord(".") ||
      !identifier(function))
    return false;
  statement_.function = format::findFunction(function);
  if (statement_.function == nullptr) {
    at_ = function.data();
    return fail("a function that recordings call");
  }
  return take('(') && argumentsFrom(0);
}

bool StatementParser::parseOnce(const char* at) {
  at_ = at;
  textIndex_ = 0;
  statement_.items.clear();
  statement_.kind = StatementKind::kUnknown;
  statement_.begin = at;
  statement_.name = {};
  statement_.type = {};
  statement_.typeRow = nullptr;
  statement_.stars = 0;
  statement_.count = 0;
  statement_.elementSize = 0;
  statement_.option = nullptr;
  statement_.function = nullptr;
  statement_.hasText = false;
  if (at == end_) return fail(kStatement);
  const std::string_view rest = between(at, end_);
  const auto starts = [rest](std::string_view word) {
    return rest.starts_with(word) && rest.size() > word.size() &&
           !isIdentifier(rest[word.size()]);
  };
  switch (*at) {
    case 'V':
      return parseCall();
    case '/':
      return parseComment();
    case 's':
      return parseStatic();
    case 'f':
      if (starts("fread") || starts("fwrite") || starts("fclose") ||
          starts("free"))
        return parseFunction();
      return parseDeclaration();
    default:
      return parseDeclaration();
  }
}

// A statement ends on the line of its last text. The lines are tried one after
// the other, so that the reading with the first end is found, then a longer
// stretch, and then one without a line's end behind the statement.
bool StatementParser::parse(const char* at, const Recording::Reading* reading) {
  forgetFailure();
  reading_ = reading;
  const auto left = static_cast<std::size_t>(end_ - at);
  const auto attempt = [&](std::size_t search, bool wantsLineEnd) {
    textLimit_ = at + search;
    wantsLineEnd_ = wantsLineEnd;
    return parseOnce(at);
  };
  const char* line = at;
  if (reading != nullptr)
    line =
        std::max(line, begin_ + std::min<std::uint64_t>(
                                    reading->leastEnd,
                                    static_cast<std::uint64_t>(end_ - begin_)));
  bool isWhole = false;
  for (int lines = 0; lines < kMostLines; ++lines) {
    line = lineEnd(line, end_);
    isWhole = attempt(static_cast<std::size_t>(line - at), true);
    if (isWhole || !statement_.hasText || line == end_) break;
    ++line;
  }
  if (!isWhole && statement_.hasText && line != end_) {
    const auto tried = static_cast<std::size_t>(line - at);
    const std::size_t most =
        static_cast<std::size_t>(std::min<std::uint64_t>(limits_.text, left));
    isWhole = most > tried && attempt(most, true);
  }
  if (!isWhole && statement_.hasText)
    isWhole = attempt(std::min(kShortSearch, left), false);
  statement_.end = at_;
  if (isWhole) return true;
  const char* end = lineEnd(at, end_);
  while (end > at + 1 && isBlank(end[-1])) --end;
  statement_.kind = StatementKind::kUnknown;
  statement_.items.clear();
  statement_.end = end;
  return false;
}

std::vector<std::vector<Span>> StatementParser::readingsUpTo(const char* at,
                                                             const char* end,
                                                             std::size_t most) {
  std::vector<std::vector<Span>> readings;
  reading_ = nullptr;
  readings_ = &readings;
  readingsEnd_ = end;
  mostReadings_ = most;
  textLimit_ = end;
  wantsLineEnd_ = false;
  (void)parseOnce(at);
  readings_ = nullptr;
  return readings;
}

}  // namespace kiv::recording
