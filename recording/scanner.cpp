#include "recording/scanner.h"

#include <algorithm>
#include <cstring>
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
constexpr std::size_t kMostCandidates = 64;
// Other ends of one text that are tried, and texts of one call.
constexpr int kMostOtherEnds = 8;
constexpr int kMostDepth = 32;
constexpr std::uint64_t kMostFailedTrials = 5000;
constexpr std::uint64_t kMostTrials = 1000;
// Text is given back to the system in pieces of this size.
constexpr std::uint64_t kReleased = std::uint64_t{1} << 25;

// What does not fit is more than any file has.
std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
  return a != 0 && b > kMost / a ? kMost : a * b;
}

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
  return a + b < a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

bool mayBeFrame(char c) { return c == '#' || c == 'i' || c == 'r' || c == '}'; }

bool isWrittenBehindCalls(StatementKind kind) {
  return kind == StatementKind::kOpen || kind == StatementKind::kWrite ||
         kind == StatementKind::kClose || kind == StatementKind::kRelease;
}

std::string_view explain(Sign sign) {
  switch (sign) {
    case Sign::kQuoteInComment:
      return "a comment follows that holds the rest of the text";
    case Sign::kUnused:
      return "a record follows that no call uses";
    case Sign::kDeclaredTwice:
      return "a variable follows whose name is taken";
    default:
      return "a variable follows whose name does not fit";
  }
}

}  // namespace

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

Scanner::Scanner(Recording& recording)
    : recording_(recording),
      text_(recording.text_),
      budget_{1'000'000 + 4 * recording.text_.size()},
      parser_(recording.text_, recording.limits_, budget_),
      readings_(recording.text_, recording.limits_, budget_) {}

bool Scanner::isGlobal(std::string_view name) const {
  const bool* found = globals_.find(name);
  return found != nullptr && *found;
}

// ---- one call ----

void Scanner::addSign(CallScan& scan, Sign sign, std::uint64_t offset,
                      std::string_view name) {
  if (scan.signs.size() < kMostSigns)
    scan.signs.push_back({sign, offset, name});
}

void Scanner::declare(CallScan& scan, std::uint64_t offset) {
  const ParsedStatement& statement = parser_.statement();
  const bool isOut = statement.kind == StatementKind::kDeclaration;
  const bool isNew =
      locals_.insert(statement.name, Local{offset, false}).isNew &&
      !(isOut && isGlobal(statement.name));
  if (!isNew) addSign(scan, Sign::kDeclaredTwice, offset);
  if (isOut) scan.globals.push_back(statement.name);
}

void Scanner::useEarlier(CallScan& scan, std::string_view name,
                         std::uint64_t offset) {
  if (Local* local = locals_.find(name); local != nullptr)
    local->isUsed = true;
  else if (!isGlobal(name))
    addSign(scan, Sign::kUndeclared, offset, name);
}

void Scanner::use(CallScan& scan, const Item& item, std::uint64_t offset) {
  switch (item.kind) {
    case FieldKind::kRecord:
    case FieldKind::kArray:
    case FieldKind::kAddress:
    case FieldKind::kData:
      if (Local* local = locals_.find(item.text()); local != nullptr)
        local->isUsed = true;
      else
        addSign(scan, Sign::kUndeclared, offset);
      return;
    case FieldKind::kTensorId:
      if (!format::isDigit(*item.begin)) useEarlier(scan, item.text(), offset);
      return;
    default:
      return;
  }
}

bool Scanner::comesOf(std::string_view variable, std::string_view text,
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
void Scanner::checkName(CallScan& scan, std::string_view variable,
                        const Item& text, std::string_view ifEmpty,
                        std::uint64_t offset) {
  const std::string_view name =
      text.isNull() ? std::string_view{} : text.text();
  if (comesOf(variable, name, ifEmpty)) return;
  // A validated op config has a plain name.
  if (ifEmpty == "opConfig" && comesOf(variable, {}, ifEmpty)) return;
  const ParsedStatement& statement = parser_.statement();
  const auto others =
      readings_.readingsUpTo(statement.begin, statement.end, kMostSplits);
  const bool isOther = std::ranges::any_of(others, [&](const auto& texts) {
    return comesOf(variable, recording_.text(texts.front()), ifEmpty);
  });
  if (!isOther) addSign(scan, Sign::kOtherName, offset);
}

void Scanner::noteTexts(CallScan& scan, std::uint64_t offset) {
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

void Scanner::noteCall(CallScan& scan, std::uint64_t offset) {
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
      if (isGlobal(item.text())) addSign(scan, Sign::kDeclaredTwice, offset);
      scan.globals.push_back(item.text());
    }
    if (argument.kind == ArgumentKind::kOutHandle && graphName != nullptr)
      checkName(scan, item.text(), *graphName, "graph", offset);
  }
}

