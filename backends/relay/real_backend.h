#pragma once

#include <optional>
#include <string>

#include "KivInterface.h"

namespace kiv::relay {

// The library that answers the client's calls, with the provider that the
// client sees. Plain values; whoever loaded it unloads it.
class RealBackend {
 public:
  // Loads the library that KIV_RELAY_BACKEND names and takes its first provider
  // of this API's major version. Nothing, with the reason in `why`, when there
  // is none.
  static std::optional<RealBackend> load(std::string& why);
  void unload() const;

  const std::string& path() const { return path_; }
  const KivInterface_t& provider() const { return *provider_; }
  const KivInterface_Implementation_t& table() const {
    return provider_->KIV_INTERFACE_VER_NAME;
  }

 private:
  RealBackend(std::string path, void* library, const KivInterface_t* provider)
      : path_(std::move(path)), library_(library), provider_(provider) {}

  std::string path_;
  void* library_;
  const KivInterface_t* provider_;
};

}  // namespace kiv::relay
