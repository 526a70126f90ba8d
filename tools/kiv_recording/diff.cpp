#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "kiv_recording/call_text.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"
#include "recording/program.h"

namespace kiv::tool {
namespace {

using recording::Arguments;
using recording::Program;
using recording::Recording;

constexpr const char* kDiffDescription = "Compare the calls of two recordings";

constexpr const char* kDiffDetails =
    R"(Compares the calls of two recordings: the first call that differs, then how
many calls of each function only one of them has. Data is compared by its
bytes; names of variables and where bytes lie in the data file do not count.

Example: does a newer client ask for the same as the older one?
  kiv-recording diff before/saver_output after/saver_output)";

struct DiffOptions {
  RecordingOptions first;
  RecordingOptions second;
  bool isJson = false;
};

// One recording, call by call.
class Side {
 public:
  // Nothing, with the reason on standard error.
  static std::unique_ptr<Side> open(const RecordingOptions& options) {
    auto recording = tool::open(options);
    if (!recording) return nullptr;
    auto data = DataFile::open(*recording);
    if (!data) return nullptr;
    return std::unique_ptr<Side>(
        new Side(std::move(recording), std::move(*data)));
  }

  std::size_t size() const { return recording_->calls().size(); }
  std::string_view function(std::size_t call) const {
    return recording_->functionName(call);
  }
  std::uint32_t line(std::size_t call) const {
    return recording_->calls()[call].line;
  }

  // Goes on to the next call; false if it cannot be read.
  bool advance() {
    if (const auto problem = program_.begin(next_, arguments_)) {
      fmt::print(stderr, "{}\n", toString(*problem));
      return false;
    }
    text_ = writer_.describe(arguments_);
    hashes_.push_back(std::hash<std::string_view>()(text_));
    program_.end(next_++);
    return true;
  }

  // Of the call that advance() went to.
  std::string_view text() const { return text_; }
  const std::vector<std::size_t>& hashes() const { return hashes_; }

 private:
  Side(std::shared_ptr<const Recording> recording, DataFile data)
      : recording_(std::move(recording)),
        data_(std::move(data)),
        program_(*recording_, data_.bytes()) {}

