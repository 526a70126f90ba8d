#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "session/variable_families.h"

namespace kiv::session {

// The variables of the generated program, so that none is declared twice
// whatever names clients choose. From any thread.
//
// A name is free when the program has it neither from the start nor as a
// variable, when no variable there is will bring it along (see Family), and
// when the variables that it brings along are free as well.
class Names {
 public:
  // base + "_" + a decimal counter that starts at 0 for each base; numbers
  // whose name is not free are left out.
  std::string unique(std::string_view base, Family family = Family::kPlain);

  // The name as it is when it is free, else unique(name).
  std::string claim(std::string_view name, Family family = Family::kPlain);

  // Takes a name that the program has from elsewhere.
  void reserve(std::string_view name);

  // Gives a claimed name back, whose call has not been recorded.
  void release(const std::string& name);

 private:
  // What stands in the way of a name.
  enum class Obstacle : std::uint8_t { kNone, kTaken, kBroughtAlong };
  using FamilyCounts =
      std::array<std::uint32_t, static_cast<std::size_t>(Family::kCount)>;

  std::string nextFree(std::string base, Family family);
  Obstacle obstacle(std::string_view name, Family family) const;
  void take(const std::string& name, Family family);
  void countBlocked(std::string_view name, Family family, std::uint32_t by);

  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };
  template <typename Value>
  using Map = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;

  mutable std::mutex mutex_;
  Map<std::uint32_t> counters_;
  Map<Family> variables_;
  // For names that are not variables: by family, how many variables that are
  // there they would bring along.
  Map<FamilyCounts> blocked_;
};

}  // namespace kiv::session
