#include <pthread.h>
#include <unistd.h>

#include "platform/process.h"

namespace kiv::platform {
namespace {

constinit thread_local std::uint32_t number = 0;

}  // namespace

std::uint64_t processId() { return static_cast<std::uint64_t>(::getpid()); }

// Threads run on while exit handlers and destructors do.
bool isLastThreadOfProcess() { return false; }

// std::atexit would do, but thread sanitizers take its actions for the
// program's, to be called when the library has gone.
bool callAtEnd(void (*action)()) {
  struct Caller {
    void (*action)();
    ~Caller() { action(); }
  };
  static const Caller caller{action};
  return true;
}

CancellationDelay::CancellationDelay() {
  ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

CancellationDelay::~CancellationDelay() {
  ::pthread_setcancelstate(before_, nullptr);
}

std::uint32_t threadNumber() { return number; }
void setThreadNumber(std::uint32_t value) { number = value; }

}  // namespace kiv::platform
