#include "output/call_watch.h"

#include <atomic>
#include <mutex>

#include "diagnostics/spin_lock.h"
#include "platform/process.h"

namespace kiv::output {
namespace {

// The watches of all threads, the latest first. The list is changed under the
// lock; whether it is empty is read without it.
constinit log::SpinLock watchesLock;
constinit std::atomic<CallWatch*> firstWatch = nullptr;

}  // namespace

CallWatch::CallWatch(ExecutionCount* count)
    : count_(count), thread_(platform::threadId()) {
  const std::lock_guard lock(watchesLock);
  next_ = firstWatch;
  if (next_ != nullptr) next_->previous_ = this;
  firstWatch = this;
}

CallWatch::~CallWatch() {
  const std::lock_guard lock(watchesLock);
  if (next_ != nullptr) next_->previous_ = previous_;
  if (previous_ != nullptr)
    previous_->next_ = next_;
  else
    firstWatch = next_;
}

void noteRecordedCall(std::uint32_t program, std::uint64_t number) {
  if (firstWatch == nullptr) return;
  const std::uint64_t self = platform::threadId();
  const std::lock_guard lock(watchesLock);
  for (CallWatch* watch = firstWatch; watch != nullptr; watch = watch->next_)
    if (watch->thread_ == self) watch->learn(program, number);
}

void CallWatch::learn(std::uint32_t program, std::uint64_t number) {
  number_ = number;
  program_ = program;
  if (count_ == nullptr) return;
  if (count_->program != program) *count_ = {program, 0};
  execution_ = count_->next++;
}

}  // namespace kiv::output
