#include <windows.h>

#include <algorithm>

#include "support/dynamic_library.h"

namespace kiv::test {
namespace {

// The system looks for a library in other ways if its path has slashes.
std::string nativePath(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

}  // namespace

DynamicLibrary::DynamicLibrary(const std::string& path)
    : handle_(LoadLibraryA(nativePath(path).c_str())) {
  if (handle_ == nullptr) {
    throw std::runtime_error(path + ": error " +
                             std::to_string(GetLastError()));
  }
}

DynamicLibrary::~DynamicLibrary() { unload(); }

void* DynamicLibrary::find(const char* name) const {
  return reinterpret_cast<void*>(
      GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void DynamicLibrary::unload() {
  if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
  handle_ = nullptr;
}

bool DynamicLibrary::isLoaded(const std::string& path) {
  return GetModuleHandleA(nativePath(path).c_str()) != nullptr;
}

}  // namespace kiv::test
