#include "format/literals.h"

#include <algorithm>

namespace kiv::format {
namespace {

constexpr std::size_t kOctalDigits = 3;

constexpr bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7f;
}
constexpr bool isOctal(char c) { return c >= '0' && c <= '7'; }

// Three digits always, so that a digit behind is not taken for a fourth.
void appendOctal(std::string& text, char c) {
  const auto value = static_cast<unsigned char>(c);
  text += '\\';
  for (int shift = 6; shift >= 0; shift -= 3) {
    text += static_cast<char>('0' + ((value >> shift) & 7));
  }
}

std::optional<char> octal(std::string_view digits) {
  int value = 0;
  for (const char digit : digits) {
    if (!isOctal(digit)) return std::nullopt;
    value = value * 8 + (digit - '0');
  }
  if (digits.size() != kOctalDigits || value > 0xFF) return std::nullopt;
  return static_cast<char>(value);
}

}  // namespace

bool isUnsafeInLiteral(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    return c == '"' || c == '\\' || c == '\n' || c == '\r';
  });
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

std::optional<std::string> unescaped(std::string_view literal) {
  std::string text;
  for (std::size_t i = 0; i < literal.size(); ++i) {
    if (literal[i] != '\\') {
      text += literal[i];
      continue;
    }
    if (++i == literal.size()) return std::nullopt;
    const char c = literal[i];
    if (c == '"' || c == '\\' || c == '?') {
      text += c;
      continue;
    }
    const auto control = octal(literal.substr(i, kOctalDigits));
    if (!control) return std::nullopt;
    text += *control;
    i += kOctalDigits - 1;
  }
  return text;
}

}  // namespace kiv::format
