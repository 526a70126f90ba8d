#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "kiv_recording/program_text.h"
#include "kiv_recording/progress.h"
#include "kiv_recording/recordings.h"
#include "kiv_recording/verbs.h"
#include "recording/program.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using recording::Problem;
using recording::Recording;
using recording::Severity;
using recording::Statement;
using recording::StatementKind;

constexpr const char* kCheckDescription =
    "List every fault that keeps it from being compiled or replayed";

constexpr const char* kCheckDetails =
    R"(Lists every fault that keeps a recording from being compiled or replayed, in
the order of its lines. Faults of compiling alone are those that kiv-recording
prepare removes.

Example: is what somebody sent whole?
  kiv-recording check saver_output && echo it is)";

struct CheckOptions {
  RecordingOptions recording;
  bool isJson = false;
};

// What a fault keeps the recording from.
enum class Keeps : std::uint8_t { kNothing, kCompiling, kReplaying, kBoth };

constexpr std::string_view wordOf(Keeps keeps) {
  switch (keeps) {
    case Keeps::kCompiling:
      return "not compiled";
    case Keeps::kReplaying:
      return "not replayed";
    case Keeps::kBoth:
      return "neither compiled nor replayed";
    case Keeps::kNothing:
      break;
  }
  return "note";
}

struct Fault {
  Keeps keeps;
  Problem problem;
};

bool declares(StatementKind kind) {
  switch (kind) {
    case StatementKind::kDeclaration:
    case StatementKind::kRecord:
    case StatementKind::kConfig:
    case StatementKind::kArray:
    case StatementKind::kNullArray:
    case StatementKind::kStaticArray:
    case StatementKind::kMalloc:
    case StatementKind::kOpen:
      return true;
    default:
      return false;
  }
}

// The names that a program declares, by where they stand in its text: an entry
// takes no memory of its own, since there are many.
class DeclaredNames {
 public:
  explicit DeclaredNames(std::string_view text) : text_(text), slots_(1024) {}

  // Where a name of the text was declared before; nothing if it is new.
  std::optional<std::uint64_t> add(std::string_view name) {
    if (2 * ++count_ > slots_.size()) grow();
    const std::uint64_t hash = std::hash<std::string_view>()(name) | 1;
    for (std::size_t i = hash;; ++i) {
      Slot& slot = slots_[i & (slots_.size() - 1)];
      if (slot.hash == 0) {
        slot = {hash, static_cast<std::uint64_t>(name.data() - text_.data())};
        return std::nullopt;
      }
      if (slot.hash == hash && text_.substr(slot.place, name.size()) == name)
        return slot.place;
    }
  }

 private:
  // Without a hash it is free.
  struct Slot {
    std::uint64_t hash = 0;
    std::uint64_t place = 0;
  };

  void grow() {
    std::vector<Slot> old(2 * slots_.size());
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.hash == 0) continue;
      std::size_t i = slot.hash;
      while (slots_[i & (slots_.size() - 1)].hash != 0) ++i;
      slots_[i & (slots_.size() - 1)] = slot;
    }
  }

  std::string_view text_;
  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

class Checker {
 public:
  explicit Checker(const Recording& recording) : recording_(recording) {}

  std::vector<Fault> check() {
    for (const Problem& problem : recording_.problems())
      add(problem.severity == Severity::kError ? Keeps::kReplaying
                                               : Keeps::kNothing,
          problem);
    checkFrame();
    checkData();
    checkCalls();
    std::ranges::stable_sort(faults_, {}, [](const Fault& fault) {
      return std::pair(fault.problem.line, fault.problem.column);
    });
    const auto same = [](const Fault& a, const Fault& b) {
      return a.problem.line == b.problem.line &&
             a.problem.column == b.problem.column &&
             a.problem.message == b.problem.message;
    };
    faults_.erase(std::unique(faults_.begin(), faults_.end(), same),
                  faults_.end());
    return std::move(faults_);
  }

 private:
  void add(Keeps keeps, Problem problem) {
    faults_.push_back({keeps, std::move(problem)});
  }
  void addAt(const char* place, Keeps keeps, std::string message) {
    const auto offset =
        static_cast<std::uint64_t>(place - recording_.text().data());
    add(keeps, recording_.problemAt(offset, std::move(message)));
  }
  void addForFile(const fs::path& file, Keeps keeps, std::string message) {
    Problem problem;
    problem.file = textOf(file);
    problem.message = std::move(message);
    add(keeps, std::move(problem));
  }

  void checkFrame() {
    const std::string_view text = recording_.text();
    if (!recording_.header().isWhole)
      addAt(text.data(), Keeps::kCompiling,
            recording_.header().isThere ? "the program's header is cut off"
                                        : "there is no program header");
    if (const auto end = missingEnd(recording_))
      addAt(text.data() + end->span.begin, Keeps::kCompiling,
            fmt::format("the program has no end; behind its {} whole calls "
                        "there are {} bytes (complete gives it one)",
                        recording_.calls().size(), end->span.size()));
  }

