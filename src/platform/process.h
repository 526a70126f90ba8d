#pragma once

#include <cstdint>

namespace kiv::platform {

// Differs in a forked child.
std::uint64_t processId();

// Whether the process ends and has only this thread left: no other will finish
// what it is doing.
bool isLastThreadOfProcess();

// Lets `action` be called when the library is unloaded or the process exits, in
// the reverse order of what is registered for it; false when that is not to be
// had. For one action of the library, which may be told of once.
bool callAtEnd(void (*action)());

// Puts off the cancellation of this thread while it lives. Being cancelled in a
// write would leave part of a call behind, and no exception handler may end it.
class CancellationDelay {
 public:
  CancellationDelay();
  ~CancellationDelay();
  CancellationDelay(const CancellationDelay&) = delete;
  CancellationDelay& operator=(const CancellationDelay&) = delete;

 private:
  int before_ = 0;
};

// A number that each thread has for itself, 0 at first. It leaves nothing
// behind in the process when the library is unloaded.
std::uint32_t threadNumber();
void setThreadNumber(std::uint32_t number);

}  // namespace kiv::platform
