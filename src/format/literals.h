#pragma once

#include <optional>
#include <string>
#include <string_view>

// Texts in the generated program. The texts of clients stand between quotes
// byte for byte, as isUnsafeInLiteral() warns of; those of
// backendRegisterOpPackage are escaped. From any thread.
namespace kiv::format {

// The text of a null pointer.
inline constexpr std::string_view kNullText = "NULL";

// Whether a compiler does not read the text between two quotes back as it is:
// it holds a quote, a backslash or a line end.
bool isUnsafeInLiteral(std::string_view text);

// The text as a C literal, quotes included, that reads back as it is: quotes
// and backslashes escaped, control characters as octal escapes.
std::string escapedLiteral(std::string_view text);

// The text of a literal that escapedLiteral() wrote, given without its quotes;
// nothing for an escape that it does not write.
std::optional<std::string> unescaped(std::string_view literal);

}  // namespace kiv::format
