#include "line_writer.h"

#include <cmath>

namespace kiv::tracer {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

// FNV-1a.
std::uint64_t hashOf(const void* bytes, std::uint64_t count) {
  std::uint64_t hash = 0xcbf29ce484222325;
  const auto* byte = static_cast<const unsigned char*>(bytes);
  for (std::uint64_t i = 0; i < count; ++i)
    hash = (hash ^ byte[i]) * 0x100000001b3;
  return hash;
}

std::string hexOf(std::uint64_t value) {
  std::string digits(16, '0');
  for (std::size_t i = digits.size(); i-- > 0;) {
    digits[i] = kHexDigits[value & 15];
    value >>= 4;
  }
  return digits;
}

void appendEscaped(std::string& out, char character) {
  const auto code = static_cast<unsigned char>(character);
  if (code < 0x20 || code > 0x7e) {
    out += {'\\', 'x', kHexDigits[code >> 4], kHexDigits[code & 15]};
    return;
  }
  if (character == '"' || character == '\\') out += '\\';
  out += character;
}

template <typename Real>
void printReal(LineWriter& line, Real value, int digits) {
  // The sign of a NaN says nothing.
  if (std::isnan(value)) {
    line.word("nan");
    return;
  }
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value,
                                 std::chars_format::general, digits)
                       .ptr;
  line.word({text, end});
}

}  // namespace

LineWriter& LineWriter::begin(char bracket) {
  return word(std::string_view(&bracket, 1));
}

LineWriter& LineWriter::end(char bracket) {
  text_ += bracket;
  return *this;
}

LineWriter& LineWriter::word(std::string_view text) {
  constexpr std::string_view kBeforeFirstItem = "([{=";
  const bool isFirst = text_.empty() || kBeforeFirstItem.find(text_.back()) !=
                                            std::string_view::npos;
  if (!isFirst) text_ += ", ";
  text_ += text;
  return *this;
}

LineWriter& LineWriter::handle(Kind kind, const void* handle) {
  return word(handles_.nameOf(kind, handle));
}

LineWriter& LineWriter::handle(const void* handle) {
  return word(handles_.nameOf(handle));
}

LineWriter& LineWriter::key(std::string_view name) {
  word(name);
  text_ += '=';
  return *this;
}

void print(LineWriter& line, float value) { printReal(line, value, 9); }

void print(LineWriter& line, double value) { printReal(line, value, 17); }

void print(LineWriter& line, const char* text) {
  if (text == nullptr) {
    line.word("null");
    return;
  }
  std::string quoted = "\"";
  for (; *text != '\0'; ++text) appendEscaped(quoted, *text);
  line.word(quoted += '"');
}

void print(LineWriter& line, const Data& data) {
  if (data.bytes == nullptr && data.length != 0) {
    line.word("null");
    return;
  }
  line.word(std::to_string(data.length) + ":" +
            hexOf(hashOf(data.bytes, data.hashed)));
}

void print(LineWriter& line, Opaque memory) {
  line.word(memory.isSet ? "<set>" : "null");
}

}  // namespace kiv::tracer
