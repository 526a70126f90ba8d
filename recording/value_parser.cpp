#include "recording/value_parser.h"

#include "format/literals.h"
#include "format/numbers.h"

namespace kiv::recording {

using format::Field;
using format::FieldKind;

Item& ValueParser::add(FieldKind kind, std::uint32_t offset, const char* begin,
                       const char* end) {
  Item& item = statement_.items.emplace_back();
  item.kind = kind;
  item.offset = offset;
  item.begin = begin;
  item.end = end;
  return item;
}

bool ValueParser::number(FieldKind kind, std::uint32_t offset) {
  if (at_ != end_ && isBlank(*at_)) skip();
  const char* const start = at_;
  if (at_ != end_ && *at_ == '-') ++at_;
  const char* const digits = at_;
  while (at_ != end_ && format::isDigit(*at_)) ++at_;
  if (at_ == digits) {
    at_ = start;
    skip();
    if (at_ != start) return number(kind, offset);
    return fail("a number");
  }
  add(kind, offset, start, at_);
  return true;
}

// Values without digits are expressions in parentheses.
bool ValueParser::real(std::uint32_t offset) {
  skip();
  const char* const start = at_;
  if (at_ != end_ && *at_ == '(') {
    while (at_ != end_ && *at_ != ')' && *at_ != '\n') ++at_;
    if (at_ != end_ && *at_ == ')') ++at_;
  } else {
    constexpr std::string_view kCharacters = "0123456789+-.eEfF";
    while (at_ != end_ && kCharacters.find(*at_) != std::string_view::npos)
      ++at_;
  }
  if (at_ == start) return fail("a number");
  add(FieldKind::kFloat, offset, start, at_);
  return true;
}

bool ValueParser::cast(std::string_view type) {
  return take('(') && takeWord(type) && take(')');
}

bool ValueParser::enumValue(std::string_view type, FieldKind kind,
                            std::uint32_t offset) {
  if (!cast(type) || !number(kind, offset)) return false;
  const Item& item = statement_.items.back();
  tag_ = format::parseNumber<std::uint32_t>(item.text()).value_or(~0U);
  return true;
}

bool ValueParser::reference(FieldKind kind, std::string_view type,
                            std::uint32_t offset, bool mayBeNull) {
  skip();
  if (mayBeNull && takeNull()) {
    add(kind, offset, nullptr, nullptr).type = type;
    return true;
  }
  if (kind == FieldKind::kAddress && !take('&')) return fail("'&'");
  if (kind == FieldKind::kData &&
      !(take('(') && takeWord("void") && takeWord("*") && take(')')))
    return false;
  std::string_view name;
  if (!identifier(name)) return false;
  add(kind, offset, name.data(), name.data() + name.size()).type = type;
  return true;
}

bool ValueParser::tensorId(std::uint32_t offset) {
  skip();
  if (at_ != end_ && format::isDigit(*at_))
    return number(FieldKind::kTensorId, offset);
  std::string_view name;
  if (!identifier(name) || !takeWord(".")) return false;
  std::uint8_t version = 1;
  if (!takeWord("v1")) {
    if (!takeWord("v2")) return false;
    version = 2;
  }
  if (!takeWord(".") || !takeWord("id")) return false;
  add(FieldKind::kTensorId, offset, name.data(), name.data() + name.size())
      .version = version;
  return true;
}

bool ValueParser::inlineFields(const format::Record& record,
                               std::uint32_t offset) {
  if (!take('{')) return false;
  bool isFirst = true;
  for (const Field& field : record.fields) {
    if (!isFirst && !take(',')) return false;
    isFirst = false;
    if (!value(field.kind, field.type, field.record,
               offset + static_cast<std::uint32_t>(field.offset)))
      return false;
  }
  return take('}');
}

bool ValueParser::sparse(std::string_view type, std::uint32_t offset) {
  return take('{') && enumValue(type, FieldKind::kEnum, offset) && take(',') &&
         take('{') && number(FieldKind::kU32, offset + 4) && take(',') &&
         number(FieldKind::kU32, offset + 8) && take('}') && take('}');
}

bool ValueParser::value(FieldKind kind, std::string_view type,
                        const format::Record* record, std::uint32_t offset) {
  switch (kind) {
    case FieldKind::kU8:
    case FieldKind::kU16:
    case FieldKind::kU32:
    case FieldKind::kU64:
    case FieldKind::kI8:
    case FieldKind::kI16:
    case FieldKind::kI32:
    case FieldKind::kBool:
      return number(kind, offset);
    case FieldKind::kFloat:
      return real(offset);
    case FieldKind::kEnum:
      return enumValue(type, kind, offset);
    case FieldKind::kInline:
      return inlineFields(*record, offset);
    case FieldKind::kRecord:
      return reference(kind, type, offset, false);
    case FieldKind::kArray:
    case FieldKind::kAddress:
    case FieldKind::kData:
      return reference(kind, type, offset, true);
    case FieldKind::kTensorId:
      return tensorId(offset);
    case FieldKind::kNull:
      return takeWord(format::kNullText);
    case FieldKind::kSparse:
      return sparse(type, offset);
    case FieldKind::kFixed:
      return true;
    case FieldKind::kText:
    case FieldKind::kUnion:
      return false;
  }
  return false;
}

bool ValueParser::escapedText(std::uint32_t offset) {
  skip();
  if (takeNull()) {
    add(FieldKind::kText, offset, nullptr, nullptr);
    return true;
  }
  if (!take('"')) return fail("a text in quotes or NULL");
  const char* const start = at_;
  while (at_ != end_ && *at_ != '"' && *at_ != '\n')
    at_ += *at_ == '\\' && end_ - at_ > 1 ? 2 : 1;
  if (at_ == end_ || *at_ != '"') return fail("the end of a text");
  add(FieldKind::kText, offset, start, at_++);
  return true;
}

}  // namespace kiv::recording