  void checkData() {
    const auto path = recording_.dataPath();
    if (!path) {
      if (recording_.header().isThere)
        addAt(recording_.text().data(), Keeps::kReplaying,
              "the header names no data file beside the program");
      return;
    }
    std::error_code error;
    const std::uintmax_t size = fs::file_size(*path, error);
    const std::uint64_t read = recording_.dataSize();
    if (error)
      addForFile(*path, Keeps::kReplaying, error.message());
    else if (size < read || (size > read && !missingEnd(recording_)))
      addForFile(*path, Keeps::kReplaying,
                 fmt::format("the data file is too {}, or that of another "
                             "recording: the calls read {} bytes, it has {}",
                             size < read ? "short" : "long", read, size));
  }

  // Zeros stand for data that is not there, which was said before.
  void checkCalls() {
    const DataFile data = DataFile::openOrZeros(recording_);
    recording::Program program(recording_, data.bytes());
    Progress progress("calls", recording_.calls().size());
    for (std::size_t i = 0; i < recording_.calls().size(); ++i) {
      progress.reach(i);
      recording_.details(i, details_);
      for (const Statement& statement : details_.statements)
        checkStatement(statement);
      for (const std::string_view text : unsafeTexts(recording_, i, details_))
        addAt(text.data(), Keeps::kCompiling,
              "a text that a compiler does not read back: " +
                  recording::shortened(text));
      checkCall(i, program);
    }
  }

  // A call that uses what a broken one would have made is not blamed for it.
  void checkCall(std::size_t call, recording::Program& program) {
    std::optional<Problem> problem = program.begin(call, arguments_);
    if (!problem) return program.end(call);
    const bool isConsequence = std::ranges::any_of(
        details_.uses,
        [this](std::string_view name) { return broken_.contains(name); });
    for (const Statement& statement : details_.statements)
      if (declares(statement.kind)) broken_.insert(statement.name);
    if (!isConsequence && recording_.calls()[call].unknownStatements == 0)
      add(Keeps::kReplaying, std::move(*problem));
  }

  void checkStatement(const Statement& statement) {
    if (!declares(statement.kind) || statement.name.empty()) return;
    if (const auto place = names_.add(statement.name))
      addAt(recording_.text().data() + statement.span.begin, Keeps::kCompiling,
            fmt::format("{} is declared in line {} already", statement.name,
                        recording_.placeOf(*place).line));
  }

  const Recording& recording_;
  std::vector<Fault> faults_;
  DeclaredNames names_{recording_.text()};
  // What calls that cannot be made declare.
  std::unordered_set<std::string_view> broken_;
  recording::CallDetails details_;
  recording::Arguments arguments_;
};

std::string lineOf(const Fault& fault) {
  const Problem& problem = fault.problem;
  std::string line = problem.file;
  if (problem.line != 0)
    line += fmt::format(":{}:{}", problem.line, problem.column);
  line += fmt::format(": {}: {}", wordOf(fault.keeps), problem.message);
  if (!problem.found.empty()) line += ", found " + problem.found;
  return line;
}

void showJson(const Recording& recording, const std::vector<Fault>& faults) {
  nlohmann::ordered_json json;
  json["calls"] = recording.calls().size();
  json["faults"] = nlohmann::ordered_json::array();
  for (const Fault& fault : faults) {
    const Problem& problem = fault.problem;
    const bool both = fault.keeps == Keeps::kBoth;
    json["faults"].push_back(
        {{"file", problem.file},
         {"line", problem.line},
         {"column", problem.column},
         {"keepsFromCompiling", both || fault.keeps == Keeps::kCompiling},
         {"keepsFromReplaying", both || fault.keeps == Keeps::kReplaying},
         {"message", problem.message},
         {"found", problem.found}});
  }
  fmt::print("{}\n", json.dump(2, ' ', false,
                               nlohmann::json::error_handler_t::replace));
}

int check(const CheckOptions& options) {
  const auto recording = open(options.recording);
  if (!recording) return kUnreadable;
  const std::vector<Fault> faults = Checker(*recording).check();
  const auto count = std::ranges::count_if(faults, [](const Fault& fault) {
    return fault.keeps != Keeps::kNothing;
  });
  if (options.isJson) {
    showJson(*recording, faults);
  } else {
    for (const Fault& fault : faults) fmt::print("{}\n", lineOf(fault));
    if (count == 0)
      fmt::print("No faults: {} calls, {} bytes of data.\n",
                 recording->calls().size(), recording->dataSize());
    else
      fmt::print("{} faults in {} calls.\n", count, recording->calls().size());
  }
  return count == 0 ? kDone : kDiffers;
}

}  // namespace

Verb addCheck(CLI::App& program) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App* verb = program.add_subcommand("check", kCheckDescription);
  verb->footer(kCheckDetails);
  addRecording(*verb, options->recording);
  verb->add_flag("--json", options->isJson, "Print the list as JSON");
  return {verb, [options] { return check(*options); }};
}

}  // namespace kiv::tool
