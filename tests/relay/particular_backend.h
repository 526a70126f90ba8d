#pragma once

#include <atomic>
#include <cstdint>

#include "KivInterface.h"

// What a test sees and steers of particular_backend.cpp, a backend whose
// answers are unlike a recorder's: handles come again, ids are large and fall,
// and it lacks functions.
namespace kiv::test {

struct ParticularBackend {
  // Executions wait until as many are under way.
  std::atomic<int> executionsToMeet = 1;
  // The code of graphFinalize and of asynchronous executions.
  std::atomic<Kiv_ErrorHandle_t> finalizeCode = KIV_SUCCESS;
  // Whether an execution kills the process.
  std::atomic<bool> isDeadly = false;
  // The id of the last node's first input, as it arrived.
  std::atomic<std::uint32_t> nodeInput = 0;
  // Ends the asynchronous execution that waits.
  void (*notify)(Kiv_ErrorHandle_t status) = nullptr;
};

using ParticularBackendFn_t = ParticularBackend* (*)();

}  // namespace kiv::test
