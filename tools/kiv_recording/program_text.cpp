#include "kiv_recording/program_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "format/calls.h"
#include "format/frame.h"
#include "format/literals.h"
#include "kiv_recording/recordings.h"

namespace kiv::tool {
namespace {

namespace fs = std::filesystem;
using recording::CallDetails;
using recording::Recording;
using recording::Statement;
using recording::StatementKind;

// The most that MSVC takes in one literal, with room for escapes.
constexpr std::size_t kMostInLiteral = 16000;

struct NumberForm {
  std::string_view recorded;
  std::string_view portable;
};
// Constants that are divided by zero; products that no number holds do as well.
constexpr NumberForm kNumberForms[] = {
    {"(0.0f/0.0f)", "((float)(1e300*1e300)*0.0f)"},
    {"(1.0f/0.0f)", "((float)(1e300*1e300))"},
    {"(-1.0f/0.0f)", "(-(float)(1e300*1e300))"},
};

bool hasCarriageReturns(std::string_view text) {
  const std::size_t end = text.find('\n');
  return end != std::string_view::npos && end > 0 && text[end - 1] == '\r';
}

std::string withLineEndsOf(std::string_view model, std::string_view text) {
  if (!hasCarriageReturns(model)) return std::string(text);
  std::string changed;
  for (const char c : text) {
    if (c == '\n') changed += '\r';
    changed += c;
  }
  return changed;
}

// main's brace stands alone at the begin of a line; in calls none does.
bool endsMain(std::string_view text) {
  const std::size_t last = text.find_last_not_of(" \t\r\n");
  return last != std::string_view::npos && text[last] == '}' &&
         (last == 0 || text[last - 1] == '\n');
}

std::string_view trimmedEnd(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

// Looks at the calls one after the other.
class Changes {
 public:
  explicit Changes(const Recording& recording) : recording_(recording) {}

  void add(std::size_t call) {
    recording_.details(call, details_);
    begin_ = changes_.size();
    for (const std::string_view text : unsafeTexts(recording_, call, details_))
      addText(text);
    for (const Statement& statement : details_.statements) {
      addArray(statement);
      addNumbers(statement);
    }
    std::sort(changes_.begin() + static_cast<std::ptrdiff_t>(begin_),
              changes_.end(), [](const Change& a, const Change& b) {
                return a.span.begin < b.span.begin;
              });
  }

  std::vector<Change> take() { return std::move(changes_); }

 private:
  std::uint64_t offsetOf(const char* place) const {
    return static_cast<std::uint64_t>(place - recording_.text().data());
  }

  void addText(std::string_view text) {
    // The quotes around it belong to it.
    const std::uint64_t begin = offsetOf(text.data());
    changes_.push_back({ChangeKind::kText,
                        {begin - 1, begin + text.size() + 1},
                        literalOf(text)});
  }

  void addArray(const Statement& statement) {
    if (statement.count != 0) return;
    const std::string_view text = recording_.text(statement.span);
    if (statement.kind == StatementKind::kStaticArray) {
      const std::size_t number = text.rfind('0');
      if (number != std::string_view::npos)
        addWithin(statement, ChangeKind::kArray, number, 1, "1");
    } else if (statement.kind == StatementKind::kArray) {
      const std::size_t end = text.rfind('}');
      if (end != std::string_view::npos)
        addWithin(statement, ChangeKind::kArray, end, 0, "0");
    }
  }

  void addNumbers(const Statement& statement) {
    const std::string_view text = recording_.text(statement.span);
    for (const NumberForm& form : kNumberForms)
      for (std::size_t at = text.find(form.recorded);
           at != std::string_view::npos; at = text.find(form.recorded, at + 1))
        if (!isInText(text.data() + at))
          addWithin(statement, ChangeKind::kNumber, at, form.recorded.size(),
                    form.portable);
  }

  bool isInText(const char* place) const {
    return std::ranges::any_of(details_.texts, [place](std::string_view text) {
      return place >= text.data() && place < text.data() + text.size();
    });
  }

  void addWithin(const Statement& statement, ChangeKind kind, std::size_t at,
                 std::size_t size, std::string_view text) {
    const std::uint64_t begin = statement.span.begin + at;
    changes_.push_back({kind, {begin, begin + size}, std::string(text)});
  }

  const Recording& recording_;
  CallDetails details_;
  std::vector<Change> changes_;
  std::size_t begin_ = 0;
};

// The file that a binary is saved in is opened with texts of the program's own.
bool isOfProgram(const Recording& recording, const CallDetails& details,
                 std::string_view text) {
  const auto place =
      static_cast<std::uint64_t>(text.data() - recording.text().data());
  return std::ranges::any_of(
      details.statements, [place](const Statement& statement) {
        return statement.kind == StatementKind::kOpen &&
               statement.span.begin <= place && place < statement.span.end;
      });
}

}  // namespace

std::vector<std::string_view> unsafeTexts(const Recording& recording,
                                          std::size_t call,
                                          const CallDetails& details) {
  std::vector<std::string_view> unsafe;
  if (recording.calls()[call].function ==
      &format::calls::kBackendRegisterOpPackage)
    return unsafe;
  for (const std::string_view text : details.texts)
    if ((format::isUnsafeInLiteral(text) || text.size() > kMostInLiteral) &&
        !isOfProgram(recording, details, text))
      unsafe.push_back(text);
  return unsafe;
}

std::optional<Change> missingEnd(const Recording& recording) {
  const std::string_view text = recording.text();
  if (recording.isComplete() || endsMain(text)) return std::nullopt;
  const std::uint64_t whole = recording.calls().empty()
                                  ? recording.header().span.end
                                  : recording.calls().back().span.end;
  const std::uint64_t cut = trimmedEnd(text.substr(0, whole)).size();
  return Change{
      ChangeKind::kEnd,
      {cut, text.size()},
      withLineEndsOf(text, "\n\n" + std::string(format::programFooter()))};
}

std::vector<Change> changesForCompilers(const Recording& recording) {
  Changes changes(recording);
  for (std::size_t i = 0; i < recording.calls().size(); ++i) changes.add(i);
  std::vector<Change> all = changes.take();
  if (std::optional<Change> end = missingEnd(recording))
    all.push_back(std::move(*end));
  return all;
}

std::string literalOf(std::string_view text) {
  std::string literal = "\"";
  std::size_t sinceStart = 0;
  for (const char c : text) {
    if (++sinceStart == kMostInLiteral) {
      literal += "\" \"";
      sinceStart = 0;
    }
    switch (c) {
      case '"':
        literal += "\\\"";
        break;
      case '\\':
        literal += "\\\\";
        break;
      case '\r':
        literal += "\\r";
        break;
      case '\n':
        // The literal goes on in the next line, as the text did.
        literal += "\\n\\\n";
        break;
      default:
        literal += c;
        break;
    }
  }
  return literal += '"';
}

bool writeProgram(const Recording& recording,
                  const std::vector<Change>& changes, const fs::path& path) {
  const std::string_view text = recording.text();
  std::ofstream file(path, std::ios::binary);
  const auto write = [&file](std::string_view part) {
    file.write(part.data(), static_cast<std::streamsize>(part.size()));
  };
  std::uint64_t written = 0;
  for (const Change& change : changes) {
    write(text.substr(written, change.span.begin - written));
    write(change.text);
    written = change.span.end;
  }
  write(text.substr(written));
  file.close();
  if (file) return true;
  fmt::print(stderr, "{}: cannot be written\n", textOf(path));
  std::error_code ignored;
  fs::remove(path, ignored);
  return false;
}

}  // namespace kiv::tool