void Scanner::noteUnused(CallScan& scan) {
  for (const auto& entry : locals_.entries())
    if (!entry.value.isUsed) addSign(scan, Sign::kUnused, entry.value.offset);
}

void Scanner::noteStatement(CallScan& scan, std::uint64_t offset) {
  const ParsedStatement& statement = parser_.statement();
  switch (statement.kind) {
    case StatementKind::kUnknown:
      return;
    case StatementKind::kComment:
      if (std::string_view(
              statement.begin,
              static_cast<std::size_t>(statement.end - statement.begin))
              .find('"') != std::string_view::npos)
        addSign(scan, Sign::kQuoteInComment, offset);
      return;
    case StatementKind::kRead:
      scan.call.dataSize = sum(scan.call.dataSize,
                               product(statement.elementSize, statement.count));
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
bool Scanner::scanStatement(CallScan& scan, std::uint64_t at,
                            std::uint32_t line) {
  const Recording::Readings& readings = recording_.readings_;
  const Recording::Reading* reading = nullptr;
  if (!readings.empty()) {
    const auto found = readings.find(at);
    if (found != readings.end()) reading = &found->second;
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
    addSign(scan, Sign::kUnknownStatement, at);
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
void Scanner::scan(const Start& start, CallScan& scan) {
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
      if (scan.call.statements != 0) addSign(scan, Sign::kFrame, at);
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
    if (scan.call.statements > recording_.limits_.statements) return;
  }
  scan.end = CallScan::End::kCall;
  scan.call.span.end = callEnd;
  scan.next = callEnd;
}

// ---- other readings ----

// Whether a variable is used shows at the call's end only, and what uses it may
// be covered by a text before or behind it.
CallScan::SignAt Scanner::firstSign(const CallScan& scan) {
  return std::ranges::min(scan.signs, {}, [](const CallScan::SignAt& sign) {
    return std::pair(sign.sign == Sign::kUnused, sign.offset);
  });
}

void Scanner::addCandidates(const CallScan& scan, const Start& call,
                            std::size_t callIndex, std::uint64_t after,
                            std::vector<Candidate>& candidates) {
  const CallScan::SignAt sign = firstSign(scan);
  for (auto text = scan.texts.rbegin(); text != scan.texts.rend(); ++text) {
    if (text->offset <= after) return;
    const bool isBehind = text->offset > sign.offset;
    if (isBehind && sign.sign != Sign::kUnused) continue;
    const std::uint64_t beyond =
        text->offset < sign.offset ? sign.offset : text->end;
    candidates.push_back({text->offset, beyond, call, callIndex});
  }
}

bool Scanner::tryOther(const Candidate& candidate, int depth) {
  Recording::Readings& readings = recording_.readings_;
  const auto old = readings.find(candidate.statement);
  const Recording::Reading before =
      old == readings.end() ? Recording::Reading{} : old->second;
  const bool hadReading = old != readings.end();
  std::uint64_t leastEnd = std::max(candidate.beyond, before.leastEnd);
  for (int i = 0; i < kMostOtherEnds && trials_ < kMostTrials; ++i) {
    const Recording::Reading other{leastEnd, {}};
    if (!parser_.parse(pointer(candidate.statement), &other)) break;
    leastEnd =
        static_cast<std::uint64_t>(parser_.statement().end - text_.data());
    readings[candidate.statement] = other;
    CallScan trial;
    ++trials_;
    scan(candidate.call, trial);
    if (trial.end == CallScan::End::kCall && trial.signs.empty()) return true;
    if (depth == 0 || trial.signs.empty()) continue;
    // What is left must lie behind what is covered.
    const CallScan::SignAt sign = firstSign(trial);
    if (sign.sign != Sign::kUnused && sign.offset < leastEnd) continue;
    std::vector<Candidate> next;
    addCandidates(trial, candidate.call, candidate.callIndex,
                  candidate.statement, next);
    for (const Candidate& text : next)
      if (tryOther(text, depth - 1)) return true;
  }
  if (hadReading)
    readings[candidate.statement] = before;
  else
    readings.erase(candidate.statement);
  return false;
}

// The names of calls that are read anew are free again.
void Scanner::goBackTo(const Candidate& candidate) {
  std::vector<Call>& calls = recording_.calls_;
  CallScan forgotten;
  for (std::size_t i = candidate.callIndex; i < calls.size(); ++i) {
    const Call& call = calls[i];
    scan({call.span.begin, call.firstLine, call.dataOffset}, forgotten);
    for (const std::string_view name : forgotten.globals)
      if (bool* global = globals_.find(name); global != nullptr)
        *global = false;
  }
  calls.resize(std::min(calls.size(), candidate.callIndex));
  const std::uint64_t offset = candidate.call.offset;
  std::erase_if(candidates_, [offset](const Candidate& other) {
    return other.call.offset >= offset;
  });
  std::erase_if(quoted_, [offset](std::uint64_t at) { return at >= offset; });
  std::erase_if(recording_.problems_, [&](const Problem& problem) {
    return problem.line >= candidate.call.line;
  });
  if (recording_.footer_.isThere && recording_.footer_.span.begin >= offset)
    recording_.footer_ = {};
}

bool Scanner::resolve(const CallScan& scan, Start& start) {
  if (failures_ >= kMostFailedTrials) return false;
  const CallScan::SignAt sign = firstSign(scan);
  std::vector<Candidate> candidates;
  addCandidates(scan, start, recording_.calls_.size(), 0, candidates);
  for (auto text = candidates_.rbegin(); text != candidates_.rend(); ++text)
    candidates.push_back(
        {text->statement, sign.offset, text->call, text->callIndex});
  trials_ = 0;
  for (const Candidate& candidate : candidates) {
    if (candidate.beyond - candidate.statement > recording_.limits_.text) break;
    if (!tryOther(candidate, kMostDepth)) continue;
    // The other way would have been whole too, for a compiler.
    if (sign.sign == Sign::kQuoteInComment || sign.sign == Sign::kUnused ||
        sign.sign == Sign::kDeclaredTwice || sign.sign == Sign::kOtherName)
      quoted_.push_back(candidate.statement);
    goBackTo(candidate);
    if (sign.sign == Sign::kQuoteInComment || sign.sign == Sign::kUnused ||
        sign.sign == Sign::kDeclaredTwice || sign.sign == Sign::kOtherName)
      report(recording_.problemAt(
          candidate.statement,
          "a text can end in two ways; it was not taken to end where " +
              std::string(explain(sign.sign)),
          Severity::kAmbiguous));
    start = candidate.call;
    return true;
  }
  ++failures_;
  return false;
}

// ---- the pass ----

void Scanner::report(Problem problem) {
  std::vector<Problem>& problems = recording_.problems_;
  const std::size_t most = recording_.limits_.problems;
  if (problems.size() == most) {
    problem.message = "there are more problems, which are not shown";
    problem.found.clear();
  }
  if (problems.size() <= most) problems.push_back(std::move(problem));
}

void Scanner::reportUnknown(const CallScan& scan) {
  const std::uint64_t at = std::min<std::uint64_t>(scan.failedAt, text_.size());
  Problem problem = recording_.problemAt(
      at, "expected " + std::string(scan.expected) + " here");
  const std::size_t lineEnd = std::min(text_.find('\n', at), text_.size());
  problem.found = at == text_.size()
                      ? "the end of the text"
                      : shortened(text_.substr(at, lineEnd - at));
  report(std::move(problem));
}

void Scanner::commit(const CallScan& scan, const Start& start) {
  recording_.calls_.push_back(scan.call);
  for (const std::string_view name : scan.globals)
    globals_.insert(name, true).value = true;
  // Variables of another program stay unknown, and are not asked for again.
  for (const CallScan::SignAt& sign : scan.signs)
    if (!sign.name.empty()) globals_.insert(sign.name, true).value = true;
  if (scan.call.unknownStatements != 0) reportUnknown(scan);
  for (const CallScan::TextStatement& text : scan.texts) {
    candidates_.push_back(
        {text.offset, text.end, start, recording_.calls_.size() - 1});
    if (candidates_.size() > kMostCandidates) candidates_.pop_front();
    if (text.hasQuote) quoted_.push_back(text.offset);
  }
  if (scan.next > released_ + 2 * kReleased) {
    recording_.release(released_, released_ + kReleased);
    released_ += kReleased;
  }
}

void Scanner::readHeaderAt(std::uint64_t offset, Start& start) {
  Header header = readHeader(text_, offset, start.line);
  start.offset = header.span.end;
  start.line += static_cast<std::uint32_t>(
      std::ranges::count(text_.substr(offset, header.span.end - offset), '\n'));
  if (recording_.header_.isThere) {
    report(recording_.problemAt(
        offset, "a second program begins here; its calls are read as well"));
    return;
  }
  recording_.header_ = std::move(header);
}

void Scanner::readFooterAt(const CallScan& scan, Start& start) {
  if (recording_.footer_.isThere)
    report(recording_.problemAt(scan.next,
                                "the program's end stands here once more"));
  recording_.footer_ = readFooter(text_, scan.next, scan.nextLine);
  const Span span = recording_.footer_.span;
  start.line = scan.nextLine + static_cast<std::uint32_t>(std::ranges::count(
                                   recording_.text(span), '\n'));
  start.offset = span.end;
}

void Scanner::reportRemainder(const CallScan& scan) {
  recording_.remainder_ = {scan.call.span.begin, text_.size()};
  if (scan.call.statements == 0 || recording_.remainder_.size() == 0) {
    recording_.remainder_ = {text_.size(), text_.size()};
    return;
  }
  report(recording_.problemAt(
      scan.call.span.begin,
      "the recording is cut off within a call; its last " +
          std::to_string(recording_.remainder_.size()) + " bytes are left out",
      Severity::kNote));
}

void Scanner::run() {
  Start start{0, 1, 0};
  recording_.remainder_ = {text_.size(), text_.size()};
  if (beginsHeader(text_, 0)) readHeaderAt(0, start);
  if (recording_.header_.isThere && !recording_.header_.isWhole) {
    report(recording_.problemAt(
        text_.size(), "the program's header is not whole; there are no calls"));
    return;
  }
  CallScan scan;
  for (;;) {
    this->scan(start, scan);
    const bool isMore =
        scan.call.statements != 0 || scan.end != CallScan::End::kText;
    if (recording_.footer_.isThere && isMore)
      addSign(scan, Sign::kFrame, recording_.footer_.span.begin);
    if (!scan.signs.empty() && resolve(scan, start)) continue;
    if (scan.end == CallScan::End::kText) break;
    if (recording_.footer_.isThere && recording_.footer_.isWhole)
      report(recording_.problemAt(scan.call.span.begin,
                                  "more stands behind the program's end"));
    if (scan.end == CallScan::End::kCall) {
      if (recording_.calls_.size() == recording_.limits_.calls) {
        report(recording_.problemAt(scan.call.span.begin,
                                    "there are more calls than are read"));
        break;
      }
      commit(scan, start);
      start.dataOffset = sum(start.dataOffset, scan.call.dataSize);
      start.offset = scan.next;
      start.line = scan.nextLine;
      continue;
    }
    if (scan.call.unknownStatements != 0) reportUnknown(scan);
    if (scan.end == CallScan::End::kFooter) {
      readFooterAt(scan, start);
    } else {
      start.line = scan.nextLine;
      readHeaderAt(scan.next, start);
    }
  }
  reportRemainder(scan);
  recording_.dataSize_ = start.dataOffset;
  for (Problem& problem :
       chooseReadings(recording_, quoted_, recording_.readings_))
    report(std::move(problem));
}

}  // namespace kiv::recording
