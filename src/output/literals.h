#pragma once

#include <string>
#include <string_view>

namespace kiv::output {

// The text between double quotes, byte for byte.
std::string quoted(std::string_view text);

// quoted(), or "NULL" for a null text.
std::string quotedOrNull(const char* text);

// Whether quoted() gives a literal that does not read back as the text: one
// with a quote, a backslash or a line end.
bool isUnsafeInLiteral(std::string_view text);

// The text as a C literal that reads back as it is: quotes and backslashes
// escaped, control characters as octal escapes.
std::string escapedLiteral(std::string_view text);

}  // namespace kiv::output
