#include "output/identifiers.h"

namespace kiv::output {
namespace {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr std::string_view kReplaced = " /|-:;.,+";

}  // namespace

std::string sanitizeIdentifier(std::string_view name) {
  std::string result;
  result.reserve(name.size() + 1);
  for (const char c : name) {
    if (isIdentifierCharacter(c)) {
      result += c;
    } else if (kReplaced.find(c) != std::string_view::npos) {
      result += '_';
    }
  }
  if (!result.empty() && isDigit(result.front())) result.insert(0, 1, '_');
  return result;
}

}  // namespace kiv::output
