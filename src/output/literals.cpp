#include "output/literals.h"

namespace kiv::output {
namespace {

constexpr bool isControl(char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }

// Three digits always, so that a digit behind is not taken for a fourth.
void appendOctal(std::string& text, char c) {
  const auto value = static_cast<unsigned char>(c);
  text += '\\';
  for (int shift = 6; shift >= 0; shift -= 3) {
    text += static_cast<char>('0' + ((value >> shift) & 7));
  }
}

}  // namespace

std::string quoted(std::string_view text) {
  std::string literal;
  literal.reserve(text.size() + 2);
  literal += '"';
  literal += text;
  literal += '"';
  return literal;
}

std::string quotedOrNull(const char* text) {
  return text == nullptr ? "NULL" : quoted(text);
}

bool isUnsafeInLiteral(std::string_view text) {
  return text.find_first_of("\"\\\n\r") != std::string_view::npos;
}

std::string escapedLiteral(std::string_view text) {
  std::string literal = "\"";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    // "??" could begin a trigraph.
    const bool trigraph = c == '?' && i > 0 && text[i - 1] == '?';
    if (isControl(c)) {
      appendOctal(literal, c);
      continue;
    }
    if (c == '"' || c == '\\' || trigraph) literal += '\\';
    literal += c;
  }
  literal += '"';
  return literal;
}

}  // namespace kiv::output
