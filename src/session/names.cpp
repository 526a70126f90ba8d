#include "session/names.h"

#include <utility>

#include "output/identifiers.h"
#include "output/numbers.h"

namespace kiv::session {
namespace {

constexpr std::size_t indexOf(Family family) {
  return static_cast<std::size_t>(family);
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

void Names::reserve(std::string_view name) {
  const std::lock_guard lock(mutex_);
  if (!variables_.contains(name)) take(std::string(name), Family::kPlain);
}

void Names::release(const std::string& name) {
  const std::lock_guard lock(mutex_);
  const auto found = variables_.find(name);
  if (found == variables_.end()) return;
  constexpr auto kOneLess = static_cast<std::uint32_t>(-1);
  countBlocked(name, found->second, kOneLess);
  variables_.erase(found);
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
      found != blocked_.end() && found->second[indexOf(family)] != 0)
    return Obstacle::kTaken;
  Obstacle result = Obstacle::kNone;
  forEachSplit(name, [&](std::string_view owner, std::string_view suffix) {
    const auto found = variables_.find(owner);
    if (found != variables_.end() && collide(found->second, suffix, family))
      result = Obstacle::kBroughtAlong;
    return result == Obstacle::kNone;
  });
  return result;
}

void Names::take(const std::string& name, Family family) {
  variables_.emplace(name, family);
  countBlocked(name, family, 1);
}

// Counts the variable `name` for all names that would bring it along.
void Names::countBlocked(std::string_view name, Family family,
                         std::uint32_t by) {
  forEachSplit(name, [&](std::string_view owner, std::string_view suffix) {
    for (std::size_t i = 0; i < indexOf(Family::kCount); ++i) {
      if (collide(static_cast<Family>(i), suffix, family))
        blocked_[std::string(owner)][i] += by;
    }
    return true;
  });
}

}  // namespace kiv::session
