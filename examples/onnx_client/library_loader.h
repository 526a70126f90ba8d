#pragma once

// A shared library loaded by its path, and Kiv's functions in it. The one place
// that knows how the system loads libraries.

#include <memory>
#include <string>

#include "KivInterface.h"
#include "Saver/KivSaver.h"

namespace onnx_client {

using Api = KivInterface_Implementation_t;

class Library {
 public:
  explicit Library(const std::string& path);

  // The functions of the first provider that speaks the headers' version of
  // the API; valid as long as the library.
  const Api& api() const { return *api_; }

  // Null if the library does not export it.
  KivSaver_InitializeFn_t saverInitialize() const;

 private:
  template <typename Function>
  Function symbol(const char* name) const;

  struct Unload {
    void operator()(void* handle) const;
  };

  std::unique_ptr<void, Unload> handle_;
  const Api* api_;
};

}  // namespace onnx_client
