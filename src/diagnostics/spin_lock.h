#pragma once

#include <atomic>
#include <thread>

#include "platform/process.h"

namespace kiv::log {

// A lock for a few instructions that, unlike std::mutex on every system, is
// there before the first constructor and after the last destructor.
class SpinLock {
 public:
  void lock() {
    while (taken_.test_and_set(std::memory_order_acquire)) {
      // Whoever had it was killed.
      if (platform::isLastThreadOfProcess()) return;
      std::this_thread::yield();
    }
  }
  void unlock() { taken_.clear(std::memory_order_release); }

 private:
  std::atomic_flag taken_;
};

}  // namespace kiv::log
