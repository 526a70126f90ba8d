#pragma once

#include <string>
#include <string_view>

// Identifiers of the generated program: which names a client's names become,
// and which are taken before the first call. From any thread.
//
//   sanitizeIdentifier("conv2d/weights:0")  // "conv2d_weights_0"
//   isReservedIdentifier("printf")          // true
namespace kiv::format {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

// An ASCII letter or digit or "_", in every locale.
constexpr bool isIdentifierCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) ||
         c == '_';
}

// Turns a client's name into a C identifier:
//  1. ASCII letters, digits and "_" stay, in every locale;
//  2. each of " /|-:;.,+" becomes "_";
//  3. every other character is dropped;
//  4. a result that begins with a digit gets "_" in front;
//  5. an empty result stays empty.
// "1x1 conv" becomes "_1x1_conv" and "a(b)" "ab".
std::string sanitizeIdentifier(std::string_view name);

// The same into memory of the caller, for which sanitizedSize(name) bytes
// suffice; returns the identifier's end.
char* sanitizeIdentifier(std::string_view name, char* identifier);
constexpr std::size_t sanitizedSize(std::string_view name) {
  return name.size() + 2;
}

// Whether a variable of that name would clash with something that the generated
// program has from the start: C's keywords, macros that compilers and the
// standard headers define, the header's variables and macros, and the functions
// and types that the program uses.
bool isReservedIdentifier(std::string_view name);

}  // namespace kiv::format
