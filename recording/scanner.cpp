#include "recording/scanner.h"

#include <algorithm>

#include "recording/frame_reader.h"
#include "recording/texts.h"

namespace kiv::recording {
namespace {

using Sign = CallScan::Sign;

constexpr std::size_t kMostCandidates = 64;
// Other ends of one text that are tried, and texts of one call.
constexpr int kMostOtherEnds = 8;
constexpr int kMostDepth = 32;
constexpr std::uint64_t kMostFailedTrials = 5000;
constexpr std::uint64_t kMostTrials = 1000;
// Text is given back to the system in pieces of this size.
constexpr std::uint64_t kReleased = std::uint64_t{1} << 25;

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

Scanner::Scanner(Recording& recording)
    : recording_(recording),
      text_(recording.text_),
      calls_(recording.text_, recording.limits_, recording.readings_) {}

// ---- other readings ----

// Whether a variable is used shows at the call's end only, and what uses it may
// be covered by a text before or behind it.
CallScan::SignAt Scanner::firstSign(const CallScan& scan) {
  return std::ranges::min(scan.signs, {}, [](const CallScan::SignAt& sign) {
    return std::pair(sign.sign == Sign::kUnused, sign.offset);
  });
}

void Scanner::addCandidates(const CallScan& scan, const CallStart& call,
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
    const auto end = calls_.endOf(candidate.statement, other);
    if (!end) break;
    leastEnd = *end;
    readings[candidate.statement] = other;
    CallScan trial;
    ++trials_;
    calls_.scan(candidate.call, trial);
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
    calls_.scan({call.span.begin, call.firstLine, call.dataOffset}, forgotten);
    calls_.forget(forgotten);
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

bool Scanner::resolve(const CallScan& scan, CallStart& start) {
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

void Scanner::commit(const CallScan& scan, const CallStart& start) {
  recording_.calls_.push_back(scan.call);
  calls_.learn(scan);
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

void Scanner::readHeaderAt(std::uint64_t offset, CallStart& start) {
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

void Scanner::readFooterAt(const CallScan& scan, CallStart& start) {
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
  CallStart start{0, 1, 0};
  recording_.remainder_ = {text_.size(), text_.size()};
  if (beginsHeader(text_, 0)) readHeaderAt(0, start);
  if (recording_.header_.isThere && !recording_.header_.isWhole) {
    report(recording_.problemAt(
        text_.size(), "the program's header is not whole; there are no calls"));
    return;
  }
  CallScan scan;
  for (;;) {
    calls_.scan(start, scan);
    const bool isMore =
        scan.call.statements != 0 || scan.end != CallScan::End::kText;
    if (recording_.footer_.isThere && isMore)
      scan.add(Sign::kFrame, recording_.footer_.span.begin);
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
      start.dataOffset = sumOfSizes(start.dataOffset, scan.call.dataSize);
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
