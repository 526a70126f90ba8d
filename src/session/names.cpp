#include "session/names.h"

#include <utility>

#include "format/identifiers.h"
#include "format/numbers.h"

namespace kiv::session {
namespace {

// "_" and a number.
void appendCounter(std::string& name, std::uint32_t counter) {
  std::array<char, format::kMostNumberCharacters> digits{};
  const auto* const end = format::formatNumber(digits.data(), counter);
  name += '_';
  name.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

constexpr auto kOneLess = static_cast<std::uint32_t>(-1);

// Changes the counts of a name whose variables of some families would bring
// along the one of that suffix.
template <typename Counts>
void count(Counts& counts, std::string_view suffix, std::uint32_t change) {
  for (std::size_t i = 0; i < counts.size(); ++i)
    if (format::isDerived(static_cast<Family>(i), suffix)) counts[i] += change;
}

}  // namespace

Names::Candidate::Candidate(std::string_view text) : name(text) {
  std::size_t end = text.size();
  for (int words = 0; words < format::kMostSuffixWords && end > 0; ++words) {
    const std::size_t underscore = text.rfind('_', end - 1);
    if (underscore == std::string_view::npos || underscore == 0) return;
    end = underscore;
    if (format::mayBeDerived(text.substr(underscore + 1)))
      underscores[count++] = underscore;
  }
}

template <typename Visit>
void Names::Candidate::forEachSplit(Visit&& visit) const {
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t underscore = underscores[i];
    if (!visit(HashedText(name.text.substr(0, underscore)),
               name.text.substr(underscore + 1)))
      return;
  }
}

std::string_view Names::unique(std::string_view base, Family family) {
  const std::lock_guard lock(mutex_);
  return nextFree(base, family);
}

std::string_view Names::claim(std::string_view text, Family family) {
  const Candidate candidate(text);
  const std::lock_guard lock(mutex_);
  if (obstacle(candidate, family) != Obstacle::kNone)
    return nextFree(text, family);
  return take(candidate, family);
}

void Names::reserve(std::string_view text) {
  const Candidate candidate(text);
  const std::lock_guard lock(mutex_);
  if (!variables_.contains(candidate.name)) take(candidate, Family::kPlain);
}

void Names::release(std::string_view text) noexcept {
  const Candidate candidate(text);
  const std::lock_guard lock(mutex_);
  const auto found = variables_.find(candidate.name);
  if (found == variables_.end()) return;
  candidate.forEachSplit([this](HashedText owner, std::string_view suffix) {
    const auto blocked = blocked_.find(owner);
    if (blocked != blocked_.end()) count(blocked->second, suffix, kOneLess);
    return true;
  });
  variables_.erase(found);
}

std::string_view Names::nextFree(std::string_view text, Family family) {
  std::string& name = candidateText_;
  name = text;
  for (;;) {
    const HashedText base(name);
    auto counter = counters_.find(base);
    if (counter == counters_.end())
      counter = counters_.emplace(HashedString(base), 0).first;
    const std::size_t baseSize = name.size();
    appendCounter(name, counter->second++);
    const Candidate candidate(name);
    switch (obstacle(candidate, family)) {
      case Obstacle::kNone:
        return take(candidate, family);
      case Obstacle::kTaken:
        name.resize(baseSize);
        break;
      case Obstacle::kBroughtAlong:
        // The next numbers belong to the same owner, so one more is put
        // behind this one.
        break;
    }
  }
}

Names::Obstacle Names::obstacle(const Candidate& candidate,
                                Family family) const {
  const HashedText& name = candidate.name;
  if (format::isReservedIdentifier(name.text) || variables_.contains(name))
    return Obstacle::kTaken;
  if (const auto found = blocked_.find(name);
      found != blocked_.end() &&
      found->second[static_cast<std::size_t>(family)] != 0)
    return Obstacle::kTaken;
  Obstacle result = Obstacle::kNone;
  candidate.forEachSplit([&](HashedText owner, std::string_view suffix) {
    const auto found = variables_.find(owner);
    if (found != variables_.end() && format::isDerived(found->second, suffix))
      result = Obstacle::kBroughtAlong;
    return result == Obstacle::kNone;
  });
  return result;
}

// Counts the variable for all names that would bring it along.
std::string_view Names::take(const Candidate& candidate, Family family) {
  const std::string_view taken =
      variables_.emplace(HashedString(candidate.name), family)
          .first->first.text;
  candidate.forEachSplit([this](HashedText owner, std::string_view suffix) {
    auto blocked = blocked_.find(owner);
    if (blocked == blocked_.end())
      blocked = blocked_.emplace(HashedString(owner), FamilyCounts{}).first;
    count(blocked->second, suffix, 1);
    return true;
  });
  return taken;
}

}  // namespace kiv::session
