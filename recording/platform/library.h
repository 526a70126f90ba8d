#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kiv::recording {

// A shared library, loaded by its path and by nothing else: no search path, no
// other library of the same name. It is unloaded with the object.
//
// One thread at a time.
class Library {
 public:
  // Nothing, with the system's words in `why`, when it cannot be loaded.
  static std::optional<Library> load(const std::filesystem::path& path,
                                     std::string& why);

  ~Library();
  Library(Library&& other) noexcept;
  Library& operator=(Library&& other) noexcept;
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // A function of that very library, not of one that it links; null when it
  // has none of that name.
  void* find(const char* name) const;

 private:
  explicit Library(void* handle) : handle_(handle) {}

  void* handle_ = nullptr;
};

}  // namespace kiv::recording
