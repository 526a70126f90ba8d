#include <windows.h>

#include <cstdlib>

#include "platform/process.h"

// No header declares it.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace kiv::platform {
namespace {

// A thread_local variable would take a place in the process that the compiler's
// runtime does not give back, and after some thousand times that the library
// was loaded there would be none left.
class Slot {
 public:
  Slot() : index_(::TlsAlloc()) {}
  ~Slot() { ::TlsFree(index_); }
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;

  void* value() const { return ::TlsGetValue(index_); }
  void setValue(void* value) const { ::TlsSetValue(index_, value); }

 private:
  const DWORD index_;
};

const Slot slot;

}  // namespace

// The system has no fork.
std::uint32_t forkCount() { return 0; }

// The system ends all other threads before it tells the libraries.
bool isLastThreadOfProcess() { return ::RtlDllShutdownInProgress() != 0; }

// Not a local static variable, for the reason that Slot has.
bool callAtEnd(void (*action)()) { return std::atexit(action) == 0; }

// The system has no cancellation.
CancellationDelay::CancellationDelay() = default;
CancellationDelay::~CancellationDelay() = default;

std::uint32_t threadNumber() {
  return static_cast<std::uint32_t>(
      reinterpret_cast<std::uintptr_t>(slot.value()));
}

void setThreadNumber(std::uint32_t number) {
  slot.setValue(reinterpret_cast<void*>(std::uintptr_t{number}));
}

}  // namespace kiv::platform
