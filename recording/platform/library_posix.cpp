#include <dlfcn.h>
#include <link.h>

#include <utility>

#include "recording/platform/library.h"

namespace kiv::recording {

// A path without a slash would be looked for in the system's directories.
std::optional<Library> Library::load(const std::filesystem::path& path,
                                     std::string& why) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  void* const handle =
      error ? nullptr : dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle != nullptr) return Library(handle);
  const char* const reason = error ? nullptr : dlerror();
  why = reason != nullptr ? reason : "It cannot be loaded";
  return std::nullopt;
}

Library::~Library() {
  if (handle_ != nullptr) dlclose(handle_);
}

Library::Library(Library&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)) {}

Library& Library::operator=(Library&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

// dlsym() also looks into the libraries that this one needs.
void* Library::find(const char* name) const {
  void* const symbol = dlsym(handle_, name);
  if (symbol == nullptr) return nullptr;
  Dl_info info = {};
  link_map* symbolsMap = nullptr;
  link_map* ownMap = nullptr;
  const bool isKnown =
      dladdr1(symbol, &info, reinterpret_cast<void**>(&symbolsMap),
              RTLD_DL_LINKMAP) != 0 &&
      dlinfo(handle_, RTLD_DI_LINKMAP, static_cast<void*>(&ownMap)) == 0;
  return isKnown && symbolsMap == ownMap ? symbol : nullptr;
}

}  // namespace kiv::recording
