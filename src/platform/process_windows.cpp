#include <windows.h>

#include "platform/process.h"

// No header declares it.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace kiv::platform {

std::uint64_t processId() { return ::GetCurrentProcessId(); }

// The system ends all other threads before it tells the libraries.
bool isLastThreadOfProcess() { return ::RtlDllShutdownInProgress() != 0; }

}  // namespace kiv::platform
