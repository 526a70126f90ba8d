#include "recording/call_scanner.h"

#include <algorithm>
#include <limits>

#include "format/identifiers.h"
#include "recording/blanks.h"
#include "recording/frame_reader.h"
#include "recording/texts.h"

namespace kiv::recording {
namespace {

using format::ArgumentKind;
using format::FieldKind;
using Sign = CallScan::Sign;

constexpr std::size_t kMostSigns = 8;
constexpr std::size_t kMostSplits = 64;

// The largest number stands for products beyond it.
std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
  return a != 0 && b > kMost / a ? kMost : a * b;
}

bool mayBeFrame(char c) { return c == '#' || c == 'i' || c == 'r' || c == '}'; }

bool isWrittenBehindCalls(StatementKind kind) {
  return kind == StatementKind::kOpen || kind == StatementKind::kWrite ||
         kind == StatementKind::kClose || kind == StatementKind::kRelease;
}

}  // namespace

std::uint64_t sumOfSizes(std::uint64_t a, std::uint64_t b) {
  return a + b < a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

void CallScan::clear() {
  end = End::kText;
  call = {};
  next = 0;
  nextLine = 0;
  signs.clear();
  texts.clear();
  globals.clear();
  failedAt = 0;
  expected = {};
}

void CallScan::add(Sign sign, std::uint64_t offset, std::string_view name) {
  if (signs.size() < kMostSigns) signs.push_back({sign, offset, name});
}

CallScanner::CallScanner(std::string_view text, const Limits& limits,
                         const Recording::Readings& readings)
    : text_(text),
      limits_(limits),
      statementReadings_(readings),
      budget_{1'000'000 + 4 * text.size()},
      parser_(text, limits, budget_),
      otherReadings_(text, limits, budget_) {}

std::optional<std::uint64_t> CallScanner::endOf(
    std::uint64_t statement, const Recording::Reading& reading) {
  if (!parser_.parse(pointer(statement), &reading)) return std::nullopt;
  return static_cast<std::uint64_t>(parser_.statement().end - text_.data());
}

void CallScanner::learn(const CallScan& scan) {
  for (const std::string_view name : scan.globals)
    globals_.insert(name, true).value = true;
  // Variables of another program stay unknown, and are not asked for again.
  for (const CallScan::SignAt& sign : scan.signs)
    if (!sign.name.empty()) globals_.insert(sign.name, true).value = true;
}

void CallScanner::forget(const CallScan& scan) {
  for (const std::string_view name : scan.globals)
    if (bool* global = globals_.find(name); global != nullptr) *global = false;
}

bool CallScanner::isGlobal(std::string_view name) const {
  const bool* found = globals_.find(name);
  return found != nullptr && *found;
}

void CallScanner::declare(CallScan& scan, std::uint64_t offset) {
  const ParsedStatement& statement = parser_.statement();
  const bool isOut = statement.kind == StatementKind::kDeclaration;
  const bool isNew =
      locals_.insert(statement.name, Local{offset, false}).isNew &&
      !(isOut && isGlobal(statement.name));
  if (!isNew) scan.add(Sign::kDeclaredTwice, offset);
  if (isOut) scan.globals.push_back(statement.name);
}

void CallScanner::useEarlier(CallScan& scan, std::string_view name,
                             std::uint64_t offset) {
  if (Local* local = locals_.find(name); local != nullptr)
    local->isUsed = true;
  else if (!isGlobal(name))
    scan.add(Sign::kUndeclared, offset, name);
}

void CallScanner::use(CallScan& scan, const Item& item, std::uint64_t offset) {
  switch (item.kind) {
    case FieldKind::kRecord:
    case FieldKind::kArray:
    case FieldKind::kAddress:
    case FieldKind::kData:
      if (Local* local = locals_.find(item.text()); local != nullptr)
        local->isUsed = true;
      else
        scan.add(Sign::kUndeclared, offset);
      return;
    case FieldKind::kTensorId:
      if (!format::isDigit(*item.begin)) useEarlier(scan, item.text(), offset);
      return;
    default:
      return;
  }
}

bool CallScanner::comesOf(std::string_view variable, std::string_view text,
                          std::string_view ifEmpty) {
  identifier_.resize(format::sanitizedSize(text));
  const char* end = format::sanitizeIdentifier(text, identifier_.data());
  identifier_.resize(static_cast<std::size_t>(end - identifier_.data()));
  const std::string_view base =
      identifier_.empty() ? ifEmpty : std::string_view(identifier_);
  return variable.starts_with(base) && isCounters(variable.substr(base.size()));
}

// A recorder makes the variable's name of the client's. Other splits of the
// statement into texts are as good: the choice between them comes later.
void CallScanner::checkName(CallScan& scan, std::string_view variable,
                            const Item& text, std::string_view ifEmpty,
                            std::uint64_t offset) {
  const std::string_view name =
      text.isNull() ? std::string_view{} : text.text();
  if (comesOf(variable, name, ifEmpty)) return;
  // A validated op config has a plain name.
  if (ifEmpty == "opConfig" && comesOf(variable, {}, ifEmpty)) return;
  const ParsedStatement& statement = parser_.statement();
  const auto others =
      otherReadings_.readingsUpTo(statement.begin, statement.end, kMostSplits);
  const bool isOther = std::ranges::any_of(others, [&](const auto& texts) {
    return comesOf(variable, textOf(texts.front()), ifEmpty);
  });
  if (!isOther) scan.add(Sign::kOtherName, offset);
}

void CallScanner::noteTexts(CallScan& scan, std::uint64_t offset) {
  const ParsedStatement& statement = parser_.statement();
  bool hasQuote = false;
  for (const Item& item : statement.items)
    hasQuote = hasQuote || (item.kind == FieldKind::kText && !item.isNull() &&
                            item.text().find('"') != std::string_view::npos);
  scan.texts.push_back(
      {offset, static_cast<std::uint64_t>(statement.end - text_.data()),
       hasQuote});
  const bool isOpConfig =
      statement.typeRow != nullptr && statement.typeRow->record != nullptr &&
      statement.typeRow->record->record == &format::rows::kOpConfigV1;
  constexpr std::string_view kSuffix = "_v1";
  if (isOpConfig && statement.name.ends_with(kSuffix))
    checkName(scan,
              statement.name.substr(0, statement.name.size() - kSuffix.size()),
              statement.items.front(), "opConfig", offset);
}

void CallScanner::noteCall(CallScan& scan, std::uint64_t offset) {
  const ParsedStatement& statement = parser_.statement();
  const format::Function& function = *statement.function;
  const Item* graphName = nullptr;
  for (const Item& item : statement.items) {
    const format::Argument& argument = function.arguments[item.offset];
    if (argument.kind == ArgumentKind::kText) graphName = &item;
    if (item.isNull() || item.kind == FieldKind::kText ||
        item.kind == FieldKind::kU32 || item.kind == FieldKind::kU64)
      continue;
    useEarlier(scan, item.text(), offset);
    if (argument.kind == ArgumentKind::kTensor) {
      if (isGlobal(item.text())) scan.add(Sign::kDeclaredTwice, offset);
      scan.globals.push_back(item.text());
    }
    if (argument.kind == ArgumentKind::kOutHandle && graphName != nullptr)
      checkName(scan, item.text(), *graphName, "graph", offset);
  }
}

void CallScanner::noteUnused(CallScan& scan) {
  for (const auto& entry : locals_.entries())
    if (!entry.value.isUsed) scan.add(Sign::kUnused, entry.value.offset);
}

void CallScanner::noteStatement(CallScan& scan, std::uint64_t offset) {
  const ParsedStatement& statement = parser_.statement();
  switch (statement.kind) {
    case StatementKind::kUnknown:
      return;
    case StatementKind::kComment:
      if (std::string_view(
              statement.begin,
              static_cast<std::size_t>(statement.end - statement.begin))
              .find('"') != std::string_view::npos)
        scan.add(Sign::kQuoteInComment, offset);
      return;
    case StatementKind::kRead:
      scan.call.dataSize = sumOfSizes(
          scan.call.dataSize, product(statement.elementSize, statement.count));
      return;
    case StatementKind::kCall:
      noteCall(scan, offset);
      break;
    case StatementKind::kWrite:
    case StatementKind::kClose:
    case StatementKind::kRelease:
    case StatementKind::kOpen:
      return;
    default:
      for (const Item& item : statement.items)
        if (!item.isNull()) use(scan, item, offset);
      declare(scan, offset);
      break;
  }
  if (statement.hasText) noteTexts(scan, offset);
}

// Reads one statement; true when it is a call.
bool CallScanner::scanStatement(CallScan& scan, std::uint64_t at,
                                std::uint32_t line) {
  const Recording::Reading* reading = nullptr;
  if (!statementReadings_.empty()) {
    const auto found = statementReadings_.find(at);
    if (found != statementReadings_.end()) reading = &found->second;
  }
  const bool isWhole = parser_.parse(pointer(at), reading);
  const ParsedStatement& statement = parser_.statement();
  ++scan.call.statements;
  if (!isWhole) {
    if (scan.call.unknownStatements++ == 0) {
      scan.failedAt =
          static_cast<std::uint64_t>(parser_.failedAt() - text_.data());
      scan.expected = parser_.expected();
    }
    scan.add(Sign::kUnknownStatement, at);
  }
  noteStatement(scan, at);
  const auto end = static_cast<std::uint64_t>(statement.end - text_.data());
  if (statement.kind == StatementKind::kCall) {
    scan.call.function = statement.function;
    scan.call.line = line;
  }
  scan.next = end;
  scan.nextLine = line + static_cast<std::uint32_t>(
                             std::count(statement.begin, statement.end, '\n'));
  return statement.kind == StatementKind::kCall;
}

// A call is whole when a blank line or anything else stands behind it. The
// statements behind a contextGetBinary belong to it, up to the blank line.
void CallScanner::scan(const CallStart& start, CallScan& scan) {
  scan.clear();
  locals_.clear();
  scan.call.dataOffset = start.dataOffset;
  scan.next = start.offset;
  scan.nextLine = start.line;
  std::uint64_t callEnd = 0;
  bool isOpen = false;
  for (;;) {
    std::uint64_t at = scan.next;
    std::uint32_t line = scan.nextLine;
    for (; at < text_.size() && isBlank(text_[at]); ++at)
      line += text_[at] == '\n' ? 1 : 0;
    const bool isBehindCall = scan.call.function != nullptr;
    const bool hasBlankLine = line > scan.nextLine + 1;
    const bool isAtEnd = at == text_.size();
    if (isBehindCall && (hasBlankLine || (!isAtEnd && !isOpen))) break;
    if (isAtEnd) return;
    if (scan.call.statements == 0) {
      scan.call.span.begin = at;
      scan.call.firstLine = line;
    }
    scan.next = at;
    scan.nextLine = line;
    if (mayBeFrame(text_[at]) &&
        (text_[at] == '#' || beginsFooter(text_.substr(at, 64)))) {
      if (isBehindCall) break;
      scan.end =
          text_[at] == '#' ? CallScan::End::kHeader : CallScan::End::kFooter;
      if (scan.call.statements != 0) scan.add(Sign::kFrame, at);
      return;
    }
    if (isBehindCall) {
      (void)parser_.parse(pointer(at));
      const StatementKind kind = parser_.statement().kind;
      if (kind == StatementKind::kUnknown) return;
      if (!isWrittenBehindCalls(kind)) break;
    }
    if (scanStatement(scan, at, line)) {
      noteUnused(scan);
      isOpen = scan.call.function == &format::calls::kContextGetBinary;
    }
    callEnd = scan.next;
    if (scan.call.statements > limits_.statements) return;
  }
  scan.end = CallScan::End::kCall;
  scan.call.span.end = callEnd;
  scan.next = callEnd;
}

}  // namespace kiv::recording
