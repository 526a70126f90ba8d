#pragma once

#include <cstddef>

namespace kiv::test {

// Lets allocations of the calling thread fail, from the `first` one on (1 is
// the next), while the object lives. Programs that link failing_memory.cpp have
// the C library's functions replaced for all libraries in the process.
//
//   FailingMemory failing(3, 1);
//   code = api.graphFinalize(...);  // its third allocation fails
//
// `kAll` lets all that follow the first one fail, too.
class FailingMemory {
 public:
  static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

  FailingMemory(std::size_t first, std::size_t count);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  // The allocations that were asked for, and whether one of these failed.
  static std::size_t asked();
  static bool hasFailed();
};

}  // namespace kiv::test
