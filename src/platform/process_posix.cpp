#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "platform/process.h"

namespace kiv::platform {
namespace {

constinit std::atomic<std::uint32_t> forks = 0;

// The handler is registered when the library is loaded, and goes with it: the C
// library notes whose handler it is.
const bool kCountsForks =
    ::pthread_atfork(nullptr, nullptr, [] { ++forks; }) == 0;

}  // namespace

std::uint32_t processId() { return static_cast<std::uint32_t>(::getpid()); }

std::optional<std::string> environmentVariable(const char* name) {
  const char* value = ::secure_getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return value;
}

// A process that had no memory for the handler is known by its id.
std::uint32_t forkCount() {
  return kCountsForks ? forks.load(std::memory_order_relaxed)
                      : static_cast<std::uint32_t>(::getpid());
}

std::uint64_t threadId() {
  static_assert(sizeof(::pthread_self()) <= sizeof(std::uint64_t));
  return std::uint64_t(::pthread_self());
}

// Threads run on while exit handlers and destructors do.
bool isLastThreadOfProcess() { return false; }

// std::atexit would do, but thread sanitizers take its actions for the
// program's, to be called when the library has gone.
bool callAtEnd(void (*action)()) {
  struct Caller {
    void (*action)();
    ~Caller() { action(); }
  };
  static const Caller kCaller{action};
  return true;
}

CancellationDelay::CancellationDelay() {
  ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

CancellationDelay::~CancellationDelay() {
  ::pthread_setcancelstate(before_, nullptr);
}

}  // namespace kiv::platform
