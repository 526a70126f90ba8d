#include <windows.h>

#include <cstdlib>

#include "platform/process.h"

// No header declares it.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace kiv::platform {

std::uint32_t processId() { return ::GetCurrentProcessId(); }

// The runtime's copy of the environment is that of the library's load.
std::optional<std::string> environmentVariable(const char* name) {
  const DWORD size = ::GetEnvironmentVariableA(name, nullptr, 0);
  if (size <= 1) return std::nullopt;
  std::string value(size, '\0');
  const DWORD length = ::GetEnvironmentVariableA(name, value.data(), size);
  if (length == 0 || length >= size) return std::nullopt;
  value.resize(length);
  return value;
}

// The system has no fork.
std::uint32_t forkCount() { return 0; }

// The runtime's own ids take a place in the process with the first that is
// asked for, see callAtEnd().
std::uint64_t threadId() { return ::GetCurrentThreadId(); }

// The system ends all other threads before it tells the libraries.
bool isLastThreadOfProcess() { return ::RtlDllShutdownInProgress() != 0; }

// A local static variable would take a place in the process that the compiler's
// runtime does not give back, and after some thousand times that the library
// was loaded there would be none left.
bool callAtEnd(void (*action)()) { return std::atexit(action) == 0; }

// The system has no cancellation.
CancellationDelay::CancellationDelay() = default;
CancellationDelay::~CancellationDelay() = default;

}  // namespace kiv::platform
