#pragma once

#include <cstdint>

namespace kiv::output {

// The number that the next execution of a graph has in a program, from 0. Kept
// by whoever watches the graph's executions, changed under the files' lock.
struct ExecutionCount {
  std::uint32_t program = 0;
  std::uint64_t next = 0;
};

// Learns where the call that its thread records meanwhile stands in the
// recording.
//
//   const CallWatch watch;
//   api::graphFinalize(graph, nullptr, nullptr);
//   if (watch.number() != 0) ...
//
// Without a watch a recorded call costs a load more. Watches of a thread may be
// nested, and all of them learn it. Each is made, read and destroyed by the
// same thread, whichever it is.
class CallWatch {
 public:
  // `count` may be null.
  explicit CallWatch(ExecutionCount* count = nullptr);
  ~CallWatch();
  CallWatch(const CallWatch&) = delete;
  CallWatch& operator=(const CallWatch&) = delete;

  // From 1; 0 if nothing was recorded.
  std::uint64_t number() const { return number_; }
  // Which of the session's programs the call is in, from 0.
  std::uint32_t program() const { return program_; }
  // The execution's number as counted by `count`.
  std::uint64_t execution() const { return execution_; }

 private:
  friend void noteRecordedCall(std::uint32_t program, std::uint64_t number);
  void learn(std::uint32_t program, std::uint64_t number);

  ExecutionCount* count_;
  std::uint64_t thread_;
  std::uint64_t number_ = 0;
  std::uint32_t program_ = 0;
  std::uint64_t execution_ = 0;
  CallWatch* next_ = nullptr;
  CallWatch* previous_ = nullptr;
};

// Reports a call that this thread has written; called under the files' lock.
void noteRecordedCall(std::uint32_t program, std::uint64_t number);

}  // namespace kiv::output