  std::shared_ptr<const Recording> recording_;
  DataFile data_;
  Program program_;
  Arguments arguments_;
  CallText writer_{CallText::Ids::kLeftOut};
  std::size_t next_ = 0;
  std::string_view text_;
  std::vector<std::size_t> hashes_;
};

struct FirstDifference {
  std::size_t call;
  // Empty where the recording has no such call.
  std::string first;
  std::string second;
};

struct Counts {
  std::int64_t equal = 0;
  std::int64_t onlyFirst = 0;
  std::int64_t onlySecond = 0;
};

struct Comparison {
  std::optional<FirstDifference> first;
  std::map<std::string, Counts> functions;
};

// The calls of each function as a set: what one has more than the other.
std::map<std::string, Counts> countCalls(const Side& a, const Side& b) {
  std::unordered_map<std::size_t, std::int64_t> onlyFirst;
  for (const std::size_t hash : a.hashes()) ++onlyFirst[hash];
  std::map<std::string, Counts> functions;
  for (std::size_t i = 0; i < a.size(); ++i)
    ++functions[std::string(a.function(i))].onlyFirst;
  for (std::size_t i = 0; i < b.size(); ++i) {
    Counts& counts = functions[std::string(b.function(i))];
    std::int64_t& rest = onlyFirst[b.hashes()[i]];
    if (rest == 0) {
      ++counts.onlySecond;
      continue;
    }
    --rest;
    --counts.onlyFirst;
    ++counts.equal;
  }
  return functions;
}

// Nothing if a recording cannot be read to its end.
std::optional<Comparison> compare(Side& a, Side& b) {
  Comparison result;
  for (std::size_t call = 0; call < std::max(a.size(), b.size()); ++call) {
    const bool hasFirst = call < a.size();
    const bool hasSecond = call < b.size();
    if ((hasFirst && !a.advance()) || (hasSecond && !b.advance()))
      return std::nullopt;
    if (result.first) continue;
    const std::string_view first = hasFirst ? a.text() : "";
    const std::string_view second = hasSecond ? b.text() : "";
    if (first != second)
      result.first = {call, std::string(first), std::string(second)};
  }
  if (result.first) result.functions = countCalls(a, b);
  return result;
}

// The text around a place, so that long lines show where they differ.
std::string excerpt(const std::string& text, std::size_t place) {
  constexpr std::size_t kBefore = 60;
  constexpr std::size_t kMost = 160;
  const std::size_t begin = place > kBefore ? place - kBefore : 0;
  std::string shown = text.substr(begin, kMost);
  if (begin > 0) shown = "..." + shown;
  if (begin + kMost < text.size()) shown += "...";
  return shown;
}

void showSide(char sign, const DiffOptions& options, const Side& side,
              std::size_t call, const std::string& text, std::size_t place) {
  const std::string& path =
      sign == '-' ? options.first.path : options.second.path;
  if (text.empty())
    fmt::print("{} {}: has {} calls\n", sign, path, side.size());
  else
    fmt::print("{} {}, line {}: {}({}\n", sign, path, side.line(call),
               text.substr(0, text.find('(')),
               excerpt(text.substr(text.find('(') + 1), place));
}

void showDifference(const DiffOptions& options, const Side& a, const Side& b,
                    const FirstDifference& difference) {
  const auto [end, other] =
      std::ranges::mismatch(difference.first, difference.second);
  const auto same = static_cast<std::size_t>(end - difference.first.begin());
  const std::size_t name = difference.first.find('(') + 1;
  const std::size_t place = same > name ? same - name : 0;
  fmt::print("The first call that differs is call {}:\n", difference.call + 1);
  showSide('-', options, a, difference.call, difference.first, place);
  showSide('+', options, b, difference.call, difference.second, place);
}

void showCounts(const std::map<std::string, Counts>& functions) {
  std::int64_t equal = 0;
  bool isOrderAlone = true;
  for (const auto& [name, counts] : functions) {
    equal += counts.equal;
    if (counts.onlyFirst == 0 && counts.onlySecond == 0) continue;
    if (isOrderAlone)
      fmt::print("\n{:<36}{:>10}{:>12}{:>12}\n", "function", "equal",
                 "only first", "only second");
    isOrderAlone = false;
    fmt::print("{:<36}{:>10}{:>12}{:>12}\n", name, counts.equal,
               counts.onlyFirst, counts.onlySecond);
  }
  fmt::print("\n{} calls are equal{}.\n", equal,
             isOrderAlone ? ", in another order" : "");
}

void showJson(const Side& a, const Side& b, const Comparison& comparison) {
  nlohmann::ordered_json json;
  json["equal"] = !comparison.first;
  json["calls"] = {a.size(), b.size()};
  if (comparison.first) {
    json["firstDifference"]["call"] = comparison.first->call + 1;
    json["firstDifference"]["first"] = comparison.first->first;
    json["firstDifference"]["second"] = comparison.first->second;
    for (const auto& [name, counts] : comparison.functions)
      json["functions"][name] = {{"equal", counts.equal},
                                 {"onlyFirst", counts.onlyFirst},
                                 {"onlySecond", counts.onlySecond}};
  }
  fmt::print("{}\n", json.dump(2));
}

int diff(const DiffOptions& options) {
  const auto a = Side::open(options.first);
  const auto b = Side::open(options.second);
  if (!a || !b) return kUnreadable;
  const auto comparison = compare(*a, *b);
  if (!comparison) return kUnreadable;
  if (options.isJson) {
    showJson(*a, *b, *comparison);
  } else if (!comparison->first) {
    fmt::print("The recordings make the same {} calls.\n", a->size());
  } else {
    showDifference(options, *a, *b, *comparison->first);
    showCounts(comparison->functions);
  }
  return comparison->first ? kDiffers : kDone;
}

}  // namespace

Verb addDiff(CLI::App& program) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* verb = program.add_subcommand("diff", kDiffDescription);
  verb->footer(kDiffDetails);
  addRecording(*verb, options->first, "A");
  addRecording(*verb, options->second, "B");
  verb->add_flag("--json", options->isJson, "Print the result as JSON");
  return {verb, [options] { return diff(*options); }};
}

}  // namespace kiv::tool
