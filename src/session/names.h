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
// it will bring none along that the program has.
class Names {
 public:
  // base + "_" + a decimal counter that starts at 0 for each base; numbers
  // whose name is not free are left out. `keep` gets the name, while no other
  // is made, and its result is returned.
  template <typename Keep>
  auto unique(std::string_view base, Family family, Keep&& keep) {
    const std::lock_guard lock(mutex_);
    return keep(nextFree(base, family));
  }
  std::string unique(std::string_view base, Family family);

  // The name as it is when it is free, else unique(name).
  std::string claim(std::string_view name, Family family);

  // Takes a name that the program has from elsewhere.
  void reserve(std::string_view name);

  // Gives a name back whose call has not been recorded. A counter goes back
  // only from its last number.
  void release(std::string_view name) noexcept;

 private:
  // What stands in the way of a name.
  enum class Obstacle : std::uint8_t { kNone, kTaken, kBroughtAlong };
  using FamilyCounts =
      std::array<std::uint32_t, static_cast<std::size_t>(Family::kCount)>;

  // A base with the names 0 to next - 1 behind it, all of which are taken:
  // most variables are no more than a step of such a counter.
  struct Counter {
    std::uint32_t next = 0;
    // Bit by bit, the families that its names have.
    std::uint16_t families = 0;
    // Whether its names may be reserved, or be brought along by a variable, as
    // far as is known.
    bool mayMeet = true;
  };

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
  Obstacle countIfFree(std::string_view name, Family family, Counter& counter);
  Obstacle obstacle(const Candidate& candidate, Family family) const;
  bool isDeclaredOrBlocked(const HashedText& name, Family family) const;
  bool isTaken(const HashedText& name) const;
  bool bringsAlong(const HashedText& owner, std::string_view suffix) const;
  void countBlocked(const Candidate& candidate);
  void releaseBlocked(const Candidate& candidate) noexcept;

  template <typename Value>
  using Map = std::unordered_map<HashedString, Value, HashOfText, SameText>;

  mutable std::mutex mutex_;
  // The name that is tried, here so that its memory serves again.
  std::string candidateText_;
  Map<Counter> counters_;
  // Variables without a counter.
  Map<Family> variables_;
  // For names that are not variables: by family, how many variables of the
  // program they would bring along.
  Map<FamilyCounts> blocked_;
};

}  // namespace kiv::session
