#include "recording/texts.h"

#include <algorithm>
#include <string>

#include "format/identifiers.h"
#include "recording/statement_parser.h"

namespace kiv::recording {
namespace {

constexpr std::size_t kMostReadings = 64;
// Bytes that are searched for confirmations, in all.
constexpr std::uint64_t kMostSearched = std::uint64_t{1} << 32;

constexpr int kOfVariable = 16;
constexpr int kNamedAgain = 1;

class Chooser {
 public:
  explicit Chooser(const Recording& recording)
      : recording_(recording),
        text_(recording.text()),
        budget_{1'000'000 + 4 * recording.text().size()},
        parser_(recording.text(), recording.limits(), budget_) {}

  // The texts of the best reading; nothing when there is one only.
  std::vector<Span> choose(std::uint64_t at,
                           const Recording::Reading* reading) {
    if (!parser_.parse(text_.data() + at, reading)) return {};
    const ParsedStatement statement = parser_.statement();
    const auto readings =
        parser_.readingsUpTo(statement.begin, statement.end, kMostReadings);
    if (readings.size() < 2) return {};
    const auto best = std::ranges::max_element(
        readings, {}, [&](const std::vector<Span>& texts) {
          return score(statement, texts);
        });
    std::vector<Span> texts = *best;
    std::erase_if(texts, [](const Span& text) { return text.begin == 0; });
    return texts;
  }

 private:
  // The variable that has come of the statement's first text, if one has.
  static std::string_view variableOf(const ParsedStatement& statement) {
    constexpr std::string_view kSuffix = "_v1";
    if (statement.type == format::rows::kOpConfigV1.type &&
        statement.name.ends_with(kSuffix))
      return statement.name.substr(0, statement.name.size() - kSuffix.size());
    if (statement.kind != StatementKind::kCall) return {};
    const auto out = std::ranges::find(
        statement.items, format::FieldKind::kAddress, &Item::kind);
    return out == statement.items.end() ? std::string_view{} : out->text();
  }

  int score(const ParsedStatement& statement, const std::vector<Span>& texts) {
    int result = 0;
    const std::string_view variable = variableOf(statement);
    if (!variable.empty() && !texts.empty()) {
      std::string base =
          format::sanitizeIdentifier(recording_.text(texts.front()));
      if (base.empty())
        base = statement.kind == StatementKind::kCall ? "graph" : "opConfig";
      const std::string_view rest =
          variable.substr(std::min(base.size(), variable.size()));
      if (variable.starts_with(base) && isCounters(rest)) result += kOfVariable;
    }
    for (const Span& text : texts)
      if (isNamedAgain(statement, text)) result += kNamedAgain;
    return result;
  }

  bool isNamedAgain(const ParsedStatement& statement, Span text) {
    if (text.size() == 0) return false;
    const std::string_view wanted =
        recording_.text({text.begin - 1, text.end + 1});
    const auto begin = static_cast<std::size_t>(statement.begin - text_.data());
    const auto end = static_cast<std::size_t>(statement.end - text_.data());
    if (searched_ > kMostSearched) return false;
    const std::size_t before = text_.substr(0, begin).rfind(wanted);
    if (before != std::string_view::npos) {
      searched_ += begin - before;
      return true;
    }
    const std::size_t behind = text_.find(wanted, end);
    searched_ += begin + (std::min(behind, text_.size()) - end);
    return behind != std::string_view::npos;
  }

  const Recording& recording_;
  const std::string_view text_;
  TextBudget budget_;
  StatementParser parser_;
  std::uint64_t searched_ = 0;
};

}  // namespace

bool isCounters(std::string_view text) {
  while (!text.empty()) {
    if (text[0] != '_') return false;
    text.remove_prefix(1);
    const std::size_t digits =
        std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits == 0) return false;
    text.remove_prefix(digits);
  }
  return true;
}

std::vector<Problem> chooseReadings(const Recording& recording,
                                    std::span<const std::uint64_t> statements,
                                    Recording::Readings& readings) {
  std::vector<Problem> problems;
  Chooser chooser(recording);
  for (const std::uint64_t at : statements) {
    const auto found = readings.find(at);
    auto texts =
        chooser.choose(at, found == readings.end() ? nullptr : &found->second);
    if (texts.empty()) continue;
    Problem problem = recording.problemAt(
        at, "the texts of this statement can be read in several ways",
        Severity::kAmbiguous);
    problem.found.append("\"")
        .append(shortened(recording.text(texts.front())))
        .append("\"");
    problems.push_back(std::move(problem));
    readings[at].texts = std::move(texts);
  }
  return problems;
}

}  // namespace kiv::recording
