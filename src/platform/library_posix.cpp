#include <dlfcn.h>

#include "platform/library.h"

namespace kiv::platform {
namespace {

using Action = void (*)();
constinit Action unloadAction = nullptr;
constinit bool isProcessEnding = false;

struct ExitNote {
  ~ExitNote() { isProcessEnding = true; }
};
const ExitNote kExitNote;

// The end of the process destroys static objects first and calls functions of
// this kind last; dlclose() has it the other way round.
[[gnu::destructor]] void atEnd() {
  if (!isProcessEnding && unloadAction != nullptr) unloadAction();
}

}  // namespace

void* openLibrary(const std::string& path, std::string& why) {
  void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library != nullptr) return library;
  const char* const reason = ::dlerror();
  why = reason != nullptr ? reason : path + ": it cannot be loaded";
  return nullptr;
}

void closeLibrary(void* library) { ::dlclose(library); }

void* findSymbol(void* library, const char* name) {
  return ::dlsym(library, name);
}

void callAtUnload(void (*action)()) { unloadAction = action; }

}  // namespace kiv::platform
