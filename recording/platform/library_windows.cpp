#include <windows.h>

#include <system_error>
#include <utility>

#include "recording/platform/library.h"

namespace kiv::recording {

// The libraries that this one needs are looked for beside it first.
std::optional<Library> Library::load(const std::filesystem::path& path,
                                     std::string& why) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  const HMODULE handle = error ? nullptr
                               : LoadLibraryExW(absolute.c_str(), nullptr,
                                                LOAD_WITH_ALTERED_SEARCH_PATH);
  if (handle != nullptr) return Library(static_cast<void*>(handle));
  why = error
            ? error.message()
            : std::system_category().message(static_cast<int>(GetLastError()));
  return std::nullopt;
}

Library::~Library() {
  if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
}

Library::Library(Library&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)) {}

Library& Library::operator=(Library&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

void* Library::find(const char* name) const {
  return reinterpret_cast<void*>(
      GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace kiv::recording
