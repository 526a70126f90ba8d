#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recording/recording.h"

// The text of a recorded program with changes, as small as they can be.
// Everything else, line numbers included, stays as it is.
namespace kiv::tool {

enum class ChangeKind : std::uint8_t {
  // A client's text that a compiler would not read back is escaped.
  kText,
  // An array without elements, which C does not have, gets one.
  kArray,
  // A number without digits gets a form that every compiler takes.
  kNumber,
  // The program that was cut off gets its end.
  kEnd
};

// Bytes of the text, and what stands there instead.
struct Change {
  ChangeKind kind;
  recording::Span span;
  std::string text;
};

// What a program whose recorder died needs: the text from behind the last whole
// call on becomes the program's end. Nothing for one that has its end, be it
// one that somebody wrote.
std::optional<Change> missingEnd(const recording::Recording& recording);

// All that keeps the program from being compiled, in the order of the text.
std::vector<Change> changesForCompilers(const recording::Recording& recording);

// The client's texts in a call that not every compiler reads back as they are.
std::vector<std::string_view> unsafeTexts(
    const recording::Recording& recording, std::size_t call,
    const recording::CallDetails& details);

// Writes the changed text; a failure is shown on standard error and leaves no
// file.
bool writeProgram(const recording::Recording& recording,
                  const std::vector<Change>& changes,
                  const std::filesystem::path& path);

// A client's text between quotes that is read back as it was, on as many lines
// as it has.
std::string literalOf(std::string_view text);

}  // namespace kiv::tool
