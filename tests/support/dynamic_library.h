#pragma once

#include <stdexcept>
#include <string>

namespace kiv::test {

// A library that is loaded by hand, until it is unloaded or the object dies.
// Throws with the system's words when it cannot be loaded.
class DynamicLibrary {
 public:
  explicit DynamicLibrary(const std::string& path);
  ~DynamicLibrary();
  DynamicLibrary(const DynamicLibrary&) = delete;
  DynamicLibrary& operator=(const DynamicLibrary&) = delete;

  // Null when the library has no such symbol.
  void* find(const char* name) const;

  // The function; throws when there is none.
  template <typename Function>
  Function function(const char* name) const {
    void* address = find(name);
    if (address == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function>(address);
  }

  // Does nothing when it was unloaded before.
  void unload();

  // Whether a library is in the process's memory, loaded by whomever.
  static bool isLoaded(const std::string& path);

 private:
  void* handle_;
};

}  // namespace kiv::test
