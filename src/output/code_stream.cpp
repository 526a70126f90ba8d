#include "output/code_stream.h"

#include <algorithm>
#include <cstring>

#include "KivTypes.h"
#include "format/identifiers.h"

namespace kiv::output {
namespace {

using format::FieldKind;
using format::Part;

constexpr std::size_t kFirstSize = std::size_t{1} << 13;
// The memory that a stream keeps between calls.
constexpr std::size_t kMostKept = std::size_t{1} << 20;

constexpr std::uint64_t kOnes = 0x0101010101010101;

// Has the highest bit of a byte set where one of the word's bytes is a
// backslash, or below '#', as quotes and line ends are, and blanks.
constexpr std::uint64_t suspects(std::uint64_t word) {
  const std::uint64_t backslashes = word ^ (kOnes * '\\');
  return ((word - kOnes * '#') & ~word) |
         ((backslashes - kOnes) & ~backslashes);
}

// Copies a text by words, the last of which overlaps the one before, and
// returns whether it may be unsafe in a literal, which most texts are not.
template <typename Word>
bool copyWords(char* to, std::string_view text) {
  std::uint64_t found = 0;
  const auto copy = [&](std::size_t at) {
    Word word = 0;
    std::memcpy(&word, text.data() + at, sizeof(word));
    std::memcpy(to + at, &word, sizeof(word));
    found |= suspects(word);
  };
  const std::size_t last = text.size() - sizeof(Word);
  for (std::size_t at = 0; at < last; at += sizeof(Word)) copy(at);
  copy(last);
  constexpr auto kSuspect = static_cast<Word>(kOnes << 7);
  return (found & kSuspect) != 0;
}

bool copySuspect(char* to, std::string_view text) {
  if (text.size() >= sizeof(std::uint64_t))
    return copyWords<std::uint64_t>(to, text);
  if (text.size() >= sizeof(std::uint32_t))
    return copyWords<std::uint32_t>(to, text);
  for (const char c : text) *to++ = c;
  return true;
}

}  // namespace

// ---- memory ----

CodeStream::CodeStream()
    : text_(std::make_unique<char[]>(kFirstSize)),
      end_(text_.get()),
      limit_(text_.get() + kFirstSize) {}

void CodeStream::clear() {
  if (static_cast<std::size_t>(limit_ - text_.get()) > kMostKept) {
    text_ = std::make_unique<char[]>(kFirstSize);
    limit_ = text_.get() + kFirstSize;
  }
  end_ = text_.get();
  names_.clear();
  runs_.clear();
  unsafeTexts_.clear();
}

void CodeStream::grow(std::size_t size) {
  const auto used = static_cast<std::size_t>(end_ - text_.get());
  const auto capacity = static_cast<std::size_t>(limit_ - text_.get());
  const std::size_t wanted = std::max(2 * capacity, used + size);
  auto larger = std::make_unique_for_overwrite<char[]>(wanted);
  std::memcpy(larger.get(), text_.get(), used);
  text_ = std::move(larger);
  end_ = text_.get() + used;
  limit_ = text_.get() + wanted;
}

// ---- names ----

Name CodeStream::joined(std::initializer_list<std::string_view> texts) {
  std::size_t size = 0;
  for (const std::string_view text : texts) size += text.size();
  char* end = names_.room(size);
  for (const std::string_view text : texts) end = put(end, text);
  return {names_.takeTo(end)};
}

Name CodeStream::tensorId(std::string_view owner, std::uint32_t number,
                          std::string_view member) {
  constexpr std::string_view kId = ".id";
  constexpr const format::PartRow& kRow = format::rowOf(Part::kGraphTensor);
  char* end = names_.room(boundOfPart(kRow, owner, number) + 1 + member.size() +
                          kId.size());
  end = putPart<Part::kGraphTensor>(end, owner, number);
  *end++ = '.';
  return {names_.takeTo(put(put(end, member), kId))};
}

std::string_view CodeStream::sanitized(std::string_view clientName) {
  char* const to = names_.room(format::sanitizedSize(clientName));
  return names_.takeTo(format::sanitizeIdentifier(clientName, to));
}

// ---- lines ----

void CodeStream::appendArguments(std::initializer_list<Argument> arguments) {
  bool isFirst = true;
  for (const Argument& argument : arguments) {
    constexpr std::size_t kMostOfOthers = 4 + format::kMostNumberCharacters;
    char* to = room(kSeparator.size() + argument.text_.size() + kMostOfOthers);
    if (!isFirst) to = put(to, kSeparator);
    isFirst = false;
    end_ = putArgument(to, argument);
  }
}

char* CodeStream::putArgument(char* to, const Argument& argument) {
  switch (argument.kind_) {
    case Argument::Kind::kText:
      return put(to,
                 argument.text_.empty() ? format::kNullText : argument.text_);
    case Argument::Kind::kAddress:
      if (argument.text_.empty()) return put(to, format::kNullText);
      *to++ = '&';
      return put(to, argument.text_);
    case Argument::Kind::kCast:
      *to++ = '(';
      to = put(to, argument.text_);
      *to++ = ')';
      return put(to, argument.number_);
    case Argument::Kind::kNumber:
      return put(to, argument.number_);
    case Argument::Kind::kLiteral:
      return putLiteral(to,
                        argument.number_ == 0 ? nullptr : argument.text_.data(),
                        argument.text_.size());
  }
  return to;
}

void CodeStream::emitDeclaration(std::string_view type, Name name) {
  begin(type, name);
  append(";\n");
}

void CodeStream::emitNullDeclaration(std::string_view type, Name name) {
  append(kIndent);
  append(type);
  append("* ");
  append(name.text);
  append(" = NULL;\n");
}

void CodeStream::emitNameArray(std::string_view type, Name name,
                               std::span<const Name> elements) {
  emitArray(type, name, elements.size(),
            [&](std::size_t i) { append(elements[i].text); });
}

void CodeStream::emitAddressArray(std::string_view type, Name name,
                                  std::span<const Name> elements) {
  emitArray(type, name, elements.size(),
            [&](std::size_t i) { appendNameOrNull("&", elements[i].text); });
}

void CodeStream::emitRecordArray(const format::Record& row, Name name,
                                 const void* records, std::size_t count) {
  const auto* bytes = static_cast<const std::byte*>(records);
  emitArray(row.type, name, count,
            [&](std::size_t i) { appendInline(row, bytes + i * row.size); });
}

void CodeStream::emitStaticRead(std::string_view type, Name name,
                                const DataRun& run, std::string_view fileVar) {
  append(kIndent);
  append("static ");
  append(type);
  append(' ');
  append(name.text);
  append('[');
  appendNumber(run.count);
  append("];\n");
  append(kIndent);
  append("fread(");
  append(name.text);
  append(", ");
  appendNumber(run.elementSize);
  append(", ");
  appendNumber(run.count);
  append(", ");
  append(fileVar);
  append(");\n");
  runs_.push_back(run);
}

void CodeStream::emitMalloc(std::string_view type, Name name,
                            std::uint64_t size) {
  begin(type, name);
  append(" = (");
  append(type);
  append(")malloc(");
  appendNumber(size);
  append(");\n");
}

void CodeStream::emitFree(Name name) {
  append(kIndent);
  append("free(");
  append(name.text);
  append(");\n");
}

void CodeStream::emitFopen(Name fileVar, std::string_view path,
                           std::string_view mode) {
  begin("FILE*", fileVar);
  append(" = fopen(\"");
  append(path);
  append("\", \"");
  append(mode);
  append("\");\n");
  append(kIndent);
  append("if (!");
  append(fileVar.text);
  append(") {\n");
  append(kIndent);
  append(kIndent);
  append("printf(\"ERROR: File open of ");
  append(path);
  append(" failed on line: %d\\n\", __LINE__);\n");
  append(kIndent);
  append(kIndent);
  append("return -1;\n");
  emitLine("}");
}

void CodeStream::emitFwrite(Name buffer, std::size_t elementSize, Name count,
                            Name fileVar) {
  append(kIndent);
  append("fwrite(");
  append(buffer.text);
  append(", ");
  appendNumber(elementSize);
  append(", ");
  append(count.text);
  append(", ");
  append(fileVar.text);
  append(");\n");
}

void CodeStream::emitFclose(Name fileVar) {
  append(kIndent);
  append("fclose(");
  append(fileVar.text);
  append(");\n");
}

void CodeStream::emitLine(std::string_view text) {
  append(kIndent);
  append(text);
  append('\n');
}

std::string_view CodeStream::takeText(bool endLine) {
  if (endLine) append('\n');
  return {text_.get(), static_cast<std::size_t>(end_ - text_.get())};
}

// ---- records ----

void CodeStream::emitStruct(std::string_view type, Name name,
                            std::string_view constant, const void* record,
                            const Reference& reference) {
  begin(type, name);
  append(" = {");
  append(constant);
  append(", ");
  appendMember(static_cast<const std::byte*>(record), reference);
  append("};\n");
}

// The rows of records in braces refer to nothing.
void CodeStream::appendInline(const format::Record& row,
                              const std::byte* record) {
  append('{');
  bool isFirst = true;
  for (const format::Field& field : row.fields) {
    if (!isFirst) append(", ");
    isFirst = false;
    appendValue(field.kind, field.type, field.record, record + field.offset,
                {});
  }
  append('}');
}

void CodeStream::appendMember(const std::byte* record,
                              const Reference& reference) {
  const format::Member& member = *reference.member;
  append(member.lead);
  appendValue(member.kind, member.type, member.record, record + member.offset,
              reference.name);
  append(member.tail);
}

void CodeStream::appendValue(FieldKind kind, std::string_view type,
                             const format::Record* row, const std::byte* value,
                             std::string_view reference) {
  switch (kind) {
    case FieldKind::kU8:
      return appendNumber(valueAt<std::uint8_t>(value));
    case FieldKind::kU16:
      return appendNumber(valueAt<std::uint16_t>(value));
    case FieldKind::kU32:
      return appendNumber(valueAt<std::uint32_t>(value));
    case FieldKind::kU64:
      return appendNumber(valueAt<std::uint64_t>(value));
    case FieldKind::kI8:
      return appendNumber(valueAt<std::int8_t>(value));
    case FieldKind::kI16:
      return appendNumber(valueAt<std::int16_t>(value));
    case FieldKind::kI32:
      return appendNumber(valueAt<std::int32_t>(value));
    case FieldKind::kFloat:
      return appendNumber(valueAt<float>(value));
    case FieldKind::kBool:
      return append(valueAt<std::uint8_t>(value) != 0 ? '1' : '0');
    case FieldKind::kEnum:
      append('(');
      append(type);
      append(')');
      return appendNumber(valueAt<std::uint32_t>(value));
    case FieldKind::kText:
      return appendLiteral(valueAt<const char*>(value));
    case FieldKind::kInline:
      return appendInline(*row, value);
    case FieldKind::kFixed:
    case FieldKind::kUnion:
      return;
    case FieldKind::kRecord:
      return append(reference);
    case FieldKind::kArray:
      return appendNameOrNull({}, reference);
    case FieldKind::kAddress:
      return appendNameOrNull("&", reference);
    case FieldKind::kData:
      return appendNameOrNull("(void*)", reference);
    case FieldKind::kTensorId:
      if (reference.empty()) return appendNumber(valueAt<std::uint32_t>(value));
      return append(reference);
    case FieldKind::kNull:
      return append(format::kNullText);
    case FieldKind::kSparse:
      return appendSparse(type, value);
  }
}

// No blanks here: readers of recordings know the form.
void CodeStream::appendSparse(std::string_view type, const std::byte* value) {
  const auto sparse = valueAt<Kiv_SparseParams_t>(value);
  append("{(");
  append(type);
  append(')');
  appendNumber(valueAt<std::uint32_t>(value));
  append(",{");
  appendNumber(sparse.counts.numElements);
  append(',');
  appendNumber(sparse.counts.numDimensions);
  append("}}");
}

void CodeStream::appendNameOrNull(std::string_view lead,
                                  std::string_view name) {
  if (name.empty()) return append(format::kNullText);
  append(lead);
  append(name);
}

void CodeStream::appendLiteral(const char* text) {
  const std::size_t size = text == nullptr ? 0 : std::strlen(text);
  end_ = putLiteral(room(size + format::kNullText.size()), text, size);
}

char* CodeStream::putLiteral(char* to, const char* text, std::size_t size) {
  if (text == nullptr) return put(to, format::kNullText);
  *to++ = '"';
  const bool isSuspect = copySuspect(to, {text, size});
  to += size;
  *to++ = '"';
  if (isSuspect) noteIfUnsafe({text, size});
  return to;
}

void CodeStream::noteIfUnsafe(std::string_view text) {
  if (format::isUnsafeInLiteral(text)) unsafeTexts_.push_back(text.data());
}

}  // namespace kiv::output
