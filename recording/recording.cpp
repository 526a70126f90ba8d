#include "recording/recording.h"

#include <algorithm>

#include "recording/scanner.h"
#include "recording/statement_parser.h"

namespace kiv::recording {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModelFile = "saver_output.c";

std::vector<fs::path> modelFilesIn(const fs::path& directory) {
  std::vector<fs::path> files;
  std::error_code error;
  fs::directory_iterator entry(directory, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    if (entry->path().extension() == ".c") files.push_back(entry->path());
  std::ranges::sort(files);
  return files;
}

// The model file at or in `path`; empty with the reason.
fs::path findModel(const fs::path& path, std::string& why) {
  std::error_code error;
  if (!fs::is_directory(path, error)) return path;
  if (fs::exists(path / kModelFile, error)) return path / kModelFile;
  const std::vector<fs::path> files = modelFilesIn(path);
  if (files.size() == 1) return files.front();
  why = files.empty() ? "The directory holds no model file"
                      : "The directory holds several *.c files; name one";
  return {};
}

// A file beside the model file, and no other one.
bool isPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of("/\\:") == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

void addUse(CallDetails& details, const Item& item,
            std::span<const std::string_view> declared) {
  const std::string_view name = item.text();
  if (std::ranges::find(details.uses, name) != details.uses.end()) return;
  if (std::ranges::find(declared, name) == declared.end())
    details.uses.push_back(name);
}

bool namesEarlierVariable(const ParsedStatement& statement, const Item& item) {
  using format::FieldKind;
  if (item.isNull()) return false;
  if (item.kind == FieldKind::kTensorId)
    return item.begin != item.end && (*item.begin < '0' || *item.begin > '9');
  return statement.kind == StatementKind::kCall &&
         item.kind == FieldKind::kArray;
}

}  // namespace

std::string_view nameOf(StatementKind kind) {
  switch (kind) {
    case StatementKind::kComment:
      return "comment";
    case StatementKind::kDeclaration:
      return "declaration";
    case StatementKind::kRecord:
      return "record";
    case StatementKind::kConfig:
      return "config";
    case StatementKind::kArray:
      return "array";
    case StatementKind::kNullArray:
      return "null array";
    case StatementKind::kStaticArray:
      return "static array";
    case StatementKind::kRead:
      return "read";
    case StatementKind::kMalloc:
      return "allocation";
    case StatementKind::kOpen:
      return "opening of a file";
    case StatementKind::kWrite:
      return "writing to a file";
    case StatementKind::kClose:
      return "closing of a file";
    case StatementKind::kRelease:
      return "release of memory";
    case StatementKind::kCall:
      return "call";
    case StatementKind::kUnknown:
      return "unknown statement";
  }
  return "unknown statement";
}

Recording::~Recording() = default;

OpenResult Recording::open(const fs::path& path, const Limits& limits) {
  OpenResult result;
  const auto refuse = [&](std::string message) {
    result.problem.file = path.string();
    result.problem.message = std::move(message);
    return result;
  };
  std::string why;
  const fs::path model = findModel(path, why);
  if (model.empty()) return refuse(why);
  auto file = MappedFile::open(model, MappedFile::Writes::kNone, why);
  if (!file) return refuse("cannot be read: " + why);
  const std::shared_ptr<Recording> recording(new Recording());
  recording->modelPath_ = model;
  recording->file_ = *std::move(file);
  const auto bytes = recording->file_.bytes();
  recording->text_ = {reinterpret_cast<const char*>(bytes.data()),
                      bytes.size()};
  recording->limits_ = limits;
  Scanner(*recording).run();
  result.recording = recording;
  return result;
}

std::shared_ptr<const Recording> Recording::parse(std::string text,
                                                  std::string fileName,
                                                  const Limits& limits) {
  const std::shared_ptr<Recording> recording(new Recording());
  recording->modelPath_ = std::move(fileName);
  recording->ownText_ = std::move(text);
  recording->text_ = recording->ownText_;
  recording->limits_ = limits;
  Scanner(*recording).run();
  return recording;
}

std::optional<fs::path> Recording::dataPath() const {
  if (!isPlainName(header_.dataFile)) return std::nullopt;
  return modelPath_.parent_path() / fs::path(std::string(header_.dataFile));
}

CallDetails Recording::details(std::size_t call) const {
  CallDetails result;
  details(call, result);
  return result;
}

void Recording::details(std::size_t index, CallDetails& result) const {
  const Call& call = calls_[index];
  result.statements.clear();
  result.runs.clear();
  result.uses.clear();
  result.texts.clear();
  std::vector<std::string_view> declared;
  TextBudget budget{1'000'000 + 4 * call.span.size()};
  StatementParser parser(text_.substr(0, call.span.end), limits_, budget);
  const char* const end = text_.data() + call.span.end;
  const char* at = text_.data() + call.span.begin;
  std::uint64_t line = call.firstLine;
  std::uint64_t offset = call.dataOffset;
  for (;;) {
    const char* const next = StatementParser::skipBlanks(at, end);
    line += static_cast<std::uint64_t>(std::count(at, next, '\n'));
    at = next;
    if (at == end) return;
    const auto found =
        readings_.find(static_cast<std::uint64_t>(at - text_.data()));
    (void)parser.parse(at, found == readings_.end() ? nullptr : &found->second);
    const ParsedStatement& parsed = parser.statement();
    const Span span = {static_cast<std::uint64_t>(at - text_.data()),
                       static_cast<std::uint64_t>(parsed.end - text_.data())};
    result.statements.push_back({parsed.kind, span, line, parsed.name,
                                 parsed.type, parsed.count,
                                 parsed.elementSize});
    if (parsed.kind == StatementKind::kRead) {
      result.runs.push_back(
          {parsed.name, offset, parsed.elementSize, parsed.count});
      offset += result.runs.back().bytes();
    }
    if (!parsed.type.empty()) declared.push_back(parsed.name);
    for (const Item& item : parsed.items) {
      if (item.kind == format::FieldKind::kText && !item.isNull())
        result.texts.push_back(item.text());
      if (namesEarlierVariable(parsed, item)) addUse(result, item, declared);
    }
    line += static_cast<std::uint64_t>(std::count(at, parsed.end, '\n'));
    at = parsed.end;
  }
}

Recording::Place Recording::placeOf(std::uint64_t offset) const {
  const std::string_view before =
      text_.substr(0, static_cast<std::size_t>(offset));
  // Calls know their lines, so that the count begins near the place.
  const auto behind = std::ranges::upper_bound(
      calls_, offset, {}, [](const Call& call) { return call.span.begin; });
  std::uint64_t line = 1;
  std::size_t from = 0;
  if (behind != calls_.begin()) {
    line = behind[-1].firstLine;
    from = static_cast<std::size_t>(behind[-1].span.begin);
  }
  line +=
      static_cast<std::uint64_t>(std::ranges::count(before.substr(from), '\n'));
  const std::size_t lineEnd = before.rfind('\n');
  const std::size_t lineStart =
      lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
  return {line, before.size() - lineStart + 1};
}

Problem Recording::problemAt(std::uint64_t offset, std::string message,
                             Severity severity) const {
  const Place place = placeOf(offset);
  return {severity,           modelPath_.filename().string(),
          place.line,         place.column,
          std::move(message), {}};
}

void Recording::release(std::uint64_t begin, std::uint64_t end) const {
  file_.release(static_cast<std::size_t>(begin), static_cast<std::size_t>(end));
}

}  // namespace kiv::recording
