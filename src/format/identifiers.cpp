#include "format/identifiers.h"

#include <algorithm>
#include <array>

#include "embedded/compiler_macros.txt.h"

namespace kiv::format {
namespace {

constexpr std::string_view kReplaced = " /|-:;.,+";

// A client's character as it stands in an identifier; 0 for one that is
// dropped.
constexpr std::array<char, 256> makeReplacements() {
  std::array<char, 256> replacements{};
  for (std::size_t i = 0; i < replacements.size(); ++i) {
    const char c = static_cast<char>(i);
    if (isIdentifierCharacter(c)) replacements[i] = c;
  }
  for (const char c : kReplaced)
    replacements[static_cast<unsigned char>(c)] = '_';
  return replacements;
}
constexpr std::array<char, 256> kReplacements = makeReplacements();

// Each table is sorted.

constexpr std::string_view kKeywords[] = {
    "alignas",       "alignof",      "asm",      "auto",          "bool",
    "break",         "case",         "char",     "const",         "constexpr",
    "continue",      "default",      "do",       "double",        "else",
    "enum",          "extern",       "false",    "float",         "for",
    "goto",          "if",           "inline",   "int",           "long",
    "nullptr",       "register",     "restrict", "return",        "short",
    "signed",        "sizeof",       "static",   "static_assert", "struct",
    "switch",        "thread_local", "true",     "typedef",       "typeof",
    "typeof_unqual", "union",        "unsigned", "void",          "volatile",
    "while",
};

// Variables, macros and functions of the generated program's frame, and what
// recorded statements use.
constexpr std::string_view kProgram[] = {
    "FILE",         "VALIDATE", "arg",       "argc",         "argv",
    "error",        "fclose",   "fopen",     "fp",           "fread",
    "free",         "fwrite",   "i",         "int16_t",      "int32_t",
    "int64_t",      "int8_t",   "interface", "logLevel",     "logging",
    "loghandle",    "main",     "malloc",    "numProviders", "printf",
    "providerList", "size_t",   "strcmp",    "uint16_t",     "uint32_t",
    "uint64_t",     "uint8_t",  "value",
};

constexpr std::size_t kMacroCount =
    static_cast<std::size_t>(std::ranges::count(kCompilerMacros, '\n'));

constexpr std::array<std::string_view, kMacroCount> splitLines(
    std::string_view text) {
  std::array<std::string_view, kMacroCount> lines{};
  for (std::string_view& line : lines) {
    line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() + 1);
  }
  return lines;
}

// Macros without arguments that gcc, clang and MinGW have after the includes
// of the generated program, except those that isImplementationName() covers.
constexpr auto kMacros = splitLines(kCompilerMacros);

constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

// Names that the language keeps for compilers and libraries.
constexpr bool isImplementationName(std::string_view name) {
  return name.size() > 1 && name[0] == '_' &&
         (name[1] == '_' || isUpper(name[1]));
}

// Names of the API: KIV_..., Kiv_..., KivGraph_... and so on.
constexpr bool isApiName(std::string_view name) {
  return name.starts_with("KIV_") ||
         (name.starts_with("Kiv") && name.find('_') != std::string_view::npos);
}

// Whether the name ends with "_" and a decimal number.
constexpr bool hasCounter(std::string_view name) {
  std::size_t end = name.size();
  while (end > 0 && isDigit(name[end - 1])) --end;
  return end < name.size() && end > 0 && name[end - 1] == '_';
}

constexpr bool endsWithCounter(std::string_view name) {
  return hasCounter(name) && !name.starts_with('_');
}

static_assert(std::ranges::is_sorted(kKeywords));
static_assert(std::ranges::is_sorted(kProgram));
static_assert(std::ranges::is_sorted(kMacros));
static_assert(std::ranges::none_of(kKeywords, endsWithCounter) &&
              std::ranges::none_of(kProgram, endsWithCounter) &&
              std::ranges::none_of(kMacros, endsWithCounter));

}  // namespace

char* sanitizeIdentifier(std::string_view name, char* identifier) {
  const auto keptOf = [](char c) {
    return kReplacements[static_cast<unsigned char>(c)];
  };
  const auto* c =
      std::ranges::find_if(name, [&](char at) { return keptOf(at) != 0; });
  if (c != name.end() && isDigit(*c)) *identifier++ = '_';
  for (; c != name.end(); ++c) {
    const char kept = keptOf(*c);
    *identifier = kept;
    identifier += kept != 0 ? 1 : 0;
  }
  return identifier;
}

std::string sanitizeIdentifier(std::string_view name) {
  std::string identifier(sanitizedSize(name), '\0');
  const char* end = sanitizeIdentifier(name, identifier.data());
  identifier.resize(static_cast<std::size_t>(end - identifier.data()));
  return identifier;
}

// A name with a counter is out of the name spaces of compilers and of the API:
// nothing there ends so but macros with a leading underscore, which the table
// holds, and constants of the API that the program does not use.
bool isReservedIdentifier(std::string_view name) {
  const bool counted = hasCounter(name);
  if (counted && !name.starts_with('_')) return false;
  return (!counted && (isImplementationName(name) || isApiName(name))) ||
         std::ranges::binary_search(kKeywords, name) ||
         std::ranges::binary_search(kProgram, name) ||
         std::ranges::binary_search(kMacros, name);
}

}  // namespace kiv::format
