#pragma once

#include <string>
#include <string_view>

namespace kiv::output {

// An ASCII letter or digit or "_", in every locale.
constexpr bool isIdentifierCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         (c >= '0' && c <= '9') || c == '_';
}

// Turns a client's name into a C identifier:
//  1. ASCII letters, digits and "_" stay, in every locale;
//  2. each of " /|-:;.,+" becomes "_";
//  3. every other character is dropped;
//  4. a result that begins with a digit gets "_" in front;
//  5. an empty result stays empty.
// "conv2d/weights:0" becomes "conv2d_weights_0", "1x1 conv" "_1x1_conv" and
// "a(b)" "ab".
std::string sanitizeIdentifier(std::string_view name);

// Whether a variable of that name would clash with something that the generated
// program has from the start: C's keywords, macros that compilers and the
// standard headers define, the header's variables and macros, and the functions
// and types that the program uses.
bool isReservedIdentifier(std::string_view name);

}  // namespace kiv::output
