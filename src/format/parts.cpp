#include "format/parts.h"

#include <algorithm>

#include "format/identifiers.h"

namespace kiv::format {
namespace {

std::string_view takeWord(std::string_view& text) {
  const std::size_t end = std::min(text.find('_'), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

bool isNumber(std::string_view word) {
  return !word.empty() && std::ranges::all_of(word, isDigit);
}

bool isWordOf(const PartRow& row, std::string_view word) {
  return row.word.size() == word.size() + 1 && row.word.ends_with(word);
}

// The letters that a part's word may begin with.
constexpr std::array<bool, 256> kFirstLetters = [] {
  std::array<bool, 256> letters{};
  for (const PartRow& row : kParts)
    letters[static_cast<unsigned char>(row.word[1])] = true;
  return letters;
}();

}  // namespace

bool isDerived(Family owner, std::string_view suffix) {
  if (suffix.empty() || suffix.back() == '_') return false;
  Family family = owner;
  int numbers = 0;
  while (!suffix.empty()) {
    const std::string_view word = takeWord(suffix);
    if (numbers > 0) {
      if (!isNumber(word)) return false;
      --numbers;
      continue;
    }
    const auto part = std::ranges::find_if(kParts, [&](const PartRow& row) {
      return row.owner == family && isWordOf(row, word);
    });
    if (part == kParts.end()) return false;
    family = part->derived;
    numbers = part->numbers;
  }
  return numbers == 0;
}

bool mayBeDerived(std::string_view suffix) {
  if (suffix.empty() || !kFirstLetters[static_cast<unsigned char>(suffix[0])])
    return false;
  const std::string_view word = takeWord(suffix);
  return std::ranges::any_of(
      kParts, [word](const PartRow& row) { return isWordOf(row, word); });
}

}  // namespace kiv::format
