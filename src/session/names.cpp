#include "session/names.h"

#include <optional>

#include "format/identifiers.h"
#include "format/numbers.h"

namespace kiv::session {
namespace {

// A name read as base + "_" + number, in the form that unique() gives it.
struct Numbered {
  std::string_view base;
  std::uint32_t number;
};
std::optional<Numbered> splitNumber(std::string_view name) {
  const std::size_t underscore = name.rfind('_');
  if (underscore == std::string_view::npos) return std::nullopt;
  const std::string_view digits = name.substr(underscore + 1);
  const bool isPadded = digits.size() > 1 && digits.front() == '0';
  const auto number = format::parseNumber<std::uint32_t>(digits);
  if (!number || isPadded) return std::nullopt;
  return Numbered{name.substr(0, underscore), *number};
}

constexpr auto kFamilies = static_cast<std::size_t>(Family::kCount);
static_assert(kFamilies <= 16);
constexpr std::uint16_t maskOf(Family family) {
  return static_cast<std::uint16_t>(1U << static_cast<unsigned>(family));
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
  int words = 0;
  for (std::size_t i = text.size(); i-- > 1;) {
    if (text[i] != '_') continue;
    if (format::mayBeDerived(text.substr(i + 1))) underscores[count++] = i;
    if (++words == format::kMostSuffixWords) return;
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

std::string Names::unique(std::string_view base, Family family) {
  return unique(base, family,
                [](std::string_view name) { return std::string(name); });
}

std::string Names::claim(std::string_view text, Family family) {
  const Candidate candidate(text);
  const std::lock_guard lock(mutex_);
  if (isTaken(candidate.name) || obstacle(candidate, family) != Obstacle::kNone)
    return std::string(nextFree(text, family));
  variables_.emplace(HashedString(candidate.name), family);
  countBlocked(candidate);
  return std::string(text);
}

void Names::reserve(std::string_view text) {
  const Candidate candidate(text);
  const std::lock_guard lock(mutex_);
  if (isTaken(candidate.name)) return;
  variables_.emplace(HashedString(candidate.name), Family::kPlain);
  countBlocked(candidate);
}

void Names::release(std::string_view text) noexcept {
  const Candidate candidate(text);
  const std::lock_guard lock(mutex_);
  if (const auto found = variables_.find(candidate.name);
      found != variables_.end()) {
    variables_.erase(found);
    return releaseBlocked(candidate);
  }
  const auto numbered = splitNumber(text);
  if (!numbered) return;
  const auto counter = counters_.find(HashedText(numbered->base));
  if (counter == counters_.end() ||
      counter->second.next != numbered->number + 1)
    return;
  --counter->second.next;
  releaseBlocked(candidate);
}

// The result lives until the next name is made.
std::string_view Names::nextFree(std::string_view text, Family family) {
  constexpr std::size_t kMostOfCounter = 1 + format::kMostNumberCharacters;
  const auto makeRoom = [this](std::size_t size) {
    if (candidateText_.size() < size) candidateText_.resize(2 * size);
  };
  std::size_t baseSize = text.size();
  makeRoom(baseSize + kMostOfCounter);
  text.copy(candidateText_.data(), baseSize);
  for (;;) {
    const HashedText base({candidateText_.data(), baseSize});
    auto found = counters_.find(base);
    if (found == counters_.end())
      found = counters_.emplace(HashedString(base), Counter{}).first;
    Counter& counter = found->second;
    char* const end = candidateText_.data() + baseSize;
    *end = '_';
    const std::string_view name(candidateText_.data(),
                                format::formatNumber(end + 1, counter.next));
    const Obstacle obstacle = countIfFree(name, family, counter);
    ++counter.next;
    counter.families |= maskOf(family);
    if (obstacle == Obstacle::kNone) return name;
    // With kBroughtAlong the next numbers belong to the same owner, so one more
    // is put behind this one.
    if (obstacle == Obstacle::kTaken) continue;
    baseSize = name.size();
    makeRoom(baseSize + kMostOfCounter);
  }
}

// All names of a counter end alike, so that the first one stands for the next
// ones. Of names with a number, those with an underscore in front are reserved.
Names::Obstacle Names::countIfFree(std::string_view name, Family family,
                                   Counter& counter) {
  if (!counter.mayMeet) {
    return isDeclaredOrBlocked(HashedText(name), family) ? Obstacle::kTaken
                                                         : Obstacle::kNone;
  }
  const Candidate candidate(name);
  const Obstacle found = obstacle(candidate, family);
  if (found == Obstacle::kNone) countBlocked(candidate);
  counter.mayMeet = candidate.count != 0 || name.starts_with('_');
  return found;
}

// Whether a variable has the name, with or without a counter.
bool Names::isTaken(const HashedText& name) const {
  if (variables_.contains(name)) return true;
  const auto numbered = splitNumber(name.text);
  if (!numbered) return false;
  const auto counter = counters_.find(HashedText(numbered->base));
  return counter != counters_.end() && numbered->number < counter->second.next;
}

bool Names::bringsAlong(const HashedText& owner,
                        std::string_view suffix) const {
  if (const auto found = variables_.find(owner);
      found != variables_.end() && format::isDerived(found->second, suffix))
    return true;
  const auto numbered = splitNumber(owner.text);
  if (!numbered) return false;
  const auto counter = counters_.find(HashedText(numbered->base));
  if (counter == counters_.end() || numbered->number >= counter->second.next)
    return false;
  for (std::size_t i = 0; i < kFamilies; ++i) {
    const auto family = static_cast<Family>(i);
    if ((counter->second.families & maskOf(family)) != 0 &&
        format::isDerived(family, suffix))
      return true;
  }
  return false;
}

// Whether a variable without a counter has the name, or a variable with it
// would bring along one that there is.
bool Names::isDeclaredOrBlocked(const HashedText& name, Family family) const {
  if (!variables_.empty() && variables_.contains(name)) return true;
  if (blocked_.empty()) return false;
  const auto found = blocked_.find(name);
  return found != blocked_.end() &&
         found->second[static_cast<std::size_t>(family)] != 0;
}

// A name's own counter is not asked: its numbers from next on are free.
Names::Obstacle Names::obstacle(const Candidate& candidate,
                                Family family) const {
  const HashedText& name = candidate.name;
  if (format::isReservedIdentifier(name.text) ||
      isDeclaredOrBlocked(name, family))
    return Obstacle::kTaken;
  Obstacle result = Obstacle::kNone;
  candidate.forEachSplit([&](HashedText owner, std::string_view suffix) {
    if (bringsAlong(owner, suffix)) result = Obstacle::kBroughtAlong;
    return result == Obstacle::kNone;
  });
  return result;
}

// Counts a variable for all names that would bring it along.
void Names::countBlocked(const Candidate& candidate) {
  candidate.forEachSplit([this](HashedText owner, std::string_view suffix) {
    auto blocked = blocked_.find(owner);
    if (blocked == blocked_.end())
      blocked = blocked_.emplace(HashedString(owner), FamilyCounts{}).first;
    count(blocked->second, suffix, 1);
    return true;
  });
}

void Names::releaseBlocked(const Candidate& candidate) noexcept {
  candidate.forEachSplit([this](HashedText owner, std::string_view suffix) {
    const auto blocked = blocked_.find(owner);
    if (blocked != blocked_.end()) count(blocked->second, suffix, kOneLess);
    return true;
  });
}

}  // namespace kiv::session
