#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "format/parts.h"
#include "session/hashed_text.h"

namespace kiv::session {

using format::Family;

// The variables of the generated program, so that none is declared twice
// whatever names clients choose. From any thread.
//
//   names.unique("context", Family::kContext);   // "context_0"
//   names.claim("main", Family::kGraph);         // "main_0": "main" is taken
//
// A name is free when the program has it neither from the start nor as a
// variable, when no variable will bring it along (see format::Part), and when
// it will bring none along that the program has. The texts that are returned
// live until the name is released, or as long as this object.
class Names {
 public:
  // base + "_" + a decimal counter that starts at 0 for each base; numbers
  // whose name is not free are left out.
  std::string_view unique(std::string_view base, Family family);

  // The name as it is when it is free, else unique(name).
  std::string_view claim(std::string_view name, Family family);

  // Takes a name that the program has from elsewhere.
  void reserve(std::string_view name);

  // Gives a claimed name back, whose call has not been recorded.
  void release(std::string_view name) noexcept;

 private:
  // What stands in the way of a name.
  enum class Obstacle : std::uint8_t { kNone, kTaken, kBroughtAlong };
  using FamilyCounts =
      std::array<std::uint32_t, static_cast<std::size_t>(Family::kCount)>;

  // A name, and each way to read it as an owner's name, "_" and a suffix that
  // may be that of a derived name.
  struct Candidate {
    explicit Candidate(std::string_view text);

    // Calls `visit` with each owner and suffix, shortest suffix first, until it
    // returns false.
    template <typename Visit>
    void forEachSplit(Visit&& visit) const;

    HashedText name;
    std::array<std::size_t, format::kMostSuffixWords> underscores{};
    std::size_t count = 0;
  };

  std::string_view nextFree(std::string_view base, Family family);
  Obstacle obstacle(const Candidate& candidate, Family family) const;
  std::string_view take(const Candidate& candidate, Family family);

  template <typename Value>
  using Map = std::unordered_map<HashedString, Value, HashOfText, SameText>;

  mutable std::mutex mutex_;
  // The name that is tried, here so that its memory serves again.
  std::string candidateText_;
  Map<std::uint32_t> counters_;
  Map<Family> variables_;
  // For names that are not variables: by family, how many variables of the
  // program they would bring along.
  Map<FamilyCounts> blocked_;
};

}  // namespace kiv::session
