#include "recording/problem.h"

namespace kiv::recording {
namespace {

constexpr std::size_t kMostShown = 60;

void appendEscaped(std::string& text, char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(c);
  if (c == '\n') {
    text += "\\n";
  } else if (value < ' ' || value == 0x7f) {
    text += "\\x";
    text += kDigits[value >> 4];
    text += kDigits[value & 15];
  } else {
    text += c;
  }
}

}  // namespace

std::string_view nameOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kAmbiguous:
      return "ambiguous";
    case Severity::kError:
      return "error";
  }
  return "error";
}

std::string shortened(std::string_view text) {
  std::string result;
  for (const char c : text.substr(0, kMostShown)) appendEscaped(result, c);
  if (text.size() > kMostShown) result += "...";
  return result;
}

std::string toString(const Problem& problem) {
  std::string text = problem.file;
  for (const std::uint64_t number : {problem.line, problem.column})
    if (number != 0) text.append(":").append(std::to_string(number));
  if (!text.empty()) text += ": ";
  text.append(nameOf(problem.severity)).append(": ").append(problem.message);
  if (!problem.found.empty()) text.append(", found ").append(problem.found);
  return text;
}

}  // namespace kiv::recording
