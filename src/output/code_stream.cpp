#include "output/code_stream.h"

#include <algorithm>
#include <array>

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

// Whether one of a word's bytes is a backslash, or below '#', as quotes and
// line ends are, and blanks.
constexpr bool mayBeUnsafe(std::uint64_t word) {
  const std::uint64_t backslashes = word ^ (kOnes * '\\');
  return (((word - kOnes * '#') & ~word) |
          ((backslashes - kOnes) & ~backslashes)) &
         (kOnes << 7);
}

// format::isUnsafeInLiteral(), fast for texts that mostly are not: by words,
// the last of which overlaps the one before.
bool isUnsafe(std::string_view text) {
  constexpr std::size_t kStep = sizeof(std::uint64_t);
  if (text.size() < kStep) return format::isUnsafeInLiteral(text);
  bool isSuspect = false;
  const auto look = [&](std::size_t at) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, kStep);
    isSuspect |= mayBeUnsafe(word);
  };
  for (std::size_t at = 0; at + kStep <= text.size(); at += kStep) look(at);
  look(text.size() - kStep);
  return isSuspect && format::isUnsafeInLiteral(text);
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

void CodeStream::NameMemory::addBlock(std::size_t size) {
  const std::size_t wanted = std::max(kBlockSize, size);
  auto block = std::make_unique_for_overwrite<char[]>(wanted);
  fullBlocks_.push_back(std::move(block_));
  block_ = std::move(block);
  size_ = wanted;
  used_ = 0;
}

// The first block has the usual size.
void CodeStream::NameMemory::clear() {
  if (!fullBlocks_.empty()) {
    block_ = std::move(fullBlocks_.front());
    size_ = kBlockSize;
    fullBlocks_.clear();
  }
  used_ = 0;
}

// ---- names ----

Name CodeStream::joined(std::initializer_list<std::string_view> texts) {
  std::size_t size = 0;
  for (const std::string_view text : texts) size += text.size();
  char* const memory = names_.take(size);
  char* end = memory;
  for (const std::string_view text : texts) end = put(end, text);
  return {{memory, size}};
}

Name CodeStream::tensorId(std::string_view owner, std::uint32_t number,
                          std::string_view member) {
  constexpr std::string_view kId = ".id";
  constexpr const format::PartRow& kRow = format::rowOf(Part::kGraphTensor);
  const std::size_t most =
      boundOfPart(kRow, owner, number) + 1 + member.size() + kId.size();
  char* const text = names_.take(most);
  char* end = putPart<Part::kGraphTensor>(text, owner, number);
  *end++ = '.';
  end = put(put(end, member), kId);
  const auto size = static_cast<std::size_t>(end - text);
  names_.giveBack(most - size);
  return {{text, size}};
}

std::string_view CodeStream::sanitized(std::string_view clientName) {
  const std::size_t most = format::sanitizedSize(clientName);
  char* const text = names_.take(most);
  const char* end = format::sanitizeIdentifier(clientName, text);
  const auto size = static_cast<std::size_t>(end - text);
  names_.giveBack(most - size);
  return {text, size};
}

// ---- lines ----

void CodeStream::appendArguments(std::initializer_list<Argument> arguments) {
  bool isFirst = true;
  for (const Argument& argument : arguments) {
    if (!isFirst) append(", ");
    isFirst = false;
    appendArgument(argument);
  }
}

void CodeStream::appendArgument(const Argument& argument) {
  switch (argument.kind_) {
    case Argument::Kind::kText:
      return appendNameOrNull({}, argument.text_);
    case Argument::Kind::kAddress:
      return appendNameOrNull("&", argument.text_);
    case Argument::Kind::kCast:
      append('(');
      append(argument.text_);
      append(')');
      return appendNumber(argument.number_);
    case Argument::Kind::kNumber:
      return appendNumber(argument.number_);
    case Argument::Kind::kLiteral:
      return appendLiteral(argument.number_ == 0 ? nullptr
                                                 : argument.text_.data());
  }
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
  to = put(to, {text, size});
  *to++ = '"';
  if (isUnsafe({text, size})) unsafeTexts_.push_back(text);
  return to;
}

}  // namespace kiv::output
