#pragma once

// ONNX Runtime, loaded when it is first needed:
//
//   std::shared_ptr<const OrtLibrary> library = OrtLibrary::get();
//   library->check("Run", library->functions().run(...));
//
// The library is taken from the path in KIV_ONNXRUNTIME, else from the system
// under its usual names. It stays in memory once it is loaded, since threads of
// its own may still run; its environment is released with the last pointer.
// Any thread may use it.

#include <memory>
#include <string>

#include "ort_functions.h"

namespace kiv::ort {

class OrtLibrary {
 public:
  // A Failure that says what was tried if there is no library that fits.
  static std::shared_ptr<const OrtLibrary> get();

  explicit OrtLibrary(const OrtBase& base);
  ~OrtLibrary();
  OrtLibrary(const OrtLibrary&) = delete;
  OrtLibrary& operator=(const OrtLibrary&) = delete;

  const OrtFunctions& functions() const { return functions_; }
  const OrtEnv* env() const { return env_; }
  const OrtMemoryInfo* memory() const { return memory_; }
  // Such as "1.16.3".
  const std::string& version() const { return version_; }

  // The newest version of the default operator set that the library takes.
  int newestOpset() const;

  // A Failure with ONNX Runtime's own message if the status is one.
  void check(const char* what, OrtStatus* status) const;

 private:
  std::string version_;
  OrtFunctions functions_;
  OrtEnv* env_ = nullptr;
  OrtMemoryInfo* memory_ = nullptr;
};

}  // namespace kiv::ort
