#include "session/names.h"

#include <utility>

#include "output/identifiers.h"
#include "output/numbers.h"

namespace kiv::session {
namespace {

constexpr std::uint8_t bitOf(Family family) {
  return static_cast<std::uint8_t>(1U << static_cast<unsigned>(family));
}

// Calls `visit` with (owner, suffix) for each way to read a name as "owner_" +
// suffix, shortest suffix first, until it returns false.
template <typename Visit>
void forEachSplit(std::string_view name, Visit&& visit) {
  std::size_t end = name.size();
  for (int words = 0; words < kMostSuffixWords && end > 0; ++words) {
    const std::size_t underscore = name.rfind('_', end - 1);
    if (underscore == std::string_view::npos || underscore == 0) return;
    if (!visit(name.substr(0, underscore), name.substr(underscore + 1))) return;
    end = underscore;
  }
}

}  // namespace

std::string Names::unique(std::string_view base, Family family) {
  const std::lock_guard lock(mutex_);
  return nextFree(std::string(base), family);
}

std::string Names::claim(std::string_view name, Family family) {
  const std::lock_guard lock(mutex_);
  if (obstacle(name, family) != Obstacle::kNone)
    return nextFree(std::string(name), family);
  std::string result(name);
  take(result, family);
  return result;
}

void Names::release(const std::string& name) {
  const std::lock_guard lock(mutex_);
  variables_.erase(name);
}

std::string Names::nextFree(std::string base, Family family) {
  for (;;) {
    std::string name = base + '_' + output::decimal(counters_[base]++);
    switch (obstacle(name, family)) {
      case Obstacle::kNone:
        take(name, family);
        return name;
      case Obstacle::kTaken:
        break;
      case Obstacle::kBroughtAlong:
        // The next numbers belong to the same owner, so one more is put
        // behind this one.
        base = std::move(name);
        break;
    }
  }
}

Names::Obstacle Names::obstacle(std::string_view name, Family family) const {
  if (output::isReservedIdentifier(name) || variables_.contains(name))
    return Obstacle::kTaken;
  if (const auto found = blocked_.find(name);
      found != blocked_.end() && (found->second & bitOf(family)) != 0)
    return Obstacle::kTaken;
  Obstacle result = Obstacle::kNone;
  forEachSplit(name, [&](std::string_view owner, std::string_view suffix) {
    const auto found = variables_.find(owner);
    if (found != variables_.end() && familyTakes(found->second, suffix))
      result = Obstacle::kBroughtAlong;
    return result == Obstacle::kNone;
  });
  return result;
}

void Names::take(const std::string& name, Family family) {
  variables_.emplace(name, family);
  forEachSplit(name, [&](std::string_view owner, std::string_view suffix) {
    FamilyBits bits = 0;
    for (unsigned i = 0; i < static_cast<unsigned>(Family::kCount); ++i) {
      const auto other = static_cast<Family>(i);
      if (familyTakes(other, suffix))
        bits = static_cast<FamilyBits>(bits | bitOf(other));
    }
    if (bits != 0) {
      FamilyBits& entry = blocked_[std::string(owner)];
      entry = static_cast<FamilyBits>(entry | bits);
    }
    return true;
  });
}

}  // namespace kiv::session
