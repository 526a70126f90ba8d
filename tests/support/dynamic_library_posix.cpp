#include <dlfcn.h>

#include "support/dynamic_library.h"

namespace kiv::test {

DynamicLibrary::DynamicLibrary(const std::string& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw std::runtime_error(dlerror());
}

DynamicLibrary::~DynamicLibrary() { unload(); }

void* DynamicLibrary::find(const char* name) const {
  return dlsym(handle_, name);
}

void DynamicLibrary::unload() {
  if (handle_ != nullptr) dlclose(handle_);
  handle_ = nullptr;
}

bool DynamicLibrary::isLoaded(const std::string& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) dlclose(library);
  return library != nullptr;
}

}  // namespace kiv::test
