#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The process that the library is in: its number and environment, its forks,
// its end, the cancellation of threads. Every function may be called from any
// thread.
namespace kiv::platform {

std::uint32_t processId();

// A variable of the environment; none if it is empty or the process has more
// rights than the user who set it.
std::optional<std::string> environmentVariable(const char* name);

// How often this process or an ancestor was forked since the library was
// loaded: a child counts one more than its parent. 0 where processes do not
// fork. Costs a load. Processes that are made without fork() (vfork(), clone(),
// _Fork()) are not counted.
std::uint32_t forkCount();

// A number that no other thread alive has. Asking for it needs no memory of the
// thread, and leaves nothing behind when the library is unloaded.
std::uint64_t threadId();

// Whether the process ends and has only this thread left: no other will finish
// what it is doing.
bool isLastThreadOfProcess();

// Has `action` called when the library is unloaded or the process exits, in the
// reverse order of registration; false if it cannot be registered. The library
// has one such action and calls this function once.
bool callAtEnd(void (*action)());

// Puts off the cancellation of its thread as long as it exists. A thread that
// is cancelled in a write would leave part of a call behind, and no exception
// handler may end a cancellation.
class CancellationDelay {
 public:
  CancellationDelay();
  ~CancellationDelay();
  CancellationDelay(const CancellationDelay&) = delete;
  CancellationDelay& operator=(const CancellationDelay&) = delete;

 private:
  int before_ = 0;
};

}  // namespace kiv::platform
