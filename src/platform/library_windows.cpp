#include <windows.h>

#include <cstdlib>
#include <system_error>

#include "platform/library.h"
#include "platform/process.h"

namespace kiv::platform {
namespace {

using Action = void (*)();
constinit Action unloadAction = nullptr;

}  // namespace

// The libraries that this one needs are looked for beside it first, which the
// system does for whole paths only.
void* openLibrary(const std::string& path, std::string& why) {
  const bool isWhole = path.find_first_of("/\\") != std::string::npos;
  char whole[4096];
  const DWORD length =
      isWhole ? ::GetFullPathNameA(path.c_str(), sizeof whole, whole, nullptr)
              : 0;
  const bool fits = length != 0 && length < sizeof whole;
  const HMODULE library =
      ::LoadLibraryExA(fits ? whole : path.c_str(), nullptr,
                       fits ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
  if (library != nullptr) return static_cast<void*>(library);
  why = path + ": " +
        std::system_category().message(static_cast<int>(::GetLastError()));
  return nullptr;
}

void closeLibrary(void*) {}

void* findSymbol(void* library, const char* name) {
  return reinterpret_cast<void*>(
      ::GetProcAddress(static_cast<HMODULE>(library), name));
}

void callAtUnload(void (*action)()) {
  unloadAction = action;
  std::atexit([] {
    if (!isLastThreadOfProcess()) unloadAction();
  });
}

}  // namespace kiv::platform
